// The diagram model: signals keep their changes sorted and find a time by binary search,
// clocks compute their edges, bus values keep every four-state bit, the diagram keeps its
// references when signals are renamed or removed, and names match wildcard patterns.
#include "model/Diagram.h"
#include "model/SignalPattern.h"
#include "model/Time.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>

namespace {

struct CountingDependent : Dependent {
    void update(Model&, Aspect a) override {
        ++count;
        last = a;
    }
    int count = 0;
    Aspect last = aspectAll;
};

TEST(Signal, ChangesStaySortedWhateverTheOrderOfAppending) {
    Signal s("a", SignalKind::Bit);
    // clang-format off
    const struct { Time time; BitState state; } steps[] = {
        {10, BitState::High}, {30, BitState::Low}, {20, BitState::Unknown},
        {0, BitState::HighZ}, {20, BitState::WeakHigh}, {40, BitState::WeakLow},
    };
    // clang-format on
    for (const auto& step : steps)
        ASSERT_TRUE(s.appendChange(step.time, step.state));
    ASSERT_EQ(s.changeCount(), 5u);
    const Time times[] = {0, 10, 20, 30, 40};
    const char states[] = "z1h0l";
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(s.changeTime(i), times[i]);
        EXPECT_EQ(bitStateChar(s.changeState(i)), states[i]) << i;
    }
    // clang-format off
    const struct { Time at; std::size_t index; std::size_t from; } lookups[] = {
        {-1, Signal::npos, 0}, {0, 0, 0}, {5, 0, 1}, {10, 1, 1}, {39, 3, 4}, {40, 4, 4},
        {99, 4, 5},
    };
    // clang-format on
    for (const auto& l : lookups) {
        EXPECT_EQ(s.indexAt(l.at), l.index) << l.at;
        EXPECT_EQ(s.firstIndexFrom(l.at), l.from) << l.at;
    }
    EXPECT_EQ(s.eraseChanges(10, 31), 3u);
    EXPECT_EQ(s.changeCount(), 2u);
    EXPECT_EQ(s.changeTime(1), 40);
}

TEST(Signal, BusValuesKeepEveryFourStateBitAcrossWordBoundaries) {
    // clang-format off
    const struct { unsigned width; std::string digits; std::string stored; BitState state; } cases[] = {
        {4, "10xz", "10xz", BitState::Unknown},
        {4, "1", "0001", BitState::High},
        {4, "x1", "xxx1", BitState::Unknown},
        {4, "z", "zzzz", BitState::HighZ},
        {4, "xxxx", "xxxx", BitState::Unknown},
        {3, "1111_0101", "101", BitState::High},
        {65, "1", std::string(64, '0').append("1"), BitState::High},
        {65, "z0", std::string(63, 'z').append("z0"), BitState::Unknown},
        {130, std::string(130, 'z'), std::string(130, 'z'), BitState::HighZ},
        {65, "x", std::string(65, 'x'), BitState::Unknown},
        {128, "x1", std::string(127, 'x').append("1"), BitState::Unknown},
        {128, std::string(128, 'x'), std::string(128, 'x'), BitState::Unknown},
    };
    // clang-format on
    for (const auto& c : cases) {
        Signal bus("b", SignalKind::Bus, c.width);
        ASSERT_TRUE(bus.appendBinary(0, c.digits)) << c.digits;
        EXPECT_EQ(bus.changeBinary(0), c.stored) << c.width << " " << c.digits;
        EXPECT_EQ(bus.changeState(0), c.state) << c.digits;
        EXPECT_EQ(bus.changeIsKnown(0), c.state == BitState::High) << c.digits;
        EXPECT_EQ(bus.changeIsAllUnknown(0), c.stored.find_first_not_of('x') == std::string::npos)
            << c.width << " " << c.digits;
    }
    Signal bus("b", SignalKind::Bus, 8);
    EXPECT_FALSE(bus.appendBinary(0, "10q1"));
    EXPECT_FALSE(bus.appendBinary(0, "h"));
    ASSERT_TRUE(bus.appendChange(5, BigInt(0xA5)));
    ASSERT_TRUE(bus.appendChange(7, BitState::HighZ));
    EXPECT_EQ(bus.changeBinary(0), "10100101");
    EXPECT_EQ(bus.changeBinary(1), "zzzzzzzz");
    std::unique_ptr<char[]> hex(bus.changeValue(0).asNumericString(RadixHexadecimal, 8, 0, true));
    EXPECT_STREQ(hex.get(), "A5");
    EXPECT_FALSE(bus.appendChange(9, BitState::WeakHigh));
}

TEST(Signal, TextChangesStaySortedWithTheValuesAndGiveWayToThem) {
    Signal s("state", SignalKind::Bus, 70);
    // Each step appends at a time; "=" marks a number, anything else is text. A text replaces
    // a value at its time and a value a text.
    // clang-format off
    const struct { Time time; const char* value; } steps[] = {
        {10, "IDLE"}, {30, "=101"}, {20, "READ"}, {0, ""}, {30, "WRITE"}, {40, "IDLE"},
        {20, "=111"}, {50, "IDLE"},
    };
    // clang-format on
    for (const auto& step : steps) {
        if (step.value[0] == '=')
            ASSERT_TRUE(s.appendBinary(step.time, step.value + 1));
        else
            ASSERT_TRUE(s.appendText(step.time, step.value));
    }
    // clang-format off
    const struct { Time time; bool text; const char* shown; } expected[] = {
        {0, true, ""}, {10, true, "IDLE"}, {20, false, "111"}, {30, true, "WRITE"},
        {40, true, "IDLE"}, {50, true, "IDLE"},
    };
    // clang-format on
    ASSERT_EQ(s.changeCount(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(s.changeTime(i), expected[i].time);
        EXPECT_EQ(s.changeHasText(i), expected[i].text) << i;
        if (expected[i].text) {
            EXPECT_EQ(s.changeText(i), expected[i].shown) << i;
            EXPECT_EQ(s.changeState(i), BitState::High) << i;
            EXPECT_EQ(s.changeBinary(i), std::string(70, 'x')) << i;
            EXPECT_FALSE(s.changeIsKnown(i)) << i;
            EXPECT_FALSE(s.changeIsAllUnknown(i)) << i;
        } else {
            EXPECT_EQ(s.changeBinary(i), std::string(67, '0') + expected[i].shown);
        }
    }
    EXPECT_EQ(s.textCount(), 5u);
    EXPECT_TRUE(s.sameValue(1, 4));
    EXPECT_FALSE(s.sameValue(3, 4));
    EXPECT_FALSE(s.sameValue(0, 2));

    Signal copy = s;
    EXPECT_TRUE(copy == s);
    ASSERT_TRUE(copy.appendText(50, "BUSY"));
    EXPECT_FALSE(copy == s);
    EXPECT_EQ(s.eraseChanges(15, 45), 3u);
    EXPECT_EQ(s.changeText(2), "IDLE");
    EXPECT_EQ(s.textCount(), 3u);
    s.clearChanges();
    ASSERT_TRUE(s.appendBinary(0, "1"));
    EXPECT_FALSE(s.changeHasText(0));
    EXPECT_EQ(s.textCount(), 0u);

    Signal bit("b", SignalKind::Bit), clock("c", SignalKind::Clock);
    EXPECT_FALSE(bit.appendText(0, "no"));
    EXPECT_FALSE(clock.appendText(0, "no"));
    EXPECT_EQ(bit.changeCount(), 0u);
}

TEST(Signal, ATextRepeatedOnManyChangesIsStoredOnce) {
    Signal once("a", SignalKind::Bus, 8), each("b", SignalKind::Bus, 8);
    const std::string longText(200, 'q');
    for (Time t = 0; t < 1000; ++t) {
        ASSERT_TRUE(once.appendText(t, longText));
        ASSERT_TRUE(each.appendText(t, longText + std::to_string(t)));
    }
    EXPECT_LT(once.memoryBytes(), 1000 * 40u);
    EXPECT_GT(each.memoryBytes(), 1000 * 200u);
    EXPECT_EQ(once.changeText(999), longText);
    EXPECT_EQ(each.changeText(999), longText + "999");
}

TEST(Signal, BinaryDigitsOfEveryLengthAroundTheWordSizeReadBackAsWritten) {
    // Digits of 0 and 1 take a path eight at a time; with '_', x or z, or more digits than
    // the width, the general one. Both must agree with the padded or cut text.
    std::mt19937 random(5);
    for (const unsigned width : {1u, 2u, 7u, 8u, 9u, 31u, 63u, 64u, 65u, 127u, 129u, 256u, 300u}) {
        Signal bus("b", SignalKind::Bus, width);
        std::vector<std::string> expected;
        for (const unsigned length :
             {1u, 2u, 3u, 7u, 8u, 9u, 10u, 15u, 16u, 17u, 63u, 64u, 65u, 255u, 256u, 257u, 301u}) {
            for (const char* alphabet : {"01", "01xz"}) {
                std::string digits;
                for (unsigned i = 0; i < length; ++i)
                    digits.push_back(alphabet[random() % std::strlen(alphabet)]);
                ASSERT_TRUE(bus.appendBinary(static_cast<Time>(expected.size()), digits));
                const char fill = digits[0] == 'x' || digits[0] == 'z' ? digits[0] : '0';
                expected.push_back(length >= width ? digits.substr(length - width)
                                                   : std::string(width - length, fill) + digits);
            }
        }
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_EQ(bus.changeBinary(i), expected[i]) << "width " << width << " change " << i;
        // A bad digit anywhere: in a group of eight, in the digits before the groups, alone.
        for (const char* bad : {"0101012", "q0000000001", "10000000q00000001", "1q1", "2"})
            EXPECT_FALSE(bus.appendBinary(99, bad)) << bad;
        EXPECT_FALSE(bus.appendBinary(99, std::string(300, '1') + "q"));
        EXPECT_EQ(bus.changeCount(), expected.size());
    }
}

TEST(Signal, ManyChangesKeepTheirValuesWhenTheStorageMovesToPages) {
    // Enough changes of each kind that the times, states and value words outgrow the heap
    // blocks; then changes inserted and erased in the middle.
    for (const unsigned width : {1u, 8u, 64u, 65u}) {
        Signal s("s", width == 1 ? SignalKind::Bit : SignalKind::Bus, width);
        const std::size_t count = RemapStorage::v_pagedBytes / 8 + 100;
        const auto digitsAt = [&](std::size_t i) {
            std::string digits;
            for (unsigned b = 0; b < width; ++b)
                digits.push_back((i * 0x9E3779B97F4A7C15ull) >> (b % 64) & 1 ? '1' : '0');
            return digits;
        };
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_TRUE(s.appendBinary(static_cast<Time>(2 * i), digitsAt(i)));
        ASSERT_TRUE(s.appendBinary(1, "x"));
        EXPECT_EQ(s.eraseChanges(100, 200), 50u);
        ASSERT_EQ(s.changeCount(), count + 1 - 50);
        for (const std::size_t i : {std::size_t(0), std::size_t(49), count / 2, count - 1}) {
            const std::size_t index = s.indexAt(static_cast<Time>(2 * i));
            ASSERT_NE(index, Signal::npos);
            EXPECT_EQ(s.changeBinary(index), width == 1 ? digitsAt(i).substr(0, 1) : digitsAt(i))
                << "width " << width << " change " << i;
        }
        EXPECT_EQ(s.changeBinary(1), std::string(width, 'x'));
        const Signal copy = s;
        EXPECT_TRUE(copy == s);
    }
}

TEST(Signal, ClockEdgesFollowPeriodDutyPhaseAndStartLevel) {
    Signal clk("clk", SignalKind::Clock);
    EXPECT_FALSE(clk.setClock({.period = 1}));
    EXPECT_FALSE(clk.setClock({.period = 10, .duty = 100}));
    ASSERT_TRUE(clk.setClock({.period = 10, .duty = 30, .phase = 5}));
    EXPECT_FALSE(clk.appendChange(0, BitState::High));
    // Low until 5, high for 3 of every 10 from there.
    // clang-format off
    const struct { Time t; BitState level; Time next; } samples[] = {
        {0, BitState::Low, 5}, {5, BitState::High, 8}, {7, BitState::High, 8},
        {8, BitState::Low, 15}, {14, BitState::Low, 15}, {15, BitState::High, 18},
        {1005, BitState::High, 1008},
    };
    // clang-format on
    for (const auto& s : samples) {
        EXPECT_EQ(clk.clockLevel(s.t), s.level) << s.t;
        EXPECT_EQ(clk.nextClockEdge(s.t), s.next) << s.t;
    }
    EXPECT_EQ(clk.clockEdgeCount(0, 5), 0);
    EXPECT_EQ(clk.clockEdgeCount(0, 6), 1);
    EXPECT_EQ(clk.clockEdgeCount(0, 105), 20);
    EXPECT_EQ(clk.clockEdgeCount(8, 9), 1);
}

TEST(Diagram, EditsKeepReferencesAndTellDependents) {
    Diagram d;
    CountingDependent view;
    d.addDependent(view);
    d.addSignal("top.a", SignalKind::Bit, 1, "G");
    d.addSignal("top.b", SignalKind::Bus, 8);
    d.addSignal("top.c", SignalKind::Bit);
    EXPECT_EQ(d.groups(), std::vector<std::string>{"G"});
    d.addArrow({{"top.a", 1}, {"top.b", 2}, "t"});
    d.addAnnotation({3, "top.b", "note"});
    d.addGap({4, "top.b"});
    EXPECT_GT(view.count, 0);
    EXPECT_EQ(view.last, static_cast<Aspect>(aspectDecorations));

    EXPECT_FALSE(d.renameSignal(1, "top.a"));
    EXPECT_FALSE(d.renameSignal(1, ""));
    ASSERT_TRUE(d.renameSignal(1, "top.bus"));
    EXPECT_EQ(d.arrows()[0].to.signal, "top.bus");
    EXPECT_EQ(d.annotations()[0].signal, "top.bus");
    EXPECT_EQ(d.findSignal("top.bus"), 1u);
    EXPECT_EQ(d.findSignal("top.b"), Signal::npos);

    d.moveSignal(0, 99);
    EXPECT_EQ(d.signal(2).name(), "top.a");
    EXPECT_EQ(d.findSignal("top.a"), 2u);
    d.removeSignal(0);
    EXPECT_TRUE(d.arrows().empty());
    EXPECT_TRUE(d.annotations().empty());
    EXPECT_TRUE(d.gaps().empty());
    EXPECT_EQ(d.findSignal("top.a"), 1u);
    EXPECT_EQ(view.last, static_cast<Aspect>(aspectSignals));
    EXPECT_FALSE(d.removeMarker(0));
    d.removeDependent(view);
}

TEST(Diagram, SpanComesFromTheContentsUnlessSet) {
    Diagram d;
    Signal& s = d.addSignal("a", SignalKind::Bit);
    ASSERT_TRUE(s.appendChange(-10, BitState::Low));
    ASSERT_TRUE(s.appendChange(90, BitState::High));
    EXPECT_EQ(d.spanStart(), -10);
    EXPECT_EQ(d.spanEnd(), 100);
    d.setSpan(0, 50);
    EXPECT_EQ(d.spanStart(), 0);
    EXPECT_EQ(d.spanEnd(), 50);
    d.setSpan(5, 5);
    EXPECT_FALSE(d.hasExplicitSpan());
}

TEST(Time, TextWithUnitsConvertsToTheDiagramUnit) {
    // clang-format off
    const struct { const char* text; TimeUnit unit; bool ok; Time value; } cases[] = {
        {"250ns", TimeUnit::ps, true, 250000}, {"250", TimeUnit::ps, true, 250},
        {"1.5us", TimeUnit::ns, true, 1500},   {"-20ns", TimeUnit::ns, true, -20},
        {"1500ps", TimeUnit::ns, true, 2},     {"1ps", TimeUnit::ns, true, 0},
        {"3s", TimeUnit::fs, true, 3000000000000000},
        {"10000s", TimeUnit::fs, false, 0},    {"ns", TimeUnit::ns, false, 0},
        {"12 ns", TimeUnit::ns, false, 0},     {"12xs", TimeUnit::ns, false, 0},
        {"", TimeUnit::ns, false, 0},
    };
    // clang-format on
    for (const auto& c : cases) {
        Time value = 0;
        std::string error;
        EXPECT_EQ(parseTime(c.text, c.unit, value, error), c.ok) << c.text;
        if (c.ok)
            EXPECT_EQ(value, c.value) << c.text;
        else
            EXPECT_FALSE(error.empty()) << c.text;
    }
    EXPECT_EQ(formatTime(2000, TimeUnit::ps), "2ns");
    EXPECT_EQ(formatTime(1500, TimeUnit::ps), "1500ps");
    EXPECT_EQ(formatTime(0, TimeUnit::us), "0us");
}

TEST(SignalPattern, StarStaysInOneLevelAndDoubleStarCrossesLevels) {
    // clang-format off
    const struct { const char* pattern; const char* name; bool match; } cases[] = {
        {"top.*", "top.clk", true},        {"top.*", "top.cpu.addr", false},
        {"top.**", "top.cpu.addr", true},  {"**.addr", "top.cpu.addr", true},
        {"*.clk", "top.clk", true},        {"top.d?ta", "top.data", true},
        {"data[7:0]", "data[7:0]", true},  {"top.clk", "top.clk2", false},
        {"*", "", true},                   {"top.c*", "top.clk", true},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(SignalPattern(c.pattern).matches(c.name), c.match) << c.pattern << " " << c.name;
}

} // namespace
