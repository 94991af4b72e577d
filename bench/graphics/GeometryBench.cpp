// Geometry and point clipping. The arithmetic benchmark counts heap allocations with a
// replaced global operator new and must report none; the clipping benchmark measures
// OutputDevice::clipPoints beside a plain clamp loop over the same points in the same run
// and reports the ratio (clipPoints speed / clamp speed, at least 0.5 is the target).
#include "graphics/device/OutputDevice.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/SheetRectangle.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include "CountingAllocator.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <vector>

namespace {

constexpr int v_operations = 1'000'000;
constexpr int v_points = 1'000'000;
constexpr int v_callLimit = 65535;

// One round of 20 point and rectangle operations: arithmetic through the static results,
// conversions both ways through both mappings, clipping, intersection and alignment.
void geometryRound(int i, const Transformation& t, const TqMatrix& m, DeviceRectangle& r,
                   SheetRectangle& s) {
    const DevicePoint a(i & 1023, (i >> 3) & 1023), b(7, -3);
    DevicePoint c = a + b;
    c = c * b;
    c = -c;
    c /= DevicePoint(3, 5);
    c += FloatPoint(0.5, -0.5);
    const SheetPoint sheet(c, t);
    DevicePoint back(sheet, m);
    back.scaleBy(FloatPoint(1.5, 0.75));
    r.setOriginCorner(a, back);
    s.set(r, t);
    r.set(s, m);
    const DeviceRectangle* overlap = r.intersect(DeviceRectangle(0, 0, 512, 512));
    r.alignCenter(overlap ? *overlap : DeviceRectangle(0, 0, 4, 4), true, i & 1);
    DevicePoint p(-100, i & 511);
    benchmark::DoNotOptimize(DeviceRectangle(0, 0, 500, 500).clipLineSegment(p, a));
    s.translateBy(SheetPoint(0.25, 0.5));
    r.rectUnion(DeviceRectangle(a, b));
    benchmark::DoNotOptimize(t.applyXHalfTo(sheet.x(), true) + m.applyYHalfTo(sheet.y(), false));
    benchmark::DoNotOptimize(FloatPoint::asLong(sheet.x()) + DevicePoint::yIntercept(5, a, b + a));
    benchmark::DoNotOptimize(r);
    benchmark::DoNotOptimize(s);
}

void BM_PointRectangleOperations(benchmark::State& state) {
    const Transformation t(FloatPoint(2.5, 0.5), FloatPoint(10.0, -4.0));
    const TqMatrix m(FloatPoint(0.4, 2.0), FloatPoint(-4.0, 2.0));
    DeviceRectangle r;
    SheetRectangle s;
    long allocations = 0;
    for (auto _ : state) {
        const long before = allocationCount();
        for (int i = 0; i < v_operations / 20; ++i)
            geometryRound(i, t, m, r, s);
        allocations += allocationCount() - before;
    }
    state.counters["allocations"] = static_cast<double>(allocations);
    state.counters["operations"] =
        benchmark::Counter(static_cast<double>(v_operations) * state.iterations());
    state.SetItemsProcessed(static_cast<long>(v_operations) * state.iterations());
}
BENCHMARK(BM_PointRectangleOperations)->Unit(benchmark::kMillisecond);

class ClippingDevice : public OutputDevice {
public:
    explicit ClippingDevice(const DeviceRectangle& clip) { setClipRect(clip); }
};

const DeviceRectangle v_clip(100, 100, 900, 700);

// Points scattered over and around the clip rectangle or, with allLeft, all left of it: the
// case where every pair shares an outside edge and each outcode must be tested.
std::vector<DevicePoint> randomPoints(bool allLeft = false) {
    std::mt19937 random(12345);
    std::uniform_int_distribution<int> coordinate(-200, 1200);
    std::vector<DevicePoint> points(v_points);
    for (DevicePoint& p : points)
        p.setXY(allLeft ? coordinate(random) % 100 - 100 : coordinate(random), coordinate(random));
    return points;
}

// The baseline: clamp each point into the rectangle, nothing else.
void clampAll(const std::vector<DevicePoint>& in, std::vector<DevicePoint>& out) {
    const std::int32_t l = v_clip.left(), t = v_clip.top(), r = v_clip.right(), b = v_clip.bottom();
    for (std::size_t i = 0; i < in.size(); ++i)
        out[i].setXY(std::clamp(in[i].x(), l, r), std::clamp(in[i].y(), t, b));
    benchmark::ClobberMemory();
}

int clipAll(ClippingDevice& device, std::vector<DevicePoint>& in, std::vector<DevicePoint>& out) {
    int visible = 0;
    for (int start = 0; start < v_points; start += v_callLimit) {
        const auto n = static_cast<unsigned short>(std::min(v_callLimit, v_points - start));
        visible += device.clipPoints(n, in.data() + start, out.data() + start) ? 1 : 0;
    }
    benchmark::ClobberMemory();
    return visible;
}

void BM_ClampLoopBaseline(benchmark::State& state) {
    const std::vector<DevicePoint> in = randomPoints();
    std::vector<DevicePoint> out(in.size());
    for (auto _ : state)
        clampAll(in, out);
    state.SetItemsProcessed(static_cast<long>(v_points) * state.iterations());
}
BENCHMARK(BM_ClampLoopBaseline)->Unit(benchmark::kMicrosecond);

void BM_ClipPoints(benchmark::State& state) {
    std::vector<DevicePoint> in = randomPoints();
    std::vector<DevicePoint> out(in.size());
    ClippingDevice device(v_clip);
    for (auto _ : state)
        benchmark::DoNotOptimize(clipAll(device, in, out));
    state.SetItemsProcessed(static_cast<long>(v_points) * state.iterations());
}
BENCHMARK(BM_ClipPoints)->Unit(benchmark::kMicrosecond);

// Both in alternation within each iteration, so that the ratio holds on a noisy machine; the
// argument 1 takes the points all left of the rectangle.
void BM_ClipPointsVersusClamp(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    std::vector<DevicePoint> in = randomPoints(state.range(0) == 1);
    std::vector<DevicePoint> out(in.size());
    ClippingDevice device(v_clip);
    Clock::duration clampTime{}, clipTime{};
    for (auto _ : state) {
        const auto t0 = Clock::now();
        clampAll(in, out);
        const auto t1 = Clock::now();
        benchmark::DoNotOptimize(clipAll(device, in, out));
        const auto t2 = Clock::now();
        clampTime += t1 - t0;
        clipTime += t2 - t1;
    }
    const double clamp = std::chrono::duration<double>(clampTime).count();
    const double clip = std::chrono::duration<double>(clipTime).count();
    state.counters["clamp_ms"] = 1000 * clamp / state.iterations();
    state.counters["clipPoints_ms"] = 1000 * clip / state.iterations();
    state.counters["speed_ratio"] = clamp / clip;
}
BENCHMARK(BM_ClipPointsVersusClamp)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
