// BigInt built from fuzzed digit strings, then put through a fuzzed sequence of operators and
// conversions. Every value must keep its representation: a string of exactly width + 1
// characters whose sign character is '0' or '1' (or a reduction's bit).
#include "core/TqObject.h"
#include "hdl/BigInt.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

constexpr unsigned maxWidth = 4096;

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

void checkRepresentation(const BigInt& value) {
    if (value.bsl() == nullptr) {
        check(value.size() == 0);
        return;
    }
    check(std::strlen(value.bsl()) == value.size() + 1);
}

// The conversion steps on their own, on any text: each result covers exactly the width it
// reports.
void convertSteps(FuzzedDataProvider& input) {
    std::string text = input.ConsumeRandomLengthString(maxWidth / 4);
    (void)BigInt::removeUnderscores(text.data());
    (void)BigInt::removeNegativeSign(text.data());
    for (auto step : {BigInt::binToBSL, BigInt::octToBSL, BigInt::hexToBSL, BigInt::decToBSL}) {
        unsigned width = input.ConsumeIntegralInRange<unsigned>(0, maxWidth);
        char* bsl = step(text.c_str(), width);
        check(std::strlen(bsl) == std::size_t(width) + 1);
        delete[] bsl;
    }
    (void)BigInt::asDigit(text.empty() ? '\0' : text[0]);
}

// Operators whose operands may swap give the same string either way.
void checkCommutes(const BigInt& a, const BigInt& b) {
    auto same = [](const BigInt& x, const BigInt& y) {
        return x.size() == y.size() && std::strcmp(x.bsl(), y.bsl()) == 0;
    };
    check(same(a + b, b + a) && same(a & b, b & a) && same(a.nor(b), b.nor(a)));
    check(a.case_eq(b) == b.case_eq(a));
}

void convert(const BigInt& value, FuzzedDataProvider& input) {
    const unsigned width = input.ConsumeIntegralInRange<unsigned>(0, maxWidth);
    const unsigned group = input.ConsumeIntegralInRange<unsigned>(0, 9);
    const bool upper = input.ConsumeBool();
    for (int radix = 0; radix <= 6; ++radix) {
        char* text = value.asNumericString(static_cast<Radix>(radix), width, group, upper);
        check((text == nullptr) == (value.size() == 0 || radix == 0 || radix == 6));
        delete[] text;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int started = TqObject::startUp();
    (void)started;
    FuzzedDataProvider input(data, size);
    BigInt values[3];
    for (BigInt& value : values) {
        const auto radix = static_cast<Radix>(input.ConsumeIntegralInRange<int>(0, 6));
        const unsigned width = input.ConsumeIntegralInRange<unsigned>(0, maxWidth);
        const std::string text = input.ConsumeRandomLengthString(maxWidth / 4);
        value = BigInt(text.c_str(), radix, width);
        checkRepresentation(value);
    }
    while (input.remaining_bytes() > 0) {
        BigInt& target = values[input.ConsumeIntegralInRange<int>(0, 2)];
        const BigInt& a = values[input.ConsumeIntegralInRange<int>(0, 2)];
        const BigInt& b = values[input.ConsumeIntegralInRange<int>(0, 2)];
        const unsigned count = input.ConsumeIntegralInRange<unsigned>(0, maxWidth);
        const int position = input.ConsumeIntegralInRange<int>(-8, static_cast<int>(maxWidth));
        const long number = input.ConsumeIntegral<long>();
        BIGINTBOOLEAN answer = BIGINT_FALSE;
        switch (input.ConsumeIntegralInRange<int>(0, 32)) {
        case 0:
            target = a & b;
            break;
        case 1:
            target = a | b;
            break;
        case 2:
            target = a ^ b;
            break;
        case 3:
            target = a.nor(b);
            break;
        case 4:
            target = a.nand(number);
            break;
        case 5:
            target = ~a;
            break;
        case 6:
            target = a + b;
            break;
        case 7:
            target = a - b;
            break;
        case 8:
            target = -a;
            break;
        case 9:
            target += number;
            break;
        case 10:
            target -= b;
            break;
        case 11:
            target = a << count;
            break;
        case 12:
            target = a >> count;
            break;
        case 13:
            target = a.reductionAnd();
            break;
        case 14:
            target = a.reductionOr();
            break;
        case 15:
            target = a.reductionXnor();
            break;
        case 16:
            target = a[position];
            break;
        case 17:
            target = a.bits(position, position - static_cast<int>(count % 300));
            break;
        case 18:
            target.clip(count);
            break;
        case 19:
            if (a.size() + b.size() <= maxWidth)
                target = a.combine(b);
            break;
        case 20:
            answer = a == b;
            break;
        case 21:
            answer = a > b;
            break;
        case 22:
            answer = a <= number;
            break;
        case 23:
            answer = a.case_eq(b);
            break;
        case 24:
            answer = a.case_neq(number);
            break;
        case 25:
            convert(a, input);
            break;
        case 26:
            target = number;
            break;
        case 27:
            target ^= a;
            break;
        case 28:
            (void)a.isZero();
            (void)a.isPositive();
            (void)a.isNegative();
            delete[] a.asString();
            break;
        case 29:
            convertSteps(input);
            break;
        case 30:
            checkCommutes(a, b);
            break;
        case 31:
            answer = a >= b;
            break;
        default:
            target = a.reductionNand().combine(b.reductionXor());
            break;
        }
        check(answer == BIGINT_FALSE || answer == BIGINT_TRUE || answer == BIGINT_UNKNOWN);
        checkRepresentation(target);
        if (target.size() > maxWidth)
            target.clip(maxWidth);
    }
    return 0;
}
