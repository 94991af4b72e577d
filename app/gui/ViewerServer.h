/// ViewerServer: the viewer's Tcl command server. Each client gets the diagram commands, which
/// work on the active window's diagram, and "window" and "quit"; every one of them runs on the
/// GUI thread, so a change reaches the windows through the diagram's notification at once.
#pragma once

#include "ipc/TclCommandServer.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

class ViewerServer : public TclCommandServer {
public:
    /// Runs a command line (the words of the client's command, as a Tcl list) on the GUI
    /// thread: true with the result, false with the error message.
    using Evaluator = std::function<bool(const std::string& script, std::string& result)>;

    /// evaluate is called on the thread that runs the Qt event loop.
    explicit ViewerServer(Evaluator evaluate);
    ~ViewerServer() override;

    void addCommands(TclConnectionWithClient* connection) override;
    void serverIsListening(int port) override;
    TclServerCommand* connectionTimeoutCommand() override { return nullptr; }
    void scriptFailed(TclConnectionWithClient* connection, const char* script,
                      const char* errorText) override;
    int connectionTimeoutMilliseconds() override { return 0; }
    bool admitScript(TclConnectionWithClient* connection, const char* script) override;
    void scriptEvaluated(TclConnectionWithClient* connection, int code) override;

    /// Answers every command still waiting for the GUI thread with an error and every later
    /// one at once: called when the event loop has ended, before the server is removed.
    void stopForwarding();

private:
    // Runs on the client's own thread (the command is registered async): it reads its words
    // in its own interpreter and waits for the GUI thread's answer.
    int forwardCmd(TclServerCommand* command);
    // "quit" in a client's script ends the viewer; the "quit" a connection evaluates itself
    // when its client hangs up or idles out ends only that connection.
    int quitCmd(TclServerCommand* command);

    // Shared with the calls queued for the GUI thread, which may run after the server is
    // gone: they then find it stopped and evaluate nothing.
    struct Forwarding {
        Evaluator evaluate;
        std::mutex mutex;
        std::condition_variable answered;
        bool stopped = false;
    };
    std::shared_ptr<Forwarding> m_forwarding;
};
