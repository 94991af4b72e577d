/// Config: the toolkit's user settings, each a static member with a fixed default, read from
/// and written to the application's settings file. An application derives from it to keep
/// its own settings in the same file through the hooks.
///
/// Config lives in its own subsystem, settings/, at the top of the toolkit: the settings it
/// keeps belong to the subsystems below it (the dialog font to the devices, the default HDL
/// to hdl, the print setup to export, the screen-caching flag to the window layer), so it
/// may see all of them and none of them sees it. Its shutdown still runs at its place in the
/// core's shutdown order, where it registers itself.
#pragma once

#include "core/TqExport.h"
#include "hdl/HDLConstant.h"
#include "hdl/VHDLVersion.h"
#include "settings/ColorPrintingOption.h"

#include <QString>

#include <memory>
#include <string>

class ExportParameters;
class QSettings;
class WsiFont;

/// The keys of the settings file (top level, that is under "[General]"), each with the value
/// taken when it is missing:
///   UndoLevels          integer, 5; above 10 gives 10, below 0 gives 5
///   EditorCommandLine   text, notepad.exe "%FILE%" (the quotes are part of it); %FILE% stands
///                       for the file; an empty text also gives the default
///   PrintSetup          text, the ExportParameters default (see ExportParameters.h)
///   PrintInColor        text; first letter T or Y (any case): colorPrintingAlways; F or N:
///                       colorPrintingNever; anything else: colorPrintingFromSetup (default)
///   DialogFont          text, empty for the system font; see WsiFont::readDescription
///   ExportMifAsAFrame   integer, 0
///   InstallationPath    text, none
///   DrawComplexButtons  boolean, false; simple buttons are drawn when it is false
///   DrawSimpleButtons   only ever written, empty (kept for older readers of the file)
///   NoHeapMonitor       boolean, false
///   UseCtl3D            boolean, true
///   SaveOnExit          boolean, true
///   SaveWindowPos       boolean, true
///   CacheScreenBits     boolean, false; passed on to WsdWindow::setCacheScreenBits
///   DoubleClickDelay    integer milliseconds, the window system's double-click interval
///   SerialNumber        text, none
/// Booleans read as IniSettings::booleanOf reads them.
class TQ_EXPORT Config {
public:
    Config();
    virtual ~Config();
    Config(const Config&) = delete;
    Config& operator=(const Config&) = delete;

    /// Sets the dialog font, print setup, print in colour, undo levels and export-MIF setting
    /// to their defaults and save window position and save on exit to true; the others keep
    /// their values.
    virtual void setDefaults();
    /// Reads every setting from the store in a fixed order: serial number, dialog font, print
    /// setup, print in colour, installation path, undo levels, export MIF as a frame, editor
    /// command line, DrawComplexButtons, NoHeapMonitor, UseCtl3D, readApplicationSettings(0),
    /// readApplicationLayout(), SaveOnExit, SaveWindowPos, CacheScreenBits. Without a store
    /// every setting takes its default.
    virtual void readConfig();
    /// With full false stores only SaveOnExit as false. With full true stores the dialog
    /// font, print in colour, UndoLevels, EditorCommandLine, InstallationPath,
    /// DrawComplexButtons (true, and only when simple buttons are off), DrawSimpleButtons
    /// (empty), NoHeapMonitor, UseCtl3D, SaveOnExit (always true), SaveWindowPos and
    /// CacheScreenBits, then runs writeApplicationSettings(). Either way finishWriting() runs
    /// last and the file is written. So full is the user's choice to save on exit: keeping
    /// the settings marks them to be kept next time. Nothing happens without a store.
    virtual void writeConfig(char full);

    // --- The settings file ----------------------------------------------------------------
    /// The file the store is opened on: the one set here, else the application's iniPath().
    /// Setting a path closes an open store; an empty path returns to the application's.
    ///@{
    static void setSettingsFile(const QString& path);
    static QString settingsFile();
    ///@}
    /// The store, opened on first use in the IniSettings form; null when no file is known
    /// (no path set and no application). Owned by Config until shutdown().
    static QSettings* settings();
    /// Copies the text of key into buffer (truncated to size - 1 bytes, always terminated
    /// when size > 0). False, with buffer emptied, when the key is missing or there is no
    /// store.
    static bool getApplicationResource(const char* key, char* buffer, int size);
    /// Writes the open store to its file, closes it, and frees the owned strings and the
    /// dialog font; every setting returns to its start value.
    static void shutdown();

    // --- Settings ----------------------------------------------------------------------------
    /// "UndoLevels": the undo depth, 0 to 10 (5 by default).
    static int undoLevels() { return v_undoLevels; }
    /// Owned by Config; null when none is known.
    ///@{
    /// "InstallationPath"; set keeps a copy of path (null forgets it).
    static const char* installationPath() { return p_installationPath; }
    static void setInstallationPath(const char* path);
    ///@}
    /// "ExportMifAsAFrame": non-zero when a MIF export is the anchored frame only (0 by
    /// default).
    static int exportMifAsAFrame() { return v_exportMifAsAFrame; }
    /// The negation of "DrawComplexButtons": non-zero by default.
    static char drawSimpleButtons() { return v_drawSimpleButtons; }
    ///@{
    /// The language new HDL text is read and written in (Verilog at start); not stored.
    static HDLanguage defaultHDL() { return v_defaultHDL; }
    static void setDefaultHDL(HDLanguage language) { v_defaultHDL = language; }
    ///@}
    ///@{
    /// A flag kept for the application's parsers (0 at start): whether their syntax errors
    /// list the tokens expected. The toolkit's own parsers do not read it; not stored.
    static char printExpectedTokens() { return v_printExpectedTokens; }
    static void setPrintExpectedTokens(char on) { v_printExpectedTokens = on; }
    ///@}
    ///@{
    /// The VHDL edition new VHDL text is read and written in; not stored.
    static VHDLVersion defaultVHDLVersion() { return v_defaultVHDLVersion; }
    static void setDefaultVHDLVersion(VHDLVersion version) { v_defaultVHDLVersion = version; }
    ///@}
    /// The negation of "NoHeapMonitor": non-zero by default.
    static char startHeapMonitor() { return !v_noHeapMonitor; }
    /// "UseCtl3D": non-zero by default.
    static char useCtl3d() { return v_useCtl3d; }
    ///@{
    /// "SaveWindowPos": whether top windows save and restore their places (non-zero by
    /// default).
    static char saveWindowPos() { return v_saveWindowPos; }
    static void toggleSaveWindowPos() { v_saveWindowPos = !v_saveWindowPos; }
    ///@}
    /// The double-click time in milliseconds: "DoubleClickDelay" when the store holds a
    /// positive value, else the window system's interval (400 without a GUI). Read once,
    /// when first asked.
    static unsigned long XdblClickTime();
    /// Owned by Config; null when none is known.
    ///@{
    /// "SerialNumber", the licence data; set keeps a copy of number (null forgets it).
    static const char* serialNumber() { return p_serialNumber; }
    static void setSerialNumber(const char* number);
    ///@}
    ///@{
    /// "PrintInColor": 0 (yes), 1 (no) or 2 (not decided; the default).
    static ColorPrintingOption printInColor() { return v_printInColor; }
    static void setPrintInColor(ColorPrintingOption option) { v_printInColor = option; }
    ///@}
    ///@{
    /// "SaveOnExit": whether the settings are written when the application ends (non-zero
    /// by default).
    static char saveOnExit() { return v_saveOnExit; }
    static void toggleSaveOnExit() { v_saveOnExit = !v_saveOnExit; }
    static void setSaveOnExit(char on) { v_saveOnExit = on; }
    ///@}
    /// Owned by Config; never null.
    static const char* editorCommandLine();
    /// A null or empty command line sets the default.
    static void setEditorCommandLine(const char* commandLine);
    /// Null for the system font; owned by Config.
    static const WsiFont* dialogFont() { return p_dialogFont; }
    /// A copy of font, or the system font for null.
    static void setDialogFont(const WsiFont* font);
    /// The print setup text; owned by Config, never null.
    ///@{
    static const char* printSetup();
    static void setPrintSetup(const char* text);
    ///@}
    /// The print setup and the export-MIF setting as export parameters; by value.
    static ExportParameters exportParameters();
    /// The default of "EditorCommandLine"; a static string.
    static const char* defaultEditorCommandLine();

    /// Reads and writes "SerialNumber" (readSerialNumber with defaultsOnly forgets it).
    ///@{
    void readSerialNumber(char defaultsOnly);
    void writeSerialNumber();
    ///@}
    /// Stores the print setup text; it is not part of writeConfig, since the print setup
    /// dialog keeps it when the user changes it.
    void writePrintSetup();

protected:
    /// Reads "InstallationPath"; an application that knows its installation otherwise
    /// overrides it. A missing or empty key leaves the path as it is.
    virtual void readInstallationPath();
    /// The application's hooks; the toolkit's do nothing. readApplicationSettings runs after
    /// UseCtl3D has been read (given 0, meaning values come from the store),
    /// readApplicationLayout after it and before SaveOnExit; writeApplicationSettings at the
    /// end of a full write, finishWriting last in every write.
    ///@{
    virtual void readApplicationSettings(char defaultsOnly);
    virtual void readApplicationLayout();
    virtual void writeApplicationSettings();
    virtual void finishWriting();
    ///@}

    /// Each reader takes the default when defaultsOnly is set or the key is missing.
    ///@{
    char readBoolean(const char* key, char defaultValue, char defaultsOnly);
    void readUndoLevels(char defaultsOnly);
    void readDialogFont(char defaultsOnly);
    void readPrintSetup(char defaultsOnly);
    void readPrintInColor(char defaultsOnly);
    void readExportMifAsAFrame(char defaultsOnly);
    ///@}
    /// Reads "EditorCommandLine"; a missing or empty key gives the default.
    void readEditorCommandLine();
    /// A font from its description (see WsiFont::readDescription), or null for an empty or
    /// malformed one; the caller owns the font.
    static std::unique_ptr<WsiFont> scanFont(const char* description);
    ///@{
    /// Stores "DialogFont" (empty for the system font) and "PrintInColor" ("Yes", "No" or
    /// "Setup" for options 0, 1 and 2).
    void writeDialogFont();
    void writePrintInColor();
    ///@}

private:
    static void registerShutdown();

    static QString* p_settingsFile;
    static QSettings* p_settings;
    static int v_undoLevels;
    static char* p_installationPath;
    static int v_exportMifAsAFrame;
    static char v_drawSimpleButtons;
    static HDLanguage v_defaultHDL;
    static char v_printExpectedTokens;
    static VHDLVersion v_defaultVHDLVersion;
    static char v_noHeapMonitor;
    static char v_useCtl3d;
    static char v_saveWindowPos;
    static unsigned long v_doubleClickTime;
    static char* p_serialNumber;
    static ColorPrintingOption v_printInColor;
    static char v_saveOnExit;
    static char* p_editorCommandLine;
    static WsiFont* p_dialogFont;
    static char* p_printSetup;
};
