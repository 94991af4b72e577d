// Shared helpers of the ipc tests: a capture of the debug print, a raw loopback client that
// speaks the command server's wire format, and a command server with a few test commands.
#pragma once

#include "core/DebugPrint.h"
#include "core/platform/piSystem.h"
#include "ipc/IPCMessage.h"
#include "ipc/TclCommandServer.h"
#include "ipc/TclCommandServicer.h"
#include "ipc/TclConnectionWithClient.h"
#include "ipc/platform/piSocket.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <vector>

// Captures the debug print at DBG_TRACE for its lifetime.
class LogCapture {
public:
    LogCapture() {
        text().clear();
        m_previousLevel = debugPrintLevel();
        setDebugPrintLevel(DBG_TRACE);
        m_previousSink = setDebugPrintSink(&LogCapture::append);
    }
    ~LogCapture() {
        setDebugPrintSink(m_previousSink);
        setDebugPrintLevel(m_previousLevel);
    }
    std::string captured() const {
        std::lock_guard lock(mutex());
        return text();
    }
    bool contains(const std::string& piece) const {
        return captured().find(piece) != std::string::npos;
    }

private:
    static void append(const char* piece) {
        std::lock_guard lock(mutex());
        text() += piece;
    }
    static std::mutex& mutex() {
        static std::mutex instance;
        return instance;
    }
    static std::string& text() {
        static std::string instance;
        return instance;
    }
    int m_previousLevel;
    DebugPrintSink m_previousSink;
};

// A connected pair of local stream sockets, closed at the end of the test.
struct SocketPair {
    SocketPair() {
        int pair[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0) {
            ours = static_cast<unsigned int>(pair[0]);
            peer = static_cast<unsigned int>(pair[1]);
        }
    }
    ~SocketPair() {
        piSocket::close(ours);
        piSocket::close(peer);
    }
    unsigned int ours = piSocket::invalid;
    unsigned int peer = piSocket::invalid;
};

// The bytes of one framed message: the header with the given fields, then the payload.
inline std::string frameBytes(std::uint32_t magic, std::int32_t length, std::int32_t code,
                              std::int32_t value, const std::string& payload) {
    IPCHeader header;
    header.start = magic;
    header.length = length;
    header.code = code;
    header.value = value;
    std::string bytes(IPCHeader::size, '\0');
    header.encode(bytes.data());
    return bytes + payload;
}

// A reply as the command server frames it.
inline std::string replyFrame(const std::string& text) {
    const auto length = static_cast<std::int32_t>(text.size());
    return frameBytes(IPCHeader::magic, length, 14, length, text);
}

struct Reply {
    IPCHeader header;
    std::string text;
};

// A client that writes raw bytes and reads framed replies, with time limits throughout.
class RawClient {
public:
    explicit RawClient(int port) : m_socket(piSocket::connectLoopback(port)) {}
    ~RawClient() { piSocket::close(m_socket); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool connected() const { return m_socket != piSocket::invalid; }
    unsigned int socket() const { return m_socket; }
    bool sendBytes(const std::string& bytes) {
        return piSocket::sendAll(m_socket, bytes.data(), bytes.size()) ==
               static_cast<long>(bytes.size());
    }
    static std::string frame(const std::string& script) {
        return lengthPrefix(script.size()) + script;
    }
    static std::string lengthPrefix(std::size_t length) {
        char prefix[4];
        ipcWriteInt(prefix, static_cast<std::int32_t>(length));
        return std::string(prefix, 4);
    }
    bool sendScript(const std::string& script) { return sendBytes(frame(script)); }
    // The next reply, or nothing when none came within milliseconds or the stream ended.
    std::optional<Reply> readReply(long milliseconds = 5000) {
        if (piSocket::waitReadable(m_socket, milliseconds) <= 0)
            return std::nullopt;
        char header[IPCHeader::size];
        if (piSocket::receiveAll(m_socket, header, sizeof header) != IPCHeader::size)
            return std::nullopt;
        Reply reply{IPCHeader::decode(header), {}};
        reply.text.resize(static_cast<std::size_t>(std::max(reply.header.length, 0)));
        if (!reply.text.empty() &&
            piSocket::receiveAll(m_socket, reply.text.data(), reply.text.size()) !=
                static_cast<long>(reply.text.size()))
            return std::nullopt;
        return reply;
    }
    std::string request(const std::string& script) {
        if (!sendScript(script))
            return "<send failed>";
        const std::optional<Reply> reply = readReply();
        return reply ? reply->text : "<no reply>";
    }
    // True when the server closed the stream within milliseconds.
    bool closedByServer(long milliseconds = 5000) {
        if (piSocket::waitReadable(m_socket, milliseconds) <= 0)
            return false;
        char byte;
        return piSocket::receive(m_socket, &byte, 1) <= 0;
    }
    void close() {
        piSocket::close(m_socket);
        m_socket = piSocket::invalid;
    }

private:
    unsigned int m_socket;
};

// A command server with test commands:
//   "where"     answers an id of the thread its handler ran on; "here" the same, registered
//               async, so it runs on the connection's own thread;
//   "empty"     answers an empty text, "nulltext" a null text;
//   "subscribe" sets the caller's broadcast flag; "announce TEXT" broadcasts TEXT;
//   "count"     answers how many times the timeout command ran;
//   "big"       answers 64 KiB of text.
class TestServer : public TclCommandServer {
public:
    explicit TestServer(bool withServicer = true) : m_withServicer(withServicer) {}
    ~TestServer() override { stop(); }

    // Starts serving and, with threads, the servicing thread.
    bool start() {
        if (!execute())
            return false;
        if (m_withServicer && usingThreads()) {
            m_servicer = std::make_unique<TclCommandServicer>(this);
            if (!m_servicer->activate())
                return false;
        }
        return true;
    }
    void stop() {
        remove();
        m_servicer.reset();
    }

    void addCommands(TclConnectionWithClient* connection) override {
        TclCommandServer::addCommands(connection);
        add(connection, "where", &TestServer::whereCmd, false);
        add(connection, "here", &TestServer::whereCmd, true);
        add(connection, "empty", &TestServer::emptyCmd, false);
        add(connection, "nulltext", &TestServer::nullCmd, false);
        add(connection, "subscribe", &TestServer::subscribeCmd, false);
        add(connection, "announce", &TestServer::announceCmd, false);
        add(connection, "count", &TestServer::countCmd, false);
        add(connection, "big", &TestServer::bigCmd, false);
    }
    void connectionHasBeenRemoved(TclConnectionWithClient*) override { ++removed; }
    void serverIsListening(int port) override { listeningPort = port; }
    TclServerCommand* connectionTimeoutCommand() override {
        return timeoutMilliseconds > 0 ? &m_timeoutCommand : nullptr;
    }
    void scriptFailed(TclConnectionWithClient*, const char*, const char* errorText) override {
        std::lock_guard lock(m_mutex);
        m_lastError = errorText;
    }
    int connectionTimeoutMilliseconds() override { return timeoutMilliseconds; }

    std::string lastError() {
        std::lock_guard lock(m_mutex);
        return m_lastError;
    }

    std::atomic<int> removed{0};
    std::atomic<int> timeouts{0};
    int listeningPort = 0;
    int timeoutMilliseconds = 0;

private:
    using Handler = int (TestServer::*)(TclServerCommand*);
    static void add(TclConnectionWithClient* connection, const char* name, Handler handler,
                    bool async) {
        connection->addCommand(name, static_cast<TclServerHandler>(handler), async);
    }
    int reply(TclServerCommand* command, const std::string& text) {
        sendCmdResp(TCS_RESULT, text.c_str(), command);
        return 0;
    }
    int whereCmd(TclServerCommand* command) {
        return reply(command,
                     std::to_string(std::hash<std::thread::id>()(std::this_thread::get_id())));
    }
    int emptyCmd(TclServerCommand* command) { return reply(command, ""); }
    int nullCmd(TclServerCommand*) {
        sendResp(TCS_RESULT, nullptr);
        return 0;
    }
    int subscribeCmd(TclServerCommand* command) {
        setClientBroadcast(true, nullptr);
        return reply(command, getClientBroadcast(nullptr) ? "subscribed" : "not subscribed");
    }
    int announceCmd(TclServerCommand* command);
    int countCmd(TclServerCommand* command) {
        return reply(command, std::to_string(timeouts.load()));
    }
    int bigCmd(TclServerCommand* command) { return reply(command, std::string(64 * 1024, 'b')); }
    int timeoutCmd(TclServerCommand*) {
        ++timeouts;
        return 0;
    }

    bool m_withServicer;
    std::unique_ptr<TclCommandServicer> m_servicer;
    std::mutex m_mutex;
    std::string m_lastError;
    TclServerCommand m_timeoutCommand{
        nullptr, static_cast<TclServerHandler>(&TestServer::timeoutCmd), nullptr};
};

// Counts the beeps instead of sounding them, for the lifetime of the object.
class QuietSystem : public piSystem {
public:
    QuietSystem() { m_previous = piSystem::install(this); }
    ~QuietSystem() override { piSystem::install(m_previous); }
    void beep() const override { ++beeps; }
    mutable std::atomic<int> beeps{0};

private:
    const piSystem* m_previous;
};

// Polls until condition holds or milliseconds pass; returns the condition's last value.
template <typename Condition>
bool eventually(Condition condition, long milliseconds = 5000) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
