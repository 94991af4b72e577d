// The flex tokenizer the scanner benchmark measures the toolkit's scanner against.
#pragma once

#include <cstddef>
#include <cstdio>

struct FlexTokenCount {
    std::size_t tokens = 0;
    std::size_t textBytes = 0;
};

// Tokenizes in to its end; the tokens and the bytes of their text.
FlexTokenCount flexTokenize(std::FILE* in);
