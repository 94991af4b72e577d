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
pid_t spawn(std::vector<std::string> argv, const std::string& output,
            const std::string& input = "/dev/null") {
    std::vector<char*> pointers;
    for (std::string& argument : argv)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0600);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    posix_spawn_file_actions_addopen(&actions, 0, input.c_str(), O_RDONLY, 0);
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
    void stopServer() {
        ::kill(pid, SIGTERM);
        EXPECT_EQ(waitForServer(), 0);
    }
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
    std::pair<int, std::string> run(const std::vector<std::string>& argv,
                                    const std::string& input = "/dev/null") {
        const int status = finish(spawn(argv, clientOutput, input));
        return {status, readText(clientOutput)};
    }
    std::pair<int, std::string> send(const std::vector<std::string>& scripts,
                                     const std::string& wait = "300") {
        std::vector<std::string> argv{TQ_TQSEND, "--port-file", portFile, "--wait-ms", wait};
        argv.insert(argv.end(), scripts.begin(), scripts.end());
        return run(argv);
    }

    // Per test and process, since ctest runs the tests side by side.
    std::string portFile = ::testing::TempDir() + "tq_tools_" +
                           ::testing::UnitTest::GetInstance()->current_test_info()->name() + "_" +
                           std::to_string(::getpid()) + ".port";
    std::string serverOutput = portFile + ".out";
    std::string clientOutput = portFile + ".client";
    pid_t pid = -1;
    int port = 0;
};

const std::string beepLine = beeped + "\n";

// A peer on a loopback port: it accepts one client, reads what comes and answers with the given
// bytes (none: silence; bytes that are no reply: not a server; "Bad command": a server of the
// bare protocol, which has no sessions).
class FakePeer {
public:
    explicit FakePeer(std::string answer) : m_socket(piSocket::createStreamSocket()) {
        if (!piSocket::bindLoopback(m_socket, 0) || !piSocket::listen(m_socket, 1))
            return;
        port = piSocket::localPort(m_socket);
        m_thread = std::thread([this, answer] {
            if (piSocket::waitReadable(m_socket, 10000) <= 0)
                return;
            const unsigned int client = piSocket::accept(m_socket);
            char bytes[64];
            (void)piSocket::receive(client, bytes, sizeof bytes);
            (void)piSocket::sendAll(client, answer.data(), answer.size());
            (void)piSocket::waitReadable(client, 5000); // until the client goes
            piSocket::close(client);
        });
    }
    ~FakePeer() {
        if (m_thread.joinable())
            m_thread.join();
        piSocket::close(m_socket);
    }
    int port = 0;

private:
    unsigned int m_socket;
    std::thread m_thread;
};

// The port file of a server with the given port and token.
void writePortFile(const std::string& path, int port, const std::string& token) {
    IPCPortFile file(path.c_str());
    file.setOwner(2);
    file.setPort(port);
    file.setToken(token.c_str());
    ASSERT_TRUE(file.writePortFile());
}
} // namespace

// Every exit status of tqsend, each with its message: the replies and errors of a session, and
// the ways a send goes wrong before or after it reaches a server.
TEST_F(ToolsTest, TqsendExitsWithADistinctStatusForEachOutcome) {
    EXPECT_EQ(send({"beep"}), std::pair(3, "tqsend: cannot read the port file " + portFile + "\n"));
    writePortFile(portFile, 1, ""); // nothing listens on port 1 of this machine's loopback
    EXPECT_EQ(send({"beep"}), std::pair(3, std::string("tqsend: cannot connect to 127.0.0.1:1\n")));
    const std::string tooLong = portFile + ".1024";
    writeText(tooLong, std::string(1024, ' '));
    const std::tuple<std::string, std::vector<std::string>, int, std::string> peers[] = {
        {"", {"beep"}, 5, "no reply from the server within 300 ms"},
        {"HTTP/1.0 400 Bad Request\r\n\r\n", {"beep"}, 6, "the peer is not a command server"},
        {replyFrame("Bad command"),
         {"-f", tooLong},
         2,
         "script 1 is 1024 bytes; the server takes at most 1023 in one script"}};
    for (const auto& [answer, scripts, status, message] : peers) {
        FakePeer peer(answer);
        writePortFile(portFile, peer.port, "");
        EXPECT_EQ(send(scripts), std::pair(status, "tqsend: " + message + "\n"));
    }
    std::remove(tooLong.c_str());
    startServer();
    const std::string failed = "tqsend: script 1 failed: ";
    const std::tuple<std::vector<std::string>, std::string, int> cases[] = {
        {{"beep"}, beepLine, 0},
        {{"version"}, tqVersionString() + std::string("\n"), 0},
        {{"nonsense"}, failed + "invalid command name \"nonsense\"\n", 1},
        {{"expr {1/0}", "beep"}, failed + "divide by zero\n" + beepLine, 1},
        {{"result {error {x y}}"}, failed + "x y\n", 1},
        {{"catch nonsense; beep"}, beepLine, 0},
        {{"set x 1", "beep"}, beepLine, 0}, // the first script sends no reply
        {{"beep; beep"}, beepLine + beepLine, 0},
        {{"beep", "quit"}, beepLine, 0},
        {{"beep; quit"}, beepLine, 0},
        {{"set x 1; quit; beep"}, "tqsend: the server closed the connection during script 1\n", 4}};
    for (const auto& [scripts, output, status] : cases)
        EXPECT_EQ(send(scripts), std::pair(status, output)) << scripts[0];
    // The server closes with "beep" unread: the client may see the end or a reset first.
    const auto [lostStatus, lost] = send({"quit", "beep"});
    EXPECT_EQ(lostStatus, 4);
    EXPECT_TRUE(lost == "tqsend: the server closed the connection during script 1\n" ||
                lost == "tqsend: the connection was reset during script 1\n")
        << lost;
    const std::vector<std::string> wrong[] = {
        {TQ_TQSEND, "--port-file", portFile},
        {TQ_TQSEND, "beep"},
        {TQ_TQSEND, "--port-file", portFile, "--wait-ms", "abc", "beep"},
        {TQ_TQSEND, "--port-file", portFile, "--wait-ms", "-1", "beep"},
        {TQ_TQSEND, "--port-file", portFile, "--bogus", "beep"},
        {TQ_TQSEND, "--port-file", portFile, "-f", portFile + ".missing"}};
    for (const auto& argv : wrong) {
        const auto [status, output] = run(argv);
        EXPECT_EQ(status, 2) << argv.back();
        EXPECT_NE(output.find("usage: tqsend"), std::string::npos) << output;
    }
    const auto [helpStatus, help] = run({TQ_TQSEND, "--help"});
    EXPECT_EQ(helpStatus, 0);
    for (const char* option : {"--port-file", "--wait-ms", "-f FILE", "--help", "--version"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
    EXPECT_EQ(run({TQ_TQSEND, "--version"}),
              std::pair(0, "tqsend " + std::string(tqVersionString()) + "\n"));
    {
        std::vector<std::unique_ptr<RawClient>> occupying;
        for (int i = 0; i < TclCommandServer::maxConnections; ++i)
            occupying.push_back(std::make_unique<RawClient>(port));
        EXPECT_EQ(send({"beep"}, "3000"),
                  std::pair(4, std::string("tqsend: the server closed the connection (it may be "
                                           "full)\n")));
    }
    // The token is checked before anything runs: a wrong one is refused.
    IPCPortFile real(portFile.c_str());
    ASSERT_TRUE(real.readPortFile());
    writePortFile(portFile, port, std::string(32, '0'));
    EXPECT_EQ(send({"beep"}),
              std::pair(7, "tqsend: the server refused the token of " + portFile + "\n"));
    writePortFile(portFile, port, real.token());
}

// Scripts from a file and standard input; scripts of 1023 bytes go whole and longer ones (up to
// 16 MB here) in pieces, through tqsend and through the Tcl client.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr std::size_t longest = std::size_t(1) << 20; // sanitized builds are far slower
#else
constexpr std::size_t longest = std::size_t(16) << 20;
#endif

TEST_F(ToolsTest, LongScriptsGoThroughBothClientsInPieces) {
    startServer();
    const auto measuring = [](std::size_t length) {
        const std::string head = "result {string length {", tail = "}}";
        return head + std::string(length - head.size() - tail.size(), 'x') + tail;
    };
    const std::string file = portFile + ".script";
    for (const std::size_t length : {std::size_t(1023), std::size_t(1024), longest}) {
        const std::string script = measuring(length), answer = std::to_string(length - 25) + "\n";
        writeText(file, script);
        EXPECT_EQ(send({"-f", file}, "20000"), std::pair(0, answer)) << length;
        if (length < 2048) {
            EXPECT_EQ(run({TQ_TQSEND, "--port-file", portFile, "-", "beep"}, file),
                      std::pair(0, answer + beepLine))
                << length;
        }
    }
    const std::string tcl = portFile + ".tcl";
    std::ofstream(tcl) << "package require tarqclient\n"
                          "set chan [tarqclient::connect {"
                       << portFile << "}]\n"
                       << "foreach n {1023 1024 " << longest
                       << "} {\n"
                          "  set script \"result {string length {[string repeat x [expr {$n - "
                          "25}]]}}\"\n"
                          "  puts [tarqclient::send $chan $script]\n"
                          "}\n"
                          "tarqclient::close $chan\n";
    EXPECT_EQ(run({"env", "TCLLIBPATH=" TQ_TCL_PACKAGE_DIR, TQ_TCLSH, tcl}),
              std::pair(0, "998\n999\n" + std::to_string(longest - 25) + "\n"));
    std::remove(file.c_str());
    std::remove(tcl.c_str());
}

// The first script must be exactly "auth TOKEN": anything else, even a script that would
// present the token after another command, is answered "Bad command" and the connection
// closed, with nothing run. --no-auth serves the bare protocol, and tqsend still opens a
// session there.
TEST_F(ToolsTest, OwnerOnlyDoorTokenAcceptedRefusedAndAbsent) {
    startServer();
    IPCPortFile file(portFile.c_str());
    ASSERT_TRUE(file.readPortFile());
    ASSERT_EQ(std::string(file.token()).size(), 32u);
    const std::string marker = portFile + ".ran";
    const std::string token = file.token();
    const std::pair<std::string, bool> greetings[] = {
        {"exec touch " + marker, false},
        {"auth", false},
        {"auth " + std::string(32, 'f'), false},
        {"exec touch " + marker + "; auth " + token, false},
        {"auth " + token, true}};
    for (const auto& [greeting, admitted] : greetings) {
        RawClient client(port);
        ASSERT_TRUE(client.sendScript(greeting));
        EXPECT_EQ(client.replyText(), admitted ? "session chunk" : "Bad command") << greeting;
        if (admitted) {
            EXPECT_EQ(client.replyText(), "__TCS__END__");
            EXPECT_EQ(client.request("beep"), beeped);
        } else {
            EXPECT_TRUE(client.closedByServer()) << greeting;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(marker)) << "nothing ran before the token";
    stopServer();
    startServer({"--no-auth"});
    ASSERT_TRUE(file.readPortFile());
    EXPECT_STREQ(file.token(), "");
    EXPECT_EQ(RawClient(port).request("beep"), beeped) << "the bare protocol";
    EXPECT_EQ(send({"beep", "nonsense"}),
              std::pair(1, beepLine + "tqsend: script 2 failed: invalid command name "
                                      "\"nonsense\"\n"));
}

TEST_F(ToolsTest, TclClientRaisesScriptErrorsFromARealTclsh) {
    startServer();
    const std::string script = portFile + ".tcl",
                      connect = "tarqclient::connect {" + portFile + "}";
    std::ofstream(script)
        << "package require tarqclient\nset chan [" << connect << "]\n"
        << "puts [tarqclient::send $chan beep]\n"
           "puts [tarqclient::send $chan {result {string length [string repeat x 2000]}}]\n"
           "puts [catch {tarqclient::send $chan nonsense} message]:$message\n"
           "puts [catch {tarqclient::send $chan {expr {1/0}}} message options]:$message:"
           "[dict get $options -errorcode]\n"
           "puts [string match {*divide by zero*} $::errorInfo]\n"
           "puts [tarqclient::send $chan {set y 1}]|\n"
           "puts [tarqclient::send $chan {beep; beep}]\n"
           "puts [tarqclient::send $chan {result {encoding convertto utf-8 \u00e9}}]\n"
           "tarqclient::close $chan\n"
           "source [file join {" TQ_TCL_PACKAGE_DIR "} tarqclient tarqclient.tcl]\n"
        << "set again [" << connect << "]\n"
        << "puts [tarqclient::send $again {result {expr 2+3}}]\n"
           "puts [catch {tarqclient::send $again quit 200} message]:$message\n";
    EXPECT_EQ(run({"env", "TCLLIBPATH=" TQ_TCL_PACKAGE_DIR, TQ_TCLSH, script}),
              std::pair(0, std::string("Beep you back...\n2000\n"
                                       "1:invalid command name \"nonsense\"\n"
                                       "1:divide by zero:TARQCLIENT SCRIPT\n1\n|\n" +
                                       beeped + "\n" + beeped +
                                       "\n\u00c3\u00a9\n5\n1:tarqclient: connection closed\n")));
    std::remove(script.c_str());
}

// Every way the server stops, with threads and without: "shutdown", SIGTERM, and the timer,
// which spares a server once a client came, even one that left. --safe takes file access
// from "result".
TEST_F(ToolsTest, ShutdownSigtermAndTimerStopTheServerAndRemoveThePortFile) {
    enum Stop { Shutdown, Sigterm, Timer, TimerAfterAClientLeft };
    const std::pair<std::vector<std::string>, Stop> cases[] = {
        {{}, Shutdown},
        {{"--no-threads"}, Shutdown},
        {{}, Sigterm},
        {{"--no-threads", "--safe"}, Sigterm},
        {{"--timeout-ms", "100"}, Timer},
        {{"--timeout-ms", "100", "--no-threads"}, Timer},
        {{"--timeout-ms", "150"}, TimerAfterAClientLeft},
        {{"--timeout-ms", "150", "--no-threads"}, TimerAfterAClientLeft}};
    for (const auto& [options, stop] : cases) {
        const auto given = [&](const char* option) {
            return std::find(options.begin(), options.end(), option) != options.end();
        };
        const bool threads = !given("--no-threads"), safe = given("--safe");
        SCOPED_TRACE(std::to_string(stop) + (threads ? " with threads" : " without"));
        startServer(options);
        if (stop != Timer) {
            if (stop == TimerAfterAClientLeft) {
                RawClient(port).close();
                std::this_thread::sleep_for(400ms);
            }
            EXPECT_EQ(send({"beep", "result {close [open /dev/null]}"}),
                      std::pair(safe ? 1 : 0,
                                beepLine + (safe ? "tqsend: script 2 failed: invalid command "
                                                   "name \"open\"\n"
                                                 : "\n")));
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

// A script that never ends neither keeps the server from stopping (by "shutdown" or any of
// the stop signals, within a second) nor runs past the script limit.
TEST_F(ToolsTest, RunawayScriptIsStoppedByTheLimitShutdownAndSignals) {
    startServer({"--script-limit-ms", "300"});
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(send({"while 1 {}", "beep"}, "5000"),
              std::pair(1, "tqsend: script 1 failed: time limit exceeded\n" + beepLine));
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
    stopServer();
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{}, 0}, {{}, SIGTERM}, {{}, SIGINT}, {{}, SIGHUP}, {{"--no-threads"}, SIGTERM}};
    for (const auto& [options, signal] : cases) {
        SCOPED_TRACE(std::to_string(signal) + (options.empty() ? "" : " without threads"));
        startServer(options);
        RawClient runaway(port);
        IPCPortFile file(portFile.c_str());
        ASSERT_TRUE(file.readPortFile());
        ASSERT_TRUE(runaway.sendScript(std::string("auth ") + file.token()));
        ASSERT_EQ(runaway.replyText(), "session chunk");
        ASSERT_EQ(runaway.replyText(), "__TCS__END__");
        ASSERT_TRUE(runaway.sendScript("while 1 {}"));
        std::this_thread::sleep_for(200ms);
        const auto stopping = std::chrono::steady_clock::now();
        if (signal == 0 && options.empty())
            EXPECT_EQ(send({"shutdown"}).first, 0);
        else
            ::kill(pid, signal);
        EXPECT_EQ(waitForServer(), 0);
        EXPECT_LT(std::chrono::steady_clock::now() - stopping, 2s) << "a second, and the exit";
        EXPECT_FALSE(std::filesystem::exists(portFile));
    }
}

// The server refuses to serve where no client could find it, or where a server still answers,
// and takes only well-formed options.
TEST_F(ToolsTest, LifecyclePortFileProblemsAndWrongOptionsAreRefused) {
    const std::string unwritable = "/nonexistent-directory/tq.port";
    EXPECT_EQ(run({TQ_TQSERVER, "--port-file", unwritable}).first, 1);
    EXPECT_NE(readText(clientOutput).find("cannot write the port file " + unwritable),
              std::string::npos)
        << readText(clientOutput);
    startServer();
    const std::string before = readText(portFile);
    EXPECT_EQ(run({TQ_TQSERVER, "--port-file", portFile}),
              std::pair(1, "tqserver: a server already answers on 127.0.0.1:" +
                               std::to_string(port) + " (port file " + portFile + ")\n"));
    EXPECT_EQ(readText(portFile), before) << "the first server keeps its file";
    EXPECT_EQ(send({"beep"}), std::pair(0, beepLine));
    for (const char* option : {"--timeout-ms", "--idle-timeout-ms", "--script-limit-ms"})
        for (const char* value : {"abc", "-1", "12x", "", "99999999999"})
            EXPECT_EQ(run({TQ_TQSERVER, "--port-file", portFile, option, value}).first, 2)
                << option << " " << value;
    EXPECT_EQ(run({TQ_TQSERVER, "--port-file", portFile, "--bogus"}).first, 2);
    const auto [helpStatus, help] = run({TQ_TQSERVER, "--help"});
    EXPECT_EQ(helpStatus, 0);
    for (const char* option : {"--port-file", "--timeout-ms", "--idle-timeout-ms",
                               "--script-limit-ms", "--no-auth", "--safe", "--no-threads"})
        EXPECT_NE(help.find(option), std::string::npos) << option;
    // A stale file (its server is gone) is taken over.
    ::kill(pid, SIGKILL);
    ASSERT_EQ(waitForServer(), 128 + SIGKILL);
    ASSERT_TRUE(std::filesystem::exists(portFile));
    startServer();
    EXPECT_EQ(send({"beep"}), std::pair(0, beepLine));
}

// The signal goes on to the disposition the server replaced: the default action, or a
// sanitizer's report (which ends the process with its own status) in sanitized builds.
TEST_F(ToolsTest, FatalSignalRemovesThePortFileAndStillEndsTheServer) {
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
