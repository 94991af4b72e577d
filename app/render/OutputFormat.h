/// OutputFormat: the picture formats a diagram is rendered to, and their names.
#pragma once

#include <string_view>

enum class OutputFormat { Png, Pdf, Svg, Eps, Mif };

/// Static text: "png", "pdf", "svg", "eps" or "mif".
const char* outputFormatName(OutputFormat format);
/// The format named by text ("png", ..., any case); false, format unchanged, otherwise.
[[nodiscard]] bool parseOutputFormat(std::string_view text, OutputFormat& format);
/// The format a file name's extension names; false when it names none.
[[nodiscard]] bool outputFormatOfFile(std::string_view path, OutputFormat& format);
