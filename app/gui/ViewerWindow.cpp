#include "gui/ViewerWindow.h"

#include "commands/DiagramCommands.h"
#include "gui/Viewer.h"
#include "io/DiagramFile.h"
#include "io/TqdWriter.h"
#include "render/DiagramExporter.h"

#include "settings/RecentFileManager.h"

#include <QAction>
#include <QCloseEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QStatusBar>
#include <QStyle>

#include <sstream>
#include <tcl.h>

ViewerWindow::ViewerWindow(Viewer& viewer)
    : m_viewer(viewer), m_view(new DiagramView(m_session.diagram)), m_status(new QLabel),
      m_interp(Tcl_CreateInterp()) {
    DiagramCommands::registerIn(m_interp, m_session);
    setCentralWidget(m_view);
    statusBar()->addWidget(m_status, 1);
    m_view->setStatusListener([this] { updateStatus(); });
    buildMenus();
    setWindowTitle("tqdiagram");
    updateTitle();
    resize(1000, 600);
}

ViewerWindow::~ViewerWindow() {
    // The view watches the session's diagram, which goes before Qt deletes the children.
    delete takeCentralWidget();
    Tcl_DeleteInterp(m_interp);
}

void ViewerWindow::connectCommand(int id, std::function<void()> run) {
    QObject::connect(actions().find(id)->qAction(), &QAction::triggered, m_view,
                     [run = std::move(run)] { run(); });
}

void ViewerWindow::buildMenus() {
    Menu* file = addMenu("&File");
    file->addItem(cmdOpen, "&Open...");
    m_viewer.recentFiles().appendRecentFileItems(*file, "Open &Recent");
    file->addSeparator();
    file->addItem(cmdSave, "&Save");
    file->addItem(cmdSaveAs, "Save &As...");
    file->addSeparator();
    file->addItem(cmdExportPng, "Export to &PNG...");
    file->addItem(cmdExportPdf, "Export to P&DF...");
    file->addItem(cmdExportSvg, "Export to S&VG...");
    file->addItem(cmdExportEps, "Export to &EPS...");
    file->addItem(cmdExportMif, "Export to &MIF...");
    file->addSeparator();
    file->addItem(cmdClose, "&Close");
    file->addItem(cmdQuit, "&Quit");

    Menu* view = addMenu("&View");
    view->addItem(cmdZoomIn, "Zoom &In\t+");
    view->addItem(cmdZoomOut, "Zoom &Out\t-");
    view->addItem(cmdFit, "&Fit\tF");
    view->addSeparator();
    view->addItem(cmdSignalsShown, "&Signals Shown...");

    Menu* window = addMenu("&Window");
    window->addItem(cmdCascade, "&Cascade");
    window->addItem(cmdTile, "&Tile");
    window->addSeparator();
    for (int k = 0; k < v_listedWindows; ++k) {
        window->addItem(cmdFirstWindow + k, "")->qAction()->setVisible(false);
        connectCommand(cmdFirstWindow + k, [this, k] { m_viewer.activate(k); });
    }

    actions().find(cmdOpen)->qAction()->setShortcut(QKeySequence::Open);
    actions().find(cmdSave)->qAction()->setShortcut(QKeySequence::Save);
    actions().find(cmdClose)->qAction()->setShortcut(QKeySequence::Close);
    actions().find(cmdQuit)->qAction()->setShortcut(QKeySequence::Quit);

    connectCommand(cmdOpen, [this] { askOpen(); });
    for (int slot = 0; slot < m_viewer.recentFiles().maxNumberOfFiles(); ++slot) {
        connectCommand(151 + slot, [this, slot] {
            const char* name = m_viewer.recentFiles().fileName(slot);
            std::string error;
            if (name && !m_viewer.openFile(name, error))
                report(error);
        });
    }
    connectCommand(cmdSave, [this] {
        if (m_session.path.empty())
            return askSaveAs();
        std::string error;
        if (!saveAs(m_session.path, error))
            report(error);
    });
    connectCommand(cmdSaveAs, [this] { askSaveAs(); });
    const std::pair<int, OutputFormat> exports[] = {{cmdExportPng, OutputFormat::Png},
                                                    {cmdExportPdf, OutputFormat::Pdf},
                                                    {cmdExportSvg, OutputFormat::Svg},
                                                    {cmdExportEps, OutputFormat::Eps},
                                                    {cmdExportMif, OutputFormat::Mif}};
    for (const auto& [id, format] : exports)
        connectCommand(id, [this, format = format] { askExport(format); });
    connectCommand(cmdClose, [this] { m_viewer.closeWindow(this); });
    connectCommand(cmdQuit, [this] { m_viewer.quit(); });
    connectCommand(cmdZoomIn, [this] { m_view->zoom(2, m_view->cursorTime()); });
    connectCommand(cmdZoomOut, [this] { m_view->zoom(0.5, m_view->cursorTime()); });
    connectCommand(cmdFit, [this] { m_view->fit(); });
    connectCommand(cmdSignalsShown, [this] { askSignalsShown(); });
    connectCommand(cmdCascade, [this] { m_viewer.cascade(); });
    connectCommand(cmdTile, [this] { m_viewer.tile(); });

    // Toolbar buttons are a button wide: they show a short text or an icon.
    const std::pair<int, const char*> buttonTexts[] = {
        {cmdZoomIn, "+"}, {cmdZoomOut, "-"}, {cmdFit, "Fit"}};
    for (const auto& [id, text] : buttonTexts)
        actions().find(id)->qAction()->setIconText(QString::fromLatin1(text));
    actions().find(cmdOpen)->qAction()->setIcon(style()->standardIcon(QStyle::SP_DialogOpenButton));
    actions().find(cmdSave)->qAction()->setIcon(style()->standardIcon(QStyle::SP_DialogSaveButton));

    WsiToolbarDescription toolbar;
    toolbar.addButton(cmdOpen);
    toolbar.addButton(cmdSave);
    toolbar.addGap();
    toolbar.addButton(cmdZoomIn);
    toolbar.addButton(cmdZoomOut);
    toolbar.addButton(cmdFit);
    setToolbar(toolbar);
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
    // Qt closes every window when the application quits: they stay listed then, so that
    // their places are saved.
    if (m_viewer.quitRequested())
        return event->accept();
    event->ignore();
    m_viewer.closeWindow(this);
}

void ViewerWindow::refreshMenus() {
    const RecentFileManager& recent = m_viewer.recentFiles();
    recent.initRecentFileMenu(this, m_recentShown);
    m_recentShown = recent.numberOfFiles();
    const std::vector<ViewerWindow*> windows = m_viewer.windows();
    const ViewerWindow* active = m_viewer.activeWindow();
    for (int k = 0; k < v_listedWindows; ++k) {
        TqAction* item = actions().find(cmdFirstWindow + k);
        const bool listed = k < static_cast<int>(windows.size());
        item->qAction()->setVisible(listed);
        if (!listed)
            continue;
        std::string text = "&";
        text.append(std::to_string(k + 1)).append(" ").append(windows[k]->windowTitleText());
        item->setText(text.c_str());
        item->qAction()->setCheckable(true);
        item->qAction()->setChecked(windows[k] == active);
    }
}

bool ViewerWindow::load(const std::string& path, std::string& error) {
    if (!readDiagramFile(path, m_session.diagram, error))
        return false;
    m_session.path = path;
    m_session.from.reset();
    m_session.to.reset();
    updateTitle();
    return true;
}

bool ViewerWindow::saveAs(const std::string& path, std::string& error) {
    TqdWriter writer(path.c_str(), m_session.diagram);
    if (!writer.save(error))
        return false;
    m_session.path = path;
    updateTitle();
    return true;
}

bool ViewerWindow::exportTo(const std::string& path, OutputFormat format, std::string& error) {
    return DiagramExporter::exportFile(m_session.diagram, m_view->renderOptions(), path, format,
                                       error);
}

bool ViewerWindow::evaluate(const std::string& script, std::string& result) {
    const int code = Tcl_EvalEx(m_interp, script.c_str(), static_cast<int>(script.size()), 0);
    result = Tcl_GetStringResult(m_interp);
    // "diagram open", "new" and "save" change the file the window shows.
    updateTitle();
    return code == TCL_OK;
}

std::string ViewerWindow::statusText() const {
    return m_status->text().toStdString();
}

void ViewerWindow::updateStatus() {
    m_status->setText(QString::fromStdString(m_view->statusText()));
}

void ViewerWindow::updateTitle() {
    if (m_session.path.empty()) {
        setTitleDetail("untitled");
        return;
    }
    const std::string& path = m_session.path;
    const std::size_t slash = path.find_last_of('/');
    setTitleDetail(slash == std::string::npos ? path.c_str() : path.c_str() + slash + 1);
}

void ViewerWindow::report(const std::string& error) {
    QMessageBox::warning(this, QStringLiteral("tqdiagram"), QString::fromStdString(error));
}

void ViewerWindow::askOpen() {
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Open Diagram"), {},
                                                      QStringLiteral("Diagrams (*.tqd)"));
    std::string error;
    if (!path.isEmpty() && !m_viewer.openFile(path.toStdString(), error))
        report(error);
}

void ViewerWindow::askSaveAs() {
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save Diagram"),
                                                      QString::fromStdString(m_session.path),
                                                      QStringLiteral("Diagrams (*.tqd)"));
    std::string error;
    if (path.isEmpty())
        return;
    if (!saveAs(path.toStdString(), error))
        return report(error);
    m_viewer.rememberFile(path.toStdString());
}

void ViewerWindow::askExport(OutputFormat format) {
    const QString extension = QString::fromLatin1(outputFormatName(format));
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Export"), {},
                                                      extension.toUpper() + QStringLiteral(" (*.") +
                                                          extension + QStringLiteral(")"));
    std::string error;
    if (!path.isEmpty() && !exportTo(path.toStdString(), format, error))
        report(error);
}

void ViewerWindow::askSignalsShown() {
    std::string current;
    for (const std::string& pattern : m_view->patterns())
        current.append(current.empty() ? "" : " ").append(pattern);
    bool accepted = false;
    const QString text = QInputDialog::getText(
        this, QStringLiteral("Signals Shown"),
        QStringLiteral("Name patterns, separated by spaces (empty: all signals):"),
        QLineEdit::Normal, QString::fromStdString(current), &accepted);
    if (!accepted)
        return;
    std::vector<std::string> patterns;
    std::istringstream words(text.toStdString());
    for (std::string word; words >> word;)
        patterns.push_back(word);
    m_view->setPatterns(std::move(patterns));
}
