#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/SheetPoint.h"
#include "graphics/geometry/SheetRectangle.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include <gtest/gtest.h>

#include <climits>
#include <sstream>

namespace {

TEST(FloatPoint, AsLongRoundsHalvesAwayFromZero) {
    const struct {
        double in;
        long out;
    } cases[] = {{0.0, 0},   {0.49, 0},  {0.5, 1},
                 {2.5, 3},   {-0.49, 0}, {-0.5, -1},
                 {-1.7, -2}, {-2.5, -3}, {1e10, 10000000000L}};
    for (const auto& c : cases)
        EXPECT_EQ(FloatPoint::asLong(c.in), c.out) << c.in;
}

TEST(DevicePoint, ArithmeticOperatorsWriteTheirOwnStaticResult) {
    const DevicePoint a(7, -9), b(2, 4);
    const DevicePoint& sum = a + b;
    const DevicePoint& difference = a - b;
    EXPECT_EQ(sum, DevicePoint(9, -5));
    EXPECT_EQ(difference, DevicePoint(5, -13));
    EXPECT_EQ(a * b, DevicePoint(14, -36));
    // Integer division truncates toward zero in each axis.
    EXPECT_EQ(a / b, DevicePoint(3, -2));
    EXPECT_EQ(-a, DevicePoint(-7, 9));
    // Each operator keeps its own result: sum is still valid after the others ran,
    // but the next + overwrites it.
    EXPECT_EQ(sum, DevicePoint(9, -5));
    const DevicePoint& again = b + b;
    EXPECT_EQ(&again, &sum);
    EXPECT_EQ(sum, DevicePoint(4, 8));
    // Arithmetic wraps at 32 bits.
    DevicePoint p(INT_MAX, INT_MIN);
    p += DevicePoint(1, -1);
    EXPECT_EQ(p, DevicePoint(INT_MIN, INT_MAX));
    EXPECT_EQ(-DevicePoint(INT_MIN, 0), DevicePoint(INT_MIN, 0));
}

TEST(DevicePoint, CompoundAndFloatOperatorsRoundHalfAwayFromZero) {
    DevicePoint p(3, -3);
    p *= 1.5; // 4.5 and -4.5
    EXPECT_EQ(p, DevicePoint(5, -5));
    p /= 2.0; // 2.5 and -2.5
    EXPECT_EQ(p, DevicePoint(3, -3));
    p += FloatPoint(0.5, -0.5);
    EXPECT_EQ(p, DevicePoint(4, -4));
    p = FloatPoint(-1.7, 1.7);
    EXPECT_EQ(p, DevicePoint(-2, 2));
    EXPECT_EQ(DevicePoint(FloatPoint(-2.5, 2.5)), DevicePoint(-3, 3));
    const FloatPoint& half = DevicePoint(3, 5) / FloatPoint(2.0, 2.0);
    EXPECT_EQ(half, FloatPoint(1.5, 2.5));
    EXPECT_TRUE(DevicePoint(1, 2) == FloatPoint(1.0, 2.0));
}

TEST(DevicePoint, CrossSpaceConversionTruncates) {
    const Transformation t(FloatPoint(2.0, 3.0), FloatPoint(0.0, 0.0));
    const TqMatrix m(FloatPoint(2.0, 3.0), FloatPoint(0.0, 0.0));
    EXPECT_EQ(DevicePoint(1.9, -0.9, t), DevicePoint(3, -2));
    EXPECT_EQ(DevicePoint(SheetPoint(1.9, -0.9), m), DevicePoint(3, -2));
    DevicePoint p;
    p.set(SheetPoint(1e12, -1e12), t);
    EXPECT_EQ(p, DevicePoint(INT_MAX, INT_MIN));
    const SheetPoint back(DevicePoint(3, -3), t);
    EXPECT_EQ(back, SheetPoint(1.5, -1.0));
    EXPECT_EQ(SheetPoint(4L, 9L, m), SheetPoint(2.0, 3.0));
}

TEST(DevicePoint, InterceptsTruncateTheScaledOffset) {
    const DevicePoint a(0, 0), b(10, 5);
    EXPECT_EQ(DevicePoint::yIntercept(3, a, b), 1); // 1.5 truncated
    EXPECT_EQ(DevicePoint::yIntercept(-3, a, b), -1);
    EXPECT_EQ(DevicePoint::xIntercept(3, a, b), 6);
    EXPECT_DOUBLE_EQ(SheetPoint::yIntercept(3, SheetPoint(0, 0), SheetPoint(10, 5)), 1.5);
    EXPECT_DOUBLE_EQ(SheetPoint::xIntercept(1, SheetPoint(0, 0), SheetPoint(10, 5)), 2.0);
    // A steep line followed far beyond the device range saturates instead of overflowing.
    const DevicePoint low(INT_MIN, 0), high(INT_MIN + 1, INT_MAX);
    EXPECT_GT(DevicePoint::yIntercept(INT_MAX, low, high), INT_MAX);
}

TEST(SheetPoint, OperatorsAndSetters) {
    SheetPoint p(2.0, -1.0);
    p.scaleBy(FloatPoint(2.0, 3.0));
    EXPECT_EQ(p, SheetPoint(4.0, -3.0));
    EXPECT_EQ(p / SheetPoint(2.0, 2.0), SheetPoint(2.0, -1.5));
    EXPECT_EQ(-p, SheetPoint(-4.0, 3.0));
    EXPECT_EQ(p + FloatPoint(1.0, 1.0), FloatPoint(5.0, -2.0));
    p = FloatPoint(0.25, 0.75);
    EXPECT_EQ(p, FloatPoint(0.25, 0.75));
}

// Every geometry class prints and stores itself in its own fixed form.
TEST(Geometry, TextForms) {
    const auto expectForms = [](const TqObject& object, const char* printed, const char* stored) {
        std::ostringstream print, store;
        Criteria criteria;
        object.printOn(print);
        object.storeOn(store, criteria);
        EXPECT_EQ(print.str(), printed);
        EXPECT_EQ(store.str(), stored) << printed;
        EXPECT_STREQ(object.asString(), printed);
    };
    expectForms(DevicePoint(3, -4), "(3,-4)", "3,-4");
    expectForms(SheetPoint(1.5, 2), "(1.5,2)", "1.5,2");
    expectForms(FloatPoint(1.5, -2.0), "(1.5@-2)", "1.5@-2");
    expectForms(DeviceRectangle(10, 20, 0, 5), "((0,5),(10,20))", "0,5,10,20");
    expectForms(SheetRectangle(SheetPoint(0.5, 1), SheetPoint(2, 3)), "((0.5,1),(2,3))",
                "0.5,1,2,3");
    expectForms(Transformation(), "(scale:(1@1) xlate:(0@0))", "(scale:(1@1) xlate:(0@0))");
    const char* matrix = "(scale:(2@0.5) xlate:(-1@3))";
    expectForms(TqMatrix(FloatPoint(2.0, 0.5), FloatPoint(-1.0, 3.0)), matrix, matrix);
}

} // namespace
