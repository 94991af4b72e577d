// settings_window: an application on the settings and window layers. It keeps its settings
// and recent files in an INI file, opens three top windows whose File menu lists the recent
// files, cascades them, puts the first one back where the last run left it, and writes the
// settings on the way out; its own setting (the first window's place) goes through Config's
// hooks.
//
//   settings_window [folder] [--quit]   (default folder: the user's configuration folder;
//                                        --quit ends at once instead of running the windows)
#include "core/SToolkitClient.h"
#include "core/TarqToolkit.h"
#include "core/TqObject.h"
#include "core/appiApplication.h"
#include "settings/Config.h"
#include "settings/RecentFileManager.h"
#include "wsi/WindowParams.h"
#include "wsi/WsdTopWindow.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QSettings>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

enum CommandId { cmdOpen = 1, cmdCascade = 2, cmdExit = 3 };

class WindowApplication : public appiApplication {
public:
    WindowApplication() {
        setIniFile("settings_window.ini");
        setSaveAsEnabled(1);
        setClipboardEnabled(0);
    }
};

// The application's own setting rides along with the toolkit's through the hooks.
class WindowConfig : public Config {
public:
    std::string mainWindowPlace;

protected:
    void readApplicationLayout() override {
        char text[64];
        if (getApplicationResource("MainWindow", text, sizeof text))
            mainWindowPlace = text;
    }
    void writeApplicationSettings() override {
        settings()->setValue("MainWindow", QString::fromStdString(mainWindowPlace));
    }
};

WindowApplication* application = nullptr;

appiApplication* createApplication() {
    application = new WindowApplication;
    return application;
}

void deleteApplication() {
    delete application;
    application = nullptr;
}

int startApplication(int argc, char** argv, int, int) {
    bool quit = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quit") == 0)
            quit = true;
        else
            Config::setSettingsFile(QDir(QString::fromLocal8Bit(argv[i]))
                                        .filePath(QString::fromUtf8(application->iniFile())));
    }
    WindowConfig config;
    config.readConfig();
    RecentFileManager recent("Recent", 4);
    recent.readConfig(Config::settingsFile());
    std::printf("settings file: %s\n", Config::settingsFile().toUtf8().constData());
    std::printf("undo levels %d, editor '%s'\n", Config::undoLevels(), Config::editorCommandLine());

    std::array<std::unique_ptr<WsdTopWindow>, 3> windows;
    OC_<WsdTopWindow> all;
    for (std::size_t k = 0; k < windows.size(); ++k) {
        auto& window = windows[k];
        window = std::make_unique<WsdTopWindow>();
        window->setWindowTitle("settings_window");
        window->setTitleDetail(("diagram " + std::to_string(k + 1)).c_str());
        window->setCentralWidget(new QLabel(QStringLiteral("A diagram would go here")));
        Menu* file = window->addMenu("&File");
        file->addItem(cmdOpen, "&Open...");
        file->addItem(cmdCascade, "&Cascade");
        file->addSeparator();
        recent.appendRecentFileItems(*file, "Recent files");
        file->addSeparator();
        file->addItem(cmdExit, "E&xit");
        QObject::connect(window->actions().find(cmdCascade)->qAction(), &QAction::triggered,
                         [&all] {
                             DeviceRectangle screen;
                             wsiTopWindow::cascadeWindows(all, screen, true);
                         });
        QObject::connect(window->actions().find(cmdExit)->qAction(), &QAction::triggered,
                         &QApplication::quit);
        all.add(window.get());
        window->showWindow();
    }

    // This run's file joins the list, and every window's menu shows it.
    recent.addFileName("counter.tqd");
    for (auto& window : windows)
        recent.initRecentFileMenu(window.get(), -1);
    for (int i = 0; i < recent.numberOfFiles(); ++i)
        std::printf("recent %d: %s\n", i + 1, recent.fileName(i));

    DeviceRectangle screen;
    wsiTopWindow::cascadeWindows(all, screen, false);
    if (!config.mainWindowPlace.empty()) {
        WindowParams place;
        place.decode(config.mainWindowPlace.c_str());
        windows[0]->setParameters(place);
        std::printf("first window put back at %s\n", config.mainWindowPlace.c_str());
    }

    const int result = quit ? 0 : QApplication::exec();

    WindowParams place;
    windows[0]->getParameters(place);
    char text[64];
    place.encode(text, sizeof text);
    config.mainWindowPlace = text;
    std::printf("first window saved at %s\n", text);
    if (!recent.writeConfig(Config::settings()))
        return 1;
    config.writeConfig(Config::saveOnExit());
    return result;
}

} // namespace

int main(int argc, char** argv) {
    QApplication qtApplication(argc, argv);
    TqObject::startUp();
    SToolkitClient client{};
    client.isApplication = 1;
    client.createApplicationFunc = &createApplication;
    client.deleteApplicationFunc = &deleteApplication;
    client.startApplicationFunc = &startApplication;
    return TarqToolkit::runApplication(&client, argc, argv);
}
