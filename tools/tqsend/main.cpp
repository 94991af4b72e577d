// tqsend: sends Tcl scripts to a running command server and prints each reply's text on a
// line of its own. See usage below for the options and the exit status.
#include "core/TarqToolkit.h"
#include "ipc/IPCMessage.h"
#include "ipc/IPCPortFile.h"
#include "ipc/platform/piSocket.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {
const char* const usage =
    "usage: tqsend --port-file PATH [--wait-ms N] [-f FILE | - | SCRIPT]...\n"
    "Sends each script to the command server named by the port file, in order, and prints\n"
    "each reply on standard output and each error on standard error.\n"
    "  --port-file PATH   the server's port file (its token is read from it too)\n"
    "  --wait-ms N        how long to wait for each reply, in ms (default 15000; against a\n"
    "                     server without sessions, for the first reply of a script: 2000)\n"
    "  -f FILE            a script read from FILE\n"
    "  -                  a script read from standard input\n"
    "  --                 the arguments that follow are scripts, even if they begin with -\n"
    "  --help, --version\n"
    "Scripts over 1023 bytes are sent in pieces when the server takes them so, else refused.\n"
    "Exit status: 0 every script was sent and answered, 1 a script failed, 2 usage error\n"
    "(or a script too long for the server), 3 cannot connect, 4 connection lost, 5 no reply\n"
    "in time, 6 not a command server, 7 the server refused the token.\n";

enum Exit {
    Success = 0,
    ScriptFailed = 1,
    UsageError = 2,
    CannotConnect = 3,
    ConnectionLost = 4,
    NoReply = 5,
    NotAServer = 6,
    TokenRefused = 7,
};

constexpr long furtherReplyWait = 100;
constexpr long bareFirstReplyWait = 2000;
// Longer payloads are taken as a sign that the peer is not a command server.
constexpr long maxReplyLength = 256L << 20;
constexpr std::size_t maxScriptBytes = 1023; // the server reads no more in one script

struct Options {
    std::string portFile;
    long waitMilliseconds = 15000;
    bool waitGiven = false;
    std::vector<std::string> scripts;
};

bool parseWait(const char* text, long& value) {
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text, &end, 10);
    if (errno != 0 || !std::isdigit(static_cast<unsigned char>(text[0])) || *end != '\0' ||
        number > INT_MAX)
        return false;
    value = number;
    return true;
}

bool readWhole(std::istream& in, std::string& text) {
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

enum class Parsed { Run, Help, Version, Wrong };

Parsed parseOptions(int argc, char** argv, Options& options, std::string& problem) {
    bool optionsEnded = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool hasValue = i + 1 < argc;
        if (optionsEnded || argument.empty() || (argument[0] != '-')) {
            options.scripts.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help") {
            return Parsed::Help;
        } else if (argument == "--version") {
            return Parsed::Version;
        } else if (argument == "--port-file" && hasValue) {
            options.portFile = argv[++i];
        } else if (argument == "--wait-ms" && hasValue) {
            if (!parseWait(argv[++i], options.waitMilliseconds)) {
                problem = std::string("not a number of milliseconds: ") + argv[i];
                return Parsed::Wrong;
            }
            options.waitGiven = true;
        } else if (argument == "-f" && hasValue) {
            std::ifstream file(argv[++i], std::ios::binary);
            std::string text;
            if (!file || !readWhole(file, text)) {
                problem = std::string("cannot read ") + argv[i] + ": " + std::strerror(errno);
                return Parsed::Wrong;
            }
            options.scripts.push_back(text);
        } else if (argument == "-") {
            std::string text;
            if (!readWhole(std::cin, text)) {
                problem = "cannot read standard input";
                return Parsed::Wrong;
            }
            options.scripts.push_back(text);
        } else {
            problem = "unknown option " + argument;
            return Parsed::Wrong;
        }
    }
    if (options.portFile.empty())
        problem = "--port-file is required";
    else if (options.scripts.empty())
        problem = "no script to send";
    return problem.empty() ? Parsed::Run : Parsed::Wrong;
}

// One loopback connection to the server, with framed requests and replies.
class Connection {
public:
    enum Status { Reply, TimedOut, Ended, Reset, Foreign };

    explicit Connection(int port) : m_socket(piSocket::connectLoopback(port)) {}
    ~Connection() { piSocket::close(m_socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool connected() const { return m_socket != piSocket::invalid; }
    bool send(const std::string& script) {
        char prefix[4];
        ipcWriteInt(prefix, static_cast<std::int32_t>(script.size()));
        m_pending.append(prefix, sizeof prefix).append(script);
        // Small frames are gathered and written together: a long script's pieces go out in
        // a few large writes.
        return m_pending.size() < 65536 || flush();
    }
    bool flush() {
        const bool sent = piSocket::sendAll(m_socket, m_pending.data(), m_pending.size()) ==
                          long(m_pending.size());
        m_pending.clear();
        return sent;
    }
    // The next reply's text, waiting up to milliseconds for it to begin.
    Status receive(long milliseconds, std::string& text) {
        if (!m_pending.empty() && !flush())
            return Ended;
        const int ready = piSocket::waitReadable(m_socket, milliseconds);
        if (ready == 0)
            return TimedOut;
        char header[IPCHeader::size];
        const long got = ready < 0 ? -1 : piSocket::receiveAll(m_socket, header, sizeof header);
        if (got < 0)
            return Reset;
        if (got == 0)
            return Ended;
        if (got != long(sizeof header))
            return Foreign;
        const IPCHeader decoded = IPCHeader::decode(header);
        if (decoded.start != IPCHeader::magic || decoded.length < 0 ||
            decoded.length > maxReplyLength)
            return Foreign;
        text.assign(std::size_t(decoded.length), '\0');
        if (decoded.length > 0 &&
            piSocket::receiveAll(m_socket, text.data(), text.size()) != long(text.size()))
            return Ended;
        return Reply;
    }

private:
    unsigned int m_socket;
    std::string m_pending;
};

// The base64 form of bytes, as Tcl's "binary decode base64" reads it.
std::string base64(const std::string& bytes, std::size_t from, std::size_t count) {
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = from; i < from + count; i += 3) {
        const std::size_t left = from + count - i;
        unsigned int group = static_cast<unsigned char>(bytes[i]) << 16;
        if (left > 1)
            group |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        if (left > 2)
            group |= static_cast<unsigned char>(bytes[i + 2]);
        text += digits[(group >> 18) & 63];
        text += digits[(group >> 12) & 63];
        text += left > 1 ? digits[(group >> 6) & 63] : '=';
        text += left > 2 ? digits[group & 63] : '=';
    }
    return text;
}

int fail(Exit status, const std::string& message) {
    std::fprintf(stderr, "tqsend: %s\n", message.c_str());
    return status;
}

// Whether script ends with a command that ends the session: the server then closes the
// connection instead of finishing the script with a reply.
bool endsSession(const std::string& script) {
    const std::string separators = " \t\r\n;";
    const std::size_t end = script.find_last_not_of(separators);
    if (end == std::string::npos)
        return false;
    const std::size_t before = script.find_last_of(separators, end);
    const std::size_t start = before == std::string::npos ? 0 : before + 1;
    const std::string last = script.substr(start, end + 1 - start);
    return last == "quit" || last == "exit" || last == "disconnect" || last == "shutdown";
}

const std::string errorMarker = "__TCS__ERROR__ ", endMarker = "__TCS__END__";

// Sends the scripts over a session: each ends with an end reply, and a failure comes as its
// error text, then "Bad command".
int sendInSession(Connection& connection, const Options& options, bool chunks) {
    int status = Success;
    for (std::size_t n = 0; n < options.scripts.size(); ++n) {
        const std::string& script = options.scripts[n];
        const std::string which = "script " + std::to_string(n + 1);
        if (script.size() > maxScriptBytes && !chunks)
            return fail(UsageError, which + " is " + std::to_string(script.size()) +
                                        " bytes; the server takes at most 1023 in one script");
        bool sent = true;
        if (script.size() > maxScriptBytes) {
            // Each piece's base64 form fits in one script with its command.
            constexpr std::size_t piece = 750;
            for (std::size_t from = 0; sent && from < script.size(); from += piece)
                sent = connection.send("chunk add " +
                                       base64(script, from, std::min(piece, script.size() - from)));
            sent = sent && connection.send("chunk eval");
        } else {
            sent = connection.send(script);
        }
        if (!sent || !connection.flush())
            return fail(ConnectionLost, "the connection was lost sending " + which);
        bool failed = false;
        for (;;) {
            std::string text;
            switch (connection.receive(options.waitMilliseconds, text)) {
            case Connection::TimedOut:
                return fail(NoReply, "no reply to " + which + " within " +
                                         std::to_string(options.waitMilliseconds) + " ms");
            case Connection::Foreign:
                return fail(NotAServer, "the peer is not a command server");
            case Connection::Ended:
                if (n + 1 == options.scripts.size() && !failed && endsSession(script))
                    return status;
                return fail(ConnectionLost, "the server closed the connection during " + which);
            case Connection::Reset:
                return fail(ConnectionLost, "the connection was reset during " + which);
            case Connection::Reply:
                break;
            }
            if (text == endMarker)
                break;
            if (text.rfind(errorMarker, 0) == 0) {
                std::fprintf(stderr, "tqsend: %s failed: %s\n", which.c_str(),
                             text.c_str() + errorMarker.size());
                failed = true;
            } else if (!(failed && text == "Bad command")) {
                std::printf("%s\n", text.c_str());
                std::fflush(stdout);
            }
        }
        if (failed)
            status = ScriptFailed;
    }
    return status;
}

// Sends the scripts to a server without sessions: a script may get no reply at all, and a
// failure is only "Bad command".
int sendBare(Connection& connection, const Options& options) {
    int status = Success;
    const long firstWait = options.waitGiven ? options.waitMilliseconds : bareFirstReplyWait;
    for (std::size_t n = 0; n < options.scripts.size(); ++n) {
        const std::string which = "script " + std::to_string(n + 1);
        if (options.scripts[n].size() > maxScriptBytes)
            return fail(UsageError, which + " is " + std::to_string(options.scripts[n].size()) +
                                        " bytes; the server takes at most 1023 in one script");
        if (!connection.send(options.scripts[n]) || !connection.flush())
            return fail(ConnectionLost, "the connection was lost sending " + which);
        for (long wait = firstWait;; wait = std::min(firstWait, furtherReplyWait)) {
            std::string text;
            const Connection::Status got = connection.receive(wait, text);
            if (got == Connection::TimedOut)
                break;
            if (got == Connection::Foreign)
                return fail(NotAServer, "the peer is not a command server");
            if (got == Connection::Reset)
                return fail(ConnectionLost, "the connection was reset during " + which);
            if (got == Connection::Ended)
                return n + 1 == options.scripts.size() && endsSession(options.scripts[n])
                           ? status
                           : fail(ConnectionLost,
                                  "the server closed the connection during " + which);
            if (text == "Bad command") {
                std::fprintf(stderr, "tqsend: %s failed: Bad command\n", which.c_str());
                status = ScriptFailed;
            } else {
                std::printf("%s\n", text.c_str());
                std::fflush(stdout);
            }
        }
    }
    return status;
}
} // namespace

int main(int argc, char** argv) {
    Options options;
    std::string problem;
    switch (parseOptions(argc, argv, options, problem)) {
    case Parsed::Help:
        std::fputs(usage, stdout);
        return Success;
    case Parsed::Version:
        std::printf("tqsend %s\n", tqVersionString());
        return Success;
    case Parsed::Wrong:
        std::fprintf(stderr, "tqsend: %s\n%s", problem.c_str(), usage);
        return UsageError;
    case Parsed::Run:
        break;
    }
    IPCPortFile portFile(options.portFile.c_str());
    if (!portFile.readPortFile())
        return fail(CannotConnect, "cannot read the port file " + options.portFile);
    Connection connection(portFile.port());
    if (!connection.connected())
        return fail(CannotConnect,
                    "cannot connect to 127.0.0.1:" + std::to_string(portFile.port()));
    // The greeting opens a session (with the token, when the port file has one); a server
    // without sessions answers "Bad command" and serves the bare protocol.
    const std::string token = portFile.token();
    if (!connection.send(token.empty() ? "auth" : "auth " + token))
        return fail(ConnectionLost, "the connection was lost");
    std::string greeting;
    switch (connection.receive(options.waitMilliseconds, greeting)) {
    case Connection::TimedOut:
        return fail(NoReply, "no reply from the server within " +
                                 std::to_string(options.waitMilliseconds) + " ms");
    case Connection::Foreign:
        return fail(NotAServer, "the peer is not a command server");
    case Connection::Ended:
    case Connection::Reset:
        return fail(ConnectionLost, "the server closed the connection (it may be full)");
    case Connection::Reply:
        break;
    }
    if (greeting.rfind("session", 0) == 0) {
        std::string end;
        if (connection.receive(options.waitMilliseconds, end) != Connection::Reply ||
            end != endMarker)
            return fail(ConnectionLost, "the server did not finish the greeting");
        return sendInSession(connection, options, greeting.find(" chunk") != std::string::npos);
    }
    if (greeting == "Bad command" && !token.empty())
        return fail(TokenRefused, "the server refused the token of " + options.portFile);
    if (greeting != "Bad command")
        return fail(NotAServer, "unexpected greeting from the server: " + greeting);
    return sendBare(connection, options);
}
