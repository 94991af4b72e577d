/// Viewer: the `tqdiagram view` application: its windows, settings, recent files and command
/// server. The windows ask it to open, close and arrange; the server's commands reach the
/// active window through it.
#pragma once

#include "gui/ViewerConfig.h"

#include "settings/RecentFileManager.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

class IPCPortFile;
class QObject;
class ViewerServer;
class ViewerWindow;

class Viewer {
public:
    /// How many files "Open Recent" lists.
    static constexpr unsigned short v_recentFiles = 8;

    Viewer();
    ~Viewer();
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;

    /// Reads the settings, the recent files and the saved window places from
    /// Config::settingsFile().
    void readSettings();
    /// Writes the recent files always and the settings as "save on exit" says (see
    /// Config::writeConfig), the open windows' places among them.
    void writeSettings();
    ViewerConfig& config() { return m_config; }
    RecentFileManager& recentFiles() { return m_recent; }

    /// A new window with an empty diagram, shown at the next saved place, and active.
    ViewerWindow* newWindow();
    /// Opens path in a new window and puts it at the top of the recent files; null with error
    /// set when it cannot be read (no window is left behind).
    ViewerWindow* openFile(const std::string& path, std::string& error);
    /// Puts path at the top of the recent files and shows them in every window.
    void rememberFile(const std::string& path);
    /// Closes window (after its event handlers have returned); the last window closed ends
    /// the viewer unless it serves commands.
    void closeWindow(ViewerWindow* window);

    /// The open windows in the order they were opened.
    std::vector<ViewerWindow*> windows() const;
    /// The window the user (or a command) activated last, or null when none is open.
    ViewerWindow* activeWindow() const;
    /// Raises and activates window index (from 0); false when there is none.
    bool activate(int index);
    void cascade();
    void tile();
    /// Ends the event loop; the caller of exec writes the settings.
    void quit();
    bool quitRequested() const { return m_quitRequested; }

    /// Serves Tcl commands on 127.0.0.1, publishing the port in portFile; false with error
    /// set when it cannot listen.
    [[nodiscard]] bool startServer(const std::string& portFile, std::string& error);
    /// Stops serving and removes the port file; nothing without a server.
    void stopServer();
    bool serving() const { return m_server != nullptr; }
    /// Runs a command line of the server on the GUI thread: "window list|activate N|cascade|
    /// tile", "quit", or a diagram command for the active window.
    bool evaluate(const std::string& script, std::string& result);

private:
    ViewerWindow* addWindow(std::unique_ptr<ViewerWindow> window);
    void refreshMenus();
    std::string windowCommand(int argc, const char** argv, bool& ok);

    ViewerConfig m_config;
    RecentFileManager m_recent;
    std::vector<std::unique_ptr<ViewerWindow>> m_windows;
    std::vector<std::unique_ptr<ViewerWindow>> m_closed;
    std::size_t m_placesUsed = 0;
    bool m_quitRequested = false;
    // Owns the deferred deletion of closed windows, so that none runs after the viewer.
    std::unique_ptr<QObject> m_context;
    std::unique_ptr<IPCPortFile> m_portFile;
    std::unique_ptr<ViewerServer> m_server;
    std::thread m_servicing;
};

/// `tqdiagram view [FILE...] [--serve] [--port-file PATH]` (argv[1] is "view"): starts Qt's
/// widgets and the toolkit's application (the caller started TqObject), opens each file in a window
/// and runs until the last window closes or a client says "quit". Returns the program's exit
/// status: 0, 1 when a file could not be read or the server not started, 2 for a bad
/// command line.
int runViewer(int argc, char** argv);
