/// Time values of a diagram: whole counts of the diagram's time unit (femtoseconds up to
/// seconds), and their text forms with units ("250ns", "1.5us").
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A point or a length in time, in the diagram's time unit.
using Time = std::int64_t;

/// The unit a diagram counts its times in. The value is the power of 1000 below a second, so
/// converting between two units is a multiplication by a power of 1000.
enum class TimeUnit : int { fs = 0, ps = 1, ns = 2, us = 3, ms = 4, s = 5 };

/// Static text: "fs", "ps", "ns", "us", "ms" or "s".
const char* timeUnitName(TimeUnit unit);
/// The unit named by text (exactly one of the names above); false, unit unchanged, otherwise.
[[nodiscard]] bool parseTimeUnit(std::string_view text, TimeUnit& unit);
/// How many of `to` make one `from`, or its inverse as a divisor: 1000^(from - to) when from is
/// the larger unit. Returns the factor to multiply by (>= 1) when from >= to, else 0 and sets
/// divisor.
std::int64_t timeUnitFactor(TimeUnit from, TimeUnit to, std::int64_t& divisor);

/// Reads a time such as "250ns", "1.5us", "-20" or "0": an optionally signed decimal number
/// and an optional unit. A number without a unit is in `unit`. The result is in `unit`,
/// rounded to the nearest whole count. False, with error set to what was expected, for any
/// other text or a value beyond the 64-bit range.
[[nodiscard]] bool parseTime(std::string_view text, TimeUnit unit, Time& result,
                             std::string& error);
/// The time as the shortest text with the largest unit that keeps it whole: 1500 in ps is
/// "1500ps"; 2000 in ps is "2ns".
std::string formatTime(Time time, TimeUnit unit);
