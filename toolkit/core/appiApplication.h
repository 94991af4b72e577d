#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"

#include <QString>

/// appiApplication: the application object a client's factory creates. It answers where the
/// program is installed, which ini file it uses, and which features are switched on.
class TQ_EXPORT appiApplication : public TqObject {
public:
    ///@{
    /// Classifies the platform and calls init(). The newest application becomes the
    /// library-wide current one.
    appiApplication();
    ~appiApplication() override;
    appiApplication(const appiApplication&) = delete;
    appiApplication& operator=(const appiApplication&) = delete;
    ///@}

    ///@{
    /// The library-wide application pointer, or null before the first application exists.
    static appiApplication* current();
    static void setCurrent(appiApplication* application);
    ///@}

    /// Resets the strings to null and the feature flags to their start values. Save As and
    /// Clipboard are deliberately left as they are: the application's subclass sets them.
    void init();

    // --- Directories --------------------------------------------------------------------------
    /// All results live in the static ring. Windows-style systems use "\" throughout; POSIX
    /// systems "/".

    /// The application's own environment variable if set; else, when the maker's "VOLSA_HOME"
    /// is set, `<VOLSA_HOME>/<home subdirectory>` in the next ring buffer; else null.
    const char* appDirEnvVarVal() const;
    /// The installation directory: appDirEnvVarVal() unless ignoreEnvironment is set or it is
    /// empty, else the executable's directory without a last "bin" component.
    const char* programDirectory(bool ignoreEnvironment) const;
    ///@{
    /// programDirectory followed by the separator, "bin", "lib", "bin", "help" or "quickview",
    /// and a trailing separator.
    const char* executableDirectory(bool ignoreEnvironment) const;
    const char* libDirectory(bool ignoreEnvironment) const;
    const char* dynLibDirectory(bool ignoreEnvironment) const;
    const char* helpDirectory(bool ignoreEnvironment) const;
    const char* quickviewDirectory(bool ignoreEnvironment) const;
    ///@}
    /// The ini file's full path: the platform's ini directory, the separator and iniFile().
    QString iniPath() const;

    ///@{
    /// Strings the application owns (copies made by the setters below), or null when unset.
    const char* iniFile() const { return m_iniFile; }
    const char* helpFile() const { return m_helpFile; }
    const char* appFeatureRevString() const { return m_featureRevString; }
    ///@}
    /// 4 (Win32s), 3 (Windows 9x), 2 (NT 4 or later, and POSIX systems) or 1 (older NT).
    int platformClass() const { return m_platformClass; }

    // --- Feature flags ------------------------------------------------------------------------
    ///@{
    /// The setters of New, Open, Save and Save As return the previous value.
    virtual char isNewEnabled() const { return m_newEnabled; }
    char setNewEnabled(char enabled);
    virtual char isOpenEnabled() const { return m_openEnabled; }
    char setOpenEnabled(char enabled);
    virtual char isSaveEnabled() const { return m_saveEnabled; }
    char setSaveEnabled(char enabled);
    virtual char isSaveAsEnabled() const { return m_saveAsEnabled; }
    char setSaveAsEnabled(char enabled);
    virtual char isClipboardEnabled() const { return m_clipboardEnabled; }
    virtual char isPrintRestricted() const { return m_printRestricted; }
    virtual char isExportRestricted() const { return m_exportRestricted; }
    char isProtectionEnabled() const { return m_protectionEnabled; }
    char isShowAboutEnabled() const { return m_showAboutEnabled; }
    void setShowAboutEnabled(char enabled) { m_showAboutEnabled = enabled; }
    char isEPSEnabled() const { return m_epsEnabled; }
    char isMIFEnabled() const { return m_mifEnabled; }
    char areWindowsShown() const { return m_windowsShown; }
    void setAreWindowsShown(char shown) { m_windowsShown = shown; }
    ///@}
    ///@{
    /// Set by the window-system layer while its event loop runs.
    char isWindowSystemRunning() const { return m_windowSystemRunning; }
    void setWindowSystemRunning(char running) { m_windowSystemRunning = running; }
    char requiresThreads() const { return m_requiresThreads; }
    void setRequiresThread(char required) { m_requiresThreads = required; }
    char disableThreads() const { return m_disableThreads; }
    void setDisableThreads(char disabled) { m_disableThreads = disabled; }
    char useHTMLhelp() const { return m_useHTMLhelp; }
    ///@}

    ///@{
    /// The revision of the font files this application reads.
    virtual double fontFileRevision() const { return 1.0; }
    static bool isLittleEndian();
    ///@}

protected:
    ///@{
    /// The subclass names its files and variables after init(); each setter keeps a copy.
    void setIniFile(const char* name);
    void setHelpFile(const char* name);
    void setAppFeatureRevString(const char* text);
    ///@}
    /// The environment variable that holds the installation directory.
    void setAppDirEnvVar(const char* name);
    ///@{
    /// The subdirectory appended to the maker's home variable.
    void setHomeSubdirectory(const char* name);
    void setClipboardEnabled(char enabled) { m_clipboardEnabled = enabled; }
    void setEPSEnabled(char enabled) { m_epsEnabled = enabled; }
    void setMIFEnabled(char enabled) { m_mifEnabled = enabled; }
    ///@}

private:
    const char* subdirectory(bool ignoreEnvironment, const char* name) const;
    void releaseStrings();

    int m_platformClass;
    char* m_iniFile = nullptr;
    char* m_appDirEnvVar = nullptr;
    char* m_homeSubdirectory = nullptr;
    char* m_helpFile = nullptr;
    char* m_featureRevString = nullptr;
    char m_newEnabled = 0;
    char m_openEnabled = 0;
    char m_saveEnabled = 0;
    ///@{
    /// Not touched by init(); zero only so that a forgetful subclass reads a defined value.
    char m_saveAsEnabled = 0;
    char m_clipboardEnabled = 0;
    char m_printRestricted = 0;
    char m_exportRestricted = 0;
    char m_showAboutEnabled = 0;
    char m_protectionEnabled = 0;
    char m_epsEnabled = 0;
    char m_mifEnabled = 0;
    char m_windowsShown = 0;
    char m_windowSystemRunning = 0;
    char m_requiresThreads = 0;
    char m_disableThreads = 0;
    char m_useHTMLhelp = 0;
    ///@}
};
