// timing_diagram: draws a small timing diagram through the toolkit's device layer and writes
// it as PNG, PDF, SVG, EPS and MIF. The diagram is described in sheet units (nanoseconds across,
// signal rows down); one transformation maps it to pixels, and a Device over a TqPainter
// paints it: clock and bus waveforms, a filled highlight, dashed grid lines, an arrow and
// text.
//
//   timing_diagram [folder]      (default: the current folder)
#include "core/TqObject.h"
#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/export/QtFileDevice.h"
#include "graphics/export/eps/EPSDevice.h"
#include "graphics/export/mif/MIFDevice.h"
#include "graphics/export/svg/SVGDevice.h"

#include <QGuiApplication>
#include <QImage>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr double v_period = 10.0; // ns per clock cycle
constexpr double v_cycles = 8.0;
constexpr double v_rowHeight = 1.0; // sheet units per signal row
constexpr double v_swing = 0.6;     // height of a waveform within its row

// The high and low levels of row r (y grows downward).
double high(int row) {
    return row * v_rowHeight + (v_rowHeight - v_swing) / 2;
}
double low(int row) {
    return high(row) + v_swing;
}

void drawClock(Device& device, int row) {
    std::vector<SheetPoint> wave;
    for (int cycle = 0; cycle < v_cycles; ++cycle) {
        const double t = cycle * v_period;
        wave.emplace_back(t, low(row));
        wave.emplace_back(t, high(row));
        wave.emplace_back(t + v_period / 2, high(row));
        wave.emplace_back(t + v_period / 2, low(row));
    }
    wave.emplace_back(v_cycles * v_period, low(row));
    device.drawPolyline(static_cast<int>(wave.size()), wave.data());
}

// A signal given as (time, level) steps, drawn with sloped transitions.
void drawSignal(Device& device, int row, const std::vector<std::pair<double, bool>>& steps) {
    double level = steps.front().second ? high(row) : low(row);
    device.moveTo(SheetPoint(0, level));
    for (const auto& [time, isHigh] : steps) {
        const double next = isHigh ? high(row) : low(row);
        if (next == level)
            continue;
        device.lineTo(SheetPoint(time, level));
        device.drawCurve(SheetPoint(time, level), SheetPoint(time + 1.5, next));
        device.moveTo(SheetPoint(time + 1.5, next));
        level = next;
    }
    device.lineTo(SheetPoint(v_cycles * v_period, level));
}

// A bus: crossing transitions between values, each value written in the middle.
void drawBus(Device& device, int row, const std::vector<std::pair<double, const char*>>& values,
             WsiFont& font) {
    const double middle = (high(row) + low(row)) / 2;
    const double slope = 1.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double start = values[i].first;
        const double end = i + 1 < values.size() ? values[i + 1].first : v_cycles * v_period;
        const SheetPoint outline[] = {
            {start, middle}, {start + slope, high(row)}, {end - slope, high(row)},
            {end, middle},   {end - slope, low(row)},    {start + slope, low(row)},
        };
        device.drawPolygon(6, outline);
        if (values[i].second) {
            device.drawAlignedText(values[i].second, SheetPoint((start + end) / 2, middle), font,
                                   wsiAlignHCenter, wsiAlignVCenter);
        } else {
            device.fillPolygon(wsiPaleGray, 6, outline); // an unknown value: greyed out
            device.drawPolygon(6, outline);
        }
    }
}

constexpr int v_width = 760, v_height = 300;

// The canvas in device units, scale of them to the pixel.
DeviceRectangle canvas(double scale) {
    return DeviceRectangle(0, 0, static_cast<std::int32_t>(v_width * scale),
                           static_cast<std::int32_t>(v_height * scale));
}

// The whole diagram on a 760 x 300 pixel canvas, drawn on a device with scale device units
// to the pixel (the export formats have finer units of their own: text is measured in them).
void drawDiagram(Device& device, double scale = 1) {
    device.setBackgroundColor(wsiWhite);
    device.erase(canvas(scale));
    // 8 pixels per ns, 60 pixels per row, the waveforms starting right of the names.
    device.setDisplayTransformation(
        TqMatrix(FloatPoint(8.0 * scale, 60.0 * scale), FloatPoint(90.0 * scale, 40.0 * scale)));

    // A highlighted setup window and dashed grid lines at the rising edges.
    device.setColor(wsiYellow);
    device.fillRectangle(SheetRectangle(SheetPoint(27, 0), SheetPoint(30, 4 * v_rowHeight)));
    device.setColor(wsiGray);
    device.setPenStyle(wsiPenDash);
    for (int cycle = 0; cycle <= v_cycles; ++cycle) {
        device.drawLine(SheetPoint(cycle * v_period, 0),
                        SheetPoint(cycle * v_period, 4 * v_rowHeight));
    }
    device.setPenStyle(wsiPenSolid);

    // Names, clock, reset, a data bus and a valid strobe.
    WsiFont font("DejaVu Sans", 10);
    WsiFont title("DejaVu Sans", 12);
    title.setBold(true);
    device.setColor(wsiBlack);
    const char* names[] = {"clk", "rst_n", "data[7:0]", "valid"};
    for (int row = 0; row < 4; ++row) {
        device.drawAlignedText(names[row], SheetPoint(-2, (high(row) + low(row)) / 2), font,
                               wsiAlignRight, wsiAlignVCenter);
    }
    device.drawAlignedText("Write cycle", SheetPoint(v_cycles * v_period / 2, -0.3), title,
                           wsiAlignHCenter, wsiAlignBottom);
    device.setPenWidth(std::lround(2 * scale));
    device.setColor(wsiDarkBlue);
    drawClock(device, 0);
    device.setColor(wsiDarkRed);
    drawSignal(device, 1, {{0, false}, {12, true}});
    device.setColor(wsiBlack);
    device.setPenWidth(std::lround(scale));
    drawBus(device, 2, {{0, nullptr}, {20, "00"}, {30, "A5"}, {40, "3C"}, {60, "FF"}}, font);
    device.setPenWidth(std::lround(2 * scale));
    device.setColor(wsiDarkGreen);
    drawSignal(device, 3, {{0, false}, {30, true}, {50, false}});

    // An arrow from the clock edge to the strobe it causes.
    device.setPenWidth(std::lround(scale));
    device.setColor(wsiRed);
    const TqMatrix& m = device.displayTransformation(false);
    DevicePoint arrow[] = {DevicePoint(SheetPoint(30, low(0)), m),
                           DevicePoint(SheetPoint(30.8, high(3) - 0.05), m)};
    device.drawCappedPolylineUnTransformed(
        wsiLineCapRound, wsiLineCapArrow,
        DevicePoint(std::int32_t(10 * scale), std::int32_t(8 * scale)), 2, arrow);
}

bool report(int step, const std::string& file, bool written) {
    std::printf("%d. %s %s\n", step, written ? "Wrote" : "Could not write", file.c_str());
    return written;
}

bool writePng(const std::string& file) {
    QImage image(v_width, v_height, QImage::Format_RGB32);
    TqPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    Device device(painter);
    drawDiagram(device);
    painter.end();
    return image.save(QString::fromStdString(file), "PNG");
}

bool writePdf(const std::string& file) {
    PDFDevice device(file.c_str(), "timing_diagram", v_width, v_height);
    drawDiagram(device);
    return device.close();
}

// The export parameters of the document formats: a picture of the canvas's size at 96 pixels
// per inch.
const ExportParameters& exportParameters() {
    static const ExportParameters parameters(
        "file,,,portrait,noclipboard,letter,default,7.9167,3.125,in,color,scaleable,mifframe,"
        "nopreview");
    return parameters;
}

// The diagram is drawn in pixels, as on the screen, and the header maps them onto the page,
// whose units are fifths of a point: 3.75 to a pixel at 96 per inch, the picture an inch from
// the top left corner. Widths, dashes and text sizes scale with it, so they print as they
// show; the device measures text at the 96 pixels per inch that follow.
bool writeEps(const std::string& file) {
    constexpr double unitsPerPixel = 3.75;
    std::ofstream out(file, std::ios::binary);
    EPSDevice device(nullptr, "timing_diagram", out, exportParameters());
    const DeviceRectangle page(360, 360, 360 + static_cast<std::int32_t>(v_width * unitsPerPixel),
                               360 + static_cast<std::int32_t>(v_height * unitsPerPixel));
    (void)device.open(canvas(1), page);
    drawDiagram(device);
    device.close();
    device.endOfPage();
    return out.good();
}

// A MIF device unit is a tenth of a point: 7.5 to a pixel at 96 per inch.
bool writeMif(const std::string& file) {
    constexpr double scale = 7.5;
    std::ofstream out(file, std::ios::binary);
    MIFDevice device("timing_diagram", out, exportParameters(), canvas(scale));
    drawDiagram(device, scale);
    return device.close() && out.good();
}

bool writeSvg(const std::string& file) {
    SVGDevice device(file.c_str(), "timing_diagram", v_width, v_height);
    drawDiagram(device);
    return device.close();
}

} // namespace

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : ".";
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);
    TqObject::startUp();

    std::puts("1. One drawing routine, in sheet units (ns across, signal rows down), mapped to\n"
              "   the pixels of a 760 x 300 canvas, painted through a Device onto:");
    const std::string stem = folder + "/timing_diagram";
    bool ok = report(2, stem + ".png", writePng(stem + ".png"));
    ok = report(3, stem + ".pdf", writePdf(stem + ".pdf")) && ok;
    ok = report(4, stem + ".svg", writeSvg(stem + ".svg")) && ok;
    ok = report(5, stem + ".eps", writeEps(stem + ".eps")) && ok;
    ok = report(6, stem + ".mif", writeMif(stem + ".mif")) && ok;
    TqObject::shutDown();
    return ok ? 0 : 1;
}
