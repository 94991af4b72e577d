// The tqdiagram program as a user runs it: verbs, options, exit statuses and messages, no
// partial output on failure, and the Tcl commands through `tqdiagram script` on a table of
// small scripts, errors included.
#include "io/TqdReader.h"
#include "model/Diagram.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

std::string slurp(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

class Program : public ::testing::Test {
protected:
    void SetUp() override {
        // A folder of the test's own: ctest runs the tests of this file side by side.
        m_folder = fs::temp_directory_path() /
                   (std::string("tq_app_") +
                    ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
                    std::to_string(getpid()));
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
        write("good.tqd", "TimingDiagram( title(\"Good\") timeunit(ns) span(0,100) )\n"
                          "Signal( name(\"top.clk\") clock(period(10)) )\n"
                          "Signal( name(\"top.cpu.req\") bit )\n"
                          "Signal( name(\"top.cpu.data\") bus(width(8)) )\n"
                          "Changes( \"top.cpu.req\" 0 0 20 1 60 0 )\n"
                          "Changes( \"top.cpu.data\" 0 \"hxx\" 30 \"h3c\" 50 \"tdone\" )\n");
        write("bad.tqd", "TimingDiagram( timeunit(ns) )\nSignal( name(\"a\") bitt )\n");
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::string path(const std::string& name) const { return (m_folder / name).string(); }
    void write(const std::string& name, const std::string& text) const {
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }

    // Runs the program in the test's folder with arguments (each quoted for the shell).
    Outcome run(const std::vector<std::string>& arguments) const {
        std::string command = "cd '" + m_folder.string() + "' && '" TQ_TQDIAGRAM "'";
        for (const std::string& argument : arguments) {
            command.append(" '");
            for (char c : argument)
                command.append(c == '\'' ? "'\\''" : std::string(1, c));
            command.append("'");
        }
        command.append(" >out.txt 2>err.txt");
        Outcome result;
        const int raw = std::system(command.c_str());
        result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        result.out = slurp(m_folder / "out.txt");
        result.err = slurp(m_folder / "err.txt");
        return result;
    }

    // Files in the folder other than the fixtures and the captured output.
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(m_folder)) {
            const std::string name = entry.path().filename().string();
            if (name != "good.tqd" && name != "bad.tqd" && name != "out.txt" && name != "err.txt" &&
                name.find(".tcl") == std::string::npos)
                names.push_back(name);
        }
        return names;
    }

    fs::path m_folder;
};

TEST_F(Program, VerbsAndOptionsGiveTheirStatusAndMessage) {
    // clang-format off
    const struct { std::vector<std::string> args; int status; const char* out; const char* err; } cases[] = {
        {{"--help"}, 0, "usage: tqdiagram VERB", ""},
        {{}, 2, "", "usage: tqdiagram VERB"},
        {{"frobnicate"}, 2, "", "unknown verb 'frobnicate'"},
        {{"render", "--help"}, 0, "usage: tqdiagram render INPUT -o OUTPUT", ""},
        {{"convert", "--help"}, 0, "usage: tqdiagram convert", ""},
        {{"info", "--help"}, 0, "usage: tqdiagram info", ""},
        {{"script", "--help"}, 0, "signal rename NAME NEWNAME", ""},
        {{"render", "good.tqd"}, 2, "", "an output file is needed"},
        {{"render", "-o", "x.png"}, 2, "", "an INPUT file is needed"},
        {{"render", "good.tqd", "-o", "x.png", "--zoom", "2"}, 2, "", "unknown option --zoom"},
        {{"render", "good.tqd", "-o", "x.gif"}, 2, "", "cannot tell the format from 'x.gif'"},
        {{"render", "good.tqd", "-o", "x.png", "--format", "tiff"}, 2, "", "unknown format 'tiff'"},
        {{"render", "good.tqd", "-o", "x.png", "--width", "wide"}, 2, "", "--width takes pixels"},
        {{"render", "good.tqd", "-o", "x.png", "--from", "12xs"}, 2, "", "expected a time such as 250ns"},
        {{"render", "good.tqd", "-o", "x.png", "--to"}, 2, "", "option --to needs a value"},
        {{"render", "good.tqd", "-o", "x.eps", "--print-setup", "file,,"}, 2, "", "--print-setup:"},
        {{"render", "missing.tqd", "-o", "x.png"}, 1, "", "missing.tqd: cannot open the file"},
        {{"render", "bad.tqd", "-o", "x.png"}, 1, "", "bad.tqd:2: expected one of name, clock, bit, bus, spacer, group, nameless in Signal, found 'bitt'"},
        {{"render", "good.tqd", "-o", "x.png", "--signals", "nothing.*"}, 1, "", "no signal matches"},
        {{"render", "good.tqd", "-o", "x.png", "--from", "50ns", "--to", "20ns"}, 1, "", "the time window is empty"},
        {{"render", "good.tqd", "-o", "no/such/folder/x.png"}, 1, "", "cannot write no/such/folder/x.png"},
        {{"convert", "bad.tqd", "-o", "y.tqd"}, 1, "", "bad.tqd:2:"},
        {{"info"}, 2, "", "an INPUT file is needed"},
        {{"info", "good.tqd", "bad.tqd"}, 2, "", "tqdiagram info: one input only, not also bad.tqd"},
        {{"info", "--long", "good.tqd"}, 2, "", "tqdiagram info: unknown option --long"},
        {{"convert", "good.tqd", "-o", "y.tqd", "bad.tqd"}, 2, "", "tqdiagram convert: one input only, not also bad.tqd"},
        {{"render", "-x", "good.tqd"}, 2, "", "tqdiagram render: unknown option -x"},
        {{"info", "good.tqd"}, 0, "top.cpu.data  bus         8         3", ""},
        {{"info", TQ_SOURCE_DIR "/tests/app/data/wavejson/wavedrom_step5.js"}, 0, "\nlane 6  spacer      -         -  \nack ", ""},
        {{"info", "good.tqd"}, 0, "changes:   6\ntexts:     1\n", ""},
        {{"script"}, 2, "", "a FILE.tcl is needed"},
        {{"script", "none.tcl"}, 1, "", "couldn't read file \"none.tcl\""},
    };
    // clang-format on
    for (const auto& c : cases) {
        const Outcome r = run(c.args);
        std::string shown;
        for (const auto& a : c.args)
            shown.append(a).append(" ");
        EXPECT_EQ(r.status, c.status) << shown << "\n" << r.err;
        EXPECT_NE(r.out.find(c.out), std::string::npos) << shown << "\nout: " << r.out;
        EXPECT_NE(r.err.find(c.err), std::string::npos) << shown << "\nerr: " << r.err;
        EXPECT_EQ(leftovers(), std::vector<std::string>()) << shown << ": nothing is written";
    }
}

TEST_F(Program, RenderWritesEachFormatAndConvertKeepsTheDiagram) {
    // clang-format off
    const struct { std::vector<std::string> args; const char* file; const char* starts; } cases[] = {
        {{"render", "good.tqd", "-o", "a.png"}, "a.png", "\x89PNG"},
        {{"render", "good.tqd", "-o", "a.pdf", "--signals", "top.cpu.*", "--from", "10ns"}, "a.pdf", "%PDF"},
        {{"render", "good.tqd", "-o", "a.out", "--format", "svg", "--width", "400"}, "a.out", "<?xml"},
        {{"render", "good.tqd", "-o", "a.eps", "--sharp-edges"}, "a.eps", "%!PS-Adobe-3.0 EPSF-3.0"},
        {{"render", "good.tqd", "-o", "a.mif", "--print-setup",
          "file,,,portrait,noclipboard,a4,default,6,2,in,gray,scaleable,mifframe,nopreview"}, "a.mif", "<MIFFile"},
        {{"convert", "good.tqd", "-o", "c.tqd"}, "c.tqd", "TimingDiagram("},
    };
    // clang-format on
    for (const auto& c : cases) {
        const Outcome r = run(c.args);
        EXPECT_EQ(r.status, 0) << c.file << ": " << r.err;
        EXPECT_EQ(slurp(m_folder / c.file).rfind(c.starts, 0), 0u) << c.file;
    }
    Diagram original, converted;
    std::string error;
    ASSERT_TRUE(TqdReader(path("good.tqd").c_str()).read(original, error)) << error;
    ASSERT_TRUE(TqdReader(path("c.tqd").c_str()).read(converted, error)) << error;
    EXPECT_TRUE(converted.sameContents(original));
}

TEST_F(Program, ScriptsDriveTheDiagramCommands) {
    const std::string build = "diagram new -title {Scripted} -unit ns -span {0 100}\n"
                              "signal add top.clk -period 10\n"
                              "signal add top.data -width 8 -radix hex -group Bus\n"
                              "signal add top.valid\n";
    // The arrows as the saved file has them.
    const std::string showSaved = "diagram save s.tqd\nset f [open s.tqd]\n"
                                  "puts [lsearch -inline -all [split [read $f] \\n] Arrow*]\n";
    // clang-format off
    const struct { std::string script; std::vector<std::string> args; int status; const char* out; const char* err; } cases[] = {
        {build + "signal set top.data 0 x 20ns A5 40 8'h3C 60 z\n"
                 "signal set top.valid 0 0 25 1 45 l\n"
                 "arrow add top.clk 20 top.valid 25 setup\n"
                 "marker add 30ns M1\n"
                 "diagram export s.png -signals {top.*} -width 500\n"
                 "diagram export s.eps\n"
                 "diagram save s.tqd\n"
                 "puts [signal list]\n", {}, 0, "top.clk top.data top.valid", ""},
        {build + "puts [signal set top.data 0 QQ]\n", {}, 1, "", "s.tcl:5: expected a value for bus \"top.data\" such as A5"},
        {build + "signal set top.valid 0 2\n", {}, 1, "", "expected a bit value 0, 1, x, z, l or h, found \"2\""},
        {build + "signal set top.valid 0\n", {}, 1, "", "wrong # args: should be \"signal set NAME ?-text? TIME VALUE ?TIME VALUE ...?\""},
        {build + "signal set top.data -text\n", {}, 1, "", "wrong # args: should be \"signal set NAME ?-text? TIME VALUE"},
        {build + "signal set top.data -text 0 {read \"A\"} 20 idle 40 -text\nputs [dict get [diagram info] texts]\n", {}, 0, "3", ""},
        {build + "signal set top.valid -text 0 idle\n", {}, 1, "", "bit \"top.valid\" shows no text: -text is for buses"},
        {build + "signal set top.clk 0 1\n", {}, 1, "", "clock \"top.clk\" has no values to set"},
        {build + "signal add top.valid\n", {}, 1, "", "a signal named \"top.valid\" exists already"},
        {build + "signal add gap -kind spacer\narrow add gap 10 top.valid 25\nputs [signal list]\n",
         {}, 0, "top.clk top.data top.valid gap", ""},
        {build + "signal add gap -kind spacer\nsignal set gap 0 1\n", {}, 1, "", "spacer \"gap\" has no values to set"},
        {"signal add x -kind wire\n", {}, 1, "", "-kind takes bit, bus, clock or spacer, not \"wire\""},
        {"signal add\n", {}, 1, "", "wrong # args: should be \"signal add NAME"},
        {"signal frob\n", {}, 1, "", "unknown subcommand \"frob\": must be add, remove, rename, move, set, clear, list, help"},
        {"signal add x -colour red\n", {}, 1, "", "unknown option \"-colour\""},
        {"puts [signal help]\n", {}, 0, "signal rename NAME NEWNAME", ""},
        {"puts [view help]\n", {}, 0, "view range ?FROM TO? | all", ""},
        {build + "signal move top.valid 0\nsignal rename top.data bus\nsignal remove top.c*\n"
                 "puts [signal list]\n", {}, 0, "top.valid bus", ""},
        {build + "signal remove nothing\n", {}, 1, "", "no signal matches \"nothing\""},
        {build + "signal set top.valid 0 0 10 1 20 0 30 1\nputs [signal clear top.valid 5ns 25ns]\n",
         {}, 0, "2", ""},
        {build + "puts [view range 10ns 50ns]\n", {}, 0, "10ns 50ns", ""},
        {build + "view range 50 10\n", {}, 1, "", "the range must end after it starts"},
        {build + "view range 10ns 50ns\ndiagram open good.tqd\nputs \"[view range] [dict get [diagram info] file]\"\n"
                 "view range 10ns 50ns\ndiagram close\nputs \"[view range] {[dict get [diagram info] file]}\"\n",
         {}, 0, "0ns 100ns good.tqd\n0ns 1ns {}\n", ""},
        {"diagram new -unit ps\nputs [dict get [diagram info] unit]\n", {}, 0, "ps", ""},
        {"diagram new -unit lightyears\n", {}, 1, "", "expected a time unit fs, ps, ns, us, ms or s"},
        {"diagram open nowhere.tqd\n", {}, 1, "", "nowhere.tqd: cannot open the file"},
        {"diagram open bad.tqd\n", {}, 1, "", "bad.tqd:2: expected one of name"},
        {"diagram open good.tqd\nputs [signal list top.cpu.*]\n", {}, 0, "top.cpu.req top.cpu.data", ""},
        {"diagram save\n", {}, 1, "", "the diagram has no file yet"},
        {build + "arrow remove 5\n", {}, 1, "", "no arrow with index \"5\""},
        {build + "arrow add top.clk 20 top.valid 25 hold -shape curved -heads both\n" + showSaved, {}, 0,
         "label(\"hold\") shape(curved) heads(both)", ""},
        {build + "arrow add top.clk 20 top.valid 25 -heads none -shape straight\n" + showSaved, {}, 0,
         "label(\"\") heads(none)", ""},
        {build + "arrow add top.clk 20 top.valid 25 -heads begin\n" + showSaved, {}, 0, "heads(begin)", ""},
        {build + "arrow add top.clk 20 top.valid 25 -5ns\n" + showSaved, {}, 0, "label(\"-5ns\") )", ""},
        {build + "arrow add top.clk 20 top.valid 25 -shape bent\n", {}, 1, "", "-shape takes straight or curved, not \"bent\""},
        {build + "arrow add top.clk 20 top.valid 25 x -heads start\n", {}, 1, "", "-heads takes none, end, begin or both, not \"start\""},
        {build + "arrow add top.clk 20 top.valid 25 x -colour red\n", {}, 1, "", "unknown option \"-colour\": must be -shape, -heads"},
        {build + "arrow add top.clk 20 top.valid 25 x -shape\n", {}, 1, "", "option \"-shape\" needs a value"},
        {build + "arrow add top.clk 20 top.valid 25 x -shape curved -heads both -shape\n", {}, 1, "",
         "wrong # args: should be \"arrow add FROMSIGNAL FROMTIME TOSIGNAL TOTIME ?LABEL? ?-shape straight|curved? ?-heads none|end|begin|both?\""},
        {build + "marker add soon\n", {}, 1, "", "expected a time such as 250ns, found 'soon'"},
        {build + "diagram export s.gif\n", {}, 1, "", "cannot tell the format of \"s.gif\""},
        {"puts \"[llength $argv] [lindex $argv 1]\"\n", {"x", "y z"}, 0, "2 y z", ""},
    };
    // clang-format on
    for (const auto& c : cases) {
        write("s.tcl", c.script);
        std::vector<std::string> args = {"script", "s.tcl"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const Outcome r = run(args);
        EXPECT_EQ(r.status, c.status) << c.script << "\n" << r.err;
        EXPECT_NE(r.out.find(c.out), std::string::npos) << c.script << "\nout: " << r.out;
        EXPECT_NE(r.err.find(c.err), std::string::npos) << c.script << "\nerr: " << r.err;
    }
    // The first script's files: a picture, an EPS and a diagram that reads back.
    write("s.tcl", build +
                       "signal set top.data 0 x 20ns A5\nsignal set top.data -text 40 {a \"b\"}\n"
                       "diagram export s.png\ndiagram save s.tqd\n");
    ASSERT_EQ(run({"script", "s.tcl"}).status, 0);
    EXPECT_EQ(slurp(m_folder / "s.png").rfind("\x89PNG", 0), 0u);
    Diagram saved;
    std::string error;
    ASSERT_TRUE(TqdReader(path("s.tqd").c_str()).read(saved, error)) << error;
    ASSERT_EQ(saved.signalCount(), 3u);
    EXPECT_EQ(saved.signal(1).group(), "Bus");
    EXPECT_EQ(saved.signal(1).changeBinary(1), "10100101");
    EXPECT_EQ(saved.signal(1).changeText(2), "a \"b\"");
    EXPECT_EQ(saved.signal(0).clock().period, 10);
}

} // namespace
