// The port file: the exact written form, its mode, and the tolerant reading.
#include "IpcTestSupport.h"

#include "ipc/IPCPortFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

TEST(IPCPortFile, WriteGivesExactlyTwoLinesReadableByTheOwnerOnly) {
    const std::string path = ::testing::TempDir() + "tq_write.port";
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
    EXPECT_FALSE(IPCPortFile().writePortFile()) << "no name";
    EXPECT_FALSE(IPCPortFile("/nonexistent-directory/x.port").writePortFile());
}

// Both keys in any order and nothing less; the blanks around "=" are part of the form, but
// any white space will do; the last value counts, read by atoi rules; overlong lines are
// skipped.
TEST(IPCPortFile, ReadAcceptsBothKeysInAnyOrderAndNothingLess) {
    const std::string longLine = std::string(500, 'k') + " = " + std::string(300, '7') + "\n";
    const std::tuple<std::string, bool, int, int> cases[] = {
        {"owner = 1\nport = 5000\n", true, 1, 5000},
        {"port = 5000\nowner = 1\n", true, 1, 5000},
        {"port = 5000\n", false, 0, 0},
        {"owner = 1\n", false, 0, 0},
        {"# comment\nhost = x\nowner = 2\n\nport = 77\n", true, 2, 77},
        {"owner = 3\nport = 10\nport = 20\n", true, 3, 20},
        {"owner = 1x\nport = 12abc\n", true, 1, 12},
        {"owner=1\nport=2\n", false, 0, 0},
        {"  owner   =   4\n\tport = 9\n", true, 4, 9},
        {"owner = 1\r\nport = 2\r\n", true, 1, 2},
        {"averyveryverylongkeyname_more = 1\nowner = 1\nport = 3\n", true, 1, 3},
        {longLine + "owner = 1\nport = 8\n", true, 1, 8}};
    const std::string path = ::testing::TempDir() + "tq_read.port";
    for (const auto& [text, accepted, owner, port] : cases) {
        writeText(path, text);
        IPCPortFile portFile(path.c_str());
        EXPECT_EQ(portFile.readPortFile(), accepted) << text;
        EXPECT_EQ(portFile.owner(), owner) << text;
        EXPECT_EQ(portFile.port(), port) << text;
        if (accepted) {
            std::remove(path.c_str());
            EXPECT_FALSE(portFile.readPortFile()) << "the file is gone";
            EXPECT_EQ(portFile.port(), port) << "a failed read changes nothing";
        }
    }
    IPCPortFile unnamed;
    EXPECT_FALSE(unnamed.readPortFile());
    EXPECT_STREQ(unnamed.fileName(), "");
}

// The token is a third line after the two that readers of the plain form know, so they still
// accept the file; the reader takes it when present and clears it when absent.
TEST(IPCPortFile, TokenIsAThirdLineThatPlainReadersSkip) {
    const std::string path = ::testing::TempDir() + "tq_token.port";
    IPCPortFile written(path.c_str());
    written.setOwner(2);
    written.setPort(4242);
    written.setToken("0123456789abcdef");
    ASSERT_TRUE(written.writePortFile());
    EXPECT_EQ(readText(path), "owner = 2\nport = 4242\ntoken = 0123456789abcdef\n");
    IPCPortFile read(path.c_str());
    ASSERT_TRUE(read.readPortFile());
    EXPECT_EQ(std::string(read.token()), "0123456789abcdef");
    writeText(path, "owner = 2\nport = 4242\n");
    ASSERT_TRUE(read.readPortFile());
    EXPECT_EQ(std::string(read.token()), "");
    EXPECT_EQ(written.lastWriteError(), 0);
    IPCPortFile unwritable("/nonexistent-directory/x.port");
    EXPECT_FALSE(unwritable.writePortFile());
    EXPECT_EQ(unwritable.lastWriteError(), ENOENT);
    std::remove(path.c_str());
}
