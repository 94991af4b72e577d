// Round trips to the command server against a bare loopback server in the same run.
//
// Each benchmark runs the same clients against a thread-per-connection server that reads the
// same frame and writes the same 20-byte header and text without Tcl (the baseline), and
// against a TclCommandServer, alternating over five rounds and taking the medians. "beep" is handed
// to the servicing thread; an unknown command is answered "Bad command" on the connection's own
// thread. Counters: requests per second and p50/p99 latency of both, and the ratios
// server/baseline. The pinned variants run every thread on CPU 0, which takes the cross-CPU
// wake-ups out.
#include "core/TqObject.h"
#include "core/platform/piSystem.h"
#include "ipc/IPCMessage.h"
#include "ipc/TclCommandServer.h"
#include "ipc/TclCommandServicer.h"
#include "ipc/platform/piSocket.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <sched.h>
#include <string>
#include <thread>
#include <vector>

namespace {
using Clock = std::chrono::steady_clock;

// The bell itself is not what is measured: a silent system keeps "beep" to its hand-over.
class SilentSystem : public piSystem {
public:
    void beep() const override {}
};

class BenchServer : public TclCommandServer {
public:
    ~BenchServer() override { remove(); }
    void serverIsListening(int) override {}
    TclServerCommand* connectionTimeoutCommand() override { return nullptr; }
    void scriptFailed(TclConnectionWithClient*, const char*, const char*) override {}
    int connectionTimeoutMilliseconds() override { return 0; }
};

// The baseline: accept, then one thread per connection reading a length-prefixed script and
// answering with the header and the text the command server would send.
class BareServer {
public:
    BareServer() {
        m_socket = piSocket::createStreamSocket();
        if (!piSocket::bindLoopback(m_socket, 0) || !piSocket::listen(m_socket, 64))
            std::abort();
        m_port = piSocket::localPort(m_socket);
        m_acceptor = std::thread([this] { acceptLoop(); });
    }
    ~BareServer() {
        m_stop = true;
        m_acceptor.join();
        for (std::thread& thread : m_connections)
            thread.join();
        piSocket::close(m_socket);
    }
    int port() const { return m_port; }

private:
    void acceptLoop() {
        while (!m_stop) {
            if (piSocket::waitReadable(m_socket, 20) <= 0)
                continue;
            const unsigned int client = piSocket::accept(m_socket);
            piSocket::setNoDelay(client);
            m_connections.emplace_back([client] { serve(client); });
        }
    }
    static void serve(unsigned int client) {
        char script[1024];
        for (;;) {
            char prefix[4];
            if (piSocket::receiveAll(client, prefix, 4) != 4)
                break;
            const long length = std::min<long>(ipcReadInt(prefix), 1023);
            if (piSocket::receiveAll(client, script, static_cast<std::size_t>(length)) != length)
                break;
            const std::string text = std::string(script, static_cast<std::size_t>(length)) == "beep"
                                         ? "Beep you back..."
                                         : "Bad command";
            std::string reply(IPCHeader::size, '\0');
            IPCHeader header;
            header.length = header.value = static_cast<std::int32_t>(text.size());
            header.encode(reply.data());
            reply += text;
            piSocket::sendAll(client, reply.data(), reply.size());
        }
        piSocket::close(client);
    }

    unsigned int m_socket;
    int m_port;
    std::atomic<bool> m_stop{false};
    std::thread m_acceptor;
    std::vector<std::thread> m_connections;
};

struct Figures {
    double requestsPerSecond;
    double p50Microseconds;
    double p99Microseconds;
};

// clients threads, each doing requestsEach round trips of script; the figures of all.
Figures measure(int port, const std::string& script, int clients, int requestsEach) {
    std::string frame(4, '\0');
    ipcWriteInt(frame.data(), static_cast<std::int32_t>(script.size()));
    frame += script;
    std::vector<std::vector<double>> latencies(static_cast<std::size_t>(clients));
    std::vector<unsigned int> sockets;
    for (int i = 0; i < clients; ++i)
        sockets.push_back(piSocket::connectLoopback(port));
    std::vector<std::thread> threads;
    const auto start = Clock::now();
    for (int i = 0; i < clients; ++i) {
        threads.emplace_back([&, i] {
            const unsigned int socket = sockets[static_cast<std::size_t>(i)];
            std::vector<double>& own = latencies[static_cast<std::size_t>(i)];
            own.reserve(static_cast<std::size_t>(requestsEach));
            char reply[64];
            for (int r = 0; r < requestsEach; ++r) {
                const auto sent = Clock::now();
                piSocket::sendAll(socket, frame.data(), frame.size());
                if (piSocket::receiveAll(socket, reply, IPCHeader::size) != IPCHeader::size)
                    std::abort();
                const long length = ipcReadInt(reply + 4);
                if (piSocket::receiveAll(socket, reply, static_cast<std::size_t>(length)) != length)
                    std::abort();
                own.push_back(
                    std::chrono::duration<double, std::micro>(Clock::now() - sent).count());
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    for (unsigned int socket : sockets)
        piSocket::close(socket);
    std::vector<double> all;
    for (const std::vector<double>& own : latencies)
        all.insert(all.end(), own.begin(), own.end());
    std::sort(all.begin(), all.end());
    const auto at = [&all](double fraction) {
        return all[std::min(all.size() - 1, static_cast<std::size_t>(fraction * all.size()))];
    };
    return {static_cast<double>(all.size()) / seconds, at(0.50), at(0.99)};
}

// Pins the calling thread (and so every thread it starts) to CPU 0, or to all CPUs again.
void pinToFirstCpu(bool pin) {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (pin) {
        CPU_SET(0, &set);
    } else {
        for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu)
            CPU_SET(cpu, &set);
    }
    sched_setaffinity(0, sizeof set, &set);
}

// The median of each figure over rounds that alternate between the two servers, so that a
// change in the machine's load during the run falls on both.
Figures medianOf(std::vector<Figures> rounds) {
    const auto median = [&rounds](double Figures::*field) {
        std::vector<double> values;
        for (const Figures& round : rounds)
            values.push_back(round.*field);
        std::sort(values.begin(), values.end());
        return values[values.size() / 2];
    };
    return {median(&Figures::requestsPerSecond), median(&Figures::p50Microseconds),
            median(&Figures::p99Microseconds)};
}

void roundTrips(benchmark::State& state) {
    const std::string script = state.range(0) == 0 ? "beep" : "no_such_command";
    const int clients = static_cast<int>(state.range(1));
    const bool pinned = state.range(2) != 0;
    const int requestsEach = clients == 1 ? 1500 : 150;
    constexpr int rounds = 5;
    pinToFirstCpu(pinned);
    Figures base{};
    Figures server{};
    for (auto _ : state) {
        BareServer bare;
        BenchServer tcl;
        if (!tcl.execute())
            std::abort();
        TclCommandServicer servicer(&tcl);
        if (!servicer.activate())
            std::abort();
        std::vector<Figures> baseRounds;
        std::vector<Figures> serverRounds;
        for (int round = 0; round < rounds; ++round) {
            baseRounds.push_back(measure(bare.port(), script, clients, requestsEach));
            serverRounds.push_back(measure(tcl.port(), script, clients, requestsEach));
        }
        tcl.remove();
        base = medianOf(baseRounds);
        server = medianOf(serverRounds);
        state.SetIterationTime(rounds * clients * requestsEach / server.requestsPerSecond);
    }
    pinToFirstCpu(false);
    state.counters["rps"] = server.requestsPerSecond;
    state.counters["base_rps"] = base.requestsPerSecond;
    state.counters["rps_ratio"] = server.requestsPerSecond / base.requestsPerSecond;
    state.counters["p50_us"] = server.p50Microseconds;
    state.counters["base_p50_us"] = base.p50Microseconds;
    state.counters["p50_ratio"] = server.p50Microseconds / base.p50Microseconds;
    state.counters["p99_us"] = server.p99Microseconds;
    state.counters["base_p99_us"] = base.p99Microseconds;
    state.SetLabel(script + (pinned ? ", pinned to CPU 0" : ", unpinned"));
}
} // namespace

// Arguments: command (0 "beep", 1 unknown), clients, pinned.
BENCHMARK(roundTrips)
    ->ArgNames({"unknown", "clients", "pinned"})
    ->ArgsProduct({{0, 1}, {1, 16}, {0, 1}})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
    TqObject::startUp();
    const SilentSystem silent;
    piSystem::install(&silent);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    piSystem::install(nullptr);
    TqObject::shutDown();
    return 0;
}
