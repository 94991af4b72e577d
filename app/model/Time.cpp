#include "model/Time.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr std::array<const char*, 6> v_unitNames = {"fs", "ps", "ns", "us", "ms", "s"};

} // namespace

const char* timeUnitName(TimeUnit unit) {
    const auto index = static_cast<std::size_t>(unit);
    return index < v_unitNames.size() ? v_unitNames[index] : "?";
}

bool parseTimeUnit(std::string_view text, TimeUnit& unit) {
    for (std::size_t i = 0; i < v_unitNames.size(); ++i) {
        if (text == v_unitNames[i]) {
            unit = static_cast<TimeUnit>(i);
            return true;
        }
    }
    return false;
}

std::int64_t timeUnitFactor(TimeUnit from, TimeUnit to, std::int64_t& divisor) {
    std::int64_t factor = 1;
    const int steps = static_cast<int>(from) - static_cast<int>(to);
    for (int i = 0; i < std::abs(steps); ++i)
        factor *= 1000;
    divisor = steps >= 0 ? 1 : factor;
    return steps >= 0 ? factor : 0;
}

bool parseTime(std::string_view text, TimeUnit unit, Time& result, std::string& error) {
    error.clear();
    std::size_t end = 0;
    if (end < text.size() && (text[end] == '-' || text[end] == '+'))
        ++end;
    bool digits = false;
    while (end < text.size() && ((text[end] >= '0' && text[end] <= '9') || text[end] == '.')) {
        digits = digits || text[end] != '.';
        ++end;
    }
    TimeUnit given = unit;
    if (!digits || (end < text.size() && !parseTimeUnit(text.substr(end), given))) {
        error = "expected a time such as 250ns, found '";
        error.append(text).append("'");
        return false;
    }
    // Whole numbers are read exactly; a fraction goes through a double, which is exact to
    // 2^53 counts, far beyond any diagram's span.
    std::string_view number = text.substr(text[0] == '+' ? 1 : 0, end - (text[0] == '+' ? 1 : 0));
    std::int64_t divisor = 1;
    const std::int64_t factor = timeUnitFactor(given, unit, divisor);
    if (number.find('.') == std::string_view::npos) {
        std::int64_t value = 0;
        auto [ptr, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
        if (ec == std::errc() && ptr == number.data() + number.size() && factor > 0 &&
            !__builtin_mul_overflow(value, factor, &result))
            return true;
        if (ec == std::errc() && ptr == number.data() + number.size() && factor == 0) {
            const double scaled = std::round(static_cast<double>(value) / divisor);
            result = static_cast<Time>(scaled);
            return true;
        }
    } else {
        double value = 0;
        auto [ptr, ec] = std::from_chars(number.data(), number.data() + number.size(), value);
        const double scaled =
            std::round(factor > 0 ? value * static_cast<double>(factor) : value / divisor);
        if (ec == std::errc() && ptr == number.data() + number.size() &&
            std::abs(scaled) < 9.2e18) {
            result = static_cast<Time>(scaled);
            return true;
        }
    }
    error = "time out of range: '";
    error.append(text).append("'");
    return false;
}

std::string formatTime(Time time, TimeUnit unit) {
    int index = static_cast<int>(unit);
    while (time != 0 && time % 1000 == 0 && index < static_cast<int>(TimeUnit::s)) {
        time /= 1000;
        ++index;
    }
    std::string text = std::to_string(time);
    text += v_unitNames[static_cast<std::size_t>(index)];
    return text;
}
