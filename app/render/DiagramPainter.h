/// DiagramPainter: lays out a diagram (or the signals and window of time a RenderOptions
/// selects) and draws it through any toolkit device, so that the screen, PNG, PDF, SVG, EPS
/// and MIF show the same picture. Positions are layout pixels (1/96 inch); the device's
/// display transformation maps them to its own units.
#pragma once

#include "model/Diagram.h"
#include "render/RenderOptions.h"
#include "render/TimeScale.h"
#include "render/WaveformRuns.h"

#include "graphics/device/Device.h"

#include <QLine>

#include <string>
#include <vector>

class NameCache;

class DiagramPainter {
public:
    /// Neither is copied: both must outlive the painter.
    DiagramPainter(const Diagram& diagram, const RenderOptions& options);

    /// Chooses the rows and measures the names. False, with error set, when the patterns
    /// select no signal or the window of time is empty.
    [[nodiscard]] bool layout(std::string& error);
    /// The picture's size in layout pixels (after layout).
    int width() const { return m_width; }
    int height() const { return m_height; }
    const TimeScale& timeScale() const { return m_scale; }
    /// The rows drawn, top to bottom: a signal's index, or npos for a group's heading.
    struct Row {
        std::size_t signal = Signal::npos;
        std::string group;
        double top = 0;
        double height = 0;
    };
    const std::vector<Row>& rows() const { return m_rows; }
    /// The vertical middle of the signal's row, or a negative number when it is not drawn.
    double rowMiddle(const std::string& signal) const;
    /// Signal names on the screen are copied from cache (which must outlive the painter), or
    /// drawn as text when null (the default).
    void setNameCache(NameCache* cache) { m_nameCache = cache; }

    /// Draws the whole picture on device, whose units are unitsPerPixel to a layout pixel
    /// (its display transformation is set here). Stops early, leaving the picture partial,
    /// when Device::checkBreakExecution says the user asked to.
    void paint(Device& device, double unitsPerPixel);
    /// Draws the band of the picture from top to bottom (layout pixels) as paint draws it
    /// there, leaving the device clipped to the band: only the rows that reach into it are
    /// drawn, so a viewer pays for what it shows, not for the whole diagram.
    void paintBand(Device& device, double unitsPerPixel, double top, double bottom);

    // Layout constants, in layout pixels.
    static constexpr double v_margin = 12;
    static constexpr double v_rowHeight = 30;
    static constexpr double v_swing = 18;
    static constexpr double v_groupHeight = 22;
    static constexpr double v_axisHeight = 28;
    static constexpr double v_titleHeight = 28;
    static constexpr double v_labelRowHeight = 18;

private:
    void paintAxis(Device& device, double bottom);
    void paintGrid(Device& device);
    void paintRow(Device& device, const Row& row);
    void paintBit(Device& device, const Signal& signal, double high, double low);
    void paintBus(Device& device, const Signal& signal, double high, double low);
    void paintDense(Device& device, wsiColor ink, wsiColor fill, double high, double low);
    void paintHatch(Device& device, double x0, double x1, double high, double low);
    void paintBusValue(Device& device, const Signal& signal, std::size_t change, double x0,
                       double x1, double middle);
    void paintGap(Device& device, double x, double top, double bottom);
    void paintDecorations(Device& device);
    void paintLabelBackground(Device& device, const std::string& text, const SheetPoint& at,
                              WsiFont& font, bool centred);
    void setPen(Device& device, double pixels);
    /// Draws a level line of the waveforms (a pen of 1.5 layout pixels).
    void drawLevel(Device& device, int n, const SheetPoint* points);
    /// Draws n lines in the current pen, from ends[2k] to ends[2k + 1].
    void drawLines(Device& device, int n, const SheetPoint* ends);
    void setInk(Device& device, wsiColor color);
    Time tickStep() const;

    const Diagram& m_diagram;
    const RenderOptions& m_options;
    std::vector<Row> m_rows;
    TimeScale m_scale;
    int m_width = 0;
    int m_height = 0;
    double m_nameRight = 0;
    double m_titleTop = 0;
    double m_axisTop = 0;
    double m_markerTop = 0;
    double m_annotationTop = 0;
    double m_rowsTop = 0;
    double m_rowsBottom = 0;
    double m_unitsPerPixel = 1;
    std::vector<WaveformRun> m_runs;
    // Buffers reused from row to row: points, screen lines, and which slots of a bus row are
    // hatched.
    std::vector<SheetPoint> m_line;
    std::vector<SheetPoint> m_points;
    std::vector<QLine> m_deviceLines;
    std::vector<char> m_hatched;
    NameCache* m_nameCache = nullptr;
};

/// The text a bus change shows: its value in the signal's radix and notation ("A5", "8'hA5",
/// X"A5", "-3"); digits that hold X or Z show X or Z. A change with text shows its text.
std::string busValueText(const Signal& signal, std::size_t change);
