/// ViewerWindow: one diagram in a top window: the diagram view, its menus and toolbar through
/// the window's actions, the status line, and a Tcl interpreter whose diagram commands work on
/// this window's diagram.
#pragma once

#include "commands/DiagramSession.h"
#include "gui/DiagramView.h"
#include "render/OutputFormat.h"

#include "wsi/WsdTopWindow.h"

#include <string>

class QLabel;
class Viewer;
struct Tcl_Interp;

/// The identifiers of the viewer's commands in a window's actions table. The recent files
/// take 150 onward (RecentFileManager), the open windows 300 onward.
enum ViewerCommand : int {
    cmdOpen = 101,
    cmdSave = 102,
    cmdSaveAs = 103,
    cmdExportPng = 104,
    cmdExportPdf = 105,
    cmdExportSvg = 106,
    cmdExportEps = 107,
    cmdExportMif = 108,
    cmdClose = 109,
    cmdQuit = 110,
    cmdZoomIn = 201,
    cmdZoomOut = 202,
    cmdFit = 203,
    cmdSignalsShown = 204,
    cmdCascade = 251,
    cmdTile = 252,
    cmdFirstWindow = 300,
};

class ViewerWindow : public WsdTopWindow {
public:
    /// The most windows the Window menu lists.
    static constexpr int v_listedWindows = 9;

    /// An empty diagram in a window of viewer (which must outlive it); not shown yet.
    explicit ViewerWindow(Viewer& viewer);
    ~ViewerWindow() override;

    DiagramSession& session() { return m_session; }
    Diagram& diagram() { return m_session.diagram; }
    DiagramView& view() { return *m_view; }
    /// The file shown, empty for a new diagram.
    const std::string& path() const { return m_session.path; }

    /// Reads path into this window's diagram; false with error set, the diagram unchanged.
    [[nodiscard]] bool load(const std::string& path, std::string& error);
    /// Writes the diagram to path as .tqd and makes it the window's file.
    [[nodiscard]] bool saveAs(const std::string& path, std::string& error);
    /// Writes what the view shows (its signals, window of time and width) to path, as
    /// `tqdiagram render` writes the same view.
    [[nodiscard]] bool exportTo(const std::string& path, OutputFormat format, std::string& error);

    /// Evaluates a Tcl script with the diagram commands over this window's diagram. True with
    /// the script's result, false with the error message.
    bool evaluate(const std::string& script, std::string& result);

    /// Shows the recent files and the open windows in this window's menus again.
    void refreshMenus();
    /// The status line's text as shown.
    std::string statusText() const;

protected:
    /// Closing the window goes through the viewer, which keeps the list of windows.
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void connectCommand(int id, std::function<void()> run);
    void updateStatus();
    void updateTitle();
    void askOpen();
    void askSaveAs();
    void askExport(OutputFormat format);
    void askSignalsShown();
    void report(const std::string& error);

    Viewer& m_viewer;
    DiagramSession m_session;
    DiagramView* m_view;
    QLabel* m_status;
    Tcl_Interp* m_interp;
    int m_recentShown = -1;
};
