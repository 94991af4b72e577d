// tqserver: a complete application client that serves Tcl commands on 127.0.0.1 and
// publishes its port in a port file.
//
//   tqserver --port-file PATH [--no-threads] [--timeout-ms N] [--safe]
//
// It stops on "shutdown", on SIGTERM or SIGINT, or when no client connected within the
// timeout; it then removes the port file and exits 0. It exits 2 for a bad command line and
// 1 when it cannot serve.
#include "ToolServer.h"

#include "core/SToolkitClient.h"
#include "core/TarqToolkit.h"
#include "core/TqObject.h"
#include "core/appiApplication.h"
#include "ipc/IPCPortFile.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pthread.h>
#include <string>
#include <thread>

namespace {
struct Options {
    std::string portFile;
    bool noThreads = false;
    bool safe = false;
    int timeoutMilliseconds = 0;
};

bool parseOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--port-file" && i + 1 < argc)
            options.portFile = argv[++i];
        else if (argument == "--no-threads")
            options.noThreads = true;
        else if (argument == "--safe")
            options.safe = true;
        else if (argument == "--timeout-ms" && i + 1 < argc)
            options.timeoutMilliseconds = std::atoi(argv[++i]);
        else
            return false;
    }
    return !options.portFile.empty() && options.timeoutMilliseconds >= 0;
}

Options options;
appiApplication* application = nullptr;

appiApplication* createApplication() {
    application = new appiApplication;
    application->setDisableThreads(options.noThreads ? 1 : 0);
    return application;
}

void deleteApplication() {
    delete application;
    application = nullptr;
}

// Termination signals are taken by a thread of their own (sigwait), so they stop the
// server in an orderly way; SIGUSR1 only ends that thread.
sigset_t stopSignals() {
    sigset_t stopSet;
    sigemptyset(&stopSet);
    sigaddset(&stopSet, SIGTERM);
    sigaddset(&stopSet, SIGINT);
    sigaddset(&stopSet, SIGUSR1);
    return stopSet;
}

void serve(ToolServer& server) {
    // Without threads there is no timer thread: the polling loop keeps the time itself and,
    // like the timer, looks once, when the time is up, whether a client is connected.
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(options.timeoutMilliseconds);
    bool timerPending = !server.usingThreads() && options.timeoutMilliseconds > 0;
    while (!server.done()) {
        server.waitForCommand();
        if (timerPending && std::chrono::steady_clock::now() >= deadline) {
            timerPending = false;
            if (server.numConnections() == 0)
                server.setDone(true);
        }
    }
}

int startApplication(int, char**, int, int) {
    const sigset_t stopSet = stopSignals();
    pthread_sigmask(SIG_BLOCK, &stopSet, nullptr); // every later thread inherits the mask

    IPCPortFile portFile(options.portFile.c_str());
    ToolServer server(options.timeoutMilliseconds);
    server.setIPCPortFile(&portFile);
    server.setSafeInterpreters(options.safe);
    if (!server.execute()) {
        std::fprintf(stderr, "tqserver: cannot serve on 127.0.0.1\n");
        return 1;
    }
    std::thread watcher([&server, stopSet] {
        int signal = 0;
        sigwait(&stopSet, &signal);
        if (signal != SIGUSR1)
            server.requestStop();
    });

    serve(server);
    server.remove();
    server.removeIPCPortFile();
    pthread_kill(watcher.native_handle(), SIGUSR1);
    watcher.join();
    return 0;
}
} // namespace

int main(int argc, char** argv) {
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: tqserver --port-file PATH [--no-threads] [--timeout-ms N] "
                             "[--safe]\n");
        return 2;
    }
    TqObject::startUp();
    SToolkitClient client{};
    client.isApplication = 1;
    client.createApplicationFunc = &createApplication;
    client.deleteApplicationFunc = &deleteApplication;
    client.startApplicationFunc = &startApplication;
    TarqToolkit::registerToolkitClient(&client);
    TarqToolkit::initApplication();
    const int result = TarqToolkit::startApplication(argc, argv, 0, 0);
    TarqToolkit::shutDownApp();
    return result;
}
