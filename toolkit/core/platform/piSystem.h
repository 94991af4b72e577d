#pragma once

#include "core/TqExport.h"

#include <string>

/// The operating system's platform and major version, as the Windows version class
/// reports them.
struct piOsVersion {
    int platformId; ///< 0 Win32s, 1 Windows 9x, 2 NT family (POSIX systems report 2)
    /// The major version number (the kernel's on POSIX systems).
    int majorVersion;
};

/// piSystem: what the toolkit asks of the operating system (executable path, environment,
/// version, configuration directory, separator, beep). The POSIX implementation is the
/// default; tests and ports install another, such as one that answers as Windows would.
class TQ_EXPORT piSystem {
public:
    virtual ~piSystem();

    /// The full path of the running executable, or "" if it cannot be found.
    virtual std::string executablePath() const;
    ///@{
    /// The value of an environment variable, or null when it is unset (or name is null).
    virtual const char* environment(const char* name) const;
    virtual piOsVersion osVersion() const;
    ///@}
    /// The directory that holds the application's ini file: on POSIX $XDG_CONFIG_HOME, else
    /// $HOME/.config; on Windows the value of "SystemRoot".
    virtual std::string iniDirectory() const;
    /// The path separator of the platform's file names.
    virtual char pathSeparator() const;
    /// An audible signal: the window system's beep while a GUI runs, else a bell on stderr.
    virtual void beep() const;

    /// The system in use: the installed one, else the POSIX default.
    static const piSystem& current();
    /// Installs a system (null reinstalls the default) and returns the one it replaces, or
    /// null if that was the default. The caller keeps ownership.
    static const piSystem* install(const piSystem* system);
};

/// The Windows platform class of an operating-system version: platform id 0 gives 4, 1 gives
/// 3, any other gives 1 below major version 4 and 2 from there on.
TQ_EXPORT int piWindowsPlatformClass(const piOsVersion& version);

/// The directory a program is installed in, from its executable's path: the path cut at its
/// last separator, then without a last component "bin" (compared without regard to case).
/// "C:\X\bin\prog" gives "C:\X" with separator '\'.
TQ_EXPORT std::string piProgramDirectoryOf(const std::string& executablePath, char separator);

/// The path with every "/" turned into the separator (a no-op where the separator is "/").
TQ_EXPORT std::string piNativeSeparators(std::string path, char separator);
