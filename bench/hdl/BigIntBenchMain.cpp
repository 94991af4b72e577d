// The benchmark program's main: runs every benchmark with the console reporter and then
// prints each BigInt figure beside its same-run baselines as ratios (baseline time divided by
// BigInt's time, so above 1 means BigInt is faster). The times are CPU times: on a machine
// shared with other work they vary far less than the wall-clock times.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration)
                continue;
            const std::string name = run.benchmark_name();
            const std::size_t slash = name.find('/');
            if (slash == std::string::npos)
                continue;
            const std::size_t end = name.find('/', slash + 1);
            const std::string family = name.substr(0, slash);
            const std::string width = name.substr(slash + 1, end - slash - 1);
            m_times[family.substr(family.find('_') + 1) + "/" + width]
                   [family.substr(0, family.find('_'))] = run.GetAdjustedCPUTime();
        }
    }

    void Finalize() override {
        std::printf("\n%-16s %14s  %s\n", "operation/width", "BigInt", "baseline: time (ratio)");
        for (const auto& [key, byKind] : m_times) {
            const auto own = byKind.find("BigInt");
            if (own == byKind.end())
                continue;
            std::printf("%-16s %11.0f ns ", key.c_str(), own->second);
            for (const auto& [kind, time] : byKind)
                if (kind != "BigInt")
                    std::printf(" %s %.0f ns (%.2f)", kind.c_str(), time, time / own->second);
            std::printf("\n");
        }
        ConsoleReporter::Finalize();
    }

private:
    // "and/64" -> "BigInt", "Table", "SystemC" -> time in the run's unit.
    std::map<std::string, std::map<std::string, double>> m_times;
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
