/// WsdTopWindow: a top-level window on the screen, a QMainWindow that takes part in the
/// registry of top windows. An application puts its own central widget, menus and toolbar
/// in it; its commands live in its actions table, keyed by identifier.
#pragma once

#include "core/TqExport.h"
#include "wsi/Menu.h"
#include "wsi/TqAction.h"
#include "wsi/WsiToolbarDescription.h"
#include "wsi/wsiTopWindow.h"

#include <QMainWindow>

#include <memory>
#include <vector>

class QToolBar;

/// WsdTopWindow: a top window as a Qt main window, with its menus, commands and toolbar.
class TQ_EXPORT WsdTopWindow : public QMainWindow, public wsiTopWindow {
public:
    /// Registers the window as the topmost; it is not shown yet.
    explicit WsdTopWindow(QWidget* parent = nullptr);
    ~WsdTopWindow() override;

    /// Both title setters stay callable: the toolkit's (UTF-8 main title part) and Qt's.
    using QMainWindow::setWindowTitle;
    using wsiTopWindow::setWindowTitle;

    ///@{
    /// Answered by the window's widget (QMainWindow has functions of the same names).
    bool isIconic() const override { return WsdWindow::isIconic(); }
    bool isMaximized() const override { return WsdWindow::isMaximized(); }
    ///@}

    ///@{
    /// The window's commands by identifier: those of its menus and any added here.
    TqActionTable& actions() { return m_actions; }
    const TqActionTable& actions() const { return m_actions; }
    ///@}
    /// A command that no menu holds (for a toolbar button or a shortcut); null if the
    /// identifier is taken.
    TqAction* addAction(int id, const char* text);
    /// Appends a menu, owned by the window, to the menu bar; its items join actions().
    Menu* addMenu(const char* title);

    ///@{
    /// Builds the toolbar, one bar per row, from the description: each button shows the
    /// command of that identifier in actions() (identifiers without a command are left
    /// out), sized by the toolbar metrics of wsiTopWindow. Replaces an earlier toolbar.
    void setToolbar(const WsiToolbarDescription& description);
    const WsiToolbarDescription& toolbarDescription() const { return m_toolbarDescription; }
    ///@}

    /// Places window k so that its outer frame fills rectangles[k]: each is first returned to
    /// its normal state, then its frame margins are measured and its client area set inside
    /// them. rectangles holds windows.size() elements.
    static void arrangeWindows(OC_<WsdTopWindow>& windows, DeviceRectangle* rectangles);

protected:
    /// Keeps the registry's topmost window the one the user activated last.
    void changeEvent(QEvent* event) override;

private:
    TqActionTable m_actions;
    std::vector<std::unique_ptr<Menu>> m_menus;
    std::vector<QToolBar*> m_toolbars;
    WsiToolbarDescription m_toolbarDescription;
};
