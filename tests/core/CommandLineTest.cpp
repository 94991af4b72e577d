#include "core/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> split(const char* line, int& argc) {
    std::string copy(line);
    char** argv = initArgs(copy.data(), argc);
    EXPECT_EQ(argv[0], nullptr) << "slot 0 is left for the program name";
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) {
        words.emplace_back(argv[i]);
        delete[] argv[i];
    }
    delete[] argv;
    return words;
}

TEST(InitArgs, SplitsWordsQuotesAndEscapes) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {R"(a 'b c' "d\"e" f\g)", {"a", "b c", "d\"e", "f\\g"}},
        {"", {}},
        {" \t\r\n ", {}},
        {"one", {"one"}},
        {"x\ty\nz\r", {"x", "y", "z"}},
        {R"('it"s' "it's")", {"it\"s", "it's"}},
        {R"(pre'mid dle'post)", {"premid dlepost"}},
        {R"(\'a \"b)", {"'a", "\"b"}},
        {R"('\'' x)", {"'", "x"}},
        {R"("unclosed stretch)", {"unclosed stretch"}},
        {R"(a\\b)", {"a\\\\b"}},
    };
    for (const auto& [line, words] : cases) {
        int argc = 0;
        EXPECT_EQ(split(line, argc), words) << line;
        EXPECT_EQ(argc, static_cast<int>(words.size()) + 1) << line;
    }
}

TEST(InitArgs, HoldsCommandLinesOfAnyLength) {
    std::string line;
    for (int i = 0; i < 5000; ++i)
        line += "word" + std::to_string(i) + " ";
    int argc = 0;
    EXPECT_EQ(split(line.c_str(), argc).back(), "word4999");
    EXPECT_EQ(argc, 5001);
}

} // namespace
