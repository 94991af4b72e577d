// BigInt against Icarus Verilog where the two agree: the five bitwise tables on equal widths,
// the three reductions, case equality (both zero-extend) and the addition of operands with
// only 0 and 1 bits. Random operands of widths 1 to 300 go into one Verilog file, which is
// compiled and run once; every printed result is compared with BigInt's.
#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace bigint_test;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string literal(const std::string& bits) {
    return cat(std::to_string(bits.size()), "'b", lowered(bits));
}

// Verilog expressions with BigInt's answer as Verilog prints it with %b.
std::vector<std::pair<std::string, std::string>> makeCases() {
    std::mt19937_64 random(2024);
    auto width = [&] { return static_cast<unsigned>(random() % 300 + 1); };
    std::vector<std::pair<std::string, std::string>> cases;
    auto add = [&](const std::string& expression, const BigInt& value) {
        cases.emplace_back(expression, lowered(value.bsl() + 1));
    };
    const char* const operators[] = {"&", "|", "^", "~|", "~&"};
    for (int i = 0; i < 600; ++i) {
        const unsigned w = width();
        const std::string a = randomBits(random, w), b = randomBits(random, w);
        const BigInt x = bin(a.c_str()), y = bin(b.c_str());
        const BigInt* results[] = {&(x & y), &(x | y), &(x ^ y), &x.nor(y), &x.nand(y)};
        for (int op = 0; op < 5; ++op)
            add(cat("(", literal(a), " ", operators[op], " ", literal(b), ")"), *results[op]);
    }
    for (int i = 0; i < 600; ++i) {
        // Short runs of mostly definite bits, so that the reductions are not all x, and runs of
        // 0 and 1 bits as wide as the other operands.
        const std::string a = i % 3 ? randomBits(random, width() % 40 + 1, "0000000011111111XZ")
                                    : randomBits(random, width(), "01");
        const BigInt x = bin(a.c_str());
        add(cat("(&", literal(a), ")"), x.reductionAnd());
        add(cat("(|", literal(a), ")"), x.reductionOr());
        add(cat("(^", literal(a), ")"), x.reductionXor());
    }
    for (int i = 0; i < 600; ++i) {
        const unsigned wa = width(), wb = i % 2 ? wa : width();
        std::string a = randomBits(random, wa), b = randomBits(random, wb);
        if (i % 4 == 0 && wb <= wa) // equal low bits, so that true answers occur
            b = a.substr(wa - wb);
        const bool same = bin(a.c_str()).case_eq(bin(b.c_str())) == BIGINT_TRUE;
        cases.emplace_back(cat("(", literal(a), " === ", literal(b), ")"), same ? "1" : "0");
    }
    for (int i = 0; i < 600; ++i) {
        const std::string a = randomBits(random, width(), "01"),
                          b = randomBits(random, width(), "01");
        const BigInt& sum = bin(a.c_str()) + bin(b.c_str());
        // Verilog sums in one bit more than the wider operand; BigInt widens only on overflow.
        const std::size_t w = std::max(a.size(), b.size()) + 1;
        cases.emplace_back(cat("({1'b0, ", literal(a), "} + {1'b0, ", literal(b), "})"),
                           std::string(w - sum.size(), '0') + (sum.bsl() + 1));
    }
    return cases;
}

TEST(BigIntOracle, AgreesWithIcarusVerilogWhereTheSemanticsMeet) {
    if (std::system("command -v iverilog >/dev/null 2>&1 && command -v vvp >/dev/null 2>&1"))
        GTEST_SKIP() << "iverilog and vvp are not installed";
    const auto cases = makeCases();
    const std::filesystem::path directory =
        std::filesystem::temp_directory_path() / cat("tq_bigint_oracle_", std::to_string(getpid()));
    std::filesystem::create_directories(directory);
    const std::shared_ptr<void> removeDirectory(
        nullptr, [&](void*) { std::filesystem::remove_all(directory); });
    {
        std::ofstream verilog(directory / "oracle.v");
        verilog << "module oracle;\ninitial begin\n";
        for (const auto& [expression, expected] : cases)
            verilog << "  $display(\"%b\", " << expression << ");\n";
        verilog << "  $finish;\nend\nendmodule\n";
    }
    const std::string run = cat("cd '", directory.string(), "' && iverilog -o oracle.vvp oracle.v",
                                " && vvp -n oracle.vvp > oracle.txt");
    ASSERT_EQ(std::system(run.c_str()), 0) << run;
    std::ifstream results(directory / "oracle.txt");
    std::string line;
    std::size_t index = 0, mismatches = 0;
    while (std::getline(results, line) && index < cases.size()) {
        if (line.empty() || line.find_first_not_of("01xz") != std::string::npos)
            continue; // the simulator's own notes
        const auto& [expression, expected] = cases[index++];
        if (line != expected && ++mismatches <= 10)
            ADD_FAILURE() << expression << "\n  iverilog: " << line << "\n  BigInt:   " << expected;
    }
    EXPECT_EQ(index, cases.size()) << "the simulator printed fewer results than asked";
    EXPECT_EQ(mismatches, 0u);
}

} // namespace
