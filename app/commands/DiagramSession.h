/// DiagramSession: the diagram the Tcl commands work on, with the file it came from and the
/// window of time exports use by default. A script runner has one; the viewer's command
/// server will share its window's.
#pragma once

#include "model/Diagram.h"

#include <optional>
#include <string>

struct DiagramSession {
    Diagram diagram;
    /// The file opened or last saved; empty for a new diagram.
    std::string path;
    /// The window set by "view range"; unset ends follow the diagram's span.
    std::optional<Time> from;
    std::optional<Time> to;
};
