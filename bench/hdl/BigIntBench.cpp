// BigInt operators and text conversions at widths from a strobe to a memory image, each
// producing a new value as the application does, beside baselines measured in the same run:
// a 256x256 table loop over the characters into a fresh string (what a bitwise operator must
// beat), SystemC's sc_lv_base and sc_unsigned when the library was found, and the decimal
// conversion by one doubling step per bit. The ratios are printed after the run.
#include "hdl/BigInt.h"

#include "BigIntBenchSupport.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>

namespace {

using bench_bigint::operandBits;

const BigInt& operand(int which, std::int64_t width, bool fourState) {
    static std::map<std::tuple<int, std::int64_t, bool>, BigInt> cache;
    auto [it, fresh] = cache.try_emplace({which, width, fourState});
    if (fresh)
        it->second = BigInt(operandBits(which, width, fourState).c_str(), RadixBinary, 0);
    return it->second;
}

template <typename Op>
void runBigInt(benchmark::State& state, Op op, bool fourState) {
    const BigInt& a = operand(0, state.range(0), fourState);
    const BigInt& b = operand(1, state.range(0), fourState);
    for (auto _ : state) {
        auto result = op(a, b);
        benchmark::DoNotOptimize(result);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BigInt_and(benchmark::State& state) {
    runBigInt(
        state, [](const BigInt& a, const BigInt& b) { return (a & b).bsl(); }, true);
}
void BigInt_or(benchmark::State& state) {
    runBigInt(
        state, [](const BigInt& a, const BigInt& b) { return (a | b).bsl(); }, true);
}
void BigInt_xor(benchmark::State& state) {
    runBigInt(
        state, [](const BigInt& a, const BigInt& b) { return (a ^ b).bsl(); }, true);
}
void BigInt_add(benchmark::State& state) {
    runBigInt(
        state, [](const BigInt& a, const BigInt& b) { return (a + b).bsl(); }, false);
}
// Two values with the same bits: the scan runs over every position, the worst case.
void BigInt_eq(benchmark::State& state) {
    const BigInt& a = operand(0, state.range(0), false);
    const BigInt b = a;
    for (auto _ : state)
        benchmark::DoNotOptimize(a == b);
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
void BigInt_case_eq(benchmark::State& state) {
    const BigInt& a = operand(0, state.range(0), true);
    const BigInt b = a;
    for (auto _ : state)
        benchmark::DoNotOptimize(a.case_eq(b));
    state.SetBytesProcessed(state.iterations() * state.range(0));
}
void BigInt_shr(benchmark::State& state) {
    runBigInt(
        state, [](const BigInt& a, const BigInt&) { return (a >> 3).bsl(); }, true);
}
void BigInt_hex(benchmark::State& state) {
    runBigInt(
        state,
        [](const BigInt& a, const BigInt&) {
            char* text = a.BSLToHexadecimal(0, 0, true);
            const char first = text[0];
            delete[] text;
            return first;
        },
        false);
}
void BigInt_dec(benchmark::State& state) {
    runBigInt(
        state,
        [](const BigInt& a, const BigInt&) {
            char* text = a.BSLToDecimal(0, 0, false);
            const char first = text[0];
            delete[] text;
            return first;
        },
        false);
}

// The baseline every bitwise operator must beat: one table lookup per character pair.
template <char (*combine)(char, char)>
void Table(benchmark::State& state) {
    static const std::array<std::array<char, 256>, 256> table = [] {
        std::array<std::array<char, 256>, 256> t{};
        for (int a = 0; a < 256; ++a)
            for (int b = 0; b < 256; ++b)
                t[a][b] = combine(static_cast<char>(a), static_cast<char>(b));
        return t;
    }();
    const std::int64_t width = state.range(0);
    const std::string a = operandBits(0, width, true), b = operandBits(1, width, true);
    for (auto _ : state) {
        char* out = new char[width + 2];
        out[0] = '0';
        for (std::int64_t i = 0; i < width; ++i)
            out[i + 1] = table[static_cast<unsigned char>(a[i])][static_cast<unsigned char>(b[i])];
        out[width + 1] = '\0';
        benchmark::DoNotOptimize(out);
        delete[] out;
    }
    state.SetBytesProcessed(state.iterations() * width);
}

bool definite(char c) {
    return c == '0' || c == '1';
}
char tableAnd(char a, char b) {
    return a == '0' || b == '0' ? '0' : a == '1' && b == '1' ? '1' : 'X';
}
char tableOr(char a, char b) {
    return a == '1' || b == '1' ? '1' : a == '0' && b == '0' ? '0' : 'X';
}
char tableXor(char a, char b) {
    return definite(a) && definite(b) ? (a == b ? '0' : '1') : 'X';
}
void Table_and(benchmark::State& state) {
    Table<tableAnd>(state);
}
void Table_or(benchmark::State& state) {
    Table<tableOr>(state);
}
void Table_xor(benchmark::State& state) {
    Table<tableXor>(state);
}

// The decimal conversion as one doubling step per bit over a decimal digit string; the
// benchmark fails unless it gives the same text as BigInt.
void Doubling_dec(benchmark::State& state) {
    const std::string bits = operandBits(0, state.range(0), false);
    std::string digits;
    for (auto _ : state) {
        digits.assign(1, '0');
        for (char bit : bits) {
            int carry = bit == '1';
            for (auto d = digits.rbegin(); d != digits.rend(); ++d) {
                const int value = (*d - '0') * 2 + carry;
                *d = static_cast<char>('0' + value % 10);
                carry = value / 10;
            }
            if (carry)
                digits.insert(digits.begin(), '1');
        }
        benchmark::DoNotOptimize(digits.data());
    }
    char* fast = operand(0, state.range(0), false).BSLToDecimal(0, 0, false);
    if (digits != fast)
        state.SkipWithError("BigInt's decimal text differs from the doubling's");
    delete[] fast;
}

void widths(benchmark::internal::Benchmark* b) {
    b->Arg(8)->Arg(64)->Arg(1024)->Arg(1 << 20)->MinTime(0.1);
}

} // namespace

BENCHMARK(Table_and)->Apply(widths);
BENCHMARK(BigInt_and)->Apply(widths);
BENCHMARK(Table_or)->Apply(widths);
BENCHMARK(BigInt_or)->Apply(widths);
BENCHMARK(Table_xor)->Apply(widths);
BENCHMARK(BigInt_xor)->Apply(widths);
BENCHMARK(BigInt_add)->Apply(widths);
BENCHMARK(BigInt_eq)->Apply(widths);
BENCHMARK(BigInt_case_eq)->Apply(widths);
BENCHMARK(BigInt_shr)->Apply(widths);
BENCHMARK(BigInt_hex)->Apply(widths);
BENCHMARK(BigInt_dec)->Arg(8)->Arg(64)->Arg(1024)->MinTime(0.1);
BENCHMARK(BigInt_dec)->Arg(65536)->Iterations(3);
BENCHMARK(BigInt_dec)->Arg(1 << 20)->Iterations(1);
BENCHMARK(Doubling_dec)->Arg(65536)->Iterations(1);
