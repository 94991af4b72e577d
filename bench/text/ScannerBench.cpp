// Tokenizing and parsing a generated 50 MB sectioned file through std::ifstream, each pass
// timed beside a plain sbumpc() pass over the same bytes in the same iteration, so that the
// ratio holds on a busy machine. The scanner is also timed beside its peer, a flex tokenizer
// of the same token classes built with full tables (-Cf), on the same file in the same
// iteration. Targets: the scanner at least 1.2 times flex's throughput (vs_flex), and
// FileParser::read at least 0.08 of the sbumpc loop's (ratio). The scanner's ratio to the
// sbumpc loop is reported as well.
#include "FlexTokens.h"
#include "SectionedFile.h"
#include "ThreadClock.h"

#include "text/FileParser.h"
#include "text/Scanner.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

constexpr std::size_t fileBytes = 50u << 20;

const std::string& benchFile() {
    static const std::string path = sectionedFilePath(fileBytes);
    return path;
}

// Returns the seconds one pass took and adds the bytes it saw to bytes.
double baselinePass(std::size_t& bytes) {
    std::ifstream in(benchFile(), std::ios::binary);
    std::streambuf* buffer = in.rdbuf();
    double start = threadSeconds();
    std::size_t count = 0;
    unsigned sum = 0;
    for (int c = buffer->sbumpc(); c != std::char_traits<char>::eof(); c = buffer->sbumpc()) {
        sum += static_cast<unsigned>(c);
        ++count;
    }
    benchmark::DoNotOptimize(sum);
    bytes += count;
    return threadSeconds() - start;
}

template <class Pass>
double timed(Pass& pass) {
    double start = threadSeconds();
    pass();
    return threadSeconds() - start;
}

// Each iteration times the baseline, the pass and, when given, the peer pass, so that all
// of them see the machine in the same state. Counters: the pass's throughput as a ratio of
// the baseline's (ratio) and, with a peer, of the peer's (vs_flex).
template <class Pass, class Peer>
void measureAgainstBaseline(benchmark::State& state, Pass pass, Peer* peer) {
    double baselineSeconds = 0, seconds = 0, peerSeconds = 0;
    std::size_t bytes = 0;
    for (auto _ : state) {
        baselineSeconds += baselinePass(bytes);
        double elapsed = timed(pass);
        seconds += elapsed;
        state.SetIterationTime(elapsed);
        if (peer)
            peerSeconds += timed(*peer);
    }
    double perPass = static_cast<double>(bytes) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
    state.counters["baseline_MBps"] = perPass * state.iterations() / baselineSeconds / 1e6;
    state.counters["MBps"] = perPass * state.iterations() / seconds / 1e6;
    state.counters["ratio"] = baselineSeconds / seconds;
    if (peer) {
        state.counters["flex_MBps"] = perPass * state.iterations() / peerSeconds / 1e6;
        state.counters["vs_flex"] = peerSeconds / seconds;
    }
}

void BM_ScannerDefaultTableVsSbumpcAndFlex(benchmark::State& state) {
    std::size_t tokens = 0, flexTokens = 0;
    auto flex = [&] {
        std::FILE* in = std::fopen(benchFile().c_str(), "rb");
        if (!in)
            return;
        FlexTokenCount count = flexTokenize(in);
        std::fclose(in);
        flexTokens += count.tokens;
        benchmark::DoNotOptimize(count.textBytes);
    };
    measureAgainstBaseline(
        state,
        [&] {
            std::ifstream in(benchFile(), std::ios::binary);
            Scanner scanner(in, nullptr);
            while (scanner.scanToken().type() != ST_END)
                ++tokens;
        },
        &flex);
    state.counters["tokens"] = static_cast<double>(tokens) / state.iterations();
    state.counters["flex_tokens"] = static_cast<double>(flexTokens) / state.iterations();
}
BENCHMARK(BM_ScannerDefaultTableVsSbumpcAndFlex)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

KeywordDescriptor keywords[] = {
    {"name", 1, 0},  {"edge", 2, 0}, {"time", 3, 0},  {"list", 4, 0}, {"zoom", 5, 0},
    {"ruler", 6, 0}, {"font", 7, 0}, {"slice", 8, 0}, {"grid", 9, 0}, {nullptr, 0, 0},
};
SectionDescriptor signal{"Signal", 1, 0}, waveform{"Waveform", 2, 0}, view{"View", 3, 0},
    bus{"Bus", 4, 0};
SectionDescriptor* sections[] = {&signal, &waveform, &view, &bus, nullptr};

void BM_FileParserReadVsSbumpc(benchmark::State& state) {
    auto noPeer = [] {};
    measureAgainstBaseline(
        state,
        [] {
            std::ifstream in(benchFile(), std::ios::binary);
            FileParser parser(in, nullptr, sections, keywords);
            benchmark::DoNotOptimize(parser.read(1));
        },
        static_cast<decltype(noPeer)*>(nullptr));
}
BENCHMARK(BM_FileParserReadVsSbumpc)->UseManualTime()->Iterations(2)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
