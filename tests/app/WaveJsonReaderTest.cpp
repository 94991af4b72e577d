// The WaveJSON reader: a table of diagrams (public examples and the project's own, in
// data/wavejson) read and drawn, with their lanes, slots, labels and values checked, and bad
// files reported as FILE:LINE.
#include "io/WaveJsonReader.h"
#include "SignalProbes.h"
#include "io/DiagramFile.h"
#include "model/Diagram.h"
#include "render/DiagramExporter.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

TEST(WaveJsonReader, TableOfDiagramsReadsAndDrawsWithTheseCounts) {
    // Times in ns: one wave character is 10 ns, times hscale and the lane's period; phase moves
    // a lane earlier. Texts are the data slots of lanes whose labels are not all numbers, and
    // the unlabelled slots; such a lane is one bit wide.
    // clang-format off
    const struct {
        const char* file;
        std::size_t lanes, groups, texts, arrows, gaps;
        Time spanStart, spanEnd;
        std::size_t warnings;
        std::vector<std::string> probes;
    } cases[] = {
        {"asciiwave_step6.json", 5, 0, 13, 0, 0, -5, 164, 2,
         {"CK@5=1", "CK@15=0", "CK@25=1", "CMD@14=x", "CMD@16='RAS'", "CMD@26=x", "DQ@103=z",
          "DQ@104='D0'", "DQS@83=z", "DQS@84=0"}},
        {"asciiwave_test1.json", 3, 0, 0, 0, 0, 0, 80, 1,
         {"lane 1@5=1", "lane 1@12=1", "lane 1@17=0", "lane 1@33=0", "lane 1@37=1", "lane 1@45=1",
          "lane 1@57=0", "lane 1@77=1", "lane 2@5=1", "lane 3@45=0"}},
        {"spi_coo.js", 11, 2, 10, 0, 0, 0, 300, 3,
         {"d@15='C'", "d@25=x", "q@15=1", "d (2)@199=x", "d (2)@200='D0'", "a (2)@219=0",
          "a (2)@220=1", "IO0@35=111", "IO0@45=110", "IO0@105=000", "IO1@265=000", "IO1@275=xxx"}},
        {"spi_data.js", 13, 0, 8, 0, 0, 0, 200, 2,
         {"cmdq@15=1", "reqd@80='D0'", "reqd@100=x", "reqa@85=0", "reqa@90=1", "IO0@115=111",
          "IO0@185=000", "IO0@195=xxx", "SCK@5=''", "SCK@32=0", "SCK@37=1", "SCK@42=0"}},
        {"axi4_beats.js", 7, 0, 18, 0, 0, 0, 150, 2,
         {"ACLK@3=1", "ACLK@7=0", "ARESETn@5=0", "ARESETn@15=1", "R@35='T1D0'", "R@45='T1D1'",
          "B@145='T4'"}},
        {"ws2813_general.js", 5, 0, 0, 0, 0, 0, 190, 2,
         {"Data@85=0", "Data@125=1", "Data@165=0", "start@55=1", "CLK@15=0"}},
        {"features.json5", 8, 2, 5, 3, 4, -10, 390, 5,
         {"clk@5=1", "clk@15=0", "clk@125=1", "<b>data<sub>in</sub></b>@39=x",
          "<b>data<sub>in</sub></b>@50='head'", "<b>data<sub>in</sub></b>@70='body'",
          "<b>data<sub>in</sub></b>@110=x", "<b>data<sub>in</sub></b>@150='data'",
          "req@50=1", "req@110=0", "req@150=1", "req@190=0", "count@0=011111", "count@45=100000",
          "ack@-10=1", "ack@260=1", "ack@280=0", "ack@320=1", "misc@5=z", "misc@25=h",
          "misc@45=l", "misc@65=0", "misc@85=1", "misc@145=x", "nine@0=''"}},
        // The further public examples, with spacer rows, node-only rows and shaped edges.
        {"wavedrom_signal_arcs.json5", 5, 0, 0, 9, 0, 0, 150, 1,
         {"A@10=1", "A@100=0", "C@30=1", "E@50=1", "E@60=0"}},
        {"wavedrom_signal_arcs1.json5", 6, 0, 1, 5, 6, 0, 140, 1,
         {"Input@40=1", "Input@50=x", "Input@130=l", "Output@90=1", "Output@110=0",
          "lane 2@0=(none)", "lane 6@0=(none)", "Reset@10=1"}},
        {"wavedrom_signal_step4.json5", 5, 0, 4, 0, 4, 0, 100, 2,
         {"Request@20=1", "Request@50=0", "Acknowledge@70=0", "Acknowledge@80=1",
          "lane 4@0=(none)"}},
        {"wavedrom_step1.js", 1, 0, 5, 0, 0, 0, 140, 1,
         {"Alfa@0=0", "Alfa@10=1", "Alfa@30=z", "Alfa@40=x", "Alfa@50=''",
          "Alfa@60=1", "Alfa@70=0", "Alfa@90=''", "Alfa@100=''", "Alfa@130=''"}},
        {"wavedrom_step2.js", 10, 0, 0, 0, 0, 0, 80, 1,
         {"pclk@0=1", "pclk@5=0", "nclk@5=1", "lane 5@0=(none)", "clk1@10=1", "clk1@20=0",
          "clk4@30=1", "clk4@70=x"}},
        {"wavedrom_step3.js", 3, 0, 3, 0, 0, 0, 70, 2,
         {"bus@10=x", "bus@20='head'", "bus@30='body'", "bus@50='tail'", "bus@60=x", "wire@20=1",
          "wire@50=0"}},
        {"wavedrom_step5.js", 8, 4, 4, 0, 0, 0, 80, 2,
         {"write@10=1", "write@30=0", "read@40=1", "read@70=0", "addr@10='A1'", "addr@40='A2'",
          "lane 6@0=(none)", "ack@20=1", "ack@30=x", "rdata@60='Q2'"}},
        {"wavedrom_step6.js", 5, 0, 13, 0, 0, -5, 160, 2,
         {"CMD@15='RAS'", "ADDR@15='ROW'", "DQS@80=0", "DQS@100=1", "DQ@100='D0'", "DQ@140=z"}},
        {"wavedrom_step7.js", 3, 0, 3, 0, 0, 0, 60, 1,
         {"Data@10='head'", "Data@30='tail'", "Data@50=x", "Request@10=1", "Request@50=0"}},
        {"victor9000_ram.json", 16, 0, 6, 0, 0, -5, 188, 0,
         {"CLK5@0=1", "CLK5@10=0", "PHASE2@5=1", "PHASE2@6=0", "A8-A19@30=''", "BD0-BD7@30=''",
          "BD0-BD7@40=z", "lane 11@0=(none)"}},
        {"ledcube_panel.json", 7, 0, 15, 2, 6, 0, 430, 3,
         {"clk@12=0", "clk@15=1", "blank@0=1", "blank@10=0", "blank@90=1", "blank@120=0", "latch@100=1",
          "latch@110=0", "data@10=01", "data@60=xx", "lane 6@0=(none)"}},
        {"tinytapeout_uart.json", 3, 0, 10, 0, 0, 0, 180, 0,
         {"RESET@0=1", "RESET@25=0", "UART_TX@40=0", "UART_TX@50='D0'", "UART_TX@130=1",
          "UART_TX@160='D0'"}},
        {"uvm_spi_read.json", 5, 0, 12, 0, 0, 0, 150, 2,
         {"ss@10=1", "ss@140=0", "mosi@10=1", "mosi@20=0", "miso@50=1", "bus@10='read'",
          "bus@120='d[0]'", "bus@130=x"}},
    };
    // clang-format on
    const fs::path folder = fs::path(TQ_SOURCE_DIR) / "tests/app/data/wavejson";
    // Named for this process: another build's tests may run beside these.
    const fs::path output =
        fs::temp_directory_path() / ("tq_wavejson_" + std::to_string(getpid()) + ".svg");
    for (const auto& c : cases) {
        const std::string path = (folder / c.file).string();
        std::ifstream in(path);
        std::stringstream text;
        text << in.rdbuf();
        Diagram diagram;
        std::string error;
        WaveJsonReader reader(c.file);
        ASSERT_TRUE(reader.readText(text.str(), c.file, diagram, error)) << error;
        EXPECT_EQ(diagram.signalCount(), c.lanes) << c.file;
        EXPECT_EQ(diagram.groups().size(), c.groups) << c.file;
        EXPECT_EQ(diagram.totalTexts(), c.texts) << c.file;
        EXPECT_TRUE(diagram.annotations().empty()) << c.file;
        EXPECT_EQ(diagram.arrows().size(), c.arrows) << c.file;
        EXPECT_EQ(diagram.gaps().size(), c.gaps) << c.file;
        EXPECT_EQ(diagram.spanStart(), c.spanStart) << c.file;
        EXPECT_EQ(diagram.spanEnd(), c.spanEnd) << c.file;
        std::string warnings;
        for (const std::string& w : reader.warnings())
            warnings += "\n  " + w;
        EXPECT_EQ(reader.warnings().size(), c.warnings) << c.file << warnings;
        checkProbes(diagram, c.probes, c.file);

        Diagram drawn;
        ASSERT_TRUE(readDiagramFile(path, drawn, error)) << error;
        EXPECT_TRUE(drawn.sameContents(diagram)) << c.file;
        ASSERT_TRUE(DiagramExporter::exportFile(drawn, RenderOptions(), output.string(),
                                                OutputFormat::Svg, error))
            << error;
        EXPECT_GT(fs::file_size(output), 1000u) << c.file;
    }
    fs::remove(output);
}

TEST(WaveJsonReader, DecorationsGroupsAndMarkupOfTheFeaturesFile) {
    const fs::path path = fs::path(TQ_SOURCE_DIR) / "tests/app/data/wavejson/features.json5";
    Diagram diagram;
    std::string error;
    ASSERT_TRUE(readDiagramFile(path.string(), diagram, error)) << error;
    EXPECT_EQ(diagram.title(), "Read cycle");
    EXPECT_EQ(diagram.grid(), (Grid{true, 40})); // every 2 slots of 20 ns (hscale 2)
    EXPECT_EQ(diagram.groups(), (std::vector<std::string>{"Bus", "Bus.Inner"}));
    EXPECT_EQ(diagram.signal(diagram.findSignal("count")).group(), "Bus.Inner");
    EXPECT_EQ(diagram.signal(diagram.findSignal("count")).busFormat().radix, RadixHexadecimal);
    EXPECT_EQ(diagram.signal(diagram.findSignal("req")).group(), "Bus");
    EXPECT_EQ(diagram.signal(diagram.findSignal("clk")).kind(), SignalKind::Clock);
    EXPECT_EQ(diagram.signal(diagram.findSignal("clk")).clock().period, 20);
    const std::string data = "<b>data<sub>in</sub></b>";
    ASSERT_EQ(diagram.arrows().size(), 3u);
    EXPECT_EQ(diagram.arrows()[0],
              (Arrow{{"clk", 20}, {data, 40}, "setup", ArrowShape::Curved, ArrowHeads::End}));
    EXPECT_EQ(diagram.arrows()[1], (Arrow{{"req", 40}, {"req", 100}, ""}));
    EXPECT_EQ(diagram.arrows()[2],
              (Arrow{{data, 40}, {data, 80}, "", ArrowShape::Straight, ArrowHeads::Both}));
    const Signal& spacer = diagram.signal(4);
    EXPECT_EQ(spacer.kind(), SignalKind::Spacer);
    EXPECT_FALSE(spacer.nameShown());
    EXPECT_TRUE(diagram.signal(0).nameShown());
    EXPECT_EQ(diagram.gaps()[0], (Gap{120, "clk"}));
    const Signal& lane = diagram.signal(diagram.findSignal(data));
    EXPECT_EQ(lane.changeText(lane.indexAt(40)), "head");
    EXPECT_EQ(lane.changeText(lane.indexAt(140)), "data");
}

TEST(WaveJsonReader, EdgeShapesAndNodesOnSpacerRowsOfThePublicExamples) {
    const fs::path folder = fs::path(TQ_SOURCE_DIR) / "tests/app/data/wavejson";
    Diagram arcs;
    std::string error;
    ASSERT_TRUE(readDiagramFile((folder / "wavedrom_signal_arcs1.json5").string(), arcs, error))
        << error;
    // The last row has only nodes: B and D, with the labelled two-headed arrow between them.
    const std::string nodes = arcs.signal(5).name();
    EXPECT_EQ(arcs.signal(5).kind(), SignalKind::Spacer);
    ASSERT_EQ(arcs.arrows().size(), 5u);
    EXPECT_EQ(arcs.arrows()[0],
              (Arrow{{"Input", 40}, {nodes, 40}, "", ArrowShape::Straight, ArrowHeads::None}));
    EXPECT_EQ(arcs.arrows()[2],
              (Arrow{{"Input", 40}, {"Output", 90}, "", ArrowShape::Curved, ArrowHeads::End}));
    EXPECT_EQ(arcs.arrows()[3],
              (Arrow{{nodes, 40}, {nodes, 90}, "T > 45s", ArrowShape::Straight, ArrowHeads::Both}));

    // Every curved shape of the other example, with and without a head.
    Diagram shapes;
    ASSERT_TRUE(readDiagramFile((folder / "wavedrom_signal_arcs.json5").string(), shapes, error))
        << error;
    const std::vector<std::pair<ArrowShape, ArrowHeads>> expected = {
        {ArrowShape::Curved, ArrowHeads::None},  // a~b
        {ArrowShape::Curved, ArrowHeads::None},  // c-~a
        {ArrowShape::Curved, ArrowHeads::End},   // c-~>d
        {ArrowShape::Curved, ArrowHeads::None},  // d~-e
        {ArrowShape::Curved, ArrowHeads::End},   // e~>f
        {ArrowShape::Straight, ArrowHeads::End}, // f->g
        {ArrowShape::Curved, ArrowHeads::End},   // g-~>h
        {ArrowShape::Curved, ArrowHeads::End},   // h~>i
        {ArrowShape::Curved, ArrowHeads::End}};  // h~->j
    ASSERT_EQ(shapes.arrows().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(shapes.arrows()[i].shape, expected[i].first) << i;
        EXPECT_EQ(shapes.arrows()[i].heads, expected[i].second) << i;
    }
    EXPECT_EQ(shapes.arrows()[8].label, "");
    EXPECT_EQ(shapes.arrows()[7].label, "some text");

    // Right-angled shapes are drawn as the nearest straight arrow, named in a warning.
    Diagram angled;
    WaveJsonReader reader("x");
    ASSERT_TRUE(reader.readText("{signal: [{name: 'a', wave: '01', node: '.a'}, {node: 'b'}],"
                                " edge: ['a-|>b', 'b|-a', 'a+b']}",
                                "x", angled, error))
        << error;
    ASSERT_EQ(angled.arrows().size(), 3u);
    EXPECT_EQ(angled.arrows()[0].heads, ArrowHeads::End);
    EXPECT_EQ(angled.arrows()[1].heads, ArrowHeads::None);
    EXPECT_EQ(angled.arrows()[2].shape, ArrowShape::Straight);
    EXPECT_EQ(reader.warnings(),
              (std::vector<std::string>{"edge shapes -| |- -|- and + are drawn as straight or "
                                        "curved arrows"}));
}

TEST(WaveJsonReader, LooseSyntaxIsReadAndBadFilesGiveFileAndLine) {
    // clang-format off
    const struct {
        std::string text;
        const char* message; // empty: reads, with the one lane named "A\u00e9\tb"
    } cases[] = {
        {"// comment\n{signal: [{name: 'A\\u00e9\\tb', wave: \"01\",},],} /* end */ ;", ""},
        {"{'signal': [{\"name\": `A\\xc3\\xa9\\tb`, 'wave': '0' + '1'}]}", "x:1: expected ',' or '}', found '+'"},
        {"{signal: [{name: 'A\\u{e9}\\tb', wave: '01', period: 0x2, phase: +.5e0}]}", ""},
        {"{signal: [\n  {name: 'a' wave: '01'}\n]}", "x:2: expected ',' or '}', found 'wave'"},
        {"{signal: [{name: 'a}]}", "x:1: expected ' to end the string, found the end of the file"},
        {"{signal: [{name: 'a\n'}]}", "x:1: expected ' to end the string, found the end of the line"},
        {"\n/* open comment\n{signal: []}", "x:2: expected '*/' to end the comment, found the end of the file"},
        {"{signal: [{wave: 01}]}", "x:1: expected the wave as a string"},
        {"{reg: [{bits: 8}]}", "x:1: expected a timing diagram, found a register or logic diagram"},
        {"{signal: 5}", "x:1: expected a 'signal' list of wave lanes"},
        {"[1, 2]", "x:1: expected an object with a 'signal' list"},
        {"{signal: []} trailing", "x:1: expected the end of the file after the value, found 'trailing'"},
        {"{signal: [\n\n{name: 'a', wave: '0', period: -1}]}", "x:3: expected a period above 0"},
        {"{signal: [3]}", "x:1: expected a wave lane {...} or a group [...]"},
        {"{signal: [,{name: 'A\\u00e9\\tb', wave: '01'},, ,]}", ""},
        {"{signal: [['g',,{name: 'A\\u00e9\\tb', wave: '01'}]]}", ""},
        {"{signal: [{name: 'a', wave: '0'},,],\n head: {text: 'h',,}}", "x:2: expected a key or '}', found ','"},
        {"{signal: [{name: 'a', wave: '0'}], edge: ['a->b'], x: wat}", "x:1: expected a value, found 'wat'"},
        {"{signal: ['\\x4g']}", "x:1: expected hexadecimal digits after '\\x', found '4g'"},
        {std::string(300, '['), "x:1: expected lists nested at most 200 deep, found '['"},
        {"", "x:1: expected a value, found the end of the file"},
    };
    // clang-format on
    for (const auto& c : cases) {
        Diagram diagram;
        diagram.setTitle("kept");
        std::string error;
        WaveJsonReader reader("x");
        const bool good = reader.readText(c.text, "x", diagram, error);
        if (*c.message) {
            EXPECT_FALSE(good) << c.text;
            EXPECT_EQ(error, c.message) << c.text;
            EXPECT_EQ(diagram.title(), "kept");
        } else {
            ASSERT_TRUE(good) << c.text << ": " << error;
            ASSERT_EQ(diagram.signalCount(), 1u) << c.text;
            EXPECT_EQ(diagram.signal(0).name(), "A\xC3\xA9\tb") << c.text;
            EXPECT_EQ(valueAt(diagram.signal(0), 0), "0") << c.text;
        }
    }
}

} // namespace
