// The dump tokenizer: a stream read in chunks of any size gives the same tokens, a held token
// survives the refill that the next one needs, lines are found again after chunks were
// dropped, and a task cancels between chunks.
#include "io/VcdTokens.h"
#include "CancelAfter.h"

#include "core/iTaskDescription.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> tokensOf(VcdTokens& tokens) {
    std::vector<std::string> all;
    std::string_view token;
    while (tokens.next(token))
        all.emplace_back(token);
    return all;
}

// The tokens of text split the plain way, as the reader must see them.
std::vector<std::string> expectedTokens(const std::string& text) {
    std::vector<std::string> all;
    std::string current;
    for (const char c : text) {
        if (static_cast<unsigned char>(c) <= ' ') {
            if (!current.empty())
                all.push_back(current);
            current.clear();
        } else {
            current.push_back(c);
        }
    }
    if (!current.empty())
        all.push_back(current);
    return all;
}

std::string inputNamed(const std::string& name) {
    const std::string digits64(64, '1'), digits200(200, '0');
    if (name == "empty")
        return "";
    if (name == "blank")
        return std::string(150, ' ') + "\n\t\r";
    if (name == "one")
        return "x";
    if (name == "records") {
        std::string text;
        for (int t = 0; t < 40; ++t)
            text.append("#")
                .append(std::to_string(t * 5))
                .append("\nb")
                .append(digits64, 0, 1 + t % 64)
                .append(" !")
                .append(std::string(t % 3, '~'))
                .append("\n1\"\n");
        return text;
    }
    if (name == "long") // tokens of exactly 63, 64, 65 and 200 bytes, and runs of spaces
        return std::string(63, 'a')
            .append(" ")
            .append(digits64)
            .append("\n")
            .append(65, 'b')
            .append(130, ' ')
            .append(digits200)
            .append(64, '\n')
            .append("end");
    // Control characters and bytes above 127: only bytes up to ' ' separate.
    static const char v_controls[] = "a\x01"
                                     "b\x7f"
                                     "c\x80\xff"
                                     "d\x1f"
                                     "e\x20"
                                     "f\x00g";
    return std::string(v_controls, sizeof v_controls - 1);
}

TEST(VcdTokens, EveryChunkSizeGivesTheTokensOfTheWholeText) {
    for (const char* name : {"empty", "blank", "one", "records", "long", "controls"}) {
        const std::string text = inputNamed(name);
        const std::vector<std::string> expected = expectedTokens(text);
        VcdTokens whole(nullptr, text, nullptr, 1);
        EXPECT_EQ(tokensOf(whole), expected) << name;
        for (const std::size_t chunk : {1u, 2u, 3u, 7u, 63u, 64u, 65u, 128u, 1000u}) {
            std::istringstream in(text);
            VcdTokens tokens(&in, std::string_view(), nullptr, chunk);
            EXPECT_EQ(tokensOf(tokens), expected) << name << " in chunks of " << chunk;
            EXPECT_EQ(tokens.bytesRead(), text.size()) << name << " in chunks of " << chunk;
        }
    }
}

TEST(VcdTokens, AHeldTokenStaysValidWhileTheNextIsRead) {
    // Value and code pairs: the code often lies in the next chunk.
    const std::string text = inputNamed("records");
    const std::vector<std::string> expected = expectedTokens(text);
    for (const std::size_t chunk : {1u, 5u, 16u, 64u, 100u}) {
        std::istringstream in(text);
        VcdTokens tokens(&in, std::string_view(), nullptr, chunk);
        std::vector<std::string> pairs;
        std::string_view held, token;
        while (tokens.next(held)) {
            if (!tokens.nextAfter(held, token)) {
                pairs.emplace_back(held);
                break;
            }
            pairs.emplace_back(held);
            pairs.emplace_back(token);
        }
        EXPECT_EQ(pairs, expected) << "chunks of " << chunk;
    }
}

// Text that a stream reads only forwards, as from a pipe.
class ForwardOnly : public std::stringbuf {
public:
    explicit ForwardOnly(const std::string& text) : std::stringbuf(text, std::ios::in) {}

protected:
    pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override {
        return pos_type(off_type(-1));
    }
    pos_type seekpos(pos_type, std::ios::openmode) override { return pos_type(off_type(-1)); }
};

TEST(VcdTokens, LinesAreCountedAgainAfterTheirChunksWereDropped) {
    std::string text;
    for (int line = 1; line <= 300; ++line)
        text.append("t").append(std::to_string(line)).append(line % 4 ? " x\n" : "\n\n");
    for (const std::size_t chunk : {3u, 64u, 100000u}) {
        std::istringstream in(text);
        VcdTokens tokens(&in, std::string_view(), nullptr, chunk);
        VcdTokens whole(nullptr, text, nullptr, chunk);
        std::string_view token, same;
        // Counting reads the stream again; reading goes on where it was.
        for (int i = 0; tokens.next(token); ++i) {
            ASSERT_TRUE(whole.next(same));
            ASSERT_EQ(token, same) << "chunks of " << chunk;
            if (i % 37 == 0) {
                ASSERT_EQ(tokens.line(), whole.line()) << token << " in chunks of " << chunk;
            }
        }
        EXPECT_FALSE(whole.next(same));
    }
    // A stream that cannot go back gives no line rather than a wrong one.
    ForwardOnly buffer(text);
    std::istream in(&buffer);
    VcdTokens tokens(&in, std::string_view(), nullptr, 16);
    std::string_view token;
    for (int i = 0; i < 100; ++i)
        ASSERT_TRUE(tokens.next(token));
    EXPECT_EQ(tokens.line(), 0u);
    EXPECT_TRUE(tokens.next(token));
}

TEST(VcdTokens, ACancelledTaskEndsTheTokensAtTheNextChunk) {
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text.append("token").append(std::to_string(i)).append("\n");
    // clang-format off
    const struct { unsigned long cancelAt; std::size_t chunk; } cases[] = {
        {1, 100}, {250, 100}, {5000, 64}, {text.size() + 1, 64},
    };
    // clang-format on
    for (const auto& c : cases) {
        std::istringstream in(text);
        CancelAfter task(c.cancelAt);
        VcdTokens tokens(&in, std::string_view(), &task, c.chunk);
        const std::vector<std::string> seen = tokensOf(tokens);
        const bool cancelled = c.cancelAt <= text.size();
        EXPECT_EQ(tokens.cancelled(), cancelled) << c.cancelAt;
        // Nothing past the chunk that saw the cancel is read; every token before is whole.
        EXPECT_LE(tokens.bytesRead(), cancelled ? c.cancelAt + 2 * c.chunk : text.size());
        const std::vector<std::string> all = expectedTokens(text);
        ASSERT_LE(seen.size(), all.size());
        for (std::size_t i = 0; i + 1 < seen.size(); ++i)
            EXPECT_EQ(seen[i], all[i]) << c.cancelAt;
        if (!cancelled) {
            EXPECT_EQ(seen, all);
        }
        EXPECT_EQ(task.progress(), tokens.bytesRead());
    }
}

} // namespace
