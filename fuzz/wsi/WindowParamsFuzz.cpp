// Decodes arbitrary saved window parameters: every value must be in its range, and what
// encode writes must decode to the same parameters.
#include "wsi/WindowParams.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    WindowParams params;
    params.decode(text.c_str());
    const auto inRange = [](int value) { return value >= 0 && value <= 1001; };
    if (!inRange(params.left()) || !inRange(params.top()) || !inRange(params.right()) ||
        !inRange(params.bottom()) || params.right() < params.left() ||
        params.bottom() < params.top() || params.showState() < 0 || params.showState() > 5)
        __builtin_trap();
    char buffer[64];
    const int length = params.encode(buffer, static_cast<int>(sizeof buffer));
    if (length < 0 || length >= static_cast<int>(sizeof buffer))
        __builtin_trap();
    WindowParams again;
    again.decode(buffer);
    // The text reads back to the same values, except that a right or bottom of 1001 (forced
    // above a left or top of 1000) is limited to 1000 when read again.
    const auto same = [](int first, int second) {
        return first == second || (first == 1001 && second == 1000);
    };
    if (again.showState() != params.showState() || again.left() != params.left() ||
        again.top() != params.top() || !same(params.right(), again.right()) ||
        !same(params.bottom(), again.bottom()))
        __builtin_trap();
    // A short buffer is cut, never overrun.
    char small[4];
    params.encode(small, static_cast<int>(size % 5));
    return 0;
}
