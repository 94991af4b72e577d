// The programs as a user runs them: tqserver serving, tqsend and a real tclsh with the
// tarqclient package talking to it, and the ways the server stops.
#include "core/TarqToolkit.h"
#include "ipc/IPCPortFile.h"
#include "ipc/platform/piSocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {
using namespace std::chrono_literals;

// Whether condition came true within 10 s.
bool eventually(const std::function<bool()>& condition) {
    for (int look = 0; look < 2000; ++look) {
        if (condition())
            return true;
        std::this_thread::sleep_for(5ms);
    }
    return false;
}

std::string shellQuoted(const std::string& text) {
    std::string result(1, '\'');
    for (const char c : text) {
        if (c == '\'')
            result.append("'\\''");
        else
            result.push_back(c);
    }
    result.push_back('\'');
    return result;
}

// Runs a command line through the shell, ended after 20 s at the latest: its exit status
// and its standard output.
std::pair<int, std::string> run(const std::string& commandLine) {
    std::FILE* pipe = ::popen(("timeout 20 " + commandLine).c_str(), "r");
    std::string output;
    char buffer[256];
    for (std::size_t count; pipe && (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
        output.append(buffer, count);
    const int status = pipe ? ::pclose(pipe) : -1;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

// A tqserver started for one test on its own port file; killed by its pid if it overstays.
class ToolsTest : public ::testing::Test {
protected:
    void startServer(std::vector<std::string> options = {}) {
        std::remove(portFile.c_str());
        options.insert(options.begin(), {TQ_TQSERVER, "--port-file", portFile});
        std::vector<char*> argv;
        for (std::string& argument : options)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                         0600);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
        ASSERT_EQ(posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        IPCPortFile file(portFile.c_str());
        ASSERT_TRUE(eventually([&] { return file.readPortFile(); })) << "no port file";
        EXPECT_EQ(file.owner(), 2);
        port = file.port();
        EXPECT_TRUE(eventually(
            [&] { return printed("listening on 127.0.0.1:" + std::to_string(port) + "\n"); }));
    }
    // The server's exit status (128 + the signal when one ended it), or -1 when it did not
    // end within 10 s; it is then killed.
    int waitForServer() {
        int status = 0;
        const bool ended = eventually([&] { return ::waitpid(pid, &status, WNOHANG) == pid; });
        if (!ended) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        pid = -1;
        return !ended ? -1 : WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    void TearDown() override {
        if (pid > 0) {
            ::kill(pid, SIGTERM);
            EXPECT_EQ(waitForServer(), 0);
        }
        std::remove(portFile.c_str());
        std::remove(output.c_str());
    }
    // Whether the server printed text on its standard output or error.
    bool printed(const std::string& text) const {
        std::ifstream in(output);
        return std::string(std::istreambuf_iterator<char>(in), {}).find(text) != std::string::npos;
    }
    std::pair<int, std::string> send(const std::vector<std::string>& scripts) {
        std::string commandLine =
            std::string(TQ_TQSEND) + " --port-file " + shellQuoted(portFile) + " --wait-ms 300";
        for (const std::string& script : scripts)
            commandLine.append(" ").append(shellQuoted(script));
        return run(commandLine);
    }

    // Per test and process, since ctest runs the tests side by side.
    std::string portFile = ::testing::TempDir() + "tq_tools_" +
                           ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
                           std::to_string(::getpid()) + ".port",
                output = portFile + ".out";
    pid_t pid = -1;
    int port = 0;
};

const std::string beeped = "Beep you back...\n";
} // namespace

TEST_F(ToolsTest, Tqsend_PrintsEachReplyAndExitsWithTheProtocolsOutcome) {
    startServer();
    const std::tuple<std::vector<std::string>, std::string, int> cases[] = {
        {{"beep"}, beeped, 0},
        {{"version"}, tqVersionString() + std::string("\n"), 0},
        {{"result {expr 6*7}", "result {string toupper abc}"}, "42\nABC\n", 0},
        {{"nonsense"}, "Bad command\n", 1},
        {{"result {error x}", "beep"}, "Bad command\n" + beeped, 1},
        {{"set x 1", "beep"}, beeped, 0}, // the first script gets no reply
        {{"beep; beep"}, beeped + beeped, 0},
        {{"quit", "beep"}, "", 0}};
    for (const auto& [scripts, output, status] : cases)
        EXPECT_EQ(send(scripts), std::pair(status, output)) << scripts[0];
}

TEST_F(ToolsTest, Tqsend_ExitsTwoWhenTheServerCannotBeReached) {
    EXPECT_EQ(send({"beep"}).first, 2) << "no port file";
    IPCPortFile stale(portFile.c_str());
    stale.setOwner(2);
    stale.setPort(1); // nothing listens on port 1 of this machine's loopback
    ASSERT_TRUE(stale.writePortFile());
    EXPECT_EQ(send({"beep"}).first, 2) << "nobody listening";
    EXPECT_EQ(send({}).first, 2) << "no script";
}

TEST_F(ToolsTest, TclClient_DrivesTheServerFromARealTclsh) {
    startServer();
    const std::string script = portFile + ".tcl",
                      connect = "tarqclient::connect {" + portFile + "}";
    std::ofstream(script)
        << "package require tarqclient\nset chan [" << connect << "]\n"
        << "puts [tarqclient::send $chan beep]\n"
           "puts [tarqclient::send $chan {result {string length [string repeat x 2000]}}]\n"
           "puts [tarqclient::send $chan nonsense]\n"
           "puts [catch {tarqclient::send $chan {set y 1} 200} message]:$message\n"
           "puts [tarqclient::send $chan {result {encoding convertto utf-8 \u00e9}}]\n"
           "tarqclient::close $chan\n"
           "source [file join {" TQ_TCL_PACKAGE_DIR "} tarqclient tarqclient.tcl]\n"
        << "set again [" << connect << "]\n"
        << "puts [tarqclient::send $again {result {expr 2+3}}]\n"
           "tarqclient::send $again quit 200\n";
    // The last send ends with the closed connection: tclsh reports it and exits 1.
    EXPECT_EQ(run("env TCLLIBPATH=" TQ_TCL_PACKAGE_DIR " " TQ_TCLSH " " + shellQuoted(script)),
              std::pair(1, std::string("Beep you back...\n2000\nBad command\n"
                                       "1:tarqclient: no reply within 200 ms\n\u00c3\u00a9\n5\n")));
    std::remove(script.c_str());
}

// Every way the server stops, with threads and without: "shutdown", SIGTERM, and the timer,
// which spares a server while a client is connected. --safe takes file access from "result".
TEST_F(ToolsTest, ShutdownSigtermAndTimer_StopTheServerAndRemoveThePortFile) {
    enum Stop { Shutdown, Sigterm, Timer, TimerWithClient };
    const std::pair<std::vector<std::string>, Stop> cases[] = {
        {{}, Shutdown},
        {{"--no-threads"}, Shutdown},
        {{}, Sigterm},
        {{"--no-threads", "--safe"}, Sigterm},
        {{"--timeout-ms", "100"}, Timer},
        {{"--timeout-ms", "100", "--no-threads"}, Timer},
        {{"--timeout-ms", "150"}, TimerWithClient},
        {{"--timeout-ms", "150", "--no-threads"}, TimerWithClient}};
    for (const auto& [options, stop] : cases) {
        const auto given = [&](const char* option) {
            return std::find(options.begin(), options.end(), option) != options.end();
        };
        const bool threads = !given("--no-threads"), safe = given("--safe");
        SCOPED_TRACE(std::to_string(stop) + (threads ? " with threads" : " without"));
        startServer(options);
        if (stop != Timer) {
            const unsigned int client =
                stop == TimerWithClient ? piSocket::connectLoopback(port) : piSocket::invalid;
            std::this_thread::sleep_for(stop == TimerWithClient ? 400ms : 0ms);
            EXPECT_EQ(send({"beep", "result {close [open /dev/null]}"}),
                      std::pair(safe ? 1 : 0, beeped + (safe ? "Bad command\n" : "\n")));
            piSocket::close(client);
            if (stop == Sigterm)
                ::kill(pid, SIGTERM);
            else
                EXPECT_EQ(send({"shutdown"}).first, 0);
        }
        EXPECT_EQ(waitForServer(), 0);
        EXPECT_FALSE(std::filesystem::exists(portFile));
        EXPECT_EQ(printed("Starting connection timer for " +
                          (stop >= Timer ? options[1] + " msec.\n" : std::string())),
                  threads && stop >= Timer);
    }
}

// The signal goes on to the disposition the server replaced: the default action, or a
// sanitizer's report (which ends the process with its own status) in sanitized builds.
TEST_F(ToolsTest, FatalSignal_RemovesThePortFileAndStillEndsTheServer) {
    for (const int signal : {SIGABRT, SIGSEGV}) {
        startServer();
        ::kill(pid, signal);
        const int status = waitForServer();
        EXPECT_TRUE(status != 0 && status != -1) << signal << ": " << status;
        if (signal == SIGABRT) {
            EXPECT_EQ(status, 128 + SIGABRT);
        }
        EXPECT_FALSE(std::filesystem::exists(portFile)) << signal;
    }
}
