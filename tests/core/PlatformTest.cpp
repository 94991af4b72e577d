#include "core/platform/piModule.h"
#include "core/platform/piSystem.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <unistd.h>

namespace {

void functionInTheTestProgram() {}

TEST(PlatformRules, ProgramDirectoryOfFollowsTheSeparator) {
    const std::tuple<const char*, char, const char*> cases[] = {
        {"C:\\X\\bin\\prog", '\\', "C:\\X"},
        {"C:\\X\\tools\\prog", '\\', "C:\\X\\tools"},
        {"C:\\X\\BIN\\prog", '\\', "C:\\X"},
        {"/opt/tarq/bin/tarq", '/', "/opt/tarq"},
        {"/opt/tarq/libexec/tarq", '/', "/opt/tarq/libexec"},
        {"/opt/tarq/bin/tarq", '\\', "/opt/tarq/bin/tarq"},
        {"prog", '/', "prog"},
        {"bin/prog", '/', "bin"},
    };
    for (const auto& [path, separator, directory] : cases)
        EXPECT_EQ(piProgramDirectoryOf(path, separator), directory) << path;
    EXPECT_EQ(piNativeSeparators("a/b/c", '\\'), "a\\b\\c");
    EXPECT_EQ(piNativeSeparators("a/b/c", '/'), "a/b/c");
}

TEST(PlatformPosix, ExecutableEnvironmentAndConfigDirectory) {
    const piSystem& system = piSystem::current();
    char buffer[4096] = {};
    ASSERT_GT(readlink("/proc/self/exe", buffer, sizeof buffer - 1), 0);
    EXPECT_EQ(system.executablePath(), buffer);
    EXPECT_EQ(system.environment(nullptr), nullptr);
    setenv("TQ_PLATFORM_TEST", "value", 1);
    EXPECT_STREQ(system.environment("TQ_PLATFORM_TEST"), "value");

    setenv("XDG_CONFIG_HOME", "/tmp/tq-config", 1);
    EXPECT_EQ(system.iniDirectory(), "/tmp/tq-config");
    unsetenv("XDG_CONFIG_HOME");
    const std::string home = system.environment("HOME") ? system.environment("HOME") : "";
    setenv("HOME", "/home/user", 1);
    EXPECT_EQ(system.iniDirectory(), "/home/user/.config");
    setenv("HOME", home.c_str(), 1);
}

TEST(PlatformPosix, ModuleHandlesNameTheLibraryAndTheProgram) {
    EXPECT_NE(piModule::toolkit(), nullptr);
    EXPECT_NE(piModule::toolkit(),
              piModule::containing(reinterpret_cast<const void*>(&functionInTheTestProgram)));
    EXPECT_EQ(piModule::containing(nullptr), nullptr);
    EXPECT_EQ(piModule::fileContaining(nullptr), "");
}

} // namespace
