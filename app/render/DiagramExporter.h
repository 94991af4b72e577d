/// DiagramExporter: renders a diagram into a PNG, PDF, SVG, EPS or MIF file through the
/// matching toolkit device, the same DiagramPainter drawing each. A file appears only when it
/// was written whole.
#pragma once

#include "model/Diagram.h"
#include "render/OutputFormat.h"
#include "render/RenderOptions.h"

#include <string>

class QImage;

class DiagramExporter {
public:
    /// Writes the picture to path in format. False, with error set and no file written, when
    /// the options select nothing or the file cannot be written.
    [[nodiscard]] static bool exportFile(const Diagram& diagram, const RenderOptions& options,
                                         const std::string& path, OutputFormat format,
                                         std::string& error);
    /// Paints the picture into image (made here, options.scale device pixels to a layout
    /// pixel), as the PNG file would hold it.
    [[nodiscard]] static bool renderImage(const Diagram& diagram, const RenderOptions& options,
                                          QImage& image, std::string& error);
};
