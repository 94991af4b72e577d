// The growable array behind a signal's changes: the same values as a std::vector after any
// mix of appends, inserts and erasures on either side of the size where it moves to pages of
// its own, through copies and moves, and big arrays start on different cache lines.
#include "model/RemapArray.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <vector>

namespace {

// Elements of a paged block.
constexpr std::size_t v_pagedCount = RemapStorage::v_pagedBytes / sizeof(std::uint64_t);

template <typename T>
void expectSame(const RemapArray<T>& array, const std::vector<T>& oracle, const char* step) {
    ASSERT_EQ(array.size(), oracle.size()) << step;
    ASSERT_GE(array.capacity(), array.size()) << step;
    for (std::size_t i = 0; i < oracle.size(); ++i)
        ASSERT_EQ(array[i], oracle[i]) << step << " at " << i;
}

TEST(RemapArray, OperationsAcrossThePagedSizeKeepTheValuesOfAVector) {
    // Each case appends `grow` values, then inserts `insertCount` zeros at `insertAt` (a
    // fraction of the size in percent), erases [from, to) percent and appends again.
    // clang-format off
    const struct {
        std::size_t grow, insertCount;
        unsigned insertAt, eraseFrom, eraseTo;
    } cases[] = {
        {0, 3, 0, 0, 0},
        {10, 1, 50, 10, 20},
        {v_pagedCount - 1, 1, 100, 0, 0},       // reaches the paged size by inserting
        {v_pagedCount - 1, 2, 0, 0, 100},       // crosses it, then erases everything
        {v_pagedCount + 1, 5, 30, 50, 99},      // paged from the start
        {3 * v_pagedCount, v_pagedCount, 1, 0, 60}, // grows paged blocks by remapping
    };
    // clang-format on
    for (const auto& c : cases) {
        RemapArray<std::uint64_t> array;
        std::vector<std::uint64_t> oracle;
        for (std::size_t i = 0; i < c.grow; ++i) {
            array.push_back(i * 0x9E3779B97F4A7C15ull);
            oracle.push_back(i * 0x9E3779B97F4A7C15ull);
        }
        expectSame(array, oracle, "appended");
        const std::size_t at = oracle.size() * c.insertAt / 100;
        array.insert(at, c.insertCount, 7);
        oracle.insert(oracle.begin() + static_cast<std::ptrdiff_t>(at), c.insertCount, 7);
        expectSame(array, oracle, "inserted");
        const std::size_t from = oracle.size() * c.eraseFrom / 100;
        const std::size_t to = oracle.size() * c.eraseTo / 100;
        array.erase(from, to);
        oracle.erase(oracle.begin() + static_cast<std::ptrdiff_t>(from),
                     oracle.begin() + static_cast<std::ptrdiff_t>(to));
        expectSame(array, oracle, "erased");
        // Appended values come zeroed and the first of them is returned.
        std::uint64_t* added = array.resize(array.size() + 3);
        oracle.resize(oracle.size() + 3);
        EXPECT_EQ(added, array.data() + oracle.size() - 3);
        expectSame(array, oracle, "resized");

        RemapArray<std::uint64_t> copy(array);
        expectSame(copy, oracle, "copied");
        EXPECT_TRUE(copy == array);
        RemapArray<std::uint64_t> moved(std::move(copy));
        expectSame(moved, oracle, "moved");
        copy = moved;
        moved.clear();
        EXPECT_TRUE(moved.empty());
        EXPECT_EQ(moved.capacity(), 0u);
        expectSame(copy, oracle, "assigned");
        moved.reserve(oracle.size() + 100);
        EXPECT_GE(moved.capacity(), oracle.size() + 100);
        EXPECT_TRUE(moved.empty());
        moved = std::move(copy);
        expectSame(moved, oracle, "move-assigned");
        if (!oracle.empty()) {
            EXPECT_EQ(moved.back(), oracle.back());
            moved.back() ^= 1;
            EXPECT_FALSE(moved == array);
        }
    }
}

TEST(RemapArray, BigArraysOfOneSizeEndOnDifferentCacheLines) {
    // Equally long arrays appended to in turn, as a reader fills its signals' changes.
    std::vector<RemapArray<std::uint64_t>> arrays(64);
    for (std::size_t i = 0; i < v_pagedCount + 10; ++i) {
        for (auto& array : arrays)
            array.push_back(i);
    }
    std::set<std::uintptr_t> lines;
    for (const auto& array : arrays) {
        ASSERT_EQ(array.back(), v_pagedCount + 9);
        lines.insert(reinterpret_cast<std::uintptr_t>(&array.back()) % 4096 / 64);
    }
    EXPECT_GE(lines.size(), 32u);
}

TEST(RemapArray, SmallValuesEmptyEditsAndSelfAssignment) {
    // Nothing to move in an array without storage.
    RemapArray<std::uint64_t> none;
    none.erase(0, 0);
    none.insert(0, 0, 1);
    EXPECT_TRUE(none.empty());
    EXPECT_EQ(none.data(), nullptr);
    EXPECT_TRUE(none == RemapArray<std::uint64_t>());

    RemapArray<std::uint8_t> bytes;
    for (int i = 0; i < 1000; ++i)
        bytes.push_back(static_cast<std::uint8_t>(i));
    bytes.resize(10);
    EXPECT_EQ(bytes.size(), 10u);
    EXPECT_EQ(bytes[9], 9);
    const RemapArray<std::uint8_t>& same = bytes;
    bytes = same;
    EXPECT_EQ(bytes.size(), 10u);
    EXPECT_EQ(bytes.back(), 9);
}

} // namespace
