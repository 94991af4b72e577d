#include "core/appiApplication.h"
#include "core/platform/piSystem.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>

namespace {

// Answers as a Windows installation would, with inputs the test chooses, while it lives.
class FakeSystem : public piSystem {
public:
    FakeSystem() : m_previous(install(this)) {}
    ~FakeSystem() override { install(m_previous); }
    std::string executable = "C:\\X\\bin\\prog.exe";
    std::map<std::string, std::string> variables;
    piOsVersion version{2, 6};

    std::string executablePath() const override { return executable; }
    const char* environment(const char* name) const override {
        auto found = name ? variables.find(name) : variables.end();
        return found == variables.end() ? nullptr : found->second.c_str();
    }
    piOsVersion osVersion() const override { return version; }
    std::string iniDirectory() const override {
        const char* root = environment("SystemRoot");
        return root ? root : "";
    }
    char pathSeparator() const override { return '\\'; }

private:
    const piSystem* m_previous;
};

class NamedApplication : public appiApplication {
public:
    using appiApplication::setClipboardEnabled;
    NamedApplication() {
        setIniFile("tarq.ini");
        setAppDirEnvVar("TARQ_DIR");
        setHomeSubdirectory("tarq");
    }
};

TEST(ApplicationOnWindows, ProgramDirectoryPrefersTheEnvironmentAndTurnsSlashes) {
    FakeSystem system;
    NamedApplication application;
    EXPECT_EQ(application.appDirEnvVarVal(), nullptr);
    EXPECT_STREQ(application.programDirectory(false), "C:\\X");
    system.variables["VOLSA_HOME"] = "D:/maker";
    EXPECT_STREQ(application.appDirEnvVarVal(), "D:/maker/tarq");
    EXPECT_STREQ(application.programDirectory(false), "D:\\maker\\tarq");
    EXPECT_STREQ(application.programDirectory(true), "C:\\X");
    system.variables["TARQ_DIR"] = "E:/tarq";
    EXPECT_STREQ(application.appDirEnvVarVal(), "E:/tarq");
    EXPECT_STREQ(application.programDirectory(false), "E:\\tarq");
    system.variables["TARQ_DIR"] = "";
    EXPECT_STREQ(application.programDirectory(false), "C:\\X") << "an empty value is unused";
    system.executable = "C:/X/bin\\prog";
    EXPECT_STREQ(application.programDirectory(true), "C:\\X\\bin")
        << "slashes are turned after the cut, so they hide a \"bin\"";
}

TEST(ApplicationOnWindows, SubdirectoriesIniPathAndPlatformClass) {
    FakeSystem system;
    system.variables["SystemRoot"] = "C:\\WINDOWS";
    NamedApplication application;
    EXPECT_STREQ(application.executableDirectory(true), "C:\\X\\bin\\");
    EXPECT_STREQ(application.dynLibDirectory(true), "C:\\X\\bin\\");
    EXPECT_STREQ(application.libDirectory(true), "C:\\X\\lib\\");
    EXPECT_STREQ(application.helpDirectory(true), "C:\\X\\help\\");
    EXPECT_STREQ(application.quickviewDirectory(true), "C:\\X\\quickview\\");
    EXPECT_EQ(application.iniPath(), QString::fromLatin1("C:\\WINDOWS\\tarq.ini"));

    const std::pair<piOsVersion, int> classes[] = {{{0, 3}, 4}, {{1, 4}, 3},  {{2, 3}, 1},
                                                   {{2, 4}, 2}, {{2, 10}, 2}, {{3, 1}, 1}};
    for (const auto& [version, platformClass] : classes) {
        system.version = version;
        EXPECT_EQ(appiApplication().platformClass(), platformClass)
            << version.platformId << "/" << version.majorVersion;
    }
}

TEST(ApplicationOnPosix, DirectoriesUseSlashesAndTheNewestApplicationIsCurrent) {
    {
        appiApplication application;
        EXPECT_EQ(appiApplication::current(), &application);
        const std::string directory = application.programDirectory(true);
        EXPECT_EQ(directory.find('\\'), std::string::npos);
        EXPECT_EQ(std::string(application.helpDirectory(true)), directory + "/help/");
        EXPECT_EQ(application.platformClass(), 2);
    }
    EXPECT_EQ(appiApplication::current(), nullptr) << "a destroyed application is not current";
}

TEST(ApplicationFlags, InitSetsTheFlagTableAndLeavesSaveAsAndClipboard) {
    NamedApplication application;
    EXPECT_STREQ(application.iniFile(), "tarq.ini");
    // The setters of the first four flags return the previous value.
    EXPECT_EQ(application.setNewEnabled(0), 1);
    EXPECT_EQ(application.setOpenEnabled(0), 1);
    EXPECT_EQ(application.setSaveEnabled(1), 0);
    EXPECT_EQ(application.setSaveAsEnabled(1), 0);
    EXPECT_EQ(application.setSaveAsEnabled(1), 1);
    application.setClipboardEnabled(1);
    application.setAreWindowsShown(0);
    application.setDisableThreads(1);
    application.setWindowSystemRunning(1);

    application.init();
    EXPECT_EQ(application.iniFile(), nullptr);
    EXPECT_EQ(application.helpFile(), nullptr);
    EXPECT_EQ(application.appFeatureRevString(), nullptr);
    const appiApplication& a = application;
    const std::tuple<const char*, char, char> flags[] = {
        {"New", a.isNewEnabled(), 1},
        {"Open", a.isOpenEnabled(), 1},
        {"Save", a.isSaveEnabled(), 0},
        {"print restricted", a.isPrintRestricted(), 1},
        {"export restricted", a.isExportRestricted(), 1},
        {"About", a.isShowAboutEnabled(), 0},
        {"protection", a.isProtectionEnabled(), 0},
        {"EPS", a.isEPSEnabled(), 0},
        {"MIF", a.isMIFEnabled(), 0},
        {"windows shown", a.areWindowsShown(), 1},
        {"window system running", a.isWindowSystemRunning(), 0},
        {"threads required", a.requiresThreads(), 0},
        {"threads disabled", a.disableThreads(), 0},
        {"HTML help", a.useHTMLhelp(), 0},
        {"Save As, as it was", a.isSaveAsEnabled(), 1},
        {"Clipboard, as it was", a.isClipboardEnabled(), 1},
        {"little-endian machine", appiApplication::isLittleEndian(), 1},
    };
    for (const auto& [name, value, expected] : flags)
        EXPECT_EQ(value, expected) << name;
}

} // namespace
