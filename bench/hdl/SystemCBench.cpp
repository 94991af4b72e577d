// SystemC's logic vector (sc_lv_base) and unsigned integer (sc_unsigned, for the addition a
// logic vector lacks) on the same operands as the BigInt benchmarks, each producing a new
// value. Built only when the SystemC library was found.
#include "BigIntBenchSupport.h"

#include <benchmark/benchmark.h>
#include <systemc>

#include <map>
#include <memory>
#include <tuple>

// The library calls it from its own main, which this program does not use; the library
// refers to it, so it must be visible.
__attribute__((visibility("default"))) int sc_main(int, char*[]) {
    return 0;
}

namespace {

using bench_bigint::operandBits;

const sc_dt::sc_lv_base& vector(int which, std::int64_t width, bool fourState) {
    static std::map<std::tuple<int, std::int64_t, bool>, std::unique_ptr<sc_dt::sc_lv_base>> cache;
    auto& slot = cache[{which, width, fourState}];
    if (!slot)
        slot = std::make_unique<sc_dt::sc_lv_base>(operandBits(which, width, fourState).c_str(),
                                                   static_cast<int>(width));
    return *slot;
}

template <typename Op>
void runSystemC(benchmark::State& state, Op op, bool fourState) {
    const sc_dt::sc_lv_base& a = vector(0, state.range(0), fourState);
    const sc_dt::sc_lv_base& b = vector(1, state.range(0), fourState);
    for (auto _ : state) {
        auto result = op(a, b);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

using Lv = sc_dt::sc_lv_base;

void SystemC_and(benchmark::State& state) {
    runSystemC(
        state, [](const Lv& a, const Lv& b) { return Lv(a & b); }, true);
}
void SystemC_or(benchmark::State& state) {
    runSystemC(
        state, [](const Lv& a, const Lv& b) { return Lv(a | b); }, true);
}
void SystemC_xor(benchmark::State& state) {
    runSystemC(
        state, [](const Lv& a, const Lv& b) { return Lv(a ^ b); }, true);
}
// A vector against a copy of itself, as BigInt's comparisons are measured: the comparison runs
// over every position, and the compiler cannot fold a comparison of an object with itself.
void compareWithCopy(benchmark::State& state, bool fourState) {
    const Lv& a = vector(0, state.range(0), fourState);
    const Lv b(a);
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
// A logic vector's == compares the characters literally, as BigInt's case_eq does; on 0 and 1
// bits it is also BigInt's ==.
void SystemC_eq(benchmark::State& state) {
    compareWithCopy(state, false);
}
void SystemC_case_eq(benchmark::State& state) {
    compareWithCopy(state, true);
}
void SystemC_shr(benchmark::State& state) {
    runSystemC(
        state, [](const Lv& a, const Lv&) { return Lv(a >> 3); }, true);
}
void SystemC_hex(benchmark::State& state) {
    runSystemC(
        state, [](const Lv& a, const Lv&) { return a.to_string(sc_dt::SC_HEX)[0]; }, false);
}
void SystemC_dec(benchmark::State& state) {
    runSystemC(
        state, [](const Lv& a, const Lv&) { return a.to_string(sc_dt::SC_DEC)[0]; }, false);
}
void SystemC_add(benchmark::State& state) {
    const std::int64_t width = state.range(0);
    sc_dt::sc_unsigned a(static_cast<int>(width)), b(static_cast<int>(width));
    a = vector(0, width, false);
    b = vector(1, width, false);
    for (auto _ : state) {
        sc_dt::sc_unsigned sum = a + b;
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * width);
}

void widths(benchmark::internal::Benchmark* b) {
    b->Arg(8)->Arg(64)->Arg(1024)->Arg(1 << 20)->MinTime(0.1);
}

} // namespace

BENCHMARK(SystemC_and)->Apply(widths);
BENCHMARK(SystemC_or)->Apply(widths);
BENCHMARK(SystemC_xor)->Apply(widths);
BENCHMARK(SystemC_add)->Apply(widths);
BENCHMARK(SystemC_eq)->Apply(widths);
BENCHMARK(SystemC_case_eq)->Apply(widths);
BENCHMARK(SystemC_shr)->Apply(widths);
BENCHMARK(SystemC_hex)->Arg(8)->Arg(64)->Arg(1024)->MinTime(0.1);
BENCHMARK(SystemC_hex)->Arg(1 << 20)->Iterations(1);
BENCHMARK(SystemC_dec)->Arg(8)->Arg(64)->Arg(1024)->MinTime(0.1);
BENCHMARK(SystemC_dec)->Arg(65536)->Iterations(1);
