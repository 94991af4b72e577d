#include "render/DiagramExporter.h"

#include "io/AtomicFile.h"
#include "render/DiagramPainter.h"

#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"
#include "graphics/export/QtFileDevice.h"
#include "graphics/export/eps/EPSDevice.h"
#include "graphics/export/mif/MIFDevice.h"
#include "graphics/export/svg/SVGDevice.h"

#include <QImage>

#include <algorithm>
#include <cmath>
#include <fstream>

namespace {

constexpr double v_pixelsPerInch = 96;

double inches(double value, ExportUnits units) {
    switch (units) {
    case unitsCentimetre:
        return value / 2.54;
    case unitsMillimetre:
        return value / 25.4;
    case unitsPoint:
        return value / 72;
    default:
        return value;
    }
}

// The export parameters of EPS and MIF: those given, or a picture of the layout's size.
ExportParameters parametersFor(const RenderOptions& options, const DiagramPainter& painter) {
    if (options.exportParameters)
        return *options.exportParameters;
    std::string text = "file,,,portrait,noclipboard,letter,default,";
    text.append(std::to_string(painter.width() / v_pixelsPerInch))
        .append(",")
        .append(std::to_string(painter.height() / v_pixelsPerInch))
        .append(",in,color,fixed,mifframe,nopreview");
    return ExportParameters(text.c_str());
}

// Units of a format per layout pixel: unitsPerInch at the picture's own size, or, for
// scaleable parameters given by the user, what fits the layout into their picture.
double unitsPerPixel(const RenderOptions& options, const DiagramPainter& painter,
                     const ExportParameters& parameters, double unitsPerInch) {
    if (!options.exportParameters || !parameters.isScaleable())
        return unitsPerInch / v_pixelsPerInch;
    const double width = inches(parameters.pictureWidth(), parameters.units()) * unitsPerInch;
    const double height = inches(parameters.pictureHeight(), parameters.units()) * unitsPerInch;
    return std::min(width / painter.width(), height / painter.height());
}

DeviceRectangle scaled(const DiagramPainter& painter, double unitsPerPixel, std::int32_t at = 0) {
    return DeviceRectangle(
        at, at, at + static_cast<std::int32_t>(std::lround(painter.width() * unitsPerPixel)),
        at + static_cast<std::int32_t>(std::lround(painter.height() * unitsPerPixel)));
}

// A device that opens its file itself (PDFDevice, SVGDevice): isOpen, then close.
template <class FileDevice>
bool writeFile(FileDevice& device, DiagramPainter& painter, std::string& error,
               const std::string& path) {
    if (!device.isOpen()) {
        error = "cannot write " + path;
        return false;
    }
    painter.paint(device, 1);
    if (!device.close()) {
        error = "cannot write " + path;
        return false;
    }
    return true;
}

void paintImage(DiagramPainter& painter, double scale, QImage& image) {
    image = QImage(static_cast<int>(std::lround(painter.width() * scale)),
                   static_cast<int>(std::lround(painter.height() * scale)), QImage::Format_RGB32);
    const int dotsPerMeter = static_cast<int>(std::lround(v_pixelsPerInch * scale / 0.0254));
    image.setDotsPerMeterX(dotsPerMeter);
    // Not filled here: the painter's first act is to paint the whole background.
    image.setDotsPerMeterY(dotsPerMeter);
    TqPainter qpainter(&image);
    qpainter.setRenderHint(QPainter::Antialiasing);
    qpainter.setRenderHint(QPainter::TextAntialiasing);
    Device device(qpainter);
    painter.paint(device, scale);
    qpainter.end();
}

} // namespace

bool DiagramExporter::renderImage(const Diagram& diagram, const RenderOptions& options,
                                  QImage& image, std::string& error) {
    DiagramPainter painter(diagram, options);
    if (!painter.layout(error))
        return false;
    paintImage(painter, options.scale > 0 ? options.scale : 1, image);
    return true;
}

bool DiagramExporter::exportFile(const Diagram& diagram, const RenderOptions& options,
                                 const std::string& path, OutputFormat format, std::string& error) {
    DiagramPainter painter(diagram, options);
    if (!painter.layout(error))
        return false;
    AtomicFile file(path);
    const std::string& temporary = file.temporaryPath();
    const char* job = diagram.title().empty() ? "tqdiagram" : diagram.title().c_str();
    bool written = false;
    switch (format) {
    case OutputFormat::Png: {
        QImage image;
        paintImage(painter, options.scale > 0 ? options.scale : 1, image);
        written = image.save(QString::fromStdString(temporary), "PNG");
        if (!written)
            error = "cannot write " + path;
        break;
    }
    case OutputFormat::Pdf: {
        PDFDevice device(temporary.c_str(), job, painter.width(), painter.height());
        written = writeFile(device, painter, error, path);
        break;
    }
    case OutputFormat::Svg: {
        SVGDevice device(temporary.c_str(), job, painter.width(), painter.height());
        written = writeFile(device, painter, error, path);
        break;
    }
    case OutputFormat::Eps: {
        // Page units are fifths of a point; the picture sits an inch from the top left corner.
        const ExportParameters parameters = parametersFor(options, painter);
        const double units = unitsPerPixel(options, painter, parameters, 360);
        std::ofstream out(temporary, std::ios::binary);
        EPSDevice device(nullptr, job, out, parameters);
        (void)device.open(scaled(painter, 1), scaled(painter, units, 360));
        painter.paint(device, 1);
        device.close();
        device.endOfPage();
        out.flush();
        written = out.good();
        if (!written)
            error = "cannot write " + path;
        break;
    }
    case OutputFormat::Mif: {
        // A MIF unit is a tenth of a point.
        const ExportParameters parameters = parametersFor(options, painter);
        const double units = unitsPerPixel(options, painter, parameters, 720);
        std::ofstream out(temporary, std::ios::binary);
        MIFDevice device(job, out, parameters, scaled(painter, units));
        painter.paint(device, units);
        written = device.close() && (out.flush(), out.good());
        if (!written)
            error = "cannot write " + path;
        break;
    }
    }
    return written && file.commit(error);
}
