#include "commands/ScriptRunner.h"

#include "commands/DiagramCommands.h"

#include <tcl.h>

namespace {

std::string failure(Tcl_Interp* interp) {
    std::string message = std::to_string(Tcl_GetErrorLine(interp));
    message.append(": ").append(Tcl_GetStringResult(interp));
    return message;
}

} // namespace

ScriptRunner::ScriptRunner() : m_interp(Tcl_CreateInterp()) {
    // Without the Tcl library files the built-in commands still work; only the library's
    // procedures (auto-loading, parray) are then missing, so a failure here is not fatal.
    (void)Tcl_Init(m_interp);
    DiagramCommands::registerIn(m_interp, m_session);
}

ScriptRunner::~ScriptRunner() {
    Tcl_DeleteInterp(m_interp);
}

bool ScriptRunner::runFile(const std::string& file, const std::vector<std::string>& arguments,
                           std::string& result) {
    Tcl_Obj* list = Tcl_NewListObj(0, nullptr);
    for (const std::string& argument : arguments)
        Tcl_ListObjAppendElement(
            m_interp, list, Tcl_NewStringObj(argument.c_str(), static_cast<int>(argument.size())));
    Tcl_SetVar2Ex(m_interp, "argv", nullptr, list, TCL_GLOBAL_ONLY);
    Tcl_SetVar2Ex(m_interp, "argc", nullptr, Tcl_NewIntObj(static_cast<int>(arguments.size())),
                  TCL_GLOBAL_ONLY);
    Tcl_SetVar2Ex(m_interp, "argv0", nullptr, Tcl_NewStringObj(file.c_str(), -1), TCL_GLOBAL_ONLY);
    if (Tcl_EvalFile(m_interp, file.c_str()) != TCL_OK) {
        result = file;
        result.append(":").append(failure(m_interp));
        return false;
    }
    result = Tcl_GetStringResult(m_interp);
    return true;
}

bool ScriptRunner::runText(const std::string& script, std::string& result) {
    if (Tcl_EvalEx(m_interp, script.c_str(), static_cast<int>(script.size()), TCL_EVAL_GLOBAL) !=
        TCL_OK) {
        result = failure(m_interp);
        return false;
    }
    result = Tcl_GetStringResult(m_interp);
    return true;
}

const char* ScriptRunner::help() {
    static const std::string text =
        std::string("usage: tqdiagram script FILE.tcl [ARG...]\n"
                    "\n"
                    "Runs a Tcl script without a window; its arguments are in argv. The script\n"
                    "builds or opens a diagram and exports it with these commands ('COMMAND\n"
                    "help' tells more about each):\n\n")
            .append(DiagramCommands::overview());
    return text.c_str();
}
