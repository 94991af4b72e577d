/// ScriptRunner: runs a Tcl script headless, with the diagram commands over a session of its
/// own and the script's arguments in argv, as `tqdiagram script` does.
#pragma once

#include "commands/DiagramSession.h"

#include <string>
#include <vector>

struct Tcl_Interp;

class ScriptRunner {
public:
    ScriptRunner();
    ~ScriptRunner();
    ScriptRunner(const ScriptRunner&) = delete;
    ScriptRunner& operator=(const ScriptRunner&) = delete;

    /// Evaluates the file with argv0 set to it and argv/argc to arguments. True with the
    /// script's result; false with "FILE:LINE: message" of the first error.
    [[nodiscard]] bool runFile(const std::string& file, const std::vector<std::string>& arguments,
                               std::string& result);
    /// Evaluates script text; the same results, with "LINE: message" on an error.
    [[nodiscard]] bool runText(const std::string& script, std::string& result);

    DiagramSession& session() { return m_session; }
    /// Static text: the help of `tqdiagram script`.
    static const char* help();

private:
    DiagramSession m_session;
    Tcl_Interp* m_interp;
};
