// Wildcard matching of a pattern with eight any-characters elements between literals against
// strings that do not match. Plain backtracking grows like the length to the eighth power
// here; the memoised matcher must at most quadruple its time per doubling of the length. The
// growth factors are printed after the runs.
#include "text/Pattern.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

// a*a*a*a*a*a*a*a*b: every 'a' of the subject is a place where each any-characters element
// may stop, and the final b never matches.
class EightStarsPattern : public Pattern {
public:
    EightStarsPattern() : Pattern("a*a*a*a*a*a*a*a*b") {
        for (int i = 0; i < 8; ++i) {
            addElement(new StringPatternElement("a"));
            addElement(new AnyNCharsPatternElement());
        }
        addElement(new StringPatternElement("b"));
    }
};

void BM_PatternNoMatch(benchmark::State& state) {
    EightStarsPattern pattern;
    std::string subject(static_cast<std::size_t>(state.range(0)), 'a');
    for (auto _ : state) {
        const char* matched = pattern.longestMatch(subject.c_str());
        if (matched)
            state.SkipWithError("the subject must not match");
        benchmark::DoNotOptimize(matched);
    }
}
BENCHMARK(BM_PatternNoMatch)->Arg(2500)->Arg(5000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// Prints how much the CPU time grew from each length to its double (CPU time, since the
// machine's other load inflates real time unevenly).
class GrowthReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            m_times[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        const char* lengths[] = {"2500", "5000", "10000"};
        for (int i = 0; i + 1 < 3; ++i) {
            auto shorter = m_times.find(std::string("BM_PatternNoMatch/") + lengths[i]);
            auto longer = m_times.find(std::string("BM_PatternNoMatch/") + lengths[i + 1]);
            if (shorter != m_times.end() && longer != m_times.end() && shorter->second > 0)
                std::printf("growth %s -> %s: x%.2f (limit x4)\n", lengths[i], lengths[i + 1],
                            longer->second / shorter->second);
        }
    }

private:
    std::map<std::string, double> m_times;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    GrowthReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
