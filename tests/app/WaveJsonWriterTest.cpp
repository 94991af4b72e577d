// The WaveJSON writer: diagrams read from WaveJSON and from a dump, written and read back, show
// the same values at every slot (one written slot reads back as 10 ns), with their groups,
// labels and arrows; what the format cannot hold is named.
#include "io/WaveJsonWriter.h"
#include "SignalProbes.h"
#include "io/DiagramFile.h"
#include "io/VcdReader.h"
#include "io/WaveJsonReader.h"
#include "model/Diagram.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// Writes diagram and reads it back; the slot the writer chose is the span's divisor found
// from the written text's first lane.
void roundTrip(const Diagram& diagram, Diagram& again, std::vector<std::string>& warnings,
               std::string& text) {
    std::ostringstream out;
    WaveJsonWriter::write(diagram, out, warnings);
    text = out.str();
    std::string error;
    WaveJsonReader reader("again.json");
    ASSERT_TRUE(reader.readText(text, "again.json", again, error)) << error << "\n" << text;
}

// Every slot start of the original, mapped onto the copy, shows the same value.
void expectSameSlots(const Diagram& original, const Diagram& again, Time slot,
                     const std::string& where) {
    ASSERT_EQ(again.signalCount(), original.signalCount()) << where;
    const Time from = original.spanStart();
    for (std::size_t i = 0; i < original.signalCount(); ++i) {
        const Signal& a = original.signal(i);
        const Signal& b = again.signal(i);
        EXPECT_EQ(b.group(), a.group()) << where;
        EXPECT_EQ(b.kind(), a.kind()) << a.name() << " in " << where;
        EXPECT_EQ(b.nameShown(), a.nameShown()) << a.name() << " in " << where;
        // A bus of texts only has no width to keep.
        if (a.kind() == SignalKind::Bus && a.changeCount() > a.textCount() && b.changeCount() > 0) {
            EXPECT_EQ(b.width(), a.width()) << a.name() << " in " << where;
        }
        int mismatches = 0;
        for (Time t = from; t < original.spanEnd() && mismatches < 3; t += slot) {
            const Time mapped = (t - from) / slot * WaveJsonReader::v_slotTime;
            const std::string expected = valueAt(a, t, "x");
            std::string found = valueAt(b, mapped, "x");
            // A bus with no value yet reads back as all x.
            if (expected == "x" && found.find_first_not_of('x') == std::string::npos)
                found.assign(1, 'x');
            if (found != expected) {
                ++mismatches;
                ADD_FAILURE() << a.name() << " at " << t << " (" << mapped << "): " << found
                              << " instead of " << expected << " in " << where;
            }
        }
    }
}

TEST(WaveJsonWriter, WaveJsonDiagramsComeBackSlotForSlot) {
    // clang-format off
    const struct {
        const char* file;
        Time slot; // the slot the writer should find: the finest step of the diagram's changes
    } cases[] = {
        {"asciiwave_test1.json", 5}, {"axi4_beats.js", 10}, {"ws2813_general.js", 10},
        {"spi_coo.js", 5}, {"spi_data.js", 5}, {"features.json5", 10}, {"asciiwave_step6.json", 1},
        {"wavedrom_signal_arcs.json5", 10}, {"wavedrom_step2.js", 5},
        {"wavedrom_step5.js", 5}, {"victor9000_ram.json", 1},
    };
    // clang-format on
    for (const auto& c : cases) {
        const fs::path path = fs::path(TQ_SOURCE_DIR) / "tests/app/data/wavejson" / c.file;
        Diagram diagram;
        std::string error;
        ASSERT_TRUE(readDiagramFile(path.string(), diagram, error)) << error;
        Diagram again;
        std::vector<std::string> warnings;
        std::string text;
        roundTrip(diagram, again, warnings, text);
        expectSameSlots(diagram, again, c.slot, c.file);
        EXPECT_EQ(again.title(), diagram.title()) << c.file;
        EXPECT_EQ(again.groups(), diagram.groups()) << c.file;
        EXPECT_EQ(again.totalTexts(), diagram.totalTexts()) << c.file << text;
        EXPECT_TRUE(again.annotations().empty()) << c.file << text;
        ASSERT_EQ(again.arrows().size(), diagram.arrows().size()) << c.file << text;
        for (std::size_t i = 0; i < diagram.arrows().size(); ++i) {
            EXPECT_EQ(again.arrows()[i].shape, diagram.arrows()[i].shape) << c.file << i;
            EXPECT_EQ(again.arrows()[i].heads, diagram.arrows()[i].heads) << c.file << i;
            EXPECT_EQ(again.arrows()[i].label, diagram.arrows()[i].label) << c.file << i;
        }
        EXPECT_EQ(again.gaps().size(), diagram.gaps().size()) << c.file << text;
        for (const std::string& w : warnings)
            ADD_FAILURE() << c.file << ": " << w;
    }
}

TEST(WaveJsonWriter, FeaturesFileKeepsItsDecorationsInPlace) {
    const fs::path path = fs::path(TQ_SOURCE_DIR) / "tests/app/data/wavejson/features.json5";
    Diagram diagram;
    std::string error;
    ASSERT_TRUE(readDiagramFile(path.string(), diagram, error)) << error;
    Diagram again;
    std::vector<std::string> warnings;
    std::string text;
    roundTrip(diagram, again, warnings, text);
    // The copy starts at 0 where the original started at -10, with 10 ns slots as before.
    ASSERT_EQ(again.arrows().size(), 3u) << text;
    EXPECT_EQ(again.arrows()[0].from.time, diagram.arrows()[0].from.time + 10);
    EXPECT_EQ(again.arrows()[0].to.signal, diagram.arrows()[0].to.signal);
    EXPECT_EQ(again.arrows()[0].label, "setup");
    EXPECT_EQ(again.gaps()[3], (Gap{240, "ack"}));
    const Signal& data = again.signal(again.findSignal("<b>data<sub>in</sub></b>"));
    EXPECT_EQ(valueAt(data, 70), "'body'");
    EXPECT_EQ(again.signal(again.findSignal("count")).busFormat().radix, RadixHexadecimal);
    EXPECT_EQ(again.grid(), (Grid{true, 40}));
    EXPECT_NE(text.find("\"data\": [\"0x1F\", \"0x20\", \"0x21\", \"0x22\"]"), std::string::npos)
        << text;
}

TEST(WaveJsonWriter, SpacersAndEveryArrowShapeComeBack) {
    Diagram diagram;
    Signal& a = diagram.addSignal("a", SignalKind::Bit);
    (void)a.appendChange(0, BitState::Low);
    (void)a.appendChange(20, BitState::High);
    diagram.addSignal("lane 2", SignalKind::Spacer).setNameShown(false);
    diagram.addSignal("gap", SignalKind::Spacer);
    diagram.addSignal("lane 4", SignalKind::Spacer).setNameShown(false);
    diagram.addArrow({{"a", 10}, {"gap", 30}, "t", ArrowShape::Curved, ArrowHeads::Start});
    diagram.addArrow({{"a", 0}, {"a", 20}, "", ArrowShape::Straight, ArrowHeads::None});
    diagram.addArrow({{"gap", 0}, {"a", 30}, "", ArrowShape::Curved, ArrowHeads::Both});
    Diagram again;
    std::vector<std::string> warnings;
    std::string text;
    roundTrip(diagram, again, warnings, text);
    EXPECT_TRUE(warnings.empty()) << text;
    // A head at the start only is written as the arrow the other way round.
    ASSERT_EQ(again.arrows().size(), 3u) << text;
    EXPECT_EQ(again.arrows()[0],
              (Arrow{{"gap", 30}, {"a", 10}, "t", ArrowShape::Curved, ArrowHeads::End}));
    EXPECT_EQ(again.arrows()[1], diagram.arrows()[1]);
    EXPECT_EQ(again.arrows()[2], diagram.arrows()[2]);
    ASSERT_EQ(again.signalCount(), 4u);
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(again.signal(i).kind(), SignalKind::Spacer) << text;
        EXPECT_EQ(again.signal(i).name(), diagram.signal(i).name()) << text;
        EXPECT_EQ(again.signal(i).nameShown(), diagram.signal(i).nameShown()) << text;
    }
    EXPECT_NE(text.find("\n  {},\n  {\"name\": \"gap\", \"node\": \"e..b\"},\n  {}\n"),
              std::string::npos)
        << text;
}

TEST(WaveJsonWriter, ADumpBecomesNestedGroupsAndNamesWhatIsLeftOut) {
    const std::string dump = "$timescale 1ns $end\n"
                             "$scope module tb $end $var wire 1 ! clk $end $var wire 8 # d $end\n"
                             "$var real 64 % r $end\n"
                             "$scope module dut $end $var wire 1 $ en $end $upscope $end\n"
                             "$var wire 1 & last $end $upscope $end $enddefinitions $end\n"
                             "#0 0! b0 # 0$ 1& r1.5 % #5 1! #10 0! b10100101 # 1$ #15 1! #20 0! "
                             "bx # #25";
    Diagram diagram;
    std::string error;
    VcdReader reader("dump.vcd");
    ASSERT_TRUE(reader.readText(dump, "dump.vcd", diagram, error)) << error;
    diagram.addMarker({10, "m"});
    Diagram again;
    std::vector<std::string> warnings;
    std::string text;
    roundTrip(diagram, again, warnings, text);
    expectSameSlots(diagram, again, 5, "dump");
    EXPECT_NE(text.find("[\"tb\",\n    {\"name\": \"clk\""), std::string::npos) << text;
    EXPECT_NE(text.find("[\"dut\",\n      {\"name\": \"en\""), std::string::npos) << text;
    EXPECT_NE(text.find("\"data\": [\"0x00\", \"0xA5\"]"), std::string::npos) << text;
    EXPECT_NE(text.find("\"wave\": \"=....\", \"data\": [\"1.5\"]}"), std::string::npos) << text;
    diagram.addAnnotation({5, "", "a note"});
    warnings.clear();
    roundTrip(diagram, again, warnings, text);
    EXPECT_EQ(warnings, (std::vector<std::string>{"notes are left out", "markers are left out"}));
}

TEST(WaveJsonWriter, EveryVerbTakesTheNewFormatsThroughTheProgram) {
    // Named for this process: another build's tests may run beside these.
    const fs::path folder =
        fs::temp_directory_path() / ("tq_wavejson_program_" + std::to_string(getpid()));
    fs::create_directories(folder);
    {
        std::ofstream(folder / "dump.vcd") << "$timescale 1ns $end $scope module top $end\n"
                                              "$var wire 1 ! a $end $var wire 4 \" b $end\n"
                                              "$upscope $end $enddefinitions $end\n"
                                              "#0 0! b0 \" #10 1! b1010 \" #20\n";
        std::ofstream(folder / "bad.json") << "{signal: [\n  {name: 'a' wave: '01'}\n]}\n";
    }
    const std::string features =
        (fs::path(TQ_SOURCE_DIR) / "tests/app/data/wavejson/features.json5").string();
    // clang-format off
    const struct {
        std::string arguments;
        int status;
        const char* output; // a file the command must write, or ""
        const char* message; // what standard error must hold, or ""
    } cases[] = {
        {"convert '" + features + "' -o copy.json", 0, "copy.json", "warning: the foot text is left out"},
        {"info copy.json", 0, "", ""},
        {"render copy.json -o copy.svg", 0, "copy.svg", ""},
        {"convert dump.vcd -o dump.json", 0, "dump.json", ""},
        {"render dump.vcd --signals top.b -o dump.png", 0, "dump.png", ""},
        {"info bad.json", 1, "", "bad.json:2: expected ',' or '}', found 'wave'"},
    };
    // clang-format on
    for (const auto& c : cases) {
        const std::string command = "cd '" + folder.string() + "' && QT_QPA_PLATFORM=offscreen '" +
                                    TQ_TQDIAGRAM + "' " + c.arguments + " >out.txt 2>err.txt";
        const int status = std::system(command.c_str());
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == c.status) << c.arguments;
        if (*c.output) {
            EXPECT_GT(fs::file_size(folder / c.output), 100u) << c.arguments;
        }
        std::ifstream err(folder / "err.txt");
        const std::string errors((std::istreambuf_iterator<char>(err)),
                                 std::istreambuf_iterator<char>());
        EXPECT_NE(errors.find(c.message), std::string::npos) << c.arguments << ": " << errors;
    }
    fs::remove_all(folder);
}

} // namespace
