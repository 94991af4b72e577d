// The readers' figures, as ratios against a baseline timed in the same iterations in this
// thread's CPU time:
//
// - reading a dump through a pattern that selects 4 of its variables costs at most half of
//   reading all of them (the dump is 64 registers of 1 to 64 bits and two tri-state buses);
// - the WaveJSON reader on 100 lanes x 1,000 slots and 8 lanes x 40,000 slots, against
//   copying the same text once (the floor any reader pays).
//
// With "--import FILE [PATTERN...]" the program instead reads one dump file and prints its wall
// time and peak resident memory, for bench/app/peer-bench to compare with other programs.
#include "ThreadClock.h"
#include "io/VcdReader.h"
#include "io/WaveJsonReader.h"
#include "model/Diagram.h"

#include "core/TqObject.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <chrono>
#include <cstring>
#include <iostream>
#include <random>
#include <sstream>

namespace {

std::string identifier(int index) {
    std::string code;
    do {
        code.push_back(static_cast<char>('!' + index % 94));
        index /= 94;
    } while (index > 0);
    return code;
}

// A dump shaped like the one the peer script has the simulator write: registers tb.r1 .. r64
// of 1 to 64 bits, two 16-bit tri-state buses, a clock; about 1.5 kB a cycle.
std::string makeDump(int cycles) {
    std::ostringstream out;
    out << "$timescale 1ns $end\n$scope module tb $end\n$var reg 1 " << identifier(0)
        << " clk $end\n";
    for (int r = 1; r <= 64; ++r)
        out << "$var reg " << r << " " << identifier(r) << " r" << r << " [" << r - 1
            << ":0] $end\n";
    out << "$var wire 16 " << identifier(65) << " bus_a [15:0] $end\n$var wire 16 "
        << identifier(66) << " bus_b [15:0] $end\n$upscope $end\n$enddefinitions $end\n";
    std::mt19937_64 random(7);
    for (int c = 0; c < cycles; ++c) {
        out << "#" << c * 10 << "\n1" << identifier(0) << "\n";
        for (int r = 1; r <= 64; ++r) {
            if ((c + r) % 3 == 0)
                continue;
            const std::uint64_t value = random();
            out << 'b';
            for (int bit = r - 1; bit >= 0; --bit)
                out << ((value >> bit) & 1 ? '1' : '0');
            out << ' ' << identifier(r) << '\n';
        }
        if (c % 4 == 0)
            out << "b" << (c % 8 ? "z" : "1010010111110000") << " " << identifier(65 + c % 2)
                << "\n";
        out << "#" << c * 10 + 5 << "\n0" << identifier(0) << "\n";
    }
    return out.str();
}

double readDump(const std::string& text, const std::vector<std::string>& patterns,
                std::size_t& changes) {
    const double start = threadSeconds();
    Diagram diagram;
    std::string error;
    VcdReader reader("bench.vcd");
    reader.setPatterns(patterns);
    if (!reader.readText(text, "bench.vcd", diagram, error))
        std::cerr << error << "\n";
    changes = diagram.totalChanges();
    return threadSeconds() - start;
}

void BM_DumpFourSignalsVsAll(benchmark::State& state) {
    const std::string text = makeDump(20000);
    const std::vector<std::string> four = {"tb.r1", "tb.r2", "tb.r64", "tb.bus_a"};
    double all = 0, some = 0;
    std::size_t allChanges = 0, someChanges = 0;
    for (auto _ : state) {
        all += readDump(text, {}, allChanges);
        some += readDump(text, four, someChanges);
    }
    const auto n = static_cast<double>(state.iterations());
    state.counters["MB"] = static_cast<double>(text.size()) / 1e6;
    state.counters["MBps_all"] = static_cast<double>(text.size()) / 1e6 / (all / n);
    state.counters["ms_all"] = all / n * 1e3;
    state.counters["ms_four"] = some / n * 1e3;
    state.counters["ratio"] = some / all;
    state.counters["changes_four"] = static_cast<double>(someChanges);
    benchmark::DoNotOptimize(allChanges);
}
BENCHMARK(BM_DumpFourSignalsVsAll)->Unit(benchmark::kMillisecond)->Iterations(3);

// A WaveJSON diagram of lanes x slots: every fourth lane a clock, every fourth a bus with
// labels, the others bits that change now and then.
std::string makeWaveJson(int lanes, int slots) {
    std::ostringstream out;
    std::mt19937 random(3);
    out << "{signal: [\n";
    for (int l = 0; l < lanes; ++l) {
        out << "  {name: 'lane" << l << "', wave: '";
        std::ostringstream data;
        for (int s = 0; s < slots; ++s) {
            const unsigned r = random() % 8;
            if (l % 4 == 0)
                out << (s == 0 ? 'p' : '.');
            else if (l % 4 == 1 && r < 3) {
                out << '=';
                data << " D" << s;
            } else if (l % 4 == 1)
                out << (r == 3 ? 'x' : '.');
            else
                out << (r < 2 ? '0' : r < 4 ? '1' : '.');
        }
        out << "'" << (l % 4 == 1 ? ", data: '" + data.str() + "'" : std::string()) << "},\n";
    }
    out << "]}\n";
    return out.str();
}

void BM_WaveJsonVsCopy(benchmark::State& state) {
    const std::string text =
        makeWaveJson(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    double read = 0, copy = 0;
    for (auto _ : state) {
        double start = threadSeconds();
        Diagram diagram;
        std::string error;
        WaveJsonReader reader("bench.json");
        if (!reader.readText(text, "bench.json", diagram, error))
            std::cerr << error << "\n";
        read += threadSeconds() - start;
        start = threadSeconds();
        std::string again(text.begin(), text.end());
        benchmark::DoNotOptimize(again.data());
        copy += threadSeconds() - start;
    }
    const auto n = static_cast<double>(state.iterations());
    state.counters["ms_read"] = read / n * 1e3;
    state.counters["ratio_to_copy"] = read / copy;
}
BENCHMARK(BM_WaveJsonVsCopy)->Args({100, 1000})->Args({8, 40000})->Unit(benchmark::kMillisecond);

int importFile(const char* path, const std::vector<std::string>& patterns) {
    const auto start = std::chrono::steady_clock::now();
    Diagram diagram;
    std::string error;
    VcdReader reader(path);
    reader.setPatterns(patterns);
    if (!reader.read(diagram, error)) {
        std::cerr << error << "\n";
        return 1;
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::cout << "seconds " << seconds << " peak_kb " << usage.ru_maxrss << " signals "
              << diagram.signalCount() << " changes " << diagram.totalChanges() << "\n";
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    TqObject::startUp();
    if (argc >= 3 && std::strcmp(argv[1], "--import") == 0)
        return importFile(argv[2], std::vector<std::string>(argv + 3, argv + argc));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
