// tqsend: sends Tcl scripts to a running command server and prints each reply's text on a
// line of its own.
//
//   tqsend --port-file PATH [--wait-ms N] SCRIPT...
//
// A script may get no reply (its commands sent none): tqsend waits up to N milliseconds
// (2000) for the first reply of each script, and after a reply up to 100 milliseconds for
// further ones. Exit status: 0, 1 when a reply was "Bad command", 2 when the server cannot
// be reached (or the command line is wrong).
#include "ipc/IPCMessage.h"
#include "ipc/IPCPortFile.h"
#include "ipc/SocketStreambuf.h"
#include "ipc/platform/piSocket.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

namespace {
constexpr long furtherReplyWait = 100;

struct Options {
    std::string portFile;
    long waitMilliseconds = 2000;
    std::vector<std::string> scripts;
};

bool parseOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--port-file" && i + 1 < argc)
            options.portFile = argv[++i];
        else if (argument == "--wait-ms" && i + 1 < argc)
            options.waitMilliseconds = std::atol(argv[++i]);
        else if (argument.rfind("--", 0) == 0 && options.scripts.empty())
            return false;
        else
            options.scripts.push_back(argument);
    }
    return !options.portFile.empty() && !options.scripts.empty() && options.waitMilliseconds >= 0;
}

enum class Outcome { Answered, BadCommand, Ended };

// Prints every reply to one script; Ended when the server closed the connection.
Outcome printReplies(IPCSocketIStream& in, long firstWait) {
    Outcome outcome = Outcome::Answered;
    long wait = firstWait;
    for (;;) {
        const IPCSocketStreambuf::MessageStatus status = in.nextMessage(wait);
        if (status == IPCSocketStreambuf::NoMessage)
            return outcome;
        if (status == IPCSocketStreambuf::StreamEnded)
            return Outcome::Ended;
        const std::string text{std::istreambuf_iterator<char>(in),
                               std::istreambuf_iterator<char>()};
        std::printf("%s\n", text.c_str());
        std::fflush(stdout);
        if (text == "Bad command")
            outcome = Outcome::BadCommand;
        wait = std::min(firstWait, furtherReplyWait);
    }
}
} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: tqsend --port-file PATH [--wait-ms N] SCRIPT...\n");
        return 2;
    }
    IPCPortFile portFile(options.portFile.c_str());
    if (!portFile.readPortFile()) {
        std::fprintf(stderr, "tqsend: cannot read the port file %s\n", options.portFile.c_str());
        return 2;
    }
    const unsigned int socket = piSocket::connectLoopback(portFile.port());
    if (socket == piSocket::invalid) {
        std::fprintf(stderr, "tqsend: cannot connect to 127.0.0.1:%d\n", portFile.port());
        return 2;
    }
    int status = 0;
    {
        SocketOStream out(socket);
        IPCSocketIStream in(socket);
        for (const std::string& script : options.scripts) {
            IPCCommand(script.c_str()).writeOn(out);
            if (!out) {
                std::fprintf(stderr, "tqsend: the server closed the connection\n");
                status = 2;
                break;
            }
            const Outcome outcome = printReplies(in, options.waitMilliseconds);
            if (outcome == Outcome::BadCommand)
                status = 1;
            if (outcome == Outcome::Ended)
                break;
        }
    }
    piSocket::close(socket);
    return status;
}
