#include "wsi/WindowParams.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(WindowParams, DecodeReadsStateAndLimitsTheEdges) {
    // clang-format off
    const struct { const char* text; WindowParams expected; } rows[] = {
        {"z,-5,2000,10",        {0, 1000, 10, 1001, 4}},
        {"N,100,50,600,450",    {100, 50, 600, 450, 1}},
        {"a,1,2,3,4",           {1, 2, 3, 4, 5}},
        {"H,10,10,5,5",         {10, 10, 11, 11, 3}},
        {"i,0,0,0,0",           {0, 0, 0, 0, 2}},
        {"Q,7",                 {7, 0, 8, 0, 0}},
        {"N,,300,,",            {0, 300, 0, 301, 1}},
        {"N,12abc,x,99999999999999999999,-99999999999999999999", {12, 0, 1000, 0, 1}},
        {"N",                   {0, 0, 0, 0, 1}},
        {"",                    {0, 0, 0, 0, 0}},
        {"Z,1000,1000,1000,1000", {1000, 1000, 1000, 1000, 4}},
        {"Z,1000,1000,999,0",   {1000, 1000, 1001, 1001, 4}},
        {"N,1,2,3,4,5,6",       {1, 2, 3, 4, 1}},
    };
    // clang-format on
    for (const auto& row : rows) {
        WindowParams params(9, 9, 9, 9, 9);
        params.decode(row.text);
        EXPECT_EQ(params, row.expected) << row.text;
    }
    WindowParams params(9, 9, 9, 9, 9);
    params.decode(nullptr);
    EXPECT_EQ(params, WindowParams());
}

TEST(WindowParams, EncodeWritesWhatDecodeReadsBack) {
    for (int state = 0; state <= 6; ++state) {
        const WindowParams params(12, 34, 560, 789, state);
        char text[32];
        const int length = params.encode(text, sizeof text);
        EXPECT_EQ(length, static_cast<int>(std::string(text).size()));
        WindowParams back;
        back.decode(text);
        EXPECT_EQ(back, WindowParams(12, 34, 560, 789, state == 6 ? 0 : state)) << text;
    }
    char text[32];
    EXPECT_EQ(WindowParams(1, 2, 3, 4, WindowParams::Zoomed).encode(text, sizeof text), 9);
    EXPECT_STREQ(text, "Z,1,2,3,4");
}

TEST(WindowParams, EncodeCutsToTheBufferAndReportsTheWholeLength) {
    const WindowParams params(100, 200, 300, 400, WindowParams::Normal);
    char text[8] = "#######";
    EXPECT_EQ(params.encode(text, 6), 17);
    EXPECT_STREQ(text, "N,100");
    EXPECT_EQ(params.encode(text, 1), 17);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(params.encode(nullptr, 0), 17);
}

} // namespace
