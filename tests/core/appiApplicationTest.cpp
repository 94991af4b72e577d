#include "core/appiApplication.h"
#include "core/platform/piSystem.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

// Answers as a Windows installation would, with inputs the test chooses.
class FakeSystem : public piSystem {
public:
    std::string executable = "C:\\X\\bin\\prog.exe";
    std::map<std::string, std::string> variables;
    piOsVersion version{2, 6};
    char separator = '\\';

    std::string executablePath() const override { return executable; }
    const char* environment(const char* name) const override {
        if (!name)
            return nullptr;
        auto found = variables.find(name);
        return found == variables.end() ? nullptr : found->second.c_str();
    }
    piOsVersion osVersion() const override { return version; }
    std::string iniDirectory() const override {
        const char* root = environment("SystemRoot");
        return root ? root : "";
    }
    char pathSeparator() const override { return separator; }
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

class ApplicationOnWindows : public ::testing::Test {
protected:
    void SetUp() override { m_previous = piSystem::install(&m_system); }
    void TearDown() override { piSystem::install(m_previous); }

    FakeSystem m_system;
    const piSystem* m_previous = nullptr;
};

TEST_F(ApplicationOnWindows, ProgramDirectoryCutsTheExecutableAndATrailingBin) {
    const struct {
        const char* executable;
        const char* directory;
    } cases[] = {
        {"C:\\X\\bin\\prog", "C:\\X"},
        {"C:\\X\\tools\\prog", "C:\\X\\tools"},
        {"C:\\X\\BIN\\prog", "C:\\X"},
        {"C:\\X\\Bin\\prog", "C:\\X"},
        {"C:\\X\\binary\\prog", "C:\\X\\binary"},
        // The separators are turned after the cut, so forward slashes hide a "bin".
        {"C:/X/bin\\prog", "C:\\X\\bin"},
    };
    NamedApplication application;
    for (const auto& c : cases) {
        m_system.executable = c.executable;
        EXPECT_STREQ(application.programDirectory(true), c.directory) << c.executable;
    }
}

TEST_F(ApplicationOnWindows, EnvironmentDecidesUnlessIgnored) {
    NamedApplication application;
    EXPECT_EQ(application.appDirEnvVarVal(), nullptr);
    EXPECT_STREQ(application.programDirectory(false), "C:\\X");

    m_system.variables["VOLSA_HOME"] = "D:/maker";
    EXPECT_STREQ(application.appDirEnvVarVal(), "D:/maker/tarq");
    EXPECT_STREQ(application.programDirectory(false), "D:\\maker\\tarq");
    EXPECT_STREQ(application.programDirectory(true), "C:\\X");

    m_system.variables["TARQ_DIR"] = "E:\\tarq";
    EXPECT_STREQ(application.appDirEnvVarVal(), "E:\\tarq");
    EXPECT_STREQ(application.programDirectory(false), "E:\\tarq");

    m_system.variables["TARQ_DIR"] = "";
    EXPECT_STREQ(application.programDirectory(false), "C:\\X") << "an empty value is not used";
}

TEST_F(ApplicationOnWindows, SubdirectoriesAndIniPath) {
    m_system.variables["SystemRoot"] = "C:\\WINDOWS";
    NamedApplication application;
    EXPECT_STREQ(application.executableDirectory(true), "C:\\X\\bin\\");
    EXPECT_STREQ(application.dynLibDirectory(true), "C:\\X\\bin\\");
    EXPECT_STREQ(application.libDirectory(true), "C:\\X\\lib\\");
    EXPECT_STREQ(application.helpDirectory(true), "C:\\X\\help\\");
    EXPECT_STREQ(application.quickviewDirectory(true), "C:\\X\\quickview\\");
    EXPECT_EQ(application.iniPath(), QString::fromLatin1("C:\\WINDOWS\\tarq.ini"));
}

TEST_F(ApplicationOnWindows, PlatformClassComesFromTheVersion) {
    const struct {
        piOsVersion version;
        int platformClass;
    } cases[] = {{{0, 3}, 4}, {{1, 4}, 3}, {{2, 3}, 1}, {{2, 4}, 2}, {{2, 10}, 2}, {{3, 1}, 1}};
    for (const auto& c : cases) {
        m_system.version = c.version;
        appiApplication application;
        EXPECT_EQ(application.platformClass(), c.platformClass)
            << c.version.platformId << "/" << c.version.majorVersion;
    }
}

TEST(ApplicationOnPosix, DirectoriesUseSlashes) {
    appiApplication application;
    const std::string directory = application.programDirectory(true);
    EXPECT_EQ(directory.find('\\'), std::string::npos);
    EXPECT_EQ(std::string(application.helpDirectory(true)), directory + "/help/");
    EXPECT_EQ(application.platformClass(), 2);
}

TEST(ApplicationFlags, InitSetsTheFlagTableAndLeavesSaveAsAndClipboard) {
    NamedApplication application;
    EXPECT_EQ(application.iniFile(), std::string("tarq.ini"));
    EXPECT_EQ(application.setSaveAsEnabled(1), 0);
    application.setClipboardEnabled(1);
    application.setNewEnabled(0);
    application.setAreWindowsShown(0);
    application.setDisableThreads(1);

    application.init();
    EXPECT_EQ(application.iniFile(), nullptr);
    EXPECT_EQ(application.helpFile(), nullptr);
    EXPECT_EQ(application.appFeatureRevString(), nullptr);
    EXPECT_EQ(application.isNewEnabled(), 1);
    EXPECT_EQ(application.isOpenEnabled(), 1);
    EXPECT_EQ(application.isSaveEnabled(), 0);
    EXPECT_EQ(application.isPrintRestricted(), 1);
    EXPECT_EQ(application.isExportRestricted(), 1);
    EXPECT_EQ(application.isShowAboutEnabled(), 0);
    EXPECT_EQ(application.isProtectionEnabled(), 0);
    EXPECT_EQ(application.isEPSEnabled(), 0);
    EXPECT_EQ(application.isMIFEnabled(), 0);
    EXPECT_EQ(application.areWindowsShown(), 1);
    EXPECT_EQ(application.isWindowSystemRunning(), 0);
    EXPECT_EQ(application.requiresThreads(), 0);
    EXPECT_EQ(application.disableThreads(), 0);
    EXPECT_EQ(application.useHTMLhelp(), 0);
    EXPECT_EQ(application.isSaveAsEnabled(), 1) << "init leaves Save As as it was";
    EXPECT_EQ(application.isClipboardEnabled(), 1) << "init leaves Clipboard as it was";
}

TEST(ApplicationFlags, FirstFourSettersReturnThePreviousValue) {
    appiApplication application;
    EXPECT_EQ(application.setNewEnabled(0), 1);
    EXPECT_EQ(application.setNewEnabled(1), 0);
    EXPECT_EQ(application.setOpenEnabled(0), 1);
    EXPECT_EQ(application.setSaveEnabled(1), 0);
    EXPECT_EQ(application.setSaveEnabled(0), 1);
    application.setSaveAsEnabled(1);
    EXPECT_EQ(application.setSaveAsEnabled(0), 1);
}

TEST(ApplicationFlags, NewestApplicationIsTheCurrentOne) {
    appiApplication* const before = appiApplication::current();
    {
        appiApplication first;
        EXPECT_EQ(appiApplication::current(), &first);
    }
    EXPECT_EQ(appiApplication::current(), nullptr) << "a destroyed application is not current";
    appiApplication::setCurrent(before);
    EXPECT_EQ(appiApplication::isLittleEndian(), true);
}

} // namespace
