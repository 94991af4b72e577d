// What the MIF tests share: parameters for an unscaled export, a file drawn through the MIF
// device, the graphic objects cut out of a written file, and a check that a file's statements
// are balanced.
#pragma once

#include "graphics/export/ExportParameters.h"
#include "graphics/export/mif/MIFDevice.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>

// A fixed (unscaled) picture: a device unit is a tenth of a point, so device 123 is "12.3".
inline ExportParameters fixedParameters() {
    return ExportParameters(
        "file,,,portrait,clipboard,letter,default,6.5,5.0,in,color,fixed,mifframe,preview");
}

inline const DeviceRectangle v_drawing(0, 0, 1000, 500);

// The whole file that draw writes through a MIF device over v_drawing.
inline std::string fileDrawnBy(const std::function<void(MIFDevice&)>& draw,
                               const ExportParameters& parameters = fixedParameters()) {
    std::ostringstream out;
    MIFDevice device("job", out, parameters, v_drawing);
    draw(device);
    EXPECT_TRUE(device.close());
    return out.str();
}

// The line from (x1, y1) to (x2, y2), as a polyline of two device points.
inline void line(wsiDevice& d, int x1, int y1, int x2, int y2) {
    DevicePoint points[] = {{x1, y1}, {x2, y2}};
    d.drawPolylineUnTransformed(2, points);
}

// The text between the frame's opening statements and its end, or "<no frame>".
inline std::string frameObjects(const std::string& file) {
    const std::string open = "  <FrameType Below>\n", close = " > # end of Frame\n";
    const auto from = file.find(open), to = file.find(close);
    if (from == std::string::npos || to == std::string::npos || to < from)
        return "<no frame>";
    return file.substr(from + open.size(), to - from - open.size());
}

// "" when every "<" outside strings and comments is closed by a ">" and every `...' string
// is closed (a backslash escaping the next character); otherwise what went wrong and where.
inline std::string unbalancedAt(const std::string& text) {
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '`') {
            for (++i; i < text.size() && text[i] != '\''; ++i) {
                if (text[i] == '\\')
                    ++i;
                else if (text[i] == '\n')
                    return "line break in a string at " + std::to_string(i);
            }
            if (i >= text.size())
                return "unterminated string";
        } else if (c == '#') {
            while (i < text.size() && text[i] != '\n')
                ++i;
        } else if (c == '<') {
            ++depth;
        } else if (c == '>' && --depth < 0) {
            return "unopened '>' at " + std::to_string(i);
        }
    }
    return depth == 0 ? "" : std::to_string(depth) + " statements left open";
}
