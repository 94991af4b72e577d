#include "settings/Config.h"

#include "core/TarqToolkit.h"
#include "core/appiApplication.h"
#include "graphics/device/WsiFont.h"
#include "graphics/export/ExportParameters.h"
#include "wsi/WsdWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "SettingsFiles.h"

namespace {

using Keys = std::map<std::string, std::string>;

// Each test has its own settings file; whatever it changes is released afterwards.
class ConfigFile : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        m_path = m_dir.filePath("tarq.ini");
        Config::setSettingsFile(m_path);
    }
    void TearDown() override {
        Config::shutdown();
        WsdWindow::setCacheScreenBits(false);
    }
    // Writes the file by hand and reads it through a fresh store.
    void readFrom(const char* text, Config& config) {
        writeTextFile(m_path, text);
        Config::setSettingsFile(m_path);
        config.readConfig();
    }

    QTemporaryDir m_dir;
    QString m_path;
};

// What the hooks see, recorded at each step of a read or write.
class RecordingConfig : public Config {
public:
    std::vector<std::string> steps;

protected:
    void readInstallationPath() override {
        steps.push_back("installation: colour " + std::to_string(printInColor()) + ", undo " +
                        std::to_string(undoLevels()));
        Config::readInstallationPath();
    }
    void readApplicationSettings(char defaultsOnly) override {
        steps.push_back(std::string("settings(") + std::to_string(defaultsOnly) + "): ctl3d " +
                        std::to_string(useCtl3d()) + ", save " + std::to_string(saveOnExit()));
    }
    void readApplicationLayout() override {
        steps.push_back("layout: save " + std::to_string(saveOnExit()) + ", cache " +
                        std::to_string(WsdWindow::cacheScreenBits()));
    }
    void writeApplicationSettings() override {
        steps.push_back("write: " +
                        std::string(settings()->value("CacheScreenBits").toString().toStdString()));
        settings()->setValue("AppKey", "app");
    }
    void finishWriting() override { steps.push_back("finish"); }
};

TEST_F(ConfigFile, MissingFileGivesEveryDefault) {
    Config config;
    config.readConfig();
    EXPECT_EQ(Config::undoLevels(), 5);
    EXPECT_STREQ(Config::editorCommandLine(), "notepad.exe \"%FILE%\"");
    EXPECT_STREQ(Config::printSetup(), "file,,,portrait,clipboard,letter,default,6.5,5.0,in,"
                                       "color,scaleable,mifframe,preview");
    EXPECT_EQ(Config::printInColor(), colorPrintingFromSetup);
    EXPECT_EQ(Config::dialogFont(), nullptr);
    EXPECT_EQ(Config::exportMifAsAFrame(), 0);
    EXPECT_EQ(Config::installationPath(), nullptr);
    EXPECT_EQ(Config::drawSimpleButtons(), 1);
    EXPECT_EQ(Config::startHeapMonitor(), 1);
    EXPECT_EQ(Config::useCtl3d(), 1);
    EXPECT_EQ(Config::saveOnExit(), 1);
    EXPECT_EQ(Config::saveWindowPos(), 1);
    EXPECT_FALSE(WsdWindow::cacheScreenBits());
    EXPECT_EQ(Config::serialNumber(), nullptr);
    EXPECT_EQ(Config::XdblClickTime(),
              static_cast<unsigned long>(QApplication::doubleClickInterval()));
}

TEST_F(ConfigFile, HandWrittenKeysConvertAsTheTableSays) {
    // clang-format off
    const struct { const char* line; std::function<bool()> holds; } rows[] = {
        {"UndoLevels=25", [] { return Config::undoLevels() == 10; }},
        {"UndoLevels=10", [] { return Config::undoLevels() == 10; }},
        {"UndoLevels=11", [] { return Config::undoLevels() == 10; }},
        {"UndoLevels=-3", [] { return Config::undoLevels() == 5; }},
        {"UndoLevels=0", [] { return Config::undoLevels() == 0; }},
        {"PrintInColor=yes", [] { return Config::printInColor() == colorPrintingAlways; }},
        {"PrintInColor=True", [] { return Config::printInColor() == colorPrintingAlways; }},
        {"PrintInColor=No", [] { return Config::printInColor() == colorPrintingNever; }},
        {"PrintInColor=false", [] { return Config::printInColor() == colorPrintingNever; }},
        {"PrintInColor=maybe", [] { return Config::printInColor() == colorPrintingFromSetup; }},
        {"PrintInColor=", [] { return Config::printInColor() == colorPrintingFromSetup; }},
        {"EditorCommandLine=", [] { return std::string(Config::editorCommandLine()) == "notepad.exe \"%FILE%\""; }},
        {"EditorCommandLine=vim \"%FILE%\"", [] { return std::string(Config::editorCommandLine()) == "vim \"%FILE%\""; }},
        {"PrintSetup=printer,lp0,,landscape,noclipboard,a4,default,20,10,cm,gray,fixed,mifshape,nopreview",
         [] { const ExportParameters p = Config::exportParameters();
              return p.destination() == exportToPrinter && p.printerName() == "lp0" &&
                     p.paperSize() == paperA4 && p.isGrayScale() && !p.withPreview(); }},
        {"DialogFont=Courier New, 9.5, bold, italic",
         [] { const WsiFont* f = Config::dialogFont();
              return f && f->family() == "Courier New" && f->pointSize() == 9.5 && f->isBold() &&
                     f->isItalic() && !f->isUnderline(); }},
        {"DialogFont=Courier New,huge", [] { return Config::dialogFont() == nullptr; }},
        {"DialogFont=", [] { return Config::dialogFont() == nullptr; }},
        {"ExportMifAsAFrame=1", [] { return Config::exportMifAsAFrame() == 1 &&
                                            Config::exportParameters().mifAnchoredFrameOnly(); }},
        {"InstallationPath=/opt/tarq", [] { return std::string(Config::installationPath()) == "/opt/tarq"; }},
        {"DrawComplexButtons=true", [] { return Config::drawSimpleButtons() == 0; }},
        {"DrawComplexButtons=0", [] { return Config::drawSimpleButtons() == 1; }},
        {"NoHeapMonitor=yes", [] { return Config::startHeapMonitor() == 0; }},
        {"UseCtl3D=false", [] { return Config::useCtl3d() == 0; }},
        {"SaveOnExit=no", [] { return Config::saveOnExit() == 0; }},
        {"SaveWindowPos=0", [] { return Config::saveWindowPos() == 0; }},
        {"CacheScreenBits=true", [] { return WsdWindow::cacheScreenBits(); }},
        {"SerialNumber=TQ-0042", [] { return std::string(Config::serialNumber()) == "TQ-0042"; }},
        {"DoubleClickDelay=250", [] { return Config::XdblClickTime() == 250; }},
    };
    // clang-format on
    for (const auto& row : rows) {
        Config config;
        // Both forms people write: a [General] section, and keys before any section.
        for (const char* header : {"[General]\n", ""}) {
            readFrom((std::string(header) + row.line + "\n").c_str(), config);
            EXPECT_TRUE(row.holds()) << header << row.line;
            Config::shutdown();
        }
    }
}

TEST_F(ConfigFile, ReadConfigHooksSeeTheSettingsReadBeforeThem) {
    RecordingConfig config;
    Config::setSaveOnExit(0);
    readFrom("[General]\nPrintInColor=y\nUndoLevels=7\nUseCtl3D=false\nSaveOnExit=true\n"
             "CacheScreenBits=true\n",
             config);
    EXPECT_EQ(config.steps, (std::vector<std::string>{"installation: colour 0, undo 5",
                                                      "settings(0): ctl3d 0, save 0",
                                                      "layout: save 0, cache 0"}));
    EXPECT_EQ(Config::saveOnExit(), 1);
    EXPECT_TRUE(WsdWindow::cacheScreenBits());
}

TEST_F(ConfigFile, SetDefaultsResetsItsSettingsAndLeavesTheOthers) {
    Config config;
    readFrom("[General]\nUndoLevels=2\nPrintInColor=n\nDialogFont=Serif,12\nPrintSetup=x\n"
             "ExportMifAsAFrame=1\nSaveOnExit=0\nSaveWindowPos=0\nUseCtl3D=0\n"
             "EditorCommandLine=ed %FILE%\n",
             config);
    config.setDefaults();
    EXPECT_EQ(Config::undoLevels(), 5);
    EXPECT_EQ(Config::printInColor(), colorPrintingFromSetup);
    EXPECT_EQ(Config::dialogFont(), nullptr);
    EXPECT_STREQ(Config::printSetup(), ExportParameters::defaultText());
    EXPECT_EQ(Config::exportMifAsAFrame(), 0);
    EXPECT_EQ(Config::saveOnExit(), 1);
    EXPECT_EQ(Config::saveWindowPos(), 1);
    EXPECT_EQ(Config::useCtl3d(), 0);
    EXPECT_STREQ(Config::editorCommandLine(), "ed %FILE%");
}

const char* const handFile = "[General]\n"
                             "UndoLevels=3\n"
                             "PrintSetup=file,,,landscape,clipboard,a4,default,6.5,5.0,in,"
                             "color,scaleable,mifframe,preview\n"
                             "ExportMifAsAFrame=1\n"
                             "PrintInColor=no\n"
                             "DialogFont=Sans,11,underline\n"
                             "EditorCommandLine=emacs \"%FILE%\"\n"
                             "SaveOnExit=true\n"
                             "SaveWindowPos=false\n"
                             "Unknown=kept\n"
                             "[Recent]\n"
                             "File00=/a.tqd\n";

TEST_F(ConfigFile, WriteConfigFalseChangesOnlySaveOnExit) {
    RecordingConfig config;
    readFrom(handFile, config);
    const Keys before = rawKeys(m_path);
    config.steps.clear();
    config.writeConfig(0);
    Keys expected = before;
    expected["General/SaveOnExit"] = "false";
    EXPECT_EQ(rawKeys(m_path), expected);
    EXPECT_EQ(config.steps, std::vector<std::string>{"finish"});
}

TEST_F(ConfigFile, WriteConfigTrueStoresItsKeysAndKeepsTheRest) {
    for (const bool simpleButtons : {true, false}) {
        RecordingConfig config;
        std::string text = handFile;
        if (!simpleButtons)
            text.replace(text.find("Unknown=kept\n"), 0, "DrawComplexButtons=yes\n");
        readFrom(text.c_str(), config);
        const Keys before = rawKeys(m_path);
        Config::setSaveOnExit(0);
        Config::setInstallationPath("/opt/tq");
        WsdWindow::setCacheScreenBits(true);
        config.steps.clear();
        config.writeConfig(1);

        Keys expected = before;
        if (!simpleButtons)
            expected["General/DrawComplexButtons"] = "true";
        expected["General/DialogFont"] = "Sans,11,underline";
        expected["General/PrintInColor"] = "No";
        expected["General/UndoLevels"] = "3";
        expected["General/EditorCommandLine"] = "emacs \"%FILE%\"";
        expected["General/InstallationPath"] = "/opt/tq";
        expected["General/DrawSimpleButtons"] = "";
        expected["General/NoHeapMonitor"] = "false";
        expected["General/UseCtl3D"] = "true";
        expected["General/SaveOnExit"] = "true";
        expected["General/SaveWindowPos"] = "false";
        expected["General/CacheScreenBits"] = "true";
        expected["General/AppKey"] = "app";
        EXPECT_EQ(rawKeys(m_path), expected) << simpleButtons;
        EXPECT_EQ(config.steps, (std::vector<std::string>{"write: true", "finish"}));
        Config::shutdown();
    }
}

TEST_F(ConfigFile, WrittenFileReadsInAnotherIniReader) {
    if (std::system("python3 -c 'import configparser' >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "python3 with configparser is not available";
    Config config;
    readFrom(handFile, config);
    config.writeConfig(1);
    config.writePrintSetup();
    Config::shutdown();
    const std::string script =
        "import configparser,sys\n"
        "c = configparser.ConfigParser(interpolation=None)\n"
        "c.optionxform = str\n"
        "c.read(sys.argv[1], encoding='utf-8')\n"
        "g = c['General']\n"
        "assert g['EditorCommandLine'] == 'emacs \"%FILE%\"', g['EditorCommandLine']\n"
        "assert g['PrintSetup'].startswith('file,,,landscape,'), g['PrintSetup']\n"
        "assert g['UndoLevels'] == '3'\n"
        "assert g['DrawSimpleButtons'] == ''\n"
        "assert c['Recent']['File00'] == '/a.tqd'\n";
    const QString scriptPath = m_dir.filePath("check.py");
    writeTextFile(scriptPath, script.c_str());
    const std::string command =
        "python3 '" + scriptPath.toStdString() + "' '" + m_path.toStdString() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << readTextFile(m_path);
}

class FontReader : public Config {
public:
    using Config::scanFont;
};

TEST(ConfigFont, ScanFontReadsTheDescriptionSyntax) {
    // clang-format off
    const struct { const char* text; const char* description; } rows[] = {
        {"Courier New,9.5,bold,italic",      "Courier New,9.5,bold,italic"},
        {"  Sans , 11 , UNDERLINE,Overline ", "Sans,11,underline,overline"},
        {"Serif,12,italic,bold,italic",      "Serif,12,bold,italic"},
        {"Mono,1000",                        "Mono,1000"},
        {"Mono,0.5",                         "Mono,0.5"},
        {"Mono,1e1",                         "Mono,10"},
        // Malformed: no size, a size out of range or not a number, no family, an unknown
        // or empty style.
        {"Mono", nullptr},   {"Mono,0", nullptr},        {"Mono,-3", nullptr},
        {"Mono,1001", nullptr}, {"Mono,big", nullptr},   {",10", nullptr},
        {"Mono,10,heavy", nullptr}, {"Mono,10,", nullptr}, {"", nullptr},
        {"Mono,nan", nullptr}, {"Mono,inf", nullptr},
    };
    // clang-format on
    for (const auto& row : rows) {
        const std::unique_ptr<WsiFont> font = FontReader::scanFont(row.text);
        if (!row.description) {
            EXPECT_EQ(font, nullptr) << row.text;
            continue;
        }
        ASSERT_NE(font, nullptr) << row.text;
        EXPECT_EQ(font->description(), row.description);
        const std::unique_ptr<WsiFont> again = FontReader::scanFont(row.description);
        ASSERT_NE(again, nullptr) << row.description;
        EXPECT_EQ(again->toQFont(), font->toQFont()) << row.description;
    }
    EXPECT_EQ(FontReader::scanFont(nullptr), nullptr);
    EXPECT_EQ(WsiFont().description(), "");
    WsiFont unchanged("Kept", 8);
    EXPECT_FALSE(unchanged.readDescription("Mono,big"));
    EXPECT_EQ(unchanged.description(), "Kept,8");
}

TEST_F(ConfigFile, SerialNumberAndPrintSetupAreWrittenOnTheirOwn) {
    Config config;
    readFrom("[General]\nSerialNumber=TQ-1\n", config);
    Config::setSerialNumber("TQ-2");
    Config::setPrintSetup("file,,,landscape,clipboard,a4,default,6.5,5.0,in,color,scaleable,"
                          "mifframe,preview");
    config.writeSerialNumber();
    config.writePrintSetup();
    Config::shutdown();
    EXPECT_EQ(rawKeys(m_path), (Keys{{"General/SerialNumber", "TQ-2"},
                                     {"General/PrintSetup", "file,,,landscape,clipboard,a4,"
                                                            "default,6.5,5.0,in,color,"
                                                            "scaleable,mifframe,preview"}}));
    Config::setSettingsFile(m_path);
    config.readSerialNumber(0);
    EXPECT_STREQ(Config::serialNumber(), "TQ-2");
    config.readSerialNumber(1);
    EXPECT_EQ(Config::serialNumber(), nullptr);
}

TEST_F(ConfigFile, ApplicationResourceCopiesWithinTheBuffer) {
    Config config;
    readFrom("[General]\nHelpUrl=http://example.invalid/help\n", config);
    char buffer[12] = "xxxxxxxxxxx";
    EXPECT_TRUE(Config::getApplicationResource("HelpUrl", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "http://exam");
    EXPECT_FALSE(Config::getApplicationResource("Missing", buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "");
    EXPECT_TRUE(Config::getApplicationResource("HelpUrl", buffer, 1));
    EXPECT_STREQ(buffer, "");
}

TEST_F(ConfigFile, SettingsFileComesFromTheApplicationUnlessSet) {
    class App : public appiApplication {
    public:
        App() { setIniFile("tarq-config-test.ini"); }
    };
    Config::setSettingsFile(QString());
    EXPECT_EQ(Config::settings(), nullptr);
    {
        App app;
        EXPECT_EQ(Config::settingsFile(), app.iniPath());
        appiApplication::setCurrent(nullptr);
    }
    Config::setSettingsFile(m_path);
    EXPECT_EQ(Config::settingsFile(), m_path);
}

// The toolkit's shutdown releases the settings while the window system runs.
TEST_F(ConfigFile, ToolkitShutdownReleasesTheSettings) {
    class App : public appiApplication {};
    App app;
    app.setWindowSystemRunning(1);
    Config config;
    readFrom("[General]\nUndoLevels=9\nInstallationPath=/opt/x\n", config);
    Config::settings()->setValue("Written", "at shutdown");
    TarqToolkit::registerSelf();
    TarqToolkit::shutDownApp();
    TqObject::startUp();
    EXPECT_EQ(Config::undoLevels(), 5);
    EXPECT_EQ(Config::installationPath(), nullptr);
    EXPECT_EQ(Config::settingsFile(), QString());
    EXPECT_EQ(rawKeys(m_path)["General/Written"], "at shutdown");
}

} // namespace
