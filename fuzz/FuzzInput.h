/// What the text-writing fuzz targets share: one input split into the several texts of the
/// calls they make.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// The input's bytes split at each NUL; always at least one part.
inline std::vector<std::string> partsAtNul(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    std::vector<std::string> parts;
    for (std::size_t from = 0;;) {
        const std::size_t to = input.find('\0', from);
        parts.push_back(input.substr(from, to - from));
        if (to == std::string::npos)
            return parts;
        from = to + 1;
    }
}
