// The viewer's windows: opening files, the menus' commands, export of the view against the
// program's own rendering, settings and recent files across a restart, and the command server
// driven by a real tqsend.
#include "gui/Viewer.h"
#include "gui/ViewerWindow.h"

#include "settings/Config.h"
#include "wsi/WindowParams.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

const std::string v_example = TQ_SOURCE_DIR "/examples/diagrams/memory_write.tqd";

class ViewerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(folder.isValid());
        Config::setSettingsFile(path("tqdiagram.ini"));
    }
    // Ends this run of the viewer with its settings written and starts the next.
    void restart() {
        viewer.reset();
        Config::shutdown();
        Config::setSettingsFile(path("tqdiagram.ini"));
        viewer = std::make_unique<Viewer>();
        viewer->readSettings();
    }

    void TearDown() override {
        viewer.reset();
        Config::shutdown();
        Config::setSettingsFile(QString());
    }

    QString path(const char* name) const { return folder.filePath(QString::fromLatin1(name)); }
    std::string file(const char* name) const { return path(name).toStdString(); }

    ViewerWindow* open(const std::string& name) {
        std::string error;
        ViewerWindow* window = viewer->openFile(name, error);
        EXPECT_NE(window, nullptr) << error;
        if (window) {
            EXPECT_TRUE(QTest::qWaitForWindowExposed(window));
        }
        return window;
    }

    static void trigger(ViewerWindow* window, int id) {
        TqAction* action = window->actions().find(id);
        ASSERT_NE(action, nullptr) << id;
        action->qAction()->trigger();
    }

    // Runs a program to its end while the event loop serves the viewer's side.
    static QString run(const QString& program, const QStringList& arguments, int* status) {
        QProcess process;
        process.start(program, arguments);
        QElapsedTimer timer;
        timer.start();
        while (process.state() != QProcess::NotRunning && timer.elapsed() < 20000)
            QTest::qWait(5);
        *status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    QTemporaryDir folder;
    std::unique_ptr<Viewer> viewer = std::make_unique<Viewer>();
};

TEST_F(ViewerTest, OpenShowsTheDiagramAndAFailedOpenLeavesNoWindow) {
    ViewerWindow* window = open(v_example);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->diagram().title(), "SRAM write burst");
    EXPECT_EQ(window->windowTitleText(), "tqdiagram - memory_write.tqd");
    EXPECT_EQ(window->view().from(), window->diagram().spanStart());
    EXPECT_EQ(window->view().to(), window->diagram().spanEnd());
    EXPECT_NE(window->statusText().find("0ns - 320ns"), std::string::npos) << window->statusText();
    std::string result;
    EXPECT_TRUE(window->evaluate("diagram new", result)) << result;
    EXPECT_EQ(window->windowTitleText(), "tqdiagram - untitled") << "a script's new diagram";

    std::string error;
    EXPECT_EQ(viewer->openFile(file("missing.tqd"), error), nullptr);
    EXPECT_NE(error.find("missing.tqd"), std::string::npos) << error;
    EXPECT_EQ(viewer->windows().size(), 1u);
    EXPECT_EQ(viewer->recentFiles().numberOfFiles(), 1);
}

TEST_F(ViewerTest, MenuCommandsZoomListWindowsRecentFilesAndClose) {
    ASSERT_TRUE(QFile::copy(QString::fromStdString(v_example), path("second.tqd")));
    ViewerWindow* first = open(v_example);
    ViewerWindow* second = open(file("second.tqd"));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(viewer->activeWindow(), second);

    trigger(second, cmdZoomIn);
    EXPECT_EQ(second->view().to() - second->view().from(), 160);
    trigger(second, cmdZoomOut);
    trigger(second, cmdZoomOut);
    EXPECT_EQ(second->view().to() - second->view().from(), 640);
    trigger(second, cmdFit);
    EXPECT_EQ(second->view().from(), 0);
    EXPECT_EQ(second->view().to(), 320);

    // The Window menu lists the open windows, the active one checked; choosing one
    // activates it. Open Recent numbers the files, the latest first.
    struct Item {
        int id;
        bool visible;
        std::string text;
    };
    const Item items[] = {{cmdFirstWindow, true, "&1 tqdiagram - memory_write.tqd"},
                          {cmdFirstWindow + 1, true, "&2 tqdiagram - second.tqd"},
                          {cmdFirstWindow + 2, false, ""},
                          {151, true, "&1 " + file("second.tqd")},
                          {152, true, "&2 " + v_example},
                          {153, false, ""}};
    for (const Item& item : items) {
        TqAction* action = first->actions().find(item.id);
        ASSERT_NE(action, nullptr);
        const bool shown =
            item.id >= cmdFirstWindow ? action->qAction()->isVisible() : action->isEnabled();
        EXPECT_EQ(shown, item.visible) << item.id;
        if (item.visible) {
            EXPECT_EQ(action->text(), item.text);
        }
    }
    EXPECT_TRUE(first->actions().find(cmdFirstWindow + 1)->qAction()->isChecked());
    trigger(second, cmdFirstWindow);
    EXPECT_EQ(viewer->activeWindow(), first);

    // Opening a recent file opens it again in a window of its own.
    trigger(first, 152);
    EXPECT_EQ(viewer->windows().size(), 3u);
    trigger(viewer->windows().back(), cmdClose);
    trigger(second, cmdClose);
    EXPECT_EQ(viewer->windows(), std::vector<ViewerWindow*>{first});
    EXPECT_FALSE(viewer->quitRequested());
    trigger(first, cmdClose);
    EXPECT_TRUE(viewer->quitRequested()) << "the last window closed ends the viewer";
    QApplication::processEvents(); // the closed windows go
}

TEST_F(ViewerTest, ExportOfTheViewEqualsTheProgramsRenderOfTheSameView) {
    ViewerWindow* window = open(v_example);
    ASSERT_NE(window, nullptr);
    window->view().setTimeWindow(40, 200);
    window->view().setPatterns({"mem.*", "clk"});
    const RenderOptions options = window->view().renderOptions();
    std::string error;
    ASSERT_TRUE(window->exportTo(file("view.png"), OutputFormat::Png, error)) << error;
    ASSERT_TRUE(window->exportTo(file("view.svg"), OutputFormat::Svg, error)) << error;

    for (const char* format : {"png", "svg"}) {
        const QString rendered = path("render.") + QString::fromLatin1(format);
        int status = 0;
        run(TQ_TQDIAGRAM,
            {"render", QString::fromStdString(v_example), "-o", rendered, "--from", "40", "--to",
             "200", "--width", QString::number(options.width), "--signals", "mem.*", "--signals",
             "clk"},
            &status);
        ASSERT_EQ(status, 0) << format;
        const QString exported = path("view.") + QString::fromLatin1(format);
        if (std::string(format) == "png") {
            const QImage a(exported), b(rendered);
            ASSERT_FALSE(a.isNull());
            EXPECT_EQ(a.size(), b.size());
            EXPECT_TRUE(a == b) << "the PNG pictures differ";
        } else {
            QFile a(exported), b(rendered);
            ASSERT_TRUE(a.open(QIODevice::ReadOnly) && b.open(QIODevice::ReadOnly));
            EXPECT_EQ(a.readAll(), b.readAll()) << "the SVG files differ";
        }
    }
}

TEST_F(ViewerTest, SettingsRecentFilesAndPlacesSurviveARestart) {
    ASSERT_TRUE(QFile::copy(QString::fromStdString(v_example), path("a.tqd")));
    ASSERT_TRUE(QFile::copy(QString::fromStdString(v_example), path("b.tqd")));
    viewer->readSettings();
    ViewerWindow* a = open(file("a.tqd"));
    ViewerWindow* b = open(file("b.tqd"));
    ASSERT_TRUE(a && b);
    a->setParameters(WindowParams(100, 100, 500, 600, WindowParams::Normal));
    b->setParameters(WindowParams(400, 300, 900, 800, WindowParams::Normal));
    QApplication::processEvents();
    WindowParams placeA, placeB;
    a->getParameters(placeA);
    b->getParameters(placeB);
    viewer->writeSettings();

    // The next run finds the files, latest first, and puts new windows where they were.
    restart();
    ASSERT_EQ(viewer->recentFiles().numberOfFiles(), 2);
    EXPECT_STREQ(viewer->recentFiles().fileName(0), file("b.tqd").c_str());
    EXPECT_STREQ(viewer->recentFiles().fileName(1), file("a.tqd").c_str());
    ASSERT_EQ(viewer->config().windowPlaces().size(), 2u);
    ViewerWindow* again = viewer->newWindow();
    QApplication::processEvents();
    WindowParams place;
    again->getParameters(place);
    EXPECT_NEAR(place.left(), placeA.left(), 2);
    EXPECT_NEAR(place.top(), placeA.top(), 2);
    EXPECT_NEAR(place.right(), placeA.right(), 2);
    EXPECT_NEAR(place.bottom(), placeA.bottom(), 2);

    // Without "save on exit" only that choice is kept: the places stay as they were, while
    // the recent files are always written.
    Config::setSaveOnExit(0);
    again->setParameters(WindowParams(0, 0, 300, 300, WindowParams::Normal));
    viewer->writeSettings();
    restart();
    EXPECT_FALSE(Config::saveOnExit());
    ASSERT_EQ(viewer->config().windowPlaces().size(), 2u);
    char text[64];
    placeA.encode(text, sizeof text);
    WindowParams saved;
    saved.decode(viewer->config().windowPlaces()[0].c_str());
    EXPECT_NEAR(saved.right(), placeA.right(), 2) << text;
    EXPECT_EQ(viewer->recentFiles().numberOfFiles(), 2);
}

TEST_F(ViewerTest, TqsendChangesTheActiveDiagramAndTheNextPaintShowsIt) {
    ASSERT_TRUE(QFile::copy(QString::fromStdString(v_example), path("other.tqd")));
    ViewerWindow* other = open(file("other.tqd"));
    ViewerWindow* window = open(v_example);
    ASSERT_TRUE(other && window);
    std::string error;
    ASSERT_TRUE(viewer->startServer(file("view.port"), error)) << error;
    window->view().setCursorTime(300);
    QApplication::processEvents();
    ASSERT_EQ(window->view().cursorValues().back().signal, "probe");
    EXPECT_EQ(window->view().cursorValues().back().value, "0");
    const int paints = window->view().paintCount();

    int status = 0;
    const QString portFile = path("view.port");
    run(TQ_TQSEND, {"--port-file", portFile, "signal set probe 290 1"}, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(window->view().cursorValues().back().value, "1");
    EXPECT_EQ(other->view().cursorValues(), std::vector<DiagramView::CursorValue>{});
    QApplication::processEvents();
    EXPECT_GT(window->view().paintCount(), paints) << "the change is painted";

    struct Exchange {
        const char* script;
        int status;
        const char* reply;
    };
    // clang-format off
    const Exchange exchanges[] = {
        {"window list",       0, "{1 {tqdiagram - other.tqd} 0} {2 {tqdiagram - memory_write.tqd} 1}"},
        {"window activate 1", 0, ""},
        {"signal list mem.c*", 0, "mem.count"},
        {"window activate 7", 1, "no window 7"},
        {"window cascade",    0, ""},
        {"window tile",       0, ""},
        {"window fly",        1, "usage: window list|activate N|cascade|tile"},
    };
    // clang-format on
    for (const Exchange& exchange : exchanges) {
        const QString reply = run(
            TQ_TQSEND, {"--port-file", portFile, "--wait-ms", "5000", exchange.script}, &status);
        EXPECT_EQ(status, exchange.status) << exchange.script;
        EXPECT_TRUE(reply.startsWith(QString::fromLatin1(exchange.reply)))
            << exchange.script << ": " << reply.toStdString();
    }
    EXPECT_EQ(viewer->activeWindow(), other);

    // Each client above hung up when done, which its connection takes as its own "quit":
    // that ends the connection and frees its slot, but not the viewer. More clients than
    // the server has slots are served one after another.
    for (int client = 0; client < 20; ++client) {
        run(TQ_TQSEND, {"--port-file", portFile, "--wait-ms", "5000", "window list"}, &status);
        ASSERT_EQ(status, 0) << "client " << client;
    }
    // The Tcl client package ends its connection the same way.
    const QString tcl = path("client.tcl");
    QFile client(tcl);
    ASSERT_TRUE(client.open(QIODevice::WriteOnly));
    client.write("package require tarqclient\n"
                 "set chan [tarqclient::connect [lindex $argv 0]]\n"
                 "puts [tarqclient::send $chan {signal list mem.c*}]\n"
                 "tarqclient::close $chan\n");
    client.close();
    EXPECT_EQ(run(QStringLiteral("env"),
                  {QStringLiteral("TCLLIBPATH=" TQ_TCL_PACKAGE_DIR), QStringLiteral(TQ_TCLSH), tcl,
                   portFile},
                  &status),
              QStringLiteral("mem.count"));
    EXPECT_EQ(status, 0);
    QTest::qWait(50);
    EXPECT_FALSE(viewer->quitRequested()) << "a client leaving leaves the viewer running";

    run(TQ_TQSEND, {"--port-file", portFile, "quit"}, &status);
    EXPECT_TRUE(viewer->quitRequested());
    viewer->stopServer();
    EXPECT_FALSE(QFile::exists(portFile));
}

} // namespace
