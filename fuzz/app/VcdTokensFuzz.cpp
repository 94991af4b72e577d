// Splits arbitrary bytes into dump tokens from memory and from a stream read in small chunks
// (the chunk size and where a held token must survive come from the first two bytes). Both
// must give the tokens a plain split at every byte up to ' ' gives.
#include "io/VcdTokens.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> plainSplit(const std::string& text) {
    std::vector<std::string> tokens;
    std::string current;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) <= ' ') {
            if (!current.empty())
                tokens.push_back(current);
            current.clear();
        } else {
            current.push_back(c);
        }
    }
    if (!current.empty())
        tokens.push_back(current);
    return tokens;
}

// The tokens, every pairs-th one read with nextAfter while the one before is held.
std::vector<std::string> tokensOf(VcdTokens& tokens, unsigned pairs) {
    std::vector<std::string> all;
    std::string_view held, token;
    for (unsigned i = 0; tokens.next(held); ++i) {
        if (pairs > 0 && i % pairs == 0) {
            const std::string before(held);
            if (!tokens.nextAfter(held, token)) {
                all.emplace_back(held);
                break;
            }
            if (held != before)
                __builtin_trap();
            all.emplace_back(held);
            all.emplace_back(token);
        } else {
            all.emplace_back(held);
        }
    }
    return all;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2)
        return 0;
    const std::size_t chunk = 1 + data[0] % 160;
    const unsigned pairs = data[1] % 4;
    const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
    const std::vector<std::string> expected = plainSplit(text);
    VcdTokens whole(nullptr, text, nullptr, chunk);
    if (tokensOf(whole, pairs) != expected)
        __builtin_trap();
    std::istringstream in(text);
    VcdTokens chunks(&in, std::string_view(), nullptr, chunk);
    if (tokensOf(chunks, pairs) != expected || chunks.bytesRead() != text.size())
        __builtin_trap();
    return 0;
}
