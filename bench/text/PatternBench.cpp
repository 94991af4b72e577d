// Wildcard matching time against the subject length: a pattern of eight any-characters
// elements between literals, on strings that do not match. Plain backtracking tries every way
// of placing the eight wildcards (about n^8 / 8! of them); the matcher must stay polynomial,
// so each doubling of the length may at most quadruple the time. The ratios between the
// lengths of this run are printed after the figures.
#include "text/Pattern.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
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

// Prints the usual table, then the time ratio of each length to the one before it.
class DoublingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                m_timeByLength[lengthOf(run)] = run.GetAdjustedRealTime();
            }
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        const double* previous = nullptr;
        std::int64_t previousLength = 0;
        for (const auto& [length, time] : m_timeByLength) {
            if (previous != nullptr) {
                const double ratio = time / *previous;
                std::printf("length %lld vs %lld: time ratio %.2f (limit %.1f) %s\n",
                            static_cast<long long>(length), static_cast<long long>(previousLength),
                            ratio, kLimitPerDoubling,
                            ratio <= kLimitPerDoubling ? "ok" : "EXCEEDED");
            }
            previous = &time;
            previousLength = length;
        }
    }

private:
    static std::int64_t lengthOf(const Run& run) {
        const std::string& args = run.run_name.args;
        return std::stoll(args.substr(args.find(':') + 1));
    }
    std::map<std::int64_t, double> m_timeByLength;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    DoublingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
