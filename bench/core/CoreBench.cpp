// The ring and scratch formatting functions and model notification. Both count heap
// allocations with a replaced global operator new and must report none: the ring exists so
// that formatting allocates nothing, and changed() keeps its snapshot of a short dependent
// list on the stack. Each runs beside a baseline in the same iteration and reports the ratio
// (project speed / baseline speed). The formatting is measured against snprintf into a local
// array and should keep a ratio of at least 0.8. Notification is measured against a plain
// loop of virtual update calls over the same dependents; its double dispatch makes two
// virtual calls where the loop makes one, so about 0.5 is the ceiling and at least 0.35 the
// target (a look-up per dependent per round, for instance, would fall below it).
#include "core/Model.h"
#include "core/StringFunctions.h"
#include "core/TqObject.h"

#include "CountingAllocator.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
constexpr int v_calls = 100'000;
const char* const v_names[] = {"net", "bus9", "clk_007", "data_out12", "q"};

// The project's functions: a numbered name, a binary form and a field of a list.
void ringRound(int i) {
    benchmark::DoNotOptimize(incrementOfString(v_names[i % 5], i & 255));
    benchmark::DoNotOptimize(asBin(static_cast<unsigned>(i), 16));
    benchmark::DoNotOptimize(strExtractField(i % 3 - 1, "a,bb,ccc,", ','));
}

// The same three texts written into a local array.
void snprintfRound(int i, char (&buffer)[64]) {
    std::snprintf(buffer, sizeof buffer, "%s%d", v_names[i % 5], i & 255);
    benchmark::DoNotOptimize(buffer);
    for (int bit = 0; bit < 16; ++bit)
        buffer[bit] = (static_cast<unsigned>(i) >> (15 - bit)) & 1 ? '1' : '0';
    buffer[16] = '\0';
    benchmark::DoNotOptimize(buffer);
    std::snprintf(buffer, sizeof buffer, "%s", i % 3 == 0 ? "a" : i % 3 == 1 ? "bb" : "ccc");
    benchmark::DoNotOptimize(buffer);
}

void BM_RingFormattingVersusSnprintf(benchmark::State& state) {
    Clock::duration baselineTime{}, ringTime{};
    long allocations = 0;
    char buffer[64];
    for (auto _ : state) {
        const auto t0 = Clock::now();
        for (int i = 0; i < v_calls; ++i)
            snprintfRound(i, buffer);
        const auto t1 = Clock::now();
        const long before = allocationCount();
        for (int i = 0; i < v_calls; ++i)
            ringRound(i);
        allocations += allocationCount() - before;
        const auto t2 = Clock::now();
        baselineTime += t1 - t0;
        ringTime += t2 - t1;
    }
    state.counters["allocations"] = static_cast<double>(allocations);
    state.counters["speed_ratio"] = std::chrono::duration<double>(baselineTime).count() /
                                    std::chrono::duration<double>(ringTime).count();
}
BENCHMARK(BM_RingFormattingVersusSnprintf)->Unit(benchmark::kMillisecond);

class Counter : public Dependent {
public:
    void update(Model&, Aspect a) override { m_sum += a; }
    long m_sum = 0;
};

// Notification of eight dependents through changed() against the same virtual calls made
// directly.
void BM_ChangedVersusDirectCalls(benchmark::State& state) {
    Model model;
    std::vector<std::unique_ptr<Counter>> dependents;
    for (int i = 0; i < 8; ++i) {
        dependents.push_back(std::make_unique<Counter>());
        model.addDependent(*dependents.back());
    }
    std::vector<Dependent*> direct(dependents.size());
    for (std::size_t i = 0; i < dependents.size(); ++i)
        direct[i] = dependents[i].get();
    Clock::duration baselineTime{}, changedTime{};
    long allocations = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        for (int i = 0; i < v_calls; ++i) {
            for (Dependent* d : direct)
                d->update(model, aspectValue);
        }
        const auto t1 = Clock::now();
        const long before = allocationCount();
        for (int i = 0; i < v_calls; ++i)
            model.changed(aspectValue);
        allocations += allocationCount() - before;
        const auto t2 = Clock::now();
        baselineTime += t1 - t0;
        changedTime += t2 - t1;
    }
    benchmark::DoNotOptimize(dependents.front()->m_sum);
    state.counters["allocations"] = static_cast<double>(allocations);
    state.counters["speed_ratio"] = std::chrono::duration<double>(baselineTime).count() /
                                    std::chrono::duration<double>(changedTime).count();
}
BENCHMARK(BM_ChangedVersusDirectCalls)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    TqObject::startUp();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    TqObject::shutDown();
    return 0;
}
