// What the EPS tests share: a device on a page of a chosen size whose primitives the tests
// call directly, and the written text split into lines.
#pragma once

#include "graphics/EPSDevice.h"
#include "graphics/EPSEngine.h"

#include <sstream>
#include <string>
#include <vector>

namespace eps_test {

// An EPSDevice whose page (the deviceSize of the header) the test chooses.
class PageDevice : public EPSDevice {
public:
    PageDevice(std::ostream& out, const ExportParameters& parameters, DevicePoint page)
        : EPSDevice(nullptr, "test", out, parameters), m_page(page) {}
    DevicePoint deviceSize() const override { return m_page; }

    using EPSDevice::primitiveDrawAlignedText;
    using EPSDevice::primitiveDrawText;
    using EPSDevice::primitiveFilledRect;
    using EPSDevice::primitiveLineTo;
    using EPSDevice::primitiveMoveTo;
    using EPSDevice::primitiveSetClipRect;
    using EPSDevice::primitiveSetColor;
    using EPSDevice::primitiveSetPenStyle;

private:
    DevicePoint m_page;
};

inline std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// How often word occurs in text (no operator the writers use is part of another).
inline int countWord(const std::string& text, const std::string& word) {
    int count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

} // namespace eps_test
