/// RenderOptions: what part of a diagram is drawn and how large: the signals selected by
/// wildcard patterns, the window of time, the picture's width and the export parameters.
#pragma once

#include "model/Time.h"

#include "graphics/export/ExportParameters.h"

#include <optional>
#include <string>
#include <vector>

struct RenderOptions {
    /// Hierarchical-name patterns (SignalPattern); a signal is drawn when any matches. Empty:
    /// every signal.
    std::vector<std::string> patterns;
    /// The window of time, in the diagram's unit; unset ends come from the diagram's span.
    std::optional<Time> from;
    std::optional<Time> to;
    /// The picture's width in layout pixels (1/96 inch), names included.
    int width = 1000;
    /// Device pixels per layout pixel of a PNG (2 for a sharper picture).
    double scale = 1;
    /// Transitions drawn sloped (as a designer sketches them) or sharp (as a simulator
    /// shows them).
    bool slopedEdges = true;
    /// Paper, orientation, picture size and grey scale of EPS and MIF (the "PrintSetup"
    /// text). Without a picture size given on the command line the picture keeps its
    /// on-screen size.
    std::optional<ExportParameters> exportParameters;
};
