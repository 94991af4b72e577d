// tqserver: a complete application client that serves Tcl commands on 127.0.0.1 and
// publishes its port (and the token its clients present) in a port file. See usage below.
#include "ToolServer.h"

#include "core/SToolkitClient.h"
#include "core/TarqToolkit.h"
#include "core/TqObject.h"
#include "core/appiApplication.h"
#include "ipc/IPCMessage.h"
#include "ipc/IPCPortFile.h"
#include "ipc/platform/piSocket.h"

#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/random.h>
#include <thread>
#include <utility>

namespace {
const char* const usage =
    "usage: tqserver --port-file PATH [options]\n"
    "Serves Tcl scripts on 127.0.0.1 and writes the port to PATH (mode 0600).\n"
    "  --port-file PATH        where the port and the token are published (required)\n"
    "  --timeout-ms N          exit when no client has connected within N ms of the start\n"
    "                          (0, the default: wait for ever)\n"
    "  --idle-timeout-ms N     close a connection that sends no script for N ms\n"
    "                          (default 60000; 0: never)\n"
    "  --script-limit-ms N     cancel a script that runs longer than N ms (default 10000;\n"
    "                          0: no limit); it is answered as a failed script\n"
    "  --no-auth               serve every local client, without a token\n"
    "  --safe                  give clients safe interpreters (no files, processes, sockets)\n"
    "  --no-threads            serve all clients on one thread\n"
    "  --help, --version\n"
    "It stops on \"shutdown\", on SIGTERM, SIGINT or SIGHUP (even while a script runs), or\n"
    "after the timeout, removes the port file and exits 0. It exits 2 for a bad command line\n"
    "and 1 when it cannot serve (the port file cannot be written, or a server still answers\n"
    "on the port the file names).\n";

struct Options {
    std::string portFile;
    bool noThreads = false;
    bool safe = false;
    bool noAuth = false;
    int timeoutMilliseconds = 0;
    int idleTimeoutMilliseconds = 60000;
    int scriptLimitMilliseconds = 10000;
};

// A whole decimal number from 0 to INT_MAX, nothing else.
bool parseMilliseconds(const char* text, int& value) {
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || number < 0 || number > INT_MAX ||
        !std::isdigit(static_cast<unsigned char>(text[0])))
        return false;
    value = static_cast<int>(number);
    return true;
}

enum class Parsed { Run, Help, Version, Wrong };

Parsed parseOptions(int argc, char** argv, Options& options) {
    const std::pair<const char*, int*> milliseconds[] = {
        {"--timeout-ms", &options.timeoutMilliseconds},
        {"--idle-timeout-ms", &options.idleTimeoutMilliseconds},
        {"--script-limit-ms", &options.scriptLimitMilliseconds}};
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool hasValue = i + 1 < argc;
        int* number = nullptr;
        for (const auto& [name, value] : milliseconds)
            number = argument == name ? value : number;
        if (argument == "--help")
            return Parsed::Help;
        if (argument == "--version")
            return Parsed::Version;
        if (argument == "--port-file" && hasValue)
            options.portFile = argv[++i];
        else if (argument == "--no-threads")
            options.noThreads = true;
        else if (argument == "--safe")
            options.safe = true;
        else if (argument == "--no-auth")
            options.noAuth = true;
        else if (!number || !hasValue || !parseMilliseconds(argv[++i], *number))
            return Parsed::Wrong;
    }
    return options.portFile.empty() ? Parsed::Wrong : Parsed::Run;
}

Options options;
std::unique_ptr<appiApplication> application;

appiApplication* createApplication() {
    application = std::make_unique<appiApplication>();
    application->setDisableThreads(options.noThreads ? 1 : 0);
    return application.get();
}

void deleteApplication() {
    application.reset();
}

// 128 random bits as 32 hexadecimal digits; "" when the system has no randomness to give.
std::string newToken() {
    unsigned char bytes[16];
    if (::getrandom(bytes, sizeof bytes, 0) != long(sizeof bytes))
        return {};
    std::string token;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        token += digits;
    }
    return token;
}

// Whether a command server answers on port: it replies to the greeting its clients send
// within a second.
bool serverAnswers(int port, const std::string& token) {
    const unsigned int socket = piSocket::connectLoopback(port);
    if (socket == piSocket::invalid)
        return false;
    std::string greeting = token.empty() ? "auth" : "auth " + token;
    char frame[4];
    ipcWriteInt(frame, static_cast<std::int32_t>(greeting.size()));
    greeting.insert(0, frame, sizeof frame);
    char header[IPCHeader::size];
    const bool answered =
        piSocket::sendAll(socket, greeting.data(), greeting.size()) == long(greeting.size()) &&
        piSocket::waitReadable(socket, 1000) > 0 &&
        piSocket::receiveAll(socket, header, sizeof header) == long(sizeof header) &&
        IPCHeader::decode(header).start == IPCHeader::magic;
    piSocket::close(socket);
    return answered;
}

// Termination signals are taken by a thread of their own (sigwait), so they stop the
// server in an orderly way; SIGUSR1 only ends that thread.
sigset_t stopSignals() {
    sigset_t stopSet;
    sigemptyset(&stopSet);
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGUSR1})
        sigaddset(&stopSet, signal);
    return stopSet;
}

void serve(ToolServer& server) {
    // Without threads there is no timer thread: the polling loop keeps the time itself and,
    // like the timer, stops the server when the time is up and no client has come.
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(options.timeoutMilliseconds);
    bool timerPending = !server.usingThreads() && options.timeoutMilliseconds > 0;
    while (!server.done()) {
        server.waitForCommand();
        if (timerPending && std::chrono::steady_clock::now() >= deadline) {
            timerPending = false;
            if (!server.clientCame())
                server.setDone(true);
        }
    }
}

int startApplication(int, char**, int, int) {
    const sigset_t stopSet = stopSignals();
    pthread_sigmask(SIG_BLOCK, &stopSet, nullptr); // every later thread inherits the mask

    IPCPortFile portFile(options.portFile.c_str());
    if (portFile.readPortFile() && portFile.owner() == 2 &&
        serverAnswers(portFile.port(), portFile.token())) {
        std::fprintf(stderr, "tqserver: a server already answers on 127.0.0.1:%d (port file %s)\n",
                     portFile.port(), options.portFile.c_str());
        return 1;
    }
    // A port file of owner 1 orders the port and is not rewritten: its token, if any, is kept.
    std::string token;
    if (!options.noAuth) {
        token = portFile.owner() == 1 ? portFile.token() : newToken();
        if (token.empty()) {
            std::fprintf(stderr,
                         "tqserver: no token for %s (a port file of owner 1 must carry "
                         "one, or use --no-auth)\n",
                         options.portFile.c_str());
            return 1;
        }
    }
    portFile.setToken(token.c_str());
    ToolServer server(options.timeoutMilliseconds, token);
    server.setIPCPortFile(&portFile);
    server.setSafeInterpreters(options.safe);
    server.setIdleTimeout(options.idleTimeoutMilliseconds);
    server.setScriptTimeLimit(options.scriptLimitMilliseconds);
    if (!server.execute()) {
        std::fprintf(stderr, "tqserver: cannot serve on 127.0.0.1\n");
        return 1;
    }
    if (portFile.lastWriteError() != 0) {
        std::fprintf(stderr, "tqserver: cannot write the port file %s: %s\n",
                     options.portFile.c_str(), std::strerror(portFile.lastWriteError()));
        server.remove();
        return 1;
    }
    std::atomic<bool> served{false};
    std::thread watcher([&server, &served, stopSet] {
        int signal = 0;
        sigwait(&stopSet, &signal);
        if (signal == SIGUSR1)
            return;
        server.requestStop();
        // A cancel that reaches a script just before it starts is lost: repeat it until the
        // serving loop has ended.
        while (!served) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            server.cancelEvaluations();
        }
        sigwait(&stopSet, &signal);
    });

    serve(server);
    served = true;
    server.remove();
    server.removeIPCPortFile();
    pthread_kill(watcher.native_handle(), SIGUSR1);
    watcher.join();
    return 0;
}
} // namespace

int main(int argc, char** argv) {
    switch (parseOptions(argc, argv, options)) {
    case Parsed::Help:
        std::fputs(usage, stdout);
        return 0;
    case Parsed::Version:
        std::printf("tqserver %s\n", tqVersionString());
        return 0;
    case Parsed::Wrong:
        std::fputs(usage, stderr);
        return 2;
    case Parsed::Run:
        break;
    }
    TqObject::startUp();
    SToolkitClient client{};
    client.isApplication = 1;
    client.createApplicationFunc = &createApplication;
    client.deleteApplicationFunc = &deleteApplication;
    client.startApplicationFunc = &startApplication;
    return TarqToolkit::runApplication(&client, argc, argv);
}
