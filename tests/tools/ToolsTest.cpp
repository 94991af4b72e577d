// The programs as a user runs them: tqserver serving, tqsend and a real tclsh with the
// tarqclient package talking to it, and the ways the server stops.
#include "core/TarqToolkit.h"
#include "ipc/IPCPortFile.h"
#include "ipc/platform/piSocket.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {
using namespace std::chrono_literals;

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A child process whose standard output goes to a file; ended by its pid if it overstays.
class Process {
public:
    Process(std::vector<std::string> arguments, const std::string& outputPath,
            std::vector<std::string> extraEnvironment = {})
        : m_outputPath(outputPath) {
        std::vector<char*> argv;
        for (std::string& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        std::vector<std::string> environment(extraEnvironment);
        for (char** variable = environ; *variable; ++variable)
            environment.emplace_back(*variable);
        std::vector<char*> envp;
        for (std::string& variable : environment)
            envp.push_back(variable.data());
        envp.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, outputPath.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        if (posix_spawn(&m_pid, argv[0], &actions, nullptr, argv.data(), envp.data()) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    ~Process() {
        if (m_pid > 0 && !m_exited) {
            ::kill(m_pid, SIGKILL);
            ::waitpid(m_pid, nullptr, 0);
        }
        std::remove(m_outputPath.c_str());
    }
    bool started() const { return m_pid > 0; }
    pid_t pid() const { return m_pid; }
    // The exit status, or -1 when the process did not end within the time (it is then killed).
    int wait(std::chrono::milliseconds limit = 10s) {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        int status = 0;
        while (::waitpid(m_pid, &status, WNOHANG) == 0) {
            if (std::chrono::steady_clock::now() > deadline)
                return -1;
            std::this_thread::sleep_for(5ms);
        }
        m_exited = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    std::string output() const { return readFile(m_outputPath); }

private:
    std::string m_outputPath;
    pid_t m_pid = -1;
    bool m_exited = false;
};

// A tqserver started for one test, with its port file.
class ToolsTest : public ::testing::Test {
protected:
    void startServer(std::vector<std::string> extra = {}) {
        std::remove(portFile.c_str());
        std::vector<std::string> arguments{TQ_TQSERVER, "--port-file", portFile};
        arguments.insert(arguments.end(), extra.begin(), extra.end());
        server = std::make_unique<Process>(arguments, temp("server.out"));
        ASSERT_TRUE(server->started());
        IPCPortFile file(portFile.c_str());
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        while (!file.readPortFile()) {
            ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "no port file";
            std::this_thread::sleep_for(5ms);
        }
        EXPECT_EQ(file.owner(), 2);
    }
    void TearDown() override {
        if (server && server->started())
            ::kill(server->pid(), SIGTERM);
    }
    struct Result {
        int status;
        std::string output;
    };
    Result send(std::vector<std::string> scripts, long waitMs = 2000) {
        std::vector<std::string> arguments{TQ_TQSEND, "--port-file", portFile, "--wait-ms",
                                           std::to_string(waitMs)};
        arguments.insert(arguments.end(), scripts.begin(), scripts.end());
        Process client(arguments, temp("send.out"));
        const int status = client.wait();
        return {status, client.output()};
    }
    // Per test and process, since ctest runs the tests side by side.
    static std::string temp(const char* name) {
        return ::testing::TempDir() + "tq_tools_" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
               std::to_string(::getpid()) + "_" + name;
    }

    std::string portFile = temp("server.port");
    std::unique_ptr<Process> server;
};
} // namespace

TEST_F(ToolsTest, Tqsend_PrintsEachReplyAndExitsWithTheProtocolsOutcome) {
    startServer();
    struct Case {
        std::vector<std::string> scripts;
        const char* output;
        int status;
    } cases[] = {
        {{"beep"}, "Beep you back...\n", 0},
        {{"version"}, nullptr, 0},
        {{"result {expr 6*7}", "result {string toupper abc}"}, "42\nABC\n", 0},
        {{"nonsense"}, "Bad command\n", 1},
        {{"result {error x}"}, "Bad command\n", 1},
        {{"set x 1", "beep"}, "Beep you back...\n", 0},
        {{"beep; beep"}, "Beep you back...\nBeep you back...\n", 0},
        {{"quit", "beep"}, "", 0},
    };
    for (const Case& c : cases) {
        const Result result = send(c.scripts, 300);
        EXPECT_EQ(result.status, c.status) << c.scripts[0];
        EXPECT_EQ(result.output,
                  c.output ? std::string(c.output) : std::string(tqVersionString()) + "\n")
            << c.scripts[0];
    }
}

TEST_F(ToolsTest, Tqsend_ExitsTwoWhenTheServerCannotBeReached) {
    std::remove(portFile.c_str());
    EXPECT_EQ(send({"beep"}).status, 2) << "no port file";
    IPCPortFile stale(portFile.c_str());
    stale.setOwner(2);
    stale.setPort(1); // nothing listens on port 1 of this machine's loopback
    ASSERT_TRUE(stale.writePortFile());
    EXPECT_EQ(send({"beep"}).status, 2) << "nobody listening";
    Process usage({TQ_TQSEND, "--port-file", portFile}, temp("usage.out"));
    EXPECT_EQ(usage.wait(), 2) << "no script";
    std::remove(portFile.c_str());
}

TEST_F(ToolsTest, TclClient_DrivesTheServerFromARealTclsh) {
    startServer();
    const std::string script = temp("client.tcl");
    {
        std::ofstream out(script);
        out << "package require tarqclient\n"
               "set chan [tarqclient::connect {"
            << portFile
            << "}]\n"
               "puts [tarqclient::send $chan beep]\n"
               "puts [tarqclient::send $chan {result {string length [string repeat x 2000]}}]\n"
               "puts [tarqclient::send $chan nonsense]\n"
               "puts [catch {tarqclient::send $chan {set y 1} 200} message]:$message\n"
               "puts [tarqclient::send $chan {result {encoding convertto utf-8 \u00e9}}]\n"
               "tarqclient::close $chan\n"
               "source [file join {" TQ_TCL_PACKAGE_DIR "} tarqclient tarqclient.tcl]\n"
               "set again [tarqclient::connect {"
            << portFile
            << "}]\n"
               "puts [tarqclient::send $again {result {expr 2+3}}]\n"
               "tarqclient::send $again quit 200\n";
    }
    Process tclsh({TQ_TCLSH, script}, temp("tclsh.out"), {"TCLLIBPATH=" TQ_TCL_PACKAGE_DIR});
    ASSERT_EQ(tclsh.wait(), 1) << "the last send ends with the closed connection: "
                               << tclsh.output();
    EXPECT_EQ(tclsh.output(), "Beep you back...\n"
                              "2000\n"
                              "Bad command\n"
                              "1:tarqclient: no reply within 200 ms\n"
                              "\u00c3\u00a9\n"
                              "5\n");
    std::remove(script.c_str());
}

TEST_F(ToolsTest, Shutdown_StopsTheServerAndRemovesThePortFile) {
    struct Case {
        std::vector<std::string> options;
        const char* how;
    } cases[] = {
        {{}, "shutdown"},
        {{"--no-threads"}, "shutdown"},
        {{}, "SIGTERM"},
        {{"--no-threads", "--safe"}, "SIGTERM"},
    };
    for (const Case& c : cases) {
        startServer(c.options);
        EXPECT_EQ(send({"beep"}).output, "Beep you back...\n");
        if (std::string(c.how) == "shutdown")
            EXPECT_EQ(send({"shutdown"}).status, 0);
        else
            ::kill(server->pid(), SIGTERM);
        EXPECT_EQ(server->wait(), 0) << c.how;
        EXPECT_FALSE(std::filesystem::exists(portFile)) << c.how;
    }
}

TEST_F(ToolsTest, Timeout_StopsAServerNoClientUsed) {
    for (const char* mode : {"--timeout-ms", "--no-threads"}) {
        std::vector<std::string> options{"--timeout-ms", "100"};
        if (std::string(mode) == "--no-threads")
            options.push_back(mode);
        startServer(options);
        EXPECT_EQ(server->wait(), 0) << mode;
        EXPECT_FALSE(std::filesystem::exists(portFile)) << mode;
    }
}

TEST_F(ToolsTest, Timeout_SparesAServerWithAClientConnected) {
    for (const bool noThreads : {false, true}) {
        std::vector<std::string> options{"--timeout-ms", "150"};
        if (noThreads)
            options.push_back("--no-threads");
        startServer(options);
        IPCPortFile file(portFile.c_str());
        ASSERT_TRUE(file.readPortFile());
        const unsigned int client = piSocket::connectLoopback(file.port());
        ASSERT_NE(client, piSocket::invalid);
        std::this_thread::sleep_for(400ms);
        EXPECT_EQ(send({"beep"}).output, "Beep you back...\n") << noThreads;
        piSocket::close(client);
        EXPECT_EQ(send({"shutdown"}).status, 0);
        EXPECT_EQ(server->wait(), 0);
    }
}

TEST_F(ToolsTest, SafeServer_RefusesFileAccessInResultScripts) {
    startServer({"--safe"});
    EXPECT_EQ(send({"result {open /etc/hostname}"}).output, "Bad command\n");
    EXPECT_EQ(send({"result {llength {a b c}}"}).output, "3\n");
}

TEST_F(ToolsTest, FatalSignal_RemovesThePortFileAndStillEndsTheServer) {
    // The signal goes on to the disposition the server replaced: the default action, or a
    // sanitizer's report (which ends the process with its own status) in sanitized builds.
    for (const int signal : {SIGABRT, SIGSEGV}) {
        startServer();
        ::kill(server->pid(), signal);
        const int status = server->wait();
        EXPECT_NE(status, 0) << signal;
        EXPECT_NE(status, -1) << "the server ended";
        if (signal == SIGABRT) {
            EXPECT_EQ(status, 128 + SIGABRT);
        }
        EXPECT_FALSE(std::filesystem::exists(portFile)) << signal;
    }
}
