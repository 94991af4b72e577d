#include "wsi/WsdTopWindow.h"

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>
#include <QToolButton>

WsdTopWindow::WsdTopWindow(QWidget* parent)
    : QMainWindow(parent), wsiTopWindow(static_cast<QWidget&>(*this)) {
    if (cacheScreenBits())
        setAttribute(Qt::WA_StaticContents);
}

WsdTopWindow::~WsdTopWindow() = default;

TqAction* WsdTopWindow::addAction(int id, const char* text) {
    TqAction* action = m_actions.add(id, text, this);
    if (action)
        QMainWindow::addAction(action->qAction());
    return action;
}

Menu* WsdTopWindow::addMenu(const char* title) {
    m_menus.push_back(std::make_unique<Menu>(title, &m_actions));
    Menu* menu = m_menus.back().get();
    menuBar()->addMenu(menu->qMenu());
    return menu;
}

void WsdTopWindow::setToolbar(const WsiToolbarDescription& description) {
    for (QToolBar* bar : m_toolbars) {
        if (toolBarBreak(bar))
            removeToolBarBreak(bar);
        delete bar;
    }
    m_toolbars.clear();
    m_toolbarDescription = description;
    for (int row = 0; row < description.rows(); ++row) {
        auto* bar = new QToolBar(this);
        bar->setMovable(false);
        const bool fullHeight = description.rowFlags()[row] != 0;
        const QSize buttonSize(buttonWidth(), fullHeight ? buttonHeight() : smallButtonHeight());
        for (int id : description.row(row)) {
            if (id == WsiToolbarDescription::gap) {
                auto* spacer = new QWidget(bar);
                spacer->setFixedSize(horizontalButtonGap(), buttonSize.height());
                bar->addWidget(spacer);
                continue;
            }
            const TqAction* action = m_actions.find(id);
            if (!action || !action->qAction())
                continue;
            bar->addAction(action->qAction());
            if (QWidget* button = bar->widgetForAction(action->qAction()))
                button->setFixedSize(buttonSize);
        }
        if (row > 0)
            addToolBarBreak();
        addToolBar(Qt::TopToolBarArea, bar);
        m_toolbars.push_back(bar);
    }
}

void WsdTopWindow::arrangeWindows(OC_<WsdTopWindow>& windows, DeviceRectangle* rectangles) {
    for (int k = 0; k < windows.size(); ++k)
        windows.at(k)->setFrameGeometry(rectangles[k]);
}

void WsdTopWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        setTopmostTopWindow(*this);
    QMainWindow::changeEvent(event);
}
