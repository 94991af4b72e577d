// What the EPS tests share: a sample drawing and a count of one operator in the written text.
#pragma once

#include "graphics/export/eps/EPSDevice.h"
#include "graphics/export/eps/EPSEngine.h"
#include "graphics/geometry/SheetPoint.h"
#include "graphics/geometry/SheetRectangle.h"

#include <string>

namespace eps_test {

// How often word occurs in text (no operator the writers use is part of another).
inline int countWord(const std::string& text, const std::string& word) {
    int count = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

// A drawing through the public operations of a device, touching every kind of text the
// writer has: colours, dashes and widths, lines, polylines, polygons, a clip with the state
// set again after it, curves, ellipses, text and aligned text.
inline void drawSample(wsiDevice& d) {
    d.setColor(wsiRed);
    d.setPenStyle(wsiPenDash);
    d.setPenWidth(3);
    d.drawLine(SheetPoint(100, 100), SheetPoint(900, 100));
    const SheetPoint zigzag[] = {{100, 200}, {200, 300}, {300, 200}, {400, 300}};
    d.drawPolyline(4, zigzag);
    d.setColor(wsiDarkGreen);
    d.drawRectangle(SheetRectangle(500, 500, 800, 700));
    d.setClipRect(DeviceRectangle(50, 50, 2000, 1500));
    d.setColor(wsiBlue);
    d.setPenStyle(wsiPenDot);
    d.setPenWidth(2);
    d.drawLine(SheetPoint(0, 1000), SheetPoint(3000, 1000)); // clipped
    d.drawCurve(SheetPoint(100, 800), SheetPoint(600, 1200));
    d.drawEllipse(SheetRectangle(1000, 200, 1201, 400), false); // radius 100.25
    d.setColor(wsiYellow);
    d.drawEllipse(SheetRectangle(1300, 200, 1500, 300), true);
    WsiFont font("Helvetica", 12);
    d.setColor(wsiPurple);
    d.drawText("Hello (EPS) \\ world", SheetPoint(300, 1300), font);
    font.setItalic(true);
    d.drawAlignedText("aligned", SheetPoint(1000, 1400), font, wsiAlignHCenter, wsiAlignBottom);
}

} // namespace eps_test
