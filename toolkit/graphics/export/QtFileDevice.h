/// \file
/// QtFileDevice and PDFDevice: devices that paint a drawing into a PDF file through Qt's own
/// writer, so the drawing code that paints the screen exports it too.
#pragma once

#include "core/TqExport.h"
#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"

#include <memory>

class QPdfWriter;

/// A Device over a paint device of its own that writes a file. One device unit is one pixel
/// at the resolution given (96 per inch unless said otherwise); the page or canvas is
/// width x height device units with its origin at the top left.
class TQ_EXPORT QtFileDevice : public Device {
public:
    ~QtFileDevice() override;

    /// Whether painting began, that is whether the file could be opened for writing.
    bool isOpen() const { return m_painter.isActive(); }
    ///@{
    /// Ends painting and finishes the file; true when it was written whole. Later calls
    /// return false. The destructor closes a device left open.
    [[nodiscard]] bool close();
    QPaintDevice& paintDevice() override;
    ///@}

protected:
    QtFileDevice() = default;
    /// Takes target and begins painting on it; isOpen tells whether that worked.
    void begin(std::unique_ptr<QPaintDevice> target);

private:
    ///@{
    /// Declared before the painter so that the painter ends before its target goes.
    std::unique_ptr<QPaintDevice> m_target;
    TqPainter m_painter;
    ///@}
};

/// A device that draws into a PDF file through Qt's PDF writer.
class TQ_EXPORT PDFDevice : public QtFileDevice {
public:
    /// A one-page PDF file of width x height device units (the page is that size), titled
    /// jobName and made by this library.
    PDFDevice(const char* fileName, const char* jobName, int width, int height,
              int resolution = 96);
};
