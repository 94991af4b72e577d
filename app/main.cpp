// tqdiagram: timing diagrams from a file, rendered by the toolkit, scriptable in Tcl. This
// starts Qt (offscreen unless a display is asked for; the viewer on the display) and the
// toolkit, and runs the verb.
#include "cli/Program.h"
#include "gui/Viewer.h"
#include "io/AtomicFile.h"

#include "core/TqObject.h"

#include <QGuiApplication>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

int main(int argc, char** argv) {
    const bool viewer = argc > 1 && std::strcmp(argv[1], "view") == 0;
    if (!viewer)
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // Qt wants a private runtime folder and warns on every run without one.
    if (!getenv("XDG_RUNTIME_DIR")) {
        std::string runtime = "/tmp/runtime-";
        runtime.append(std::to_string(getuid()));
        mkdir(runtime.c_str(), 0700);
        setenv("XDG_RUNTIME_DIR", runtime.c_str(), 0);
    }
    AtomicFile::installInterruptCleanup();
    // The viewer makes its own widget application once its command line has been read.
    std::unique_ptr<QGuiApplication> application;
    if (!viewer)
        application = std::make_unique<QGuiApplication>(argc, argv);
    TqObject::startUp();
    const int status =
        viewer ? runViewer(argc, argv) : runProgram(argc, argv, std::cout, std::cerr);
    TqObject::shutDown();
    return status;
}
