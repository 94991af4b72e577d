#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/SheetRectangle.h"
#include "text/FileElement.h"

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace {

// A list element holding the given (type, text) tokens.
std::unique_ptr<MultipleFileElement>
elementOf(std::vector<std::pair<ScanType, const char*>> items) {
    auto element = std::make_unique<MultipleFileElement>();
    for (const auto& [type, text] : items)
        element->addToken(Token(type, text));
    return element;
}

TEST(PointRead, TwoNumbersSetThePointAnythingElseLeavesItUnchanged) {
    const struct {
        const char* what;
        std::vector<std::pair<ScanType, const char*>> items;
        bool ok;
        DevicePoint expected;
    } cases[] = {
        // clang-format off
        {"two numbers", {{ST_NUMBER, "12"}, {ST_NUMBER, "-34"}}, true, {12, -34}},
        {"extra items ignored", {{ST_NUMBER, "1"}, {ST_NUMBER, "2"}, {ST_WORD, "x"}}, true, {1, 2}},
        {"saturated to 32 bits", {{ST_NUMBER, "99999999999"}, {ST_NUMBER, "-99999999999"}}, true,
         {2147483647, -2147483647 - 1}},
        {"fraction cut at the point", {{ST_NUMBER, "7.9"}, {ST_NUMBER, "3"}}, true, {7, 3}},
        {"word first", {{ST_WORD, "a"}, {ST_NUMBER, "2"}}, false, {5, 5}},
        {"string second", {{ST_NUMBER, "1"}, {ST_STRING, "2"}}, false, {5, 5}},
        {"one item only", {{ST_NUMBER, "1"}}, false, {5, 5}},
        {"empty", {}, false, {5, 5}}};
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto element = elementOf(c.items);
        DevicePoint device(5, 5);
        SheetPoint sheet(5, 5);
        EXPECT_EQ(device.read(*element), c.ok);
        EXPECT_EQ(sheet.read(*element), c.ok);
        EXPECT_EQ(device, c.expected);
        EXPECT_EQ(sheet, SheetPoint(c.expected.x(), c.expected.y()));
    }
}

TEST(RectangleRead, FourNumbersAreReadAndOrdered) {
    auto element =
        elementOf({{ST_NUMBER, "10"}, {ST_NUMBER, "20"}, {ST_NUMBER, "0"}, {ST_NUMBER, "5"}});
    DeviceRectangle device(1, 1, 2, 2);
    SheetRectangle sheet;
    ASSERT_TRUE(device.read(*element));
    ASSERT_TRUE(sheet.read(*element));
    EXPECT_EQ(device, DeviceRectangle(0, 5, 10, 20));
    EXPECT_EQ(sheet, SheetRectangle(SheetPoint(0, 5), SheetPoint(10, 20)));
    auto shortElement = elementOf({{ST_NUMBER, "1"}, {ST_NUMBER, "2"}, {ST_NUMBER, "3"}});
    EXPECT_FALSE(device.read(*shortElement));
    EXPECT_EQ(device, DeviceRectangle(0, 5, 10, 20));
}

} // namespace
