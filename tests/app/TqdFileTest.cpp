// The .tqd file: generated diagrams of every kind of item come back the same after a write
// and a read, unknown sections are written back as they were, and bad files give
// "FILE:LINE: what was expected" without touching the diagram.
#include "io/AtomicFile.h"
#include "io/TqdReader.h"
#include "io/TqdWriter.h"
#include "model/Diagram.h"

#include "core/iTaskDescription.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A diagram with every kind of item, its contents drawn from seed.
void generate(Diagram& d, unsigned seed) {
    std::mt19937 random(seed);
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    d.setTitle(seed % 2 ? "Read \"burst\" \\ cycle\twith\nnewline \xC3\xA9" : "");
    d.setTimeUnit(static_cast<TimeUnit>(pick(6)));
    if (seed % 3 == 0)
        d.setSpan(-5, 1000 + pick(100));
    d.setGrid({seed % 2 == 0, pick(3) * 10});
    d.addGroup("Empty group");
    const unsigned widths[] = {1, 3, 4, 5, 8, 63, 64, 65, 130};
    const int signals = 3 + pick(8);
    for (int i = 0; i < signals; ++i) {
        const auto kind = static_cast<SignalKind>(pick(4));
        const unsigned width = widths[pick(9)];
        const std::string group = pick(2) ? std::string("G").append(std::to_string(pick(3))) : "";
        std::string name = "top.u";
        name.append(std::to_string(i))
            .append(".s[")
            .append(std::to_string(width - 1))
            .append(":0]");
        Signal& s = d.addSignal(name, kind, width, group);
        s.setNameShown(pick(4) != 0);
        if (kind == SignalKind::Spacer)
            continue;
        if (kind == SignalKind::Clock) {
            ASSERT_TRUE(s.setClock({2 + pick(50), 100.0 / (2 + pick(7)), pick(20) - 10,
                                    pick(2) ? BitState::High : BitState::Low}));
            continue;
        }
        if (kind == SignalKind::Bus)
            s.setBusFormat({static_cast<Radix>(1 + pick(5)), static_cast<HDLanguage>(pick(3))});
        // Some signals are long enough to be written in several sections.
        const int changes = pick(4) == 0 ? 20000 : pick(40);
        Time t = pick(10) - 5;
        for (int c = 0; c < changes; ++c) {
            t += 1 + pick(20);
            if (kind == SignalKind::Bit) {
                ASSERT_TRUE(s.appendChange(t, static_cast<BitState>(pick(6))));
            } else if (pick(5) == 0) {
                // Texts with the characters the file escapes, repeated and empty ones.
                const char* texts[] = {"IDLE", "", "say \"hi\"\\ \t\n\xC3\xA9", "3.25", "t"};
                ASSERT_TRUE(s.appendText(t, texts[pick(5)]));
            } else {
                std::string bits;
                const int style = pick(4); // known, all x, all z, mixed
                for (unsigned b = 0; b < width; ++b)
                    bits.push_back(style == 1   ? 'x'
                                   : style == 2 ? 'z'
                                                : "01xz"[pick(style ? 4 : 2)]);
                ASSERT_TRUE(s.appendBinary(t, bits));
            }
        }
    }
    const std::string first = d.signal(0).name(), last = d.signal(d.signalCount() - 1).name();
    d.addArrow({{first, 10}, {last, 25}, "t_{SU} \"setup\""});
    d.addArrow({{last, -3}, {last, 4}, "", ArrowShape::Curved, ArrowHeads::Both});
    d.addArrow({{first, 5}, {last, 5}, "", ArrowShape::Straight, ArrowHeads::Start});
    d.addArrow({{first, 5}, {first, 9}, "hold", ArrowShape::Curved, ArrowHeads::None});
    d.addMarker({100, "T1"});
    d.addMarker({-7, ""});
    d.addAnnotation({50, first, "see (note)"});
    d.addAnnotation({60, "", "free text"});
    d.addGap({70, ""});
    d.addGap({80, last});
}

std::string written(const Diagram& d) {
    std::ostringstream out;
    TqdWriter::write(d, out);
    return out.str();
}

TEST(TqdFile, GeneratedDiagramsComeBackTheSame) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Diagram original;
        generate(original, seed);
        const std::string text = written(original);
        Diagram copy;
        std::string error;
        ASSERT_TRUE(TqdReader::readText(text, "gen.tqd", copy, error)) << seed << ": " << error;
        EXPECT_TRUE(copy.sameContents(original)) << "seed " << seed;
        const std::string again = written(copy);
        const auto [mine, theirs] =
            std::mismatch(text.begin(), text.end(), again.begin(), again.end());
        EXPECT_TRUE(mine == text.end() && theirs == again.end())
            << "seed " << seed << ": differs after "
            << std::string(text.begin(), mine)
                   .substr(static_cast<std::size_t>(
                       std::max<std::ptrdiff_t>(0, mine - text.begin() - 80)));
    }
}

TEST(TqdFile, UnknownSectionsAreKeptVerbatimAndWrittenBack) {
    const std::string text = "TimingDiagram( timeunit(ps) )\n"
                             "ViewerState( zoom(\"2.5\") [a (b) <c>] \"str ) ing\" )\n"
                             "Signal( name(\"a\") bit )\n"
                             "Later(x)\n";
    Diagram d;
    std::string error;
    ASSERT_TRUE(TqdReader::readText(text, "f.tqd", d, error)) << error;
    ASSERT_EQ(d.foreignSections().size(), 2u);
    EXPECT_EQ(d.foreignSections()[0].name, "ViewerState");
    EXPECT_EQ(d.foreignSections()[0].text, "( zoom(\"2.5\") [a (b) <c>] \"str ) ing\" )");
    EXPECT_EQ(d.foreignSections()[1].text, "(x)");
    Diagram again;
    ASSERT_TRUE(TqdReader::readText(written(d), "g.tqd", again, error)) << error;
    EXPECT_TRUE(again.sameContents(d));
}

TEST(TqdFile, BadFilesNameTheLineAndWhatWasExpected) {
    const std::string head = "TimingDiagram( timeunit(ns) )\nSignal( name(\"a\") bit )\n"
                             "Signal( name(\"b\") bus(width(8)) )\n";
    // clang-format off
    const struct { std::string text; std::string message; } cases[] = {
        {"TimingDiagram( timeunit(xs) )", "f.tqd:1: expected a time unit fs, ps, ns, us, ms or s, found 'xs'"},
        {"TimingDiagram( version(7) )", "f.tqd:1: file version 7 is newer than this program reads (1)"},
        {"TimingDiagram(\n span(10, 5) )", "f.tqd:2: expected a span whose end is after its start"},
        {"TimingDiagram( grid(maybe) )", "f.tqd:1: expected on or off in grid(...), found 'maybe'"},
        {"TimingDiagram( colour(red) )", "f.tqd:1: expected one of version, title, timeunit, span, grid in TimingDiagram, found 'colour'"},
        {head + "Signal( bit )", "f.tqd:4: expected name(\"...\") in Signal"},
        {head + "Signal( name(\"c\") bit bus(width(2)) )", "f.tqd:4: expected exactly one of clock(...), bit, bus(...) or spacer in Signal 'c'"},
        {head + "Signal( name(\"c\") spacer bit )", "f.tqd:4: expected exactly one of clock(...), bit, bus(...) or spacer in Signal 'c'"},
        {head + "Signal( name(\"c\") spacer )\nChanges( \"c\" 0 1 )", "f.tqd:5: spacer 'c' has no changes"},
        {head + "Signal( name(\"a\") bit )", "f.tqd:4: signal 'a' is defined twice"},
        {head + "Signal( name(\"c\") bus(width(0)) )", "f.tqd:4: expected a width from 1 to 1048576"},
        {head + "Signal( name(\"c\") bus(radix(hexa)) )", "f.tqd:4: expected bin, oct, dec, hex or sdec in radix(...), found 'hexa'"},
        {head + "Signal( name(\"c\") clock(period(1)) )", "f.tqd:4: expected a clock with a period of at least 2 and a duty between 0 and 100 in Signal 'c'"},
        {head + "Signal( name(\"c\") clock(duty(\"half\")) )", "f.tqd:4: expected a number in duty(...), found 'half'"},
        {head + "Changes( \"a\" 0 1\n 5 q )", "f.tqd:5: expected a bit value 0, 1, x, z, l or h in Changes, found 'q'"},
        {head + "Changes( \"a\" 0 1\n 5 )", "f.tqd:5: expected a value after the time in Changes"},
        {head + "Changes( \"a\" zero 1 )", "f.tqd:4: expected a time (a whole number) in Changes, found 'zero'"},
        {head + "Changes( \"nope\" 0 1 )", "f.tqd:4: unknown signal 'nope' (a Signal section must define it above)"},
        {head + "Changes( \"b\" 0 \"hg1\" )", "f.tqd:4: expected a bus value \"h...\", \"b...\" or \"t...\" in Changes, found 'hg1'"},
        {head + "Changes( \"b\" 0 1 )", "f.tqd:4: expected a bus value \"h...\", \"b...\" or \"t...\" in Changes, found '1'"},
        {head + "Changes( \"b\" 0 \"\" )", "f.tqd:4: expected a bus value \"h...\", \"b...\" or \"t...\" in Changes, found nothing"},
        {head + "Changes( \"a\" 0 \"tIDLE\" )", "f.tqd:4: expected a bit value 0, 1, x, z, l or h in Changes, found 'tIDLE'"},
        {head + "Arrow( from(\"a\", 1) to(\"zz\", 2) )", "f.tqd:4: unknown signal 'zz' (a Signal section must define it above)"},
        {head + "Arrow( from(\"a\", 1) )", "f.tqd:4: expected from(\"signal\", time) and to(\"signal\", time) in Arrow"},
        {head + "Arrow( from(\"a\", 1) to(\"a\", 2) shape(wavy) )", "f.tqd:4: expected straight or curved in shape(...), found 'wavy'"},
        {head + "Arrow( from(\"a\", 1) to(\"a\", 2) heads(2) )", "f.tqd:4: expected none, end, begin or both in heads(...), found '2'"},
        {head + "Marker( label(\"m\") )", "f.tqd:4: expected at(time) in Marker"},
        {head + "Marker( at(soon) )", "f.tqd:4: expected a time in at(...), found 'soon'"},
        {head + "Gap( at(1) signal(\"zz\") )", "f.tqd:4: unknown signal 'zz' (a Signal section must define it above)"},
        {head + "Annotation( text(\"t\") )", "f.tqd:4: expected at(time) in Annotation"},
        {head + "Changes( \"a\" 0 1\n 5 0", "f.tqd:5: expected ')' before the end of the file"},
        {head + "Signal( name(\"c\") bit", "f.tqd:4: expected ')' before the end of the file"},
    };
    // clang-format on
    for (const auto& c : cases) {
        Diagram d;
        d.setTitle("kept");
        std::string error;
        EXPECT_FALSE(TqdReader::readText(c.text, "f.tqd", d, error)) << c.text;
        EXPECT_EQ(error, c.message) << c.text;
        EXPECT_EQ(d.title(), "kept");
        EXPECT_EQ(d.signalCount(), 0u);
    }
}

TEST(TqdFile, TheDocumentedExampleReadsAndKeepsItsForeignSection) {
    std::ifstream doc(TQ_SOURCE_DIR "/docs/tqd-format.md");
    std::string line, text;
    bool inside = false;
    while (std::getline(doc, line)) {
        if (line == "```")
            inside = !inside;
        else if (inside)
            text.append(line).push_back('\n');
    }
    Diagram d;
    std::string error;
    ASSERT_TRUE(TqdReader::readText(text, "example.tqd", d, error)) << error;
    EXPECT_EQ(d.signalCount(), 7u);
    EXPECT_EQ(d.signal(6).kind(), SignalKind::Spacer);
    EXPECT_FALSE(d.signal(6).nameShown());
    ASSERT_EQ(d.arrows().size(), 2u);
    EXPECT_EQ(
        d.arrows()[1],
        (Arrow{
            {"spacer 1", 65}, {"spacer 1", 145}, "write", ArrowShape::Curved, ArrowHeads::Both}));
    EXPECT_EQ(d.signal(2).changeBinary(1), "0001101001000000");
    EXPECT_EQ(d.signal(3).changeBinary(2), "0101xx10");
    EXPECT_EQ(d.signal(5).changeState(0), BitState::WeakLow);
    EXPECT_EQ(d.signal(4).changeText(1), "WRITE \"A\"");
    EXPECT_EQ(d.signal(4).changeBinary(1), "xx");
    ASSERT_EQ(d.foreignSections().size(), 1u);
    EXPECT_EQ(written(d).substr(written(d).rfind("ViewerState")),
              "ViewerState( zoom(\"2.5\") scroll(0) )\n");
}

TEST(TqdFile, FilesAreReadWithProgressAndWrittenWholeOrNotAtAll) {
    const auto folder =
        std::filesystem::temp_directory_path() / ("tq_app_tqd_test_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const std::string path = (folder / "d.tqd").string();
    Diagram d;
    generate(d, 4);
    std::string error;
    ASSERT_TRUE(TqdWriter(path.c_str(), d).save(error)) << error;
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder),
                            std::filesystem::directory_iterator()),
              1);

    iTaskDescription task;
    TqdReader reader(path.c_str());
    reader.setTask(task);
    Diagram read;
    ASSERT_TRUE(reader.read(read, error)) << error;
    EXPECT_TRUE(read.sameContents(d));
    EXPECT_EQ(task.total(), std::filesystem::file_size(path));
    EXPECT_GT(task.progress(), 0u);

    iTaskDescription cancelled;
    cancelled.cancel();
    TqdReader again(path.c_str());
    again.setTask(cancelled);
    Diagram untouched;
    EXPECT_FALSE(again.read(untouched, error));
    EXPECT_EQ(error, path + ": the read was cancelled");
    EXPECT_EQ(untouched.signalCount(), 0u);

    EXPECT_FALSE(TqdReader((folder / "missing.tqd").string().c_str()).read(untouched, error));
    EXPECT_EQ(error, (folder / "missing.tqd").string() + ": cannot open the file");
    EXPECT_FALSE(TqdWriter((folder / "no/such/dir.tqd").string().c_str(), d).save(error));
    EXPECT_FALSE(std::filesystem::exists(folder / "no"));
    std::filesystem::remove_all(folder);
}

} // namespace

namespace {

TEST(AtomicFile, AnInterruptedWriteLeavesNoFileBehind) {
    const auto folder =
        std::filesystem::temp_directory_path() / ("tq_app_atomic_test_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    const std::string path = (folder / "picture.png").string();
    const pid_t child = fork();
    if (child == 0) {
        AtomicFile::installInterruptCleanup();
        AtomicFile file(path);
        std::ofstream(file.temporaryPath()) << "half a picture";
        raise(SIGINT);
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT);
    EXPECT_TRUE(std::filesystem::is_empty(folder));

    std::string error;
    {
        AtomicFile file(path);
        std::ofstream(file.temporaryPath()) << "a picture";
        ASSERT_TRUE(file.commit(error)) << error;
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder),
                            std::filesystem::directory_iterator()),
              1);
    EXPECT_TRUE(std::filesystem::exists(path));
    std::filesystem::remove_all(folder);
}

} // namespace
