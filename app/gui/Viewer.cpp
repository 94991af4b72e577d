#include "gui/Viewer.h"

#include "gui/ViewerServer.h"
#include "gui/ViewerWindow.h"

#include "core/SToolkitClient.h"
#include "core/TarqToolkit.h"
#include "core/appiApplication.h"
#include "ipc/IPCPortFile.h"
#include "wsi/WindowParams.h"

#include <QApplication>
#include <QTimer>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <tcl.h>

Viewer::Viewer() : m_recent("Recent", v_recentFiles), m_context(std::make_unique<QObject>()) {}

Viewer::~Viewer() {
    stopServer();
    m_closed.clear();
    m_windows.clear();
}

void Viewer::readSettings() {
    m_config.readConfig();
    (void)m_recent.readConfig(Config::settingsFile());
    m_placesUsed = 0;
}

void Viewer::writeSettings() {
    std::vector<std::string> places;
    for (const auto& window : m_windows) {
        WindowParams place;
        window->getParameters(place);
        // Quitting has hidden the windows by now; each is to come back shown.
        if (place.showState() == WindowParams::Hidden)
            place.setShowState(WindowParams::Normal);
        char text[64];
        place.encode(text, sizeof text);
        places.emplace_back(text);
    }
    m_config.setWindowPlaces(std::move(places));
    (void)m_recent.writeConfig(Config::settings());
    m_config.writeConfig(Config::saveOnExit());
}

ViewerWindow* Viewer::newWindow() {
    return addWindow(std::make_unique<ViewerWindow>(*this));
}

ViewerWindow* Viewer::addWindow(std::unique_ptr<ViewerWindow> made) {
    m_windows.push_back(std::move(made));
    ViewerWindow* window = m_windows.back().get();
    window->showWindow();
    const std::vector<std::string>& places = m_config.windowPlaces();
    if (Config::saveWindowPos() && m_placesUsed < places.size()) {
        WindowParams place;
        place.decode(places[m_placesUsed++].c_str());
        window->setParameters(place);
    }
    wsiTopWindow::setTopmostTopWindow(*window);
    refreshMenus();
    return window;
}

ViewerWindow* Viewer::openFile(const std::string& path, std::string& error) {
    // A file that cannot be read leaves no window behind, so it is read before one is shown.
    auto made = std::make_unique<ViewerWindow>(*this);
    if (!made->load(path, error))
        return nullptr;
    ViewerWindow* window = addWindow(std::move(made));
    rememberFile(path);
    return window;
}

void Viewer::rememberFile(const std::string& path) {
    m_recent.addFileName(path.c_str());
    refreshMenus();
}

void Viewer::closeWindow(ViewerWindow* window) {
    auto found = std::find_if(m_windows.begin(), m_windows.end(),
                              [window](const auto& w) { return w.get() == window; });
    if (found == m_windows.end())
        return;
    window->hideWindow();
    m_closed.push_back(std::move(*found));
    m_windows.erase(found);
    QTimer::singleShot(0, m_context.get(), [this] { m_closed.clear(); });
    refreshMenus();
    if (m_windows.empty() && !serving())
        quit();
}

std::vector<ViewerWindow*> Viewer::windows() const {
    std::vector<ViewerWindow*> list;
    for (const auto& window : m_windows)
        list.push_back(window.get());
    return list;
}

ViewerWindow* Viewer::activeWindow() const {
    if (m_windows.empty())
        return nullptr;
    auto* topmost = dynamic_cast<ViewerWindow*>(wsiTopWindow::topmostTopWindow());
    for (const auto& window : m_windows) {
        if (window.get() == topmost)
            return topmost;
    }
    return m_windows.back().get();
}

bool Viewer::activate(int index) {
    if (index < 0 || index >= static_cast<int>(m_windows.size()))
        return false;
    ViewerWindow* window = m_windows[static_cast<std::size_t>(index)].get();
    if (window->isIconic())
        window->showNormal();
    window->raise();
    window->activateWindow();
    // Offscreen and under some window managers activation is not reported back; the
    // registry is told directly so that commands follow the choice at once.
    wsiTopWindow::setTopmostTopWindow(*window);
    refreshMenus();
    return true;
}

void Viewer::cascade() {
    OC_<WsdTopWindow> all;
    for (const auto& window : m_windows)
        all.add(window.get());
    DeviceRectangle screen;
    wsiTopWindow::cascadeWindows(all, screen, true);
}

void Viewer::tile() {
    OC_<WsdTopWindow> all;
    for (const auto& window : m_windows)
        all.add(window.get());
    DeviceRectangle screen;
    wsiTopWindow::tileWindows(all, screen, 0, true);
}

void Viewer::quit() {
    m_quitRequested = true;
    QCoreApplication::quit();
}

void Viewer::refreshMenus() {
    for (const auto& window : m_windows)
        window->refreshMenus();
}

bool Viewer::startServer(const std::string& portFile, std::string& error) {
    if (m_server)
        return true;
    m_portFile = std::make_unique<IPCPortFile>(portFile.c_str());
    m_server =
        std::make_unique<ViewerServer>([this](const std::string& script, std::string& result) {
            return evaluate(script, result);
        });
    m_server->setIPCPortFile(m_portFile.get());
    if (!m_server->execute()) {
        m_server.reset();
        m_portFile.reset();
        error = "cannot serve commands on 127.0.0.1";
        return false;
    }
    // The built-in commands (beep, exit, disconnect) are serviced here; the viewer's own go
    // to the GUI thread from the clients' threads.
    m_servicing = std::thread([server = m_server.get()] {
        while (!server->done())
            server->waitForCommand();
    });
    return true;
}

void Viewer::stopServer() {
    if (!m_server)
        return;
    m_server->stopForwarding();
    m_server->requestStop();
    if (m_servicing.joinable())
        m_servicing.join();
    m_server->remove();
    m_server->removeIPCPortFile();
    m_server.reset();
    m_portFile.reset();
}

bool Viewer::evaluate(const std::string& script, std::string& result) {
    int argc = 0;
    const char** argv = nullptr;
    if (Tcl_SplitList(nullptr, script.c_str(), &argc, &argv) != TCL_OK || argc == 0) {
        result = "empty command";
        return false;
    }
    bool ok = true;
    if (std::strcmp(argv[0], "quit") == 0) {
        result.clear();
        quit();
    } else if (std::strcmp(argv[0], "window") == 0) {
        result = windowCommand(argc, argv, ok);
    } else if (ViewerWindow* window = activeWindow()) {
        ok = window->evaluate(script, result);
    } else {
        result = "no window is open";
        ok = false;
    }
    Tcl_Free(reinterpret_cast<char*>(argv));
    return ok;
}

std::string Viewer::windowCommand(int argc, const char** argv, bool& ok) {
    const std::string sub = argc > 1 ? argv[1] : "";
    ok = true;
    if (sub == "list" && argc == 2) {
        // One element per window: its number, its title and 1 for the active one.
        Tcl_Obj* list = Tcl_NewListObj(0, nullptr);
        Tcl_IncrRefCount(list);
        const ViewerWindow* active = activeWindow();
        for (std::size_t k = 0; k < m_windows.size(); ++k) {
            Tcl_Obj* item[3] = {Tcl_NewIntObj(static_cast<int>(k + 1)),
                                Tcl_NewStringObj(m_windows[k]->windowTitleText().c_str(), -1),
                                Tcl_NewIntObj(m_windows[k].get() == active ? 1 : 0)};
            Tcl_ListObjAppendElement(nullptr, list, Tcl_NewListObj(3, item));
        }
        std::string text = Tcl_GetString(list);
        Tcl_DecrRefCount(list);
        return text;
    }
    if (sub == "activate" && argc == 3) {
        const int number = std::atoi(argv[2]);
        if (activate(number - 1))
            return "";
        ok = false;
        return "no window " + std::string(argv[2]);
    }
    if (sub == "cascade" && argc == 2) {
        cascade();
        return "";
    }
    if (sub == "tile" && argc == 2) {
        tile();
        return "";
    }
    ok = false;
    return "usage: window list|activate N|cascade|tile";
}

namespace {

constexpr const char* v_help =
    "usage: tqdiagram view [FILE...] [--serve] [--port-file PATH]\n"
    "Opens each diagram in a window of its own. With --serve, Tcl clients (tqsend, the\n"
    "tarqclient package) run the diagram commands on the active window's diagram, and\n"
    "\"window list|activate N|cascade|tile\" and \"quit\"; the port is published in PATH\n"
    "(default: tqdiagram-view.port in the runtime folder).\n"
    "Keys: F fit, + and - zoom, Left and Right scroll; Ctrl+wheel zooms at the pointer;\n"
    "a click sets the cursor, which shows every signal's value.\n";

struct ViewerArguments {
    std::vector<std::string> files;
    bool serve = false;
    std::string portFile;
};

// The settings live in tqdiagram.ini in the user's configuration folder.
class ViewerApplication : public appiApplication {
public:
    ViewerApplication() { setIniFile("tqdiagram.ini"); }
};

ViewerArguments v_arguments;
appiApplication* p_application = nullptr;

appiApplication* createApplication() {
    p_application = new ViewerApplication;
    return p_application;
}

void deleteApplication() {
    delete p_application;
    p_application = nullptr;
}

int startViewer(int, char**, int, int) {
    Viewer viewer;
    viewer.readSettings();
    int status = 0;
    for (const std::string& file : v_arguments.files) {
        std::string error;
        if (!viewer.openFile(file, error)) {
            std::cerr << "tqdiagram view: " << error << "\n";
            status = 1;
        }
    }
    if (viewer.windows().empty())
        viewer.newWindow();
    if (v_arguments.serve) {
        std::string error;
        if (!viewer.startServer(v_arguments.portFile, error)) {
            std::cerr << "tqdiagram view: " << error << "\n";
            return 1;
        }
    }
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::exec();
    viewer.writeSettings();
    viewer.stopServer();
    return status;
}

} // namespace

int runViewer(int argc, char** argv) {
    for (int i = 2; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--help" || argument == "-h") {
            std::cout << v_help;
            return 0;
        }
        if (argument == "--serve") {
            v_arguments.serve = true;
        } else if (argument == "--port-file" && i + 1 < argc) {
            v_arguments.portFile = argv[++i];
            v_arguments.serve = true;
        } else if (argument.rfind("--", 0) == 0) {
            std::cerr << "tqdiagram view: unknown option '" << argument << "'\n" << v_help;
            return 2;
        } else {
            v_arguments.files.push_back(argument);
        }
    }
    auto isSet = [](const char* name) {
        const char* value = getenv(name);
        return value && *value;
    };
    if (!isSet("QT_QPA_PLATFORM") && !isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY")) {
        std::cerr << "tqdiagram view: no display (set DISPLAY, or QT_QPA_PLATFORM=offscreen to "
                     "run without one)\n";
        return 1;
    }
    if (v_arguments.serve && v_arguments.portFile.empty()) {
        const char* runtime = getenv("XDG_RUNTIME_DIR");
        v_arguments.portFile = std::string(runtime ? runtime : "/tmp") + "/tqdiagram-view.port";
    }
    QApplication application(argc, argv);
    SToolkitClient client{};
    client.isApplication = 1;
    client.createApplicationFunc = &createApplication;
    client.deleteApplicationFunc = &deleteApplication;
    client.startApplicationFunc = &startViewer;
    return TarqToolkit::runApplication(&client, argc, argv);
}
