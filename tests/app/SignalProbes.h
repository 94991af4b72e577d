/// What the readers' and writer's tests compare: the value a signal shows at a time, and
/// tables of "name@time=value" probes of a diagram.
#pragma once

#include "model/Diagram.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// The value signal shows at time: the state character of a clock or bit, the binary digits
/// of a bus value (as Verilog's %b prints them), a slot's text in quotes, or before when
/// time is before the first change.
inline std::string valueAt(const Signal& signal, Time time, const char* before = "(none)") {
    if (signal.kind() == SignalKind::Clock)
        return std::string(1, bitStateChar(signal.clockLevel(time)));
    const std::size_t index = signal.indexAt(time);
    if (index == Signal::npos)
        return before;
    if (signal.changeHasText(index))
        return std::string("'").append(signal.changeText(index)).append("'");
    if (signal.kind() == SignalKind::Bus)
        return signal.changeBinary(index);
    return std::string(1, bitStateChar(signal.changeState(index)));
}

/// Checks each "name@time=value" probe against diagram; where names the input in messages.
/// The time sits between the last '@' and the last '='.
inline void checkProbes(const Diagram& diagram, const std::vector<std::string>& probes,
                        const std::string& where) {
    for (const std::string& probe : probes) {
        const std::size_t at = probe.rfind('@'), equals = probe.rfind('=');
        const std::string name = probe.substr(0, at);
        const Time time = std::stoll(probe.substr(at + 1, equals - at - 1));
        const std::size_t index = diagram.findSignal(name);
        ASSERT_NE(index, Signal::npos) << name << " in " << where;
        EXPECT_EQ(valueAt(diagram.signal(index), time), probe.substr(equals + 1))
            << probe << " in " << where;
    }
}
