// Shared helpers of the ipc and tools tests: a capture of the debug print, socket pairs and frames,
// a raw loopback client of the command server, and a command server with a few test commands.
#pragma once

#include "core/DebugPrint.h"
#include "core/platform/piSystem.h"
#include "ipc/IPCMessage.h"
#include "ipc/TclCommandServer.h"
#include "ipc/TclCommandServicer.h"
#include "ipc/TclConnectionWithClient.h"
#include "ipc/platform/piSocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <sys/socket.h>
#include <tcl.h>
#include <thread>
#include <tuple>
#include <vector>

// Captures the debug print at DBG_TRACE for its lifetime.
class LogCapture {
public:
    LogCapture() : m_level(debugPrintLevel()), m_sink(setDebugPrintSink(&append)) {
        std::lock_guard lock(s_mutex);
        s_text.clear();
        setDebugPrintLevel(DBG_TRACE);
    }
    ~LogCapture() {
        setDebugPrintSink(m_sink);
        setDebugPrintLevel(m_level);
    }
    std::string captured() const {
        std::lock_guard lock(s_mutex);
        return s_text;
    }
    bool contains(const std::string& piece) const {
        return captured().find(piece) != std::string::npos;
    }
    // The pieces not captured, one a line: empty when every piece was.
    std::string missing(const std::vector<std::string>& pieces) const {
        std::string absent;
        for (const std::string& piece : pieces)
            absent += contains(piece) ? "" : piece + "\n";
        return absent;
    }

private:
    static void append(const char* piece) {
        std::lock_guard lock(s_mutex);
        s_text += piece;
    }
    static inline std::mutex s_mutex;
    static inline std::string s_text;
    int m_level;
    DebugPrintSink m_sink;
};

// Polls until condition holds or milliseconds pass; returns the condition's last value.
inline bool eventually(const std::function<bool()>& condition, long milliseconds = 5000) {
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

inline bool sendAll(unsigned int socket, const std::string& bytes) {
    return piSocket::sendAll(socket, bytes.data(), bytes.size()) == long(bytes.size());
}

// A connected pair of local stream sockets, closed at the end of the test.
struct SocketPair {
    SocketPair() {
        int pair[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0) {
            ours = unsigned(pair[0]);
            peer = unsigned(pair[1]);
        }
    }
    ~SocketPair() {
        piSocket::close(ours);
        piSocket::close(peer);
    }
    void closePeer() {
        piSocket::close(peer);
        peer = piSocket::invalid;
    }
    unsigned int ours = piSocket::invalid, peer = piSocket::invalid;
};

// The bytes of one framed message: the header with the given fields, then the payload.
inline std::string frameBytes(std::uint32_t magic, std::int32_t length, std::int32_t code,
                              std::int32_t value, const std::string& payload) {
    std::string bytes(IPCHeader::size, '\0');
    IPCHeader{magic, length, 12, code, value}.encode(bytes.data());
    return bytes + payload;
}

// A reply as the command server frames it.
inline std::string replyFrame(const std::string& text) {
    const auto length = static_cast<std::int32_t>(text.size());
    return frameBytes(IPCHeader::magic, length, 14, length, text);
}

inline std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void writeText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

// A client that writes raw bytes and reads framed replies. Every read has a time limit, so a
// server that sends too little fails the test instead of hanging it.
class RawClient {
public:
    explicit RawClient(int port) : m_socket(piSocket::connectLoopback(port)) {
        const timeval limit{10, 0};
        ::setsockopt(int(m_socket), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    }
    ~RawClient() { close(); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    bool connected() const { return m_socket != piSocket::invalid; }
    static std::string lengthPrefix(std::size_t length) {
        char prefix[4];
        ipcWriteInt(prefix, static_cast<std::int32_t>(length));
        return std::string(prefix, 4);
    }
    static std::string frame(const std::string& script) {
        return lengthPrefix(script.size()) + script;
    }
    bool sendBytes(const std::string& bytes) { return sendAll(m_socket, bytes); }
    bool sendScript(const std::string& script) { return sendBytes(frame(script)); }
    // Exactly count bytes, or fewer when the stream ended or stalled.
    std::string readBytes(std::size_t count) {
        std::string bytes(count, '\0');
        const long received = piSocket::receiveAll(m_socket, bytes.data(), count);
        bytes.resize(received > 0 ? std::size_t(received) : 0);
        return bytes;
    }
    // The text of the next reply: "<no reply>" when none began within milliseconds, "<closed>"
    // when the stream ended instead, "<bad reply>" when it is not a whole reply.
    std::string replyText(long milliseconds = 5000) {
        if (piSocket::waitReadable(m_socket, milliseconds) <= 0)
            return "<no reply>";
        const std::string header = readBytes(IPCHeader::size);
        if (header.empty())
            return "<closed>";
        const int length =
            header.size() == IPCHeader::size ? IPCHeader::decode(header.data()).length : 0;
        const std::string text = readBytes(std::size_t(std::max(length, 0)));
        return header + text == replyFrame(text) ? text : "<bad reply>";
    }
    std::string request(const std::string& script) {
        return sendScript(script) ? replyText() : "<send failed>";
    }
    // True when the server closed the stream within milliseconds.
    bool closedByServer(long milliseconds = 5000) {
        char byte;
        return piSocket::waitReadable(m_socket, milliseconds) > 0 &&
               piSocket::receive(m_socket, &byte, 1) <= 0;
    }
    void close() {
        piSocket::close(m_socket);
        m_socket = piSocket::invalid;
    }

private:
    unsigned int m_socket;
};

// A command server with test commands: "where" answers an id of the thread its handler ran
// on, "here" the same as an async command (run on the connection's own thread); "say ?TEXT?"
// answers TEXT, or a null text without one; "subscribe" sets the caller's broadcast flag,
// "announce TEXT" broadcasts TEXT. Replies go through sendResp, to the running command.
class TestServer : public TclCommandServer {
public:
    explicit TestServer(bool withServicer = true) : m_withServicer(withServicer) {}
    ~TestServer() override { stop(); }

    // Starts serving and, with threads, the servicing thread.
    bool start() {
        if (!execute())
            return false;
        if (m_withServicer && usingThreads())
            m_servicer = std::make_unique<TclCommandServicer>(this);
        return !m_servicer || m_servicer->activate();
    }
    void stop() {
        remove();
        m_servicer.reset();
    }

    void addCommands(TclConnectionWithClient* connection) override {
        TclCommandServer::addCommands(connection);
        for (const auto& [name, handler] : {std::pair{"where", &TestServer::whereCmd},
                                            {"say", &TestServer::sayCmd},
                                            {"subscribe", &TestServer::subscribeCmd},
                                            {"announce", &TestServer::announceCmd}})
            connection->addCommand(name, static_cast<TclServerHandler>(handler), false);
        connection->addCommand("here", static_cast<TclServerHandler>(&TestServer::whereCmd), true);
    }
    void connectionHasBeenRemoved(TclConnectionWithClient*) override { ++removed; }
    void serverIsListening(int port) override { listeningPort = port; }
    TclServerCommand* connectionTimeoutCommand() override { return nullptr; }
    void scriptFailed(TclConnectionWithClient*, const char*, const char* errorText) override {
        std::lock_guard lock(m_mutex);
        m_lastError = errorText;
    }
    int connectionTimeoutMilliseconds() override { return 0; }
    std::string lastError() {
        std::lock_guard lock(m_mutex);
        return m_lastError;
    }

    std::atomic<int> removed{0};
    int listeningPort = 0;

private:
    int whereCmd(TclServerCommand*) {
        sendResp(TCS_RESULT,
                 std::to_string(std::hash<std::thread::id>()(std::this_thread::get_id())).c_str());
        return TCL_OK;
    }
    int sayCmd(TclServerCommand* command) {
        sendResp(TCS_RESULT, command->objc() > 1 ? Tcl_GetString(command->objv()[1]) : nullptr);
        return TCL_OK;
    }
    int subscribeCmd(TclServerCommand*) {
        setClientBroadcast(true, nullptr);
        sendResp(TCS_RESULT, getClientBroadcast(nullptr) ? "subscribed" : "not");
        return TCL_OK;
    }
    int announceCmd(TclServerCommand* command) {
        if (command->objc() != 2)
            return TCL_ERROR;
        broadcast(TCS_STATUS, Tcl_GetString(command->objv()[1]));
        return TCL_OK;
    }

    bool m_withServicer;
    std::unique_ptr<TclCommandServicer> m_servicer;
    std::mutex m_mutex;
    std::string m_lastError;
};

inline const std::string beeped = "Beep you back...";

// Counts the beeps instead of sounding them, for the lifetime of the object.
class QuietSystem : public piSystem {
public:
    QuietSystem() : m_previous(piSystem::install(this)) {}
    ~QuietSystem() override { piSystem::install(m_previous); }
    void beep() const override { ++beeps; }
    mutable std::atomic<int> beeps{0};

private:
    const piSystem* m_previous;
};

// A test with a running TestServer whose beeps are counted.
class ServerTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(server.start()); }
    QuietSystem system;
    TestServer server;
};
