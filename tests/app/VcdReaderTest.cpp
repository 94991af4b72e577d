// The value change dump reader: dumps written by Icarus Verilog from the testbenches in
// data/vcd give, at every time the testbench printed its variables, the values it printed;
// hand-written dumps cover what the simulator does not write, and bad dumps give FILE:LINE.
#include "io/VcdReader.h"
#include "CancelAfter.h"
#include "SignalProbes.h"
#include "io/DiagramFile.h"
#include "model/Diagram.h"

#include "core/iTaskDescription.h"

#include <gtest/gtest.h>

#include <cstdio>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// A temporary folder, removed with its files.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "tq_vcd_XXXXXX").string();
        if (mkdtemp(pattern.data()))
            m_path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!m_path.empty())
            fs::remove_all(m_path, ignored);
    }
    const fs::path& path() const { return m_path; }

private:
    fs::path m_path;
};

// One line the testbench printed: "@TIME NAME BINARY".
struct Sample {
    Time time;
    std::string name;
    std::string value;
};

class IcarusDump : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v iverilog >/dev/null 2>&1 && command -v vvp >/dev/null 2>&1"))
            GTEST_SKIP() << "iverilog and vvp are not installed: the simulator oracle is skipped";
        ASSERT_FALSE(m_folder.path().empty());
        const fs::path source = fs::path(TQ_SOURCE_DIR) / "tests/app/data/vcd/counter_tb.v";
        const std::string command = "cd '" + m_folder.path().string() +
                                    "' && iverilog -o tb.vvp '" + source.string() +
                                    "' && vvp -n tb.vvp > printed.txt";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
        std::ifstream printed(m_folder.path() / "printed.txt");
        std::string line;
        while (std::getline(printed, line)) {
            if (line.empty() || line[0] != '@')
                continue;
            std::istringstream fields(line.substr(1));
            Sample sample;
            fields >> sample.time >> sample.name >> sample.value;
            m_samples.push_back(sample);
        }
        ASSERT_GT(m_samples.size(), 300u);
    }

    std::string dump() const { return (m_folder.path() / "dump.vcd").string(); }

    TemporaryFolder m_folder;
    std::vector<Sample> m_samples;
};

TEST_F(IcarusDump, ValuesAtSampleTimesEqualWhatTheSimulatorPrinted) {
    Diagram diagram;
    std::string error;
    ASSERT_TRUE(readDiagramFile(dump(), diagram, error)) << error;
    EXPECT_EQ(diagram.timeUnit(), TimeUnit::ns);
    for (const Sample& sample : m_samples) {
        const std::size_t index = diagram.findSignal(sample.name);
        ASSERT_NE(index, Signal::npos) << sample.name;
        EXPECT_EQ(valueAt(diagram.signal(index), sample.time), sample.value)
            << sample.name << " at " << sample.time;
    }
    // Scopes are groups; the integer shows as a signed decimal; the event is a pulse.
    const Signal& carry = diagram.signal(diagram.findSignal("tb.dut.carry"));
    EXPECT_EQ(carry.group(), "tb.dut");
    const Signal& steps = diagram.signal(diagram.findSignal("tb.steps"));
    EXPECT_EQ(steps.width(), 32u);
    EXPECT_EQ(steps.busFormat().radix, RadixPlainDecimal);
    const Signal& tick = diagram.signal(diagram.findSignal("tb.tick"));
    EXPECT_EQ(valueAt(tick, 15), "1");
    EXPECT_EQ(valueAt(tick, 16), "0");
    EXPECT_EQ(diagram.groups(), (std::vector<std::string>{"tb", "tb.dut"}));
    // The dump ends 40 ns after the last print, with no change there: the span still ends there.
    EXPECT_EQ(diagram.spanEnd(), m_samples.back().time + 40);
}

TEST_F(IcarusDump, PatternsKeepOnlyTheSelectedSignalsWithTheSameValues) {
    Diagram all;
    std::string error;
    ASSERT_TRUE(readDiagramFile(dump(), all, error)) << error;
    // clang-format off
    const struct {
        std::vector<std::string> patterns;
        std::vector<std::string> names;
    } cases[] = {
        {{"tb.dut.*"}, {"tb.dut.clk", "tb.dut.oe", "tb.dut.rst", "tb.dut.bus", "tb.dut.carry",
                        "tb.dut.count"}},
        {{"**.count"}, {"tb.count", "tb.dut.count"}},
        {{"tb.w*", "tb.?lk"}, {"tb.clk", "tb.wide"}},
        {{"nothing"}, {}},
    };
    // clang-format on
    for (const auto& c : cases) {
        Diagram some;
        ASSERT_TRUE(readDiagramFile(dump(), some, error, nullptr, c.patterns)) << error;
        std::vector<std::string> names;
        for (std::size_t i = 0; i < some.signalCount(); ++i) {
            const Signal& signal = some.signal(i);
            names.push_back(signal.name());
            EXPECT_TRUE(signal == all.signal(all.findSignal(signal.name()))) << signal.name();
        }
        std::sort(names.begin(), names.end());
        std::vector<std::string> expected = c.names;
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(names, expected) << c.patterns.front();
    }
}

TEST_F(IcarusDump, ProgressReachesTheFileSizeAndACancelledReadFails) {
    iTaskDescription task;
    Diagram diagram;
    std::string error;
    VcdReader reader(dump().c_str());
    reader.setTask(task);
    ASSERT_TRUE(reader.read(diagram, error)) << error;
    EXPECT_EQ(task.total(), fs::file_size(dump()));
    EXPECT_EQ(task.progress(), task.total());

    iTaskDescription cancelled;
    cancelled.cancel();
    VcdReader stopped(dump().c_str());
    stopped.setTask(cancelled);
    Diagram untouched;
    EXPECT_FALSE(stopped.read(untouched, error));
    EXPECT_NE(error.find("cancelled"), std::string::npos) << error;
    EXPECT_EQ(untouched.signalCount(), 0u);
}

const char* const v_header = "$timescale 10 ps $end\n"
                             "$scope module top $end\n"
                             "$var wire 1 ! a $end\n"
                             "$var wire 4 \" v [3:0] $end\n"
                             "$var real 64 # r $end\n"
                             "$var parameter 8 $ p $end\n"
                             "$var wire 1 % v [2] $end\n"
                             "$scope begin blk $end\n"
                             "$var wire 1 ! a_alias $end\n"
                             "$upscope $end\n"
                             "$upscope $end\n";

TEST(VcdReader, HandWrittenDumpsGiveTheseValues) {
    // Each case reads the header above followed by body, then checks "name@time=value" probes
    // (times in the diagram's unit, ps, scaled by the 10 of the time scale).
    // clang-format off
    const struct {
        const char* body;
        std::vector<std::string> probes;
    } cases[] = {
        {"#0 $dumpvars 0! b1z \" r0 # b10100101 $ 1% $end #3 1! b1 \" #5 $dumpoff x! bx \" $end "
         "#7 $dumpon 0! b0110 \" $end #9",
         {"top.a@0=0", "top.a@30=1", "top.a@50=x", "top.a@70=0", "top.v@0=001z", "top.v@30=0001",
          "top.v@50=xxxx", "top.v@75=0110", "top.p@0=10100101", "top.v[2]@0=1",
          "top.blk.a_alias@30=1"}},
        // Values of other languages' nine-valued logic; upper-case vector letters; comments.
        {"#0 U! B0101 \" $comment a note $end #1 H! #2 L! #3 -! #4 Z! b0u1h \"",
         {"top.a@0=x", "top.a@10=h", "top.a@20=l", "top.a@30=x", "top.a@40=z", "top.v@40=0x11",
          "top.v@0=0101"}},
        // Short vectors extend with 0, or with x or z when they start with one.
        {"#0 b1 \" #1 bz \" #2 bx0 \"", {"top.v@0=0001", "top.v@10=zzzz", "top.v@20=xxx0"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        Diagram diagram;
        std::string error;
        VcdReader reader("case.vcd");
        ASSERT_TRUE(reader.readText(std::string(v_header) + "$enddefinitions $end\n" + c.body,
                                    "case.vcd", diagram, error))
            << error << " in " << c.body;
        EXPECT_EQ(diagram.timeUnit(), TimeUnit::ps);
        checkProbes(diagram, c.probes, c.body);
    }
    // A name that starts with a bracket (an escaped name some writers strip) keeps it whole.
    Diagram odd;
    std::string error;
    VcdReader reader("odd.vcd");
    ASSERT_TRUE(reader.readText("$var wire 1 ~ [a:b] $end $enddefinitions $end #0 1~", "odd.vcd",
                                odd, error))
        << error;
    EXPECT_EQ(odd.findSignal("[a:b]"), 0u);
}

TEST(VcdReader, RealAndStringValuesAreTextsOfTheirBusAndOddInputIsWarnedAboutOnce) {
    Diagram diagram;
    std::string error;
    VcdReader reader("real.vcd");
    const std::string text = std::string(v_header) +
                             "$scope module top $end $var wire 1 & a $end\n"
                             "$var string 1 ' mode $end $upscope $end\n"
                             "$enddefinitions $end\n"
                             "#0 r1.5 # r-2e-3 # 1? 1? sidle ' #4 r3.25 # b1 # r3.25 # "
                             "sbusy\\x20now ' #6 b1 ! ridle ! r1 '";
    // top.a declared twice, an undeclared code twice, bit values on the real, a real and a
    // string value on a logic variable and a string; of two values at one time the later
    // stays.
    ASSERT_TRUE(reader.readText(text, "real.vcd", diagram, error)) << error;
    // clang-format off
    const struct { const char* name; unsigned width; std::vector<std::string> probes; } cases[] = {
        {"top.r", 64, {"-1=(none)", "0='-2e-3'", "39='-2e-3'", "40='3.25'", "99='3.25'"}},
        {"top.mode", 1, {"0='idle'", "40='busy\\x20now'", "60='1'"}},
    };
    // clang-format on
    for (const auto& c : cases) {
        const std::size_t index = diagram.findSignal(c.name);
        ASSERT_NE(index, Signal::npos) << c.name;
        const Signal& signal = diagram.signal(index);
        EXPECT_EQ(signal.kind(), SignalKind::Bus) << c.name;
        EXPECT_EQ(signal.width(), c.width) << c.name;
        for (const std::string& probe : c.probes) {
            const std::size_t equals = probe.find('=');
            EXPECT_EQ(valueAt(signal, std::stoll(probe.substr(0, equals))),
                      probe.substr(equals + 1))
                << c.name << "@" << probe;
        }
    }
    EXPECT_EQ(valueAt(diagram.signal(diagram.findSignal("top.a")), 60), "1");
    EXPECT_EQ(diagram.signal(diagram.findSignal("top.r")).changeCount(), 2u);
    EXPECT_TRUE(diagram.annotations().empty());
    EXPECT_EQ(reader.warnings(),
              (std::vector<std::string>{"variables declared twice under one name were kept once",
                                        "value changes of undeclared identifier codes were skipped",
                                        "bit values given to real or string variables were "
                                        "skipped",
                                        "real or string values given to logic variables were "
                                        "skipped"}));
}

TEST(VcdReader, BadDumpsGiveFileAndLineAndLeaveTheDiagramAlone) {
    // clang-format off
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"$timescale 3 parsecs $end", "bad.vcd:1: expected a time scale such as 1ns or 100 ps, found '3parsecs'"},
        {"$scope module m $end\n$var wire 0 ! a $end", "bad.vcd:2: expected a width from 1 to 65536, found '0'"},
        {"$var wire 8 ! $end", "bad.vcd:1: expected a variable's type, width, identifier code and name"},
        {"$var wire 1 ! a $end\n$upscope $end", "bad.vcd:2: $upscope without an open $scope"},
        {"$var wire 1 ! a\n", "bad.vcd:2: expected $end before the end of the file"},
        {"$var wire 1 ! a $end\n", "bad.vcd:2: expected $enddefinitions before the end of the file"},
        {"hello $end", "bad.vcd:1: expected a declaration such as $var or $scope, found 'hello'"},
        {"$var wire 1 ! a $end $enddefinitions $end\n#1\n#x", "bad.vcd:3: expected a time after '#', found '#x'"},
        {"$var wire 1 ! a $end $enddefinitions $end\n#99999999999999999999", "bad.vcd:2: expected a time after '#', found '#99999999999999999999'"},
        {"$var wire 4 ! a $end $enddefinitions $end\n\nb10q1 !", "bad.vcd:3: expected binary digits after 'b', found 'b10q1'"},
        {"$var wire 4 ! a $end $enddefinitions $end\nb101", "bad.vcd:2: expected an identifier code after '101'"},
        {"$var wire 1 ! a $end $enddefinitions $end\n#0 q!", "bad.vcd:2: expected a time (#...), a value change or a keyword, found 'q!'"},
    };
    // clang-format on
    for (const auto& c : cases) {
        Diagram diagram;
        diagram.setTitle("kept");
        std::string error;
        VcdReader reader("bad.vcd");
        EXPECT_FALSE(reader.readText(c.text, "bad.vcd", diagram, error)) << c.text;
        EXPECT_EQ(error, c.message);
        EXPECT_EQ(diagram.title(), "kept");
    }
}

TEST(VcdReader, CodesOfAnyLengthAndTimesGoingBackFindTheirSignals) {
    // Codes of 1 and 2 characters are found by index, longer ones by name; a code of more than
    // 64 bytes spans words of the tokenizer's bits. A time earlier than the last puts its
    // changes in order; a change at a time already held replaces it.
    // clang-format off
    const struct { std::size_t length; char fill; } codes[] = {
        {1, '!'}, {2, '~'}, {3, '#'}, {63, 'a'}, {64, 'b'}, {65, 'c'}, {5000, 'd'},
    };
    // clang-format on
    for (const auto& c : codes) {
        const std::string code(c.length, c.fill);
        std::string text = "$var wire 1 ";
        text.append(code)
            .append(" bit $end $var wire 8 ")
            .append(code)
            .append("! bus $end $enddefinitions $end\n#10 1")
            .append(code)
            .append(" b1010 ")
            .append(code)
            .append("!\n#5 0")
            .append(code)
            .append(" bx1 ")
            .append(code)
            .append("!\n#20 z")
            .append(code)
            .append("\n#10 b11111111 ")
            .append(code)
            .append("!\n");
        Diagram diagram;
        std::string error;
        VcdReader reader("codes.vcd");
        ASSERT_TRUE(reader.readText(text, "codes.vcd", diagram, error)) << error;
        EXPECT_TRUE(reader.warnings().empty()) << c.length;
        checkProbes(diagram,
                    {"bit@4=(none)", "bit@5=0", "bit@10=1", "bit@20=z", "bus@5=xxxxxxx1",
                     "bus@10=11111111", "bus@99=11111111"},
                    "a code of " + std::to_string(c.length));
        EXPECT_EQ(diagram.signal(diagram.findSignal("bus")).changeCount(), 2u);
        EXPECT_EQ(diagram.spanEnd(), 20);
    }
}

TEST(VcdReader, ACancelMidFileStopsAtTheNextChunkAndLeavesTheDiagramAlone) {
    TemporaryFolder folder;
    const fs::path path = folder.path() / "long.vcd";
    {
        std::ofstream out(path);
        out << "$var wire 32 ! w $end $enddefinitions $end\n";
        for (int t = 0; t < 200000; ++t)
            out << '#' << t << "\nb" << std::string(32, t % 2 ? '1' : '0') << " !\n";
    }
    const auto size = static_cast<unsigned long>(fs::file_size(path));
    ASSERT_GT(size, 3 * VcdReader::v_chunkBytes);
    for (const unsigned long at : {1ul, VcdReader::v_chunkBytes + 1, size}) {
        CancelAfter task(at);
        VcdReader reader(path.c_str());
        reader.setTask(task);
        Diagram diagram;
        diagram.setTitle("kept");
        std::string error;
        EXPECT_FALSE(reader.read(diagram, error)) << at;
        EXPECT_EQ(error, path.string() + ": reading was cancelled");
        EXPECT_EQ(diagram.title(), "kept");
        EXPECT_EQ(diagram.signalCount(), 0u);
        EXPECT_LE(task.progress(), at + VcdReader::v_chunkBytes) << at;
    }
    // A fault after the first chunks still names its line.
    {
        std::ofstream out(path, std::ios::app);
        out << "#200000\nb2 !\n";
    }
    VcdReader reader(path.c_str());
    Diagram diagram;
    std::string error;
    EXPECT_FALSE(reader.read(diagram, error));
    EXPECT_EQ(error, path.string() + ":400003: expected binary digits after 'b', found 'b2'");
}

TEST(VcdReader, AValueAndItsCodeAreReadWholeWhereverTheChunkEnds) {
    // Records "#TTTTTTT\nb<64 digits> !!\n", with the first chunk made to end at each place in
    // one of them: in the time, in the digits, after them, after the space, in the code.
    TemporaryFolder folder;
    const fs::path path = folder.path() / "cut.vcd";
    const std::string head = "$timescale 1ns $end $var wire 64 !! w $end $enddefinitions $end\n";
    const std::size_t record = 9 + 1 + 64 + 4;
    const auto digitsAt = [](std::uint64_t t) {
        std::string digits;
        const std::uint64_t bits = t * 0x9E3779B97F4A7C15ull;
        for (int b = 63; b >= 0; --b)
            digits.push_back((bits >> b) & 1 ? '1' : '0');
        return digits;
    };
    for (const std::size_t cut : {3u, 10u, 40u, 74u, 75u, 76u, 77u}) {
        const std::size_t comment = std::string("$comment  $end\n").size();
        const std::size_t before =
            (VcdReader::v_chunkBytes - head.size() - comment - record) / record;
        const std::size_t filler =
            VcdReader::v_chunkBytes - head.size() - comment - before * record - cut;
        // A second full chunk overwrites the bytes of the first.
        const std::size_t records = 2 * before + 20;
        {
            std::ofstream out(path);
            out << head << "$comment " << std::string(filler, '.') << " $end\n";
            char time[32];
            for (std::size_t t = 0; t < records; ++t) {
                std::snprintf(time, sizeof time, "#%07zu\n", t);
                out << time << 'b' << digitsAt(t) << " !!\n";
            }
        }
        Diagram diagram;
        std::string error;
        ASSERT_TRUE(readDiagramFile(path.string(), diagram, error)) << error << " cut " << cut;
        const Signal& w = diagram.signal(0);
        ASSERT_EQ(w.changeCount(), records) << cut;
        for (std::size_t t = 0; t < records; ++t)
            ASSERT_EQ(w.changeBinary(t), digitsAt(t)) << "change " << t << " cut " << cut;
    }
}

TEST(VcdReader, TokensCutByTheChunkBoundaryAreReadWhole) {
    // A vector wider than half a chunk and a long run of changes cross the reader's chunks.
    TemporaryFolder folder;
    const fs::path path = folder.path() / "long.vcd";
    const unsigned width = 60000;
    {
        std::ofstream out(path);
        out << "$timescale 1ns $end $var wire " << width << " !! w $end $var wire 1 \" b $end "
            << "$enddefinitions $end\n";
        for (int t = 0; t < 100; ++t) {
            out << "#" << t << "\nb" << (t % 2 ? '1' : '0') << std::string(width - 1, 'x')
                << " !!\n"
                << (t % 3 ? '1' : '0') << "\"\n";
        }
    }
    Diagram diagram;
    std::string error;
    ASSERT_TRUE(readDiagramFile(path.string(), diagram, error)) << error;
    const Signal& wide = diagram.signal(diagram.findSignal("w"));
    const Signal& bit = diagram.signal(diagram.findSignal("b"));
    ASSERT_EQ(wide.changeCount(), 100u);
    ASSERT_EQ(bit.changeCount(), 100u);
    for (int t = 0; t < 100; ++t) {
        EXPECT_EQ(wide.changeBinary(static_cast<std::size_t>(t)).front(), t % 2 ? '1' : '0');
        EXPECT_EQ(valueAt(bit, t), t % 3 ? "1" : "0") << t;
    }
}

} // namespace
