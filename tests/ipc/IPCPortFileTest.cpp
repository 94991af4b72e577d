// The port file: the exact written form, its mode, and the tolerant reading.
#include "ipc/IPCPortFile.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sys/stat.h>

namespace {
std::string pathOf(const char* name) {
    return ::testing::TempDir() + name;
}

void writeText(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << text;
}

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
} // namespace

TEST(IPCPortFile, Write_GivesExactlyTwoLinesReadableByTheOwnerOnly) {
    const std::string path = pathOf("tq_write.port");
    writeText(path, "stale text that is longer than the new file\n");
    ::chmod(path.c_str(), 0644);
    IPCPortFile portFile(path.c_str());
    portFile.setOwner(2);
    portFile.setPort(45678);
    ASSERT_TRUE(portFile.writePortFile());
    EXPECT_EQ(readText(path), "owner = 2\nport = 45678\n");
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_TRUE(portFile.removePortFile());
    EXPECT_FALSE(portFile.removePortFile()) << "already gone";
}

TEST(IPCPortFile, Write_FailsWithoutAWritablePath) {
    IPCPortFile unnamed;
    EXPECT_FALSE(unnamed.writePortFile());
    IPCPortFile missingDirectory("/nonexistent-directory/x.port");
    EXPECT_FALSE(missingDirectory.writePortFile());
}

TEST(IPCPortFile, Read_AcceptsBothKeysInAnyOrderAndNothingLess) {
    struct Case {
        const char* text;
        bool accepted;
        int owner;
        int port;
    } cases[] = {
        {"owner = 1\nport = 5000\n", true, 1, 5000},
        {"port = 5000\nowner = 1\n", true, 1, 5000},
        {"port = 5000\n", false, 0, 0},
        {"owner = 1\n", false, 0, 0},
        {"", false, 0, 0},
        {"# comment\nhost = x\nowner = 2\n\nport = 77\n", true, 2, 77},
        {"owner = 3\nport = 10\nport = 20\n", true, 3, 20}, // the last value counts
        {"owner = 1x\nport = 12abc\n", true, 1, 12},        // atoi rules
        {"owner=1\nport=2\n", false, 0, 0},                 // the blanks are part of the form
        {"  owner   =   4\n\tport = 9\n", true, 4, 9},      // white space is any white space
        {"owner = 1\r\nport = 2\r\n", true, 1, 2},
        {"averyveryverylongkeyname_more = 1\nowner = 1\nport = 3\n", true, 1, 3},
    };
    const std::string path = pathOf("tq_read.port");
    for (const Case& c : cases) {
        writeText(path, c.text);
        IPCPortFile portFile(path.c_str());
        EXPECT_EQ(portFile.readPortFile(), c.accepted) << c.text;
        EXPECT_EQ(portFile.owner(), c.owner) << c.text;
        EXPECT_EQ(portFile.port(), c.port) << c.text;
    }
    std::remove(path.c_str());
}

TEST(IPCPortFile, Read_SurvivesOverlongLinesAndAMissingFile) {
    const std::string path = pathOf("tq_long.port");
    writeText(path,
              std::string(500, 'k') + " = " + std::string(300, '7') + "\nowner = 1\nport = 8\n");
    IPCPortFile portFile(path.c_str());
    EXPECT_TRUE(portFile.readPortFile());
    EXPECT_EQ(portFile.port(), 8);
    std::remove(path.c_str());
    EXPECT_FALSE(portFile.readPortFile());
    EXPECT_EQ(portFile.port(), 8) << "a failed read changes nothing";
    IPCPortFile unnamed;
    EXPECT_FALSE(unnamed.readPortFile());
    EXPECT_STREQ(unnamed.fileName(), "");
}
