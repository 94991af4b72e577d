// tqdiagram: timing diagrams from a file, rendered by the toolkit, scriptable in Tcl. This
// starts Qt (offscreen unless a display is asked for) and the toolkit, and runs the verb.
#include "cli/Program.h"
#include "io/AtomicFile.h"

#include "core/TqObject.h"

#include <QGuiApplication>

#include <cstdlib>
#include <iostream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // Qt wants a private runtime folder and warns on every run without one.
    if (!getenv("XDG_RUNTIME_DIR")) {
        std::string runtime = "/tmp/runtime-";
        runtime.append(std::to_string(getuid()));
        mkdir(runtime.c_str(), 0700);
        setenv("XDG_RUNTIME_DIR", runtime.c_str(), 0);
    }
    AtomicFile::installInterruptCleanup();
    QGuiApplication application(argc, argv);
    TqObject::startUp();
    const int status = runProgram(argc, argv, std::cout, std::cerr);
    TqObject::shutDown();
    return status;
}
