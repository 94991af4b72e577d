// The programs as a user runs them: tqserver serving, tqsend and a real tclsh with the
// tarqclient package talking to it, and the ways the server stops.
#include "ipc/IpcTestSupport.h"

#include "core/TarqToolkit.h"
#include "ipc/IPCPortFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {
using namespace std::chrono_literals;

// Starts argv (looked up on the PATH) with its standard output and error in the file output;
// -1 when it cannot start.
pid_t spawn(std::vector<std::string> argv, const std::string& output) {
    std::vector<char*> pointers;
    for (std::string& argument : argv)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    pid_t pid = -1;
    const int failed = posix_spawnp(&pid, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return failed ? -1 : pid;
}

// The exit status of pid (128 + the signal when one ended it), or -1 when it did not end
// within 10 s; it is then killed.
int finish(pid_t pid) {
    int status = 0;
    if (pid <= 0)
        return -1;
    if (!eventually([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 10000)) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// A tqserver started for one test on its own port file; killed by its pid if it overstays.
class ToolsTest : public ::testing::Test {
protected:
    void startServer(std::vector<std::string> options = {}) {
        std::remove(portFile.c_str());
        options.insert(options.begin(), {TQ_TQSERVER, "--port-file", portFile});
        ASSERT_GT(pid = spawn(options, serverOutput), 0);
        IPCPortFile file(portFile.c_str());
        ASSERT_TRUE(eventually([&] { return file.readPortFile(); }, 10000)) << "no port file";
        EXPECT_EQ(file.owner(), 2);
        port = file.port();
        EXPECT_TRUE(eventually(
            [&] { return printed("listening on 127.0.0.1:" + std::to_string(port) + "\n"); }));
    }
    int waitForServer() { return finish(std::exchange(pid, -1)); }
    void TearDown() override {
        if (pid > 0) {
            ::kill(pid, SIGTERM);
            EXPECT_EQ(waitForServer(), 0);
        }
        for (const std::string& path : {portFile, serverOutput, clientOutput})
            std::remove(path.c_str());
    }
    // Whether the server printed text on its standard output or error.
    bool printed(const std::string& text) const {
        return readText(serverOutput).find(text) != std::string::npos;
    }
    // The exit status and output of a program run to its end.
    std::pair<int, std::string> run(const std::vector<std::string>& argv) {
        const int status = finish(spawn(argv, clientOutput));
        return {status, readText(clientOutput)};
    }
    std::pair<int, std::string> send(const std::vector<std::string>& scripts) {
        std::vector<std::string> argv{TQ_TQSEND, "--port-file", portFile, "--wait-ms", "300"};
        argv.insert(argv.end(), scripts.begin(), scripts.end());
        return run(argv);
    }

    // Per test and process, since ctest runs the tests side by side.
    std::string portFile = ::testing::TempDir() + "tq_tools_" +
                           ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
                           std::to_string(::getpid()) + ".port",
                serverOutput = portFile + ".out", clientOutput = portFile + ".client";
    pid_t pid = -1;
    int port = 0;
};

const std::string beepLine = beeped + "\n";
} // namespace

// Exit status 2 when the server cannot be reached or the command line is wrong.
TEST_F(ToolsTest, Tqsend_PrintsEachReplyAndExitsWithTheProtocolsOutcome) {
    EXPECT_EQ(send({"beep"}).first, 2) << "no port file";
    IPCPortFile stale(portFile.c_str());
    stale.setOwner(2);
    stale.setPort(1); // nothing listens on port 1 of this machine's loopback
    ASSERT_TRUE(stale.writePortFile());
    EXPECT_EQ(send({"beep"}), std::pair(2, std::string("tqsend: cannot connect to 127.0.0.1:1\n")));
    startServer();
    const std::tuple<std::vector<std::string>, std::string, int> cases[] = {
        {{"beep"}, beepLine, 0},
        {{"version"}, tqVersionString() + std::string("\n"), 0},
        {{"nonsense"}, "Bad command\n", 1},
        {{"result {error x}", "beep"}, "Bad command\n" + beepLine, 1},
        {{"set x 1", "beep"}, beepLine, 0}, // the first script gets no reply
        {{"beep; beep"}, beepLine + beepLine, 0},
        {{"quit", "beep"}, "", 0},
        {{}, "usage: tqsend --port-file PATH [--wait-ms N] SCRIPT...\n", 2}};
    for (const auto& [scripts, output, status] : cases)
        EXPECT_EQ(send(scripts), std::pair(status, output)) << output;
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
           "puts [catch {tarqclient::send $again quit 200} message]:$message\n";
    EXPECT_EQ(run({"env", "TCLLIBPATH=" TQ_TCL_PACKAGE_DIR, TQ_TCLSH, script}),
              std::pair(0, std::string("Beep you back...\n2000\nBad command\n"
                                       "1:tarqclient: no reply within 200 ms\n\u00c3\u00a9\n5\n"
                                       "1:tarqclient: connection closed\n")));
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
                      std::pair(safe ? 1 : 0, beepLine + (safe ? "Bad command\n" : "\n")));
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
