// Wildcard matching time against the subject length: a pattern of eight any-characters
// elements between literals, on strings that do not match. Plain backtracking tries every way
// of placing the eight wildcards (about n^8 / 8! of them); the matcher must stay polynomial,
// so each doubling of the length may at most quadruple the time. The ratios between the
// lengths of this run are printed after the figures, with a second, everyday figure.
#include "text/Pattern.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <fnmatch.h>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr double kLimitPerDoubling = 4.0;

// "a*a*a*a*a*a*a*a*b": a literal, then eight times any characters and a literal.
class EightWildcards : public Pattern {
public:
    EightWildcards() : Pattern("a*a*a*a*a*a*a*a*b") {
        addElement(new StringPatternElement("a"));
        for (int i = 0; i < 8; ++i) {
            addElement(new AnyNCharsPatternElement());
            addElement(new StringPatternElement(i < 7 ? "a" : "b"));
        }
    }
};

void BM_EightWildcardsNoMatch(benchmark::State& state) {
    const EightWildcards pattern;
    // All "a": every literal but the last matches everywhere, the worst case for backtracking.
    const std::string subject(static_cast<std::size_t>(state.range(0)), 'a');
    for (auto _ : state) {
        const char* end = pattern.longestMatch(subject.c_str());
        benchmark::DoNotOptimize(end);
        if (end != nullptr) {
            state.SkipWithError("the subject must not match");
            break;
        }
    }
    state.counters["ns_per_char"] = benchmark::Counter(
        static_cast<double>(state.range(0)),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_EightWildcardsNoMatch)
    ->ArgName("length")
    ->Arg(2500)
    ->Arg(5000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

// The everyday use: filtering a design's signal names with "*clk*", beside the C library's
// fnmatch doing the same whole-string test on the same names.
std::vector<std::string> signalNames() {
    std::vector<std::string> names;
    const char* blocks[] = {"cpu", "dma", "uart0", "pll_ctrl"};
    const char* leaves[] = {"clk", "rst_n", "data_q[31:0]", "clk_div2", "state", "irq_pending"};
    for (int unit = 0; unit < 50; ++unit) {
        for (const char* block : blocks) {
            for (const char* leaf : leaves) {
                names.push_back("top.soc." + std::string(block) + "_" + std::to_string(unit) + "." +
                                leaf);
            }
        }
    }
    return names;
}

class ClockFilter : public Pattern {
public:
    ClockFilter() : Pattern("*clk*") {
        addElement(new AnyNCharsPatternElement());
        addElement(new StringPatternElement("clk"));
        addElement(new AnyNCharsPatternElement());
    }
};

template <typename Matches>
void filterNames(benchmark::State& state, Matches matches) {
    const std::vector<std::string> names = signalNames();
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const std::string& name : names) {
            found += matches(name.c_str()) ? 1 : 0;
        }
        benchmark::DoNotOptimize(found);
    }
    if (found != names.size() / 3) {
        state.SkipWithError("wrong number of clock names");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * names.size()));
}

void BM_FilterNames_Fnmatch(benchmark::State& state) {
    filterNames(state, [](const char* name) { return fnmatch("*clk*", name, 0) == 0; });
}
BENCHMARK(BM_FilterNames_Fnmatch);

void BM_FilterNames_CompleteMatch(benchmark::State& state) {
    const ClockFilter pattern;
    filterNames(state, [&pattern](const char* name) { return pattern.completeMatch(name); });
}
BENCHMARK(BM_FilterNames_CompleteMatch);

// Prints the usual table, then the time ratio of each length to the one before it and of the
// name filter to its fnmatch baseline. The ratios use CPU time, which other processes on a
// busy machine disturb less than the wall clock.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal, so that logs stay plain text.
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                m_times[run.benchmark_name()] = run.GetAdjustedCPUTime();
            }
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        const long lengths[] = {2500, 5000, 10000};
        for (int i = 1; i < 3; ++i) {
            const double ratio = ratioOf(lengthName(lengths[i]), lengthName(lengths[i - 1]));
            std::printf("length %ld vs %ld: time ratio %.2f (limit %.1f) %s\n", lengths[i],
                        lengths[i - 1], ratio, kLimitPerDoubling,
                        ratio > 0 && ratio <= kLimitPerDoubling ? "ok" : "EXCEEDED");
        }
        std::printf("name filter: completeMatch takes %.2f times the time of fnmatch\n",
                    ratioOf("BM_FilterNames_CompleteMatch", "BM_FilterNames_Fnmatch"));
    }

private:
    static std::string lengthName(long length) {
        return "BM_EightWildcardsNoMatch/length:" + std::to_string(length);
    }
    // 0 when either was filtered out or failed.
    double ratioOf(const std::string& figure, const std::string& baseline) const {
        const auto a = m_times.find(figure);
        const auto b = m_times.find(baseline);
        return a != m_times.end() && b != m_times.end() ? a->second / b->second : 0;
    }
    std::map<std::string, double> m_times;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
