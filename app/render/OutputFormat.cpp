#include "render/OutputFormat.h"

#include <array>
#include <cctype>
#include <string>

namespace {

constexpr std::array<const char*, 5> v_names = {"png", "pdf", "svg", "eps", "mif"};

} // namespace

const char* outputFormatName(OutputFormat format) {
    return v_names[static_cast<std::size_t>(format)];
}

bool parseOutputFormat(std::string_view text, OutputFormat& format) {
    std::string lower(text);
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (std::size_t i = 0; i < v_names.size(); ++i) {
        if (lower == v_names[i]) {
            format = static_cast<OutputFormat>(i);
            return true;
        }
    }
    return false;
}

bool outputFormatOfFile(std::string_view path, OutputFormat& format) {
    const std::size_t dot = path.rfind('.');
    const std::size_t slash = path.rfind('/');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash))
        return false;
    return parseOutputFormat(path.substr(dot + 1), format);
}
