#include "core/platform/piSystem.h"

#include "core/StringFunctions.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <sys/utsname.h>
#include <unistd.h>

namespace {
const piSystem* installedSystem = nullptr;

bool equalsIgnoringCase(const std::string& a, const char* b) {
    std::size_t i = 0;
    for (; i < a.size() && b[i]; ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i]))
            return false;
    }
    return i == a.size() && !b[i];
}
} // namespace

piSystem::~piSystem() = default;

std::string piSystem::executablePath() const {
    std::string path(4096, '\0');
    const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0)
        return "";
    path.resize(static_cast<std::size_t>(length));
    return path;
}

const char* piSystem::environment(const char* name) const {
    return name ? std::getenv(name) : nullptr;
}

piOsVersion piSystem::osVersion() const {
    // A POSIX system answers as the NT family, with the kernel's major release as version.
    utsname names{};
    const int major = uname(&names) == 0 ? std::atoi(names.release) : 0;
    return {2, major};
}

std::string piSystem::iniDirectory() const {
    if (const char* config = environment("XDG_CONFIG_HOME"); config && *config)
        return config;
    const char* home = environment("HOME");
    return std::string(home ? home : "") + "/.config";
}

char piSystem::pathSeparator() const {
    return '/';
}

void piSystem::beep() const {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()))
        QApplication::beep();
    else
        std::fputs("\a", stderr);
}

const piSystem& piSystem::current() {
    static const piSystem posix;
    return installedSystem ? *installedSystem : posix;
}

const piSystem* piSystem::install(const piSystem* system) {
    const piSystem* previous = installedSystem;
    installedSystem = system;
    return previous;
}

int piWindowsPlatformClass(const piOsVersion& version) {
    switch (version.platformId) {
    case 0:
        return 4;
    case 1:
        return 3;
    default:
        return version.majorVersion < 4 ? 1 : 2;
    }
}

std::string piProgramDirectoryOf(const std::string& executablePath, char separator) {
    std::string directory = executablePath;
    const std::size_t last = directory.rfind(separator);
    if (last != std::string::npos)
        directory.resize(last);
    const std::size_t parent = directory.rfind(separator);
    const std::size_t componentStart = parent == std::string::npos ? 0 : parent + 1;
    if (parent != std::string::npos && equalsIgnoringCase(directory.substr(componentStart), "bin"))
        directory.resize(parent);
    return directory;
}

std::string piNativeSeparators(std::string path, char separator) {
    for (char& c : path) {
        if (c == '/')
            c = separator;
    }
    return path;
}
