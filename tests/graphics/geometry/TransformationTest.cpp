#include "graphics/geometry/Transformation.h"
#include "graphics/geometry/TqMatrix.h"

#include <QRect>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>

namespace {

// Both mappings must agree on every rule; each case runs against both.
TEST(Transformation, ApplyHalfRoundsAsymmetricallyAndClamps) {
    const struct {
        double scale, translation, v;
        bool round;
        long expected;
    } cases[] = {// clang-format off
        {1, 0, -1.7, true, -1},                     {1, 0, 2.5, true, 3},
        {1, 0, -1.7, false, -1},                    {1, 0, 1.99, false, 1},
        {1, 0, 1e12, false, 2147483647L},           {1, 0, -1e12, false, -2147483648L},
        {1, 0, 2147483647.0, true, 2147483647L},    {1, 0, -2147483648.4, true, -2147483647L},
        {1, 0, -2147483649.0, false, -2147483648L}, {2, 10, 3, false, 16},
        {0.5, -1, 3, true, 1},                      {1, 0, NAN, false, 0}};
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.scale << "*" << c.v << "+" << c.translation);
        const auto check = [&c](auto t) {
            t.setXHalf(c.scale, c.translation);
            t.setYHalf(c.scale, c.translation);
            EXPECT_EQ(t.applyXHalfTo(c.v, c.round), c.expected);
            EXPECT_EQ(t.applyYHalfTo(c.v, c.round), c.expected);
        };
        check(Transformation());
        check(TqMatrix());
    }
}

TEST(Transformation, InverseScrollScaleAndTranslate) {
    const auto check = [](auto t) {
        EXPECT_DOUBLE_EQ(t.applyInverseXHalfTo(14), 2.0);
        EXPECT_DOUBLE_EQ(t.applyInverseYHalfTo(28), 2.0);
        t.scrollBy(FloatPoint(1.0, -1.0)); // sheet units: translation += (2, -4)
        EXPECT_EQ(t.translation(), FloatPoint(12.0, 16.0));
        t.scaleBy(FloatPoint(0.5, 2.0));
        EXPECT_EQ(t.scale(), FloatPoint(1.0, 8.0));
        EXPECT_EQ(t.translation(), FloatPoint(12.0, 16.0));
        t.translateBy(FloatPoint(-12.0, -16.0));
        EXPECT_EQ(t.translation(), FloatPoint(0.0, 0.0));
    };
    check(Transformation(FloatPoint(2.0, 4.0), FloatPoint(10.0, 20.0)));
    check(TqMatrix(FloatPoint(2.0, 4.0), FloatPoint(10.0, 20.0)));
}

TEST(TqMatrix, SettersTouchOnlyTheirElement) {
    TqMatrix m;
    m.setXScale(3);
    m.setYTranslation(-5);
    EXPECT_EQ(m.scale(), FloatPoint(3.0, 1.0));
    EXPECT_EQ(m.translation(), FloatPoint(0.0, -5.0));
    m.setScale(FloatPoint(2.0, 2.0));
    m.setTranslation(1.0, 1.0);
    EXPECT_EQ(m, TqMatrix(FloatPoint(2.0, 2.0), FloatPoint(1.0, 1.0)));
    m = QTransform::fromTranslate(4, 5);
    EXPECT_EQ(m.translation(), FloatPoint(4.0, 5.0));
    EXPECT_EQ(m.scale(), FloatPoint(1.0, 1.0));
}

TEST(TqMatrix, PhysicalToLogicalMapsTheRectangleBackInPlace) {
    const TqMatrix m(FloatPoint(2.0, 4.0), FloatPoint(10.0, 20.0));
    QRect r(12, 24, 20, 40); // edges 12..32 and 24..64
    m.physicalToLogical(r);
    EXPECT_EQ(r, QRect(1, 1, 10, 10));
    // A degenerate mapping gives edges at the ends of the range, not undefined values.
    QRect all(0, 0, 10, 10);
    TqMatrix(FloatPoint(0.0, 1e-300), FloatPoint(5.0, 0.0)).physicalToLogical(all);
    EXPECT_EQ(all.left(), INT32_MIN);
    EXPECT_EQ(all.bottom(), INT32_MAX - 1);
}

} // namespace
