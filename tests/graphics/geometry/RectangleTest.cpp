#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/SheetRectangle.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace {

TEST(DeviceRectangle, ConstructorsAndSettersEnforceOrder) {
    EXPECT_EQ(DeviceRectangle(DevicePoint(10, 20), DevicePoint(0, 5)),
              DeviceRectangle(0, 5, 10, 20));
    EXPECT_EQ(DeviceRectangle(10, 5, 0, 20).origin(), DevicePoint(0, 5));
    EXPECT_EQ(DeviceRectangle(DevicePoint(10, 10), DevicePoint(-4, 6), 0),
              DeviceRectangle(6, 10, 10, 16));
    DeviceRectangle r(0, 0, 10, 10);
    r.setOrigin(20, 5);
    EXPECT_EQ(r, DeviceRectangle(10, 5, 20, 10));
    r.setCorner(DevicePoint(0, 0));
    EXPECT_EQ(r, DeviceRectangle(0, 0, 10, 5));
    r.setOriginCorner(SheetPoint(3.9, 1), SheetPoint(1, 2), Transformation());
    EXPECT_EQ(r, DeviceRectangle(1, 1, 3, 2));
}

TEST(DeviceRectangle, EdgeEditsDoNotReorder) {
    DeviceRectangle r(0, 0, 10, 10);
    r.setTop(20);
    EXPECT_EQ(r.height(), -10);
    r = DeviceRectangle(0, 0, 10, 10);
    r.inset(6, 6);
    EXPECT_EQ(r.origin(), DevicePoint(6, 6));
    EXPECT_EQ(r.corner(), DevicePoint(4, 4));
    r = DeviceRectangle(0, 0, 10, 10);
    r.scaleBy(DevicePoint(-1, 1));
    EXPECT_EQ(r.left(), 0);
    EXPECT_EQ(r.right(), -10);
}

TEST(DeviceRectangle, ExtentsAndMovesRoundAndWrapWithoutOverflow) {
    DeviceRectangle r(2, 3, 12, 8);
    EXPECT_EQ(r.extent(), DevicePoint(10, 5));
    EXPECT_EQ(r.toQRect(), QRect(2, 3, 10, 5));
    r.moveTo(DevicePoint(-1, -1));
    EXPECT_EQ(r, DeviceRectangle(-1, -1, 9, 4));
    r.translateBy(FloatPoint(0.5, 1.0));
    EXPECT_EQ(r, DeviceRectangle(-1, 0, 10, 5)); // -0.5 rounds away from zero
    const DeviceRectangle everything(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    EXPECT_EQ(everything.extent(), DevicePoint(-1, -1));
    EXPECT_EQ(everything.toQRect(),
              QRect(QPoint(INT32_MIN, INT32_MIN), QPoint(INT32_MAX - 1, INT32_MAX - 1)));
    DeviceRectangle inverted;
    inverted.setRight(-10);
    inverted.alignCenter(DeviceRectangle(INT32_MIN, 0, -1, 10), true, false);
    EXPECT_EQ(inverted.left(), INT32_MIN + (INT32_MAX / 2 + 5)) << "half of INT32_MAX + 10";
    EXPECT_EQ(SheetRectangle(SheetPoint(-1e12, 0.5), SheetPoint(1e12, NAN)).toQRect(),
              QRect(QPoint(INT32_MIN, 1), QPoint(INT32_MAX - 1, -1)));
}

TEST(DeviceRectangle, ContainsPointIncludesEveryEdgeAndCorner) {
    const DeviceRectangle r(0, 0, 10, 10);
    for (const DevicePoint& p : {DevicePoint(0, 0), DevicePoint(10, 10), DevicePoint(0, 10),
                                 DevicePoint(10, 0), DevicePoint(5, 0), DevicePoint(10, 5)})
        EXPECT_TRUE(r.containsPoint(p)) << p.asString();
    for (const DevicePoint& p :
         {DevicePoint(-1, 5), DevicePoint(11, 5), DevicePoint(5, -1), DevicePoint(5, 11)})
        EXPECT_FALSE(r.containsPoint(p)) << p.asString();
}

TEST(DeviceRectangle, IntersectNullForTouchingOrEmptyOverlaps) {
    const DeviceRectangle r(0, 0, 10, 10);
    EXPECT_EQ(r.intersect(DeviceRectangle(10, 0, 20, 10)), nullptr);
    EXPECT_EQ(r.intersect(DeviceRectangle(0, 10, 10, 20)), nullptr);
    EXPECT_EQ(r.intersect(DeviceRectangle(20, 20, 30, 30)), nullptr);
    EXPECT_EQ(DeviceRectangle(0, 0, 0, 10).intersect(DeviceRectangle(0, 0, 0, 10)), nullptr);
    const DeviceRectangle* self = r.intersect(r);
    ASSERT_NE(self, nullptr);
    EXPECT_EQ(*self, r);
    const DeviceRectangle* overlap = r.intersect(DeviceRectangle(5, -5, 15, 5));
    ASSERT_NE(overlap, nullptr);
    EXPECT_EQ(*overlap, DeviceRectangle(5, 0, 10, 5));
    DeviceRectangle u = r;
    u.rectUnion(DeviceRectangle(-5, 3, 4, 30));
    EXPECT_EQ(u, DeviceRectangle(-5, 0, 10, 30));
}

TEST(DeviceRectangle, AlignCenterAlignsUnchosenAxisWithTheOriginEdge) {
    DeviceRectangle r(100, 100, 110, 110);
    const DeviceRectangle target(0, 0, 15, 15);
    const DevicePoint moved = r.alignCenter(target, true, false);
    EXPECT_EQ(r.origin(), DevicePoint(2, 0)); // (15 - 10) / 2 truncates to 2
    EXPECT_EQ(r.extent(), DevicePoint(10, 10));
    EXPECT_EQ(moved, DevicePoint(-98, -100));
    r.alignCenter(DeviceRectangle(0, 0, 5, 5), false, true);
    EXPECT_EQ(r.origin(), DevicePoint(0, -2)); // (5 - 10) / 2 truncates toward zero
    SheetRectangle s(SheetPoint(7, 7), SheetPoint(17, 17));
    s.alignCenter(SheetRectangle(SheetPoint(0, 0), SheetPoint(15, 15)), true, true);
    EXPECT_EQ(s.origin(), SheetPoint(2.5, 2.5));
}

// Clipping one end against (0, 0)-(100, 100), entering through each edge and corner region.
TEST(DeviceRectangle, ClipLineSegmentEachEdgeAndCornerRegion) {
    const DeviceRectangle r(0, 0, 100, 100);
    const struct {
        const char* region;
        DevicePoint p, q;
        bool reached;
        DevicePoint clipped;
    } cases[] = {{"inside", {50, 50}, {200, 200}, true, {50, 50}},
                 {"left", {-50, 50}, {50, 50}, true, {0, 50}},
                 {"left sloped", {-50, 0}, {50, 100}, true, {0, 50}},
                 {"left, both beyond", {-50, 50}, {-10, 60}, false, {-50, 50}},
                 {"left horizontal outside", {-50, 150}, {50, 150}, false, {-50, 150}},
                 {"right", {150, 20}, {50, 20}, true, {100, 20}},
                 {"right sloped", {200, 0}, {0, 100}, true, {100, 50}},
                 {"top", {50, -50}, {50, 50}, true, {50, 0}},
                 {"top sloped", {0, -100}, {100, 100}, true, {50, 0}},
                 {"top, both beyond", {50, -50}, {60, -10}, false, {50, -50}},
                 {"bottom", {30, 150}, {30, 50}, true, {30, 100}},
                 {"upper-left corner via top", {-10, -50}, {40, 50}, true, {15, 0}},
                 {"upper-left corner via left", {-50, -10}, {50, 40}, true, {0, 15}},
                 {"lower-right corner via bottom", {110, 150}, {60, 50}, true, {85, 100}},
                 {"corner region missing", {-50, -10}, {-10, -50}, false, {-50, -10}},
                 {"left edge, misses past the bottom", {-10, 90}, {50, 250}, false, {-10, 90}},
                 {"left, through bottom", {-20, 140}, {40, 80}, true, {20, 100}},
                 {"above, misses past the right", {90, -10}, {300, 50}, false, {90, -10}},
                 {"top, through right", {150, -50}, {50, 50}, true, {100, 0}},
                 {"above, vertical", {50, -50}, {50, -10}, false, {50, -50}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.region);
        DevicePoint p = c.p;
        EXPECT_EQ(r.clipLineSegment(p, c.q), c.reached);
        EXPECT_EQ(p, c.clipped) << p.asString();
        // The sheet version follows the same steps in doubles.
        const SheetRectangle s(SheetPoint(0, 0), SheetPoint(100, 100));
        SheetPoint sp(c.p.x(), c.p.y());
        EXPECT_EQ(s.clipLineSegment(sp, SheetPoint(c.q.x(), c.q.y())), c.reached);
        EXPECT_EQ(sp, SheetPoint(c.clipped.x(), c.clipped.y()));
    }
    const SheetRectangle s(SheetPoint(0, 0), SheetPoint(10, 10));
    SheetPoint fraction(-1, 0);
    ASSERT_TRUE(s.clipLineSegment(fraction, SheetPoint(2, 1)));
    EXPECT_EQ(fraction, SheetPoint(0, 1.0 / 3.0)) << "the sheet version keeps fractions";
}

TEST(Rectangles, CrossSpaceConversions) {
    const Transformation t(FloatPoint(10.0, 10.0), FloatPoint(5.0, 5.0));
    const TqMatrix m(FloatPoint(10.0, 10.0), FloatPoint(5.0, 5.0));
    const SheetRectangle sheet(SheetPoint(1.99, 3), SheetPoint(0, 0));
    EXPECT_EQ(DeviceRectangle(sheet, t), DeviceRectangle(5, 5, 24, 35));
    EXPECT_EQ(DeviceRectangle(sheet, m), DeviceRectangle(5, 5, 24, 35));
    EXPECT_EQ(SheetRectangle(DeviceRectangle(5, 5, 25, 35), t),
              SheetRectangle(SheetPoint(0, 0), SheetPoint(2, 3)));
    EXPECT_EQ(SheetRectangle(SheetPoint(0.4, 0.6), SheetPoint(2.5, -1.5)).toQRect(),
              QRect(0, -2, 3, 3));
}

} // namespace
