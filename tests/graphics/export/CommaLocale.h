// A locale with a decimal comma and grouped thousands, for the export tests: the writers
// format every number themselves, so imbuing it on their stream must change nothing.
#pragma once

#include <locale>
#include <string>

struct CommaDecimal : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

inline std::locale commaLocale() {
    return std::locale(std::locale::classic(), new CommaDecimal);
}
