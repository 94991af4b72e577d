#include "settings/Config.h"

#include "core/TarqToolkit.h"
#include "core/appiApplication.h"
#include "graphics/device/WsiFont.h"
#include "graphics/export/ExportParameters.h"
#include "settings/IniSettings.h"
#include "wsi/WsdWindow.h"

#include <QApplication>
#include <QSettings>

#include <cstring>

QString* Config::p_settingsFile = nullptr;
QSettings* Config::p_settings = nullptr;
int Config::v_undoLevels = 5;
char* Config::p_installationPath = nullptr;
int Config::v_exportMifAsAFrame = 0;
char Config::v_drawSimpleButtons = 1;
HDLanguage Config::v_defaultHDL = HDLVerilog;
char Config::v_printExpectedTokens = 0;
VHDLVersion Config::v_defaultVHDLVersion = VHDL93;
char Config::v_noHeapMonitor = 0;
char Config::v_useCtl3d = 1;
char Config::v_saveWindowPos = 1;
unsigned long Config::v_doubleClickTime = 0;
char* Config::p_serialNumber = nullptr;
ColorPrintingOption Config::v_printInColor = colorPrintingFromSetup;
char Config::v_saveOnExit = 1;
char* Config::p_editorCommandLine = nullptr;
WsiFont* Config::p_dialogFont = nullptr;
char* Config::p_printSetup = nullptr;

namespace {

const char* const editorDefault = "notepad.exe \"%FILE%\"";

// Replaces an owned string with a copy of text (null stays null).
void replaceString(char*& owned, const char* text) {
    char* copy = nullptr;
    if (text) {
        const std::size_t size = std::strlen(text) + 1;
        copy = new char[size];
        std::memcpy(copy, text, size);
    }
    delete[] owned;
    owned = copy;
}

// The stored text of key, or null when there is no store or the key is missing.
std::unique_ptr<QString> storedText(const char* key) {
    QSettings* store = Config::settings();
    if (!store || !store->contains(QString::fromUtf8(key)))
        return nullptr;
    return std::make_unique<QString>(IniSettings::textOf(store->value(QString::fromUtf8(key))));
}

void store(const char* key, const QVariant& value) {
    if (QSettings* settings = Config::settings())
        settings->setValue(QString::fromUtf8(key), value);
}

ColorPrintingOption colorOptionOf(const QString& text) {
    switch (text.isEmpty() ? '\0' : text.front().toLatin1()) {
    case 'T':
    case 'Y':
    case 't':
    case 'y':
        return colorPrintingAlways;
    case 'F':
    case 'N':
    case 'f':
    case 'n':
        return colorPrintingNever;
    default:
        return colorPrintingFromSetup;
    }
}

} // namespace

Config::Config() {
    registerShutdown();
}

Config::~Config() = default;

void Config::registerShutdown() {
    TarqToolkit::setShutDownStep(TqShutDownStep::Settings, &Config::shutdown);
}

void Config::setDefaults() {
    readDialogFont(1);
    readPrintSetup(1);
    readPrintInColor(1);
    readUndoLevels(1);
    readExportMifAsAFrame(1);
    v_saveWindowPos = 1;
    v_saveOnExit = 1;
}

void Config::readConfig() {
    readSerialNumber(0);
    readDialogFont(0);
    readPrintSetup(0);
    readPrintInColor(0);
    readInstallationPath();
    readUndoLevels(0);
    readExportMifAsAFrame(0);
    readEditorCommandLine();
    v_drawSimpleButtons = !readBoolean("DrawComplexButtons", 0, 0);
    v_noHeapMonitor = readBoolean("NoHeapMonitor", 0, 0);
    v_useCtl3d = readBoolean("UseCtl3D", 1, 0);
    readApplicationSettings(0);
    readApplicationLayout();
    v_saveOnExit = readBoolean("SaveOnExit", 1, 0);
    v_saveWindowPos = readBoolean("SaveWindowPos", 1, 0);
    WsdWindow::setCacheScreenBits(readBoolean("CacheScreenBits", 0, 0));
}

void Config::writeConfig(char full) {
    if (!settings())
        return;
    if (!full) {
        store("SaveOnExit", false);
    } else {
        writeDialogFont();
        writePrintInColor();
        store("UndoLevels", v_undoLevels);
        store("EditorCommandLine", QString::fromUtf8(editorCommandLine()));
        store("InstallationPath", QString::fromUtf8(p_installationPath ? p_installationPath : ""));
        if (!v_drawSimpleButtons)
            store("DrawComplexButtons", true);
        store("DrawSimpleButtons", QString());
        store("NoHeapMonitor", v_noHeapMonitor != 0);
        store("UseCtl3D", v_useCtl3d != 0);
        store("SaveOnExit", true);
        store("SaveWindowPos", v_saveWindowPos != 0);
        store("CacheScreenBits", WsdWindow::cacheScreenBits());
        writeApplicationSettings();
    }
    finishWriting();
    settings()->sync();
}

void Config::setSettingsFile(const QString& path) {
    delete p_settings;
    p_settings = nullptr;
    delete p_settingsFile;
    p_settingsFile = path.isEmpty() ? nullptr : new QString(path);
    registerShutdown();
}

QString Config::settingsFile() {
    if (p_settingsFile)
        return *p_settingsFile;
    const appiApplication* application = appiApplication::current();
    return application && application->iniFile() ? application->iniPath() : QString();
}

QSettings* Config::settings() {
    if (!p_settings) {
        const QString path = settingsFile();
        if (path.isEmpty())
            return nullptr;
        p_settings = IniSettings::open(path).release();
        registerShutdown();
    }
    return p_settings;
}

bool Config::getApplicationResource(const char* key, char* buffer, int size) {
    const std::unique_ptr<QString> text = key ? storedText(key) : nullptr;
    const QByteArray bytes = text ? text->toUtf8() : QByteArray();
    if (buffer && size > 0) {
        const int kept = std::min(static_cast<int>(bytes.size()), size - 1);
        std::memcpy(buffer, bytes.constData(), static_cast<std::size_t>(kept));
        buffer[kept] = '\0';
    }
    return text != nullptr;
}

void Config::shutdown() {
    if (p_settings)
        p_settings->sync();
    delete p_settings;
    p_settings = nullptr;
    delete p_settingsFile;
    p_settingsFile = nullptr;
    replaceString(p_installationPath, nullptr);
    replaceString(p_serialNumber, nullptr);
    replaceString(p_editorCommandLine, nullptr);
    replaceString(p_printSetup, nullptr);
    delete p_dialogFont;
    p_dialogFont = nullptr;
    v_undoLevels = 5;
    v_exportMifAsAFrame = 0;
    v_drawSimpleButtons = 1;
    v_defaultHDL = HDLVerilog;
    v_printExpectedTokens = 0;
    v_defaultVHDLVersion = VHDL93;
    v_noHeapMonitor = 0;
    v_useCtl3d = 1;
    v_saveWindowPos = 1;
    v_doubleClickTime = 0;
    v_printInColor = colorPrintingFromSetup;
    v_saveOnExit = 1;
}

void Config::setInstallationPath(const char* path) {
    replaceString(p_installationPath, path);
    registerShutdown();
}

unsigned long Config::XdblClickTime() {
    if (v_doubleClickTime == 0) {
        const std::unique_ptr<QString> text = storedText("DoubleClickDelay");
        bool isNumber = false;
        const long stored = text ? text->trimmed().toLong(&isNumber) : 0;
        if (isNumber && stored > 0)
            v_doubleClickTime = static_cast<unsigned long>(stored);
        else if (qobject_cast<QApplication*>(QCoreApplication::instance()))
            v_doubleClickTime = static_cast<unsigned long>(QApplication::doubleClickInterval());
        else
            v_doubleClickTime = 400;
    }
    return v_doubleClickTime;
}

void Config::setSerialNumber(const char* number) {
    replaceString(p_serialNumber, number);
    registerShutdown();
}

const char* Config::editorCommandLine() {
    return p_editorCommandLine ? p_editorCommandLine : editorDefault;
}

void Config::setEditorCommandLine(const char* commandLine) {
    replaceString(p_editorCommandLine, commandLine && *commandLine ? commandLine : nullptr);
    registerShutdown();
}

void Config::setDialogFont(const WsiFont* font) {
    delete p_dialogFont;
    p_dialogFont = font ? new WsiFont(*font) : nullptr;
    registerShutdown();
}

const char* Config::printSetup() {
    return p_printSetup ? p_printSetup : ExportParameters::defaultText();
}

void Config::setPrintSetup(const char* text) {
    replaceString(p_printSetup, text);
    registerShutdown();
}

ExportParameters Config::exportParameters() {
    return ExportParameters(printSetup(), v_exportMifAsAFrame);
}

const char* Config::defaultEditorCommandLine() {
    return editorDefault;
}

void Config::readSerialNumber(char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText("SerialNumber");
    setSerialNumber(text ? text->toUtf8().constData() : nullptr);
}

void Config::writeSerialNumber() {
    store("SerialNumber", QString::fromUtf8(p_serialNumber ? p_serialNumber : ""));
}

void Config::writePrintSetup() {
    store("PrintSetup", QString::fromUtf8(printSetup()));
}

void Config::readInstallationPath() {
    const std::unique_ptr<QString> text = storedText("InstallationPath");
    if (text && !text->isEmpty())
        setInstallationPath(text->toUtf8().constData());
}

void Config::readApplicationSettings(char) {}

void Config::readApplicationLayout() {}

void Config::writeApplicationSettings() {}

void Config::finishWriting() {}

char Config::readBoolean(const char* key, char defaultValue, char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText(key);
    return text ? IniSettings::booleanOf(*text, defaultValue != 0) : defaultValue;
}

void Config::readUndoLevels(char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText("UndoLevels");
    const int levels = text ? text->trimmed().toInt() : 5;
    v_undoLevels = levels > 10 ? 10 : levels < 0 ? 5 : levels;
}

void Config::readDialogFont(char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText("DialogFont");
    const std::unique_ptr<WsiFont> font =
        text && !text->isEmpty() ? scanFont(text->toUtf8().constData()) : nullptr;
    setDialogFont(font.get());
}

void Config::readPrintSetup(char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText("PrintSetup");
    setPrintSetup(text ? text->toUtf8().constData() : nullptr);
}

void Config::readPrintInColor(char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText("PrintInColor");
    v_printInColor = text ? colorOptionOf(*text) : colorPrintingFromSetup;
}

void Config::readExportMifAsAFrame(char defaultsOnly) {
    const std::unique_ptr<QString> text = defaultsOnly ? nullptr : storedText("ExportMifAsAFrame");
    v_exportMifAsAFrame = text ? text->trimmed().toInt() : 0;
}

void Config::readEditorCommandLine() {
    const std::unique_ptr<QString> text = storedText("EditorCommandLine");
    setEditorCommandLine(text ? text->toUtf8().constData() : nullptr);
}

std::unique_ptr<WsiFont> Config::scanFont(const char* description) {
    auto font = std::make_unique<WsiFont>();
    if (!description || !*description || !font->readDescription(description))
        return nullptr;
    return font;
}

void Config::writeDialogFont() {
    store("DialogFont", QString::fromStdString(p_dialogFont ? p_dialogFont->description() : ""));
}

void Config::writePrintInColor() {
    static const char* const words[] = {"Yes", "No", "Setup"};
    const int option = v_printInColor >= 0 && v_printInColor <= 2 ? v_printInColor : 2;
    store("PrintInColor", QString::fromLatin1(words[option]));
}
