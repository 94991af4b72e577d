/// DiagramCommands: the Tcl commands over a DiagramSession, one command set for scripts run
/// by `tqdiagram script` and for the viewer's command server: diagram, signal, arrow, marker
/// and view, each with subcommands and a `help` subcommand.
#pragma once

struct Tcl_Interp;
struct DiagramSession;

class DiagramCommands {
public:
    /// Creates the five commands in interp, working on session (which must outlive them).
    static void registerIn(Tcl_Interp* interp, DiagramSession& session);
    /// Static text: one line per command and subcommand.
    static const char* overview();
};
