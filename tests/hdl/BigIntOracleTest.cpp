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
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using bigint_test::bin;
using bigint_test::cat;
using bigint_test::randomBits;

struct OracleCase {
    std::string expression; // Verilog
    std::string expected;   // BigInt's answer as Verilog prints it with %b
};

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

std::string literal(const std::string& bits) {
    return cat(std::to_string(bits.size()), "'b", lowered(bits));
}

std::string printed(const BigInt& value) {
    return lowered(value.bsl() + 1);
}

std::vector<OracleCase> makeCases() {
    std::mt19937_64 random(2024);
    std::uniform_int_distribution<unsigned> widthOf(1, 300);
    std::vector<OracleCase> cases;
    const char* const operators[] = {"&", "|", "^", "~|", "~&"};
    for (int i = 0; i < 600; ++i) {
        const unsigned width = widthOf(random);
        const std::string a = randomBits(random, width), b = randomBits(random, width);
        const BigInt x = bin(a.c_str()), y = bin(b.c_str());
        const BigInt* results[] = {&(x & y), &(x | y), &(x ^ y), &x.nor(y), &x.nand(y)};
        for (int op = 0; op < 5; ++op)
            cases.push_back({cat("(", literal(a), " ", operators[op], " ", literal(b), ")"),
                             printed(*results[op])});
    }
    for (int i = 0; i < 600; ++i) {
        // Mostly definite bits, so that the reductions are not all x.
        const unsigned width = widthOf(random) % 40 + 1;
        const std::string a = randomBits(random, width, i % 3 ? "0000000011111111XZ" : "01");
        const BigInt x = bin(a.c_str());
        cases.push_back({cat("(&", literal(a), ")"), printed(x.reductionAnd())});
        cases.push_back({cat("(|", literal(a), ")"), printed(x.reductionOr())});
        cases.push_back({cat("(^", literal(a), ")"), printed(x.reductionXor())});
    }
    for (int i = 0; i < 600; ++i) {
        const unsigned wa = widthOf(random);
        const unsigned wb = i % 2 ? wa : widthOf(random);
        const std::string a = randomBits(random, wa, "01XZ");
        std::string b = randomBits(random, wb, "01XZ");
        if (i % 4 == 0 && wb <= wa) // equal low bits, so that true answers occur
            b = a.substr(wa - wb);
        const BIGINTBOOLEAN same = bin(a.c_str()).case_eq(bin(b.c_str()));
        cases.push_back(
            {cat("(", literal(a), " === ", literal(b), ")"), same == BIGINT_TRUE ? "1" : "0"});
    }
    for (int i = 0; i < 600; ++i) {
        const unsigned wa = widthOf(random), wb = widthOf(random);
        const std::string a = randomBits(random, wa, "01"), b = randomBits(random, wb, "01");
        const BigInt& sum = bin(a.c_str()) + bin(b.c_str());
        // Verilog sums in one bit more than the wider operand; BigInt widens only on overflow.
        const unsigned width = std::max(wa, wb) + 1;
        const std::string bits = std::string(width - sum.size(), '0') + (sum.bsl() + 1);
        cases.push_back({cat("({1'b0, ", literal(a), "} + {1'b0, ", literal(b), "})"), bits});
    }
    return cases;
}

bool toolsPresent() {
    return std::system("command -v iverilog >/dev/null 2>&1 && command -v vvp >/dev/null 2>&1") ==
           0;
}

TEST(BigIntOracle, AgreesWithIcarusVerilogWhereTheSemanticsMeet) {
    if (!toolsPresent())
        GTEST_SKIP() << "iverilog and vvp are not installed";
    const std::vector<OracleCase> cases = makeCases();

    const std::filesystem::path directory =
        std::filesystem::temp_directory_path() / cat("tq_bigint_oracle_", std::to_string(getpid()));
    std::filesystem::create_directories(directory);
    const std::string source = (directory / "oracle.v").string();
    const std::string program = (directory / "oracle.vvp").string();
    const std::string output = (directory / "oracle.txt").string();
    {
        std::ofstream verilog(source);
        verilog << "module oracle;\ninitial begin\n";
        for (const OracleCase& c : cases)
            verilog << "  $display(\"%b\", " << c.expression << ");\n";
        verilog << "  $finish;\nend\nendmodule\n";
    }
    const std::string compile = cat("iverilog -o '", program, "' '", source, "'");
    ASSERT_EQ(std::system(compile.c_str()), 0) << compile;
    const std::string run = cat("vvp -n '", program, "' > '", output, "'");
    ASSERT_EQ(std::system(run.c_str()), 0) << run;

    std::ifstream results(output);
    std::string line;
    std::size_t index = 0, mismatches = 0;
    while (std::getline(results, line) && index < cases.size()) {
        if (line.empty() || line.find_first_not_of("01xz") != std::string::npos)
            continue; // the simulator's own notes
        const OracleCase& c = cases[index++];
        if (line != c.expected && ++mismatches <= 10)
            ADD_FAILURE() << c.expression << "\n  iverilog: " << line
                          << "\n  BigInt:   " << c.expected;
    }
    EXPECT_EQ(index, cases.size()) << "the simulator printed fewer results than asked";
    EXPECT_EQ(mismatches, 0u);
    std::filesystem::remove_all(directory);
}

} // namespace
