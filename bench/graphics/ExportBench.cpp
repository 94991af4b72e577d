// The baseline of the export benchmarks: the same number of "x y moveto" and "x y lineto"
// lines as the drawing of ExportDrawing.h has segments, formatted with std::to_chars into
// the same counting stream. An export writer's time is reported beside it.
#include "ExportDrawing.h"

#include "graphics/export/eps/EPSDevice.h"

#include <benchmark/benchmark.h>

#include <charconv>

namespace {

constexpr long v_segments = 1'000'000;

void writeLine(std::ostream& out, std::int32_t x, std::int32_t y, const char* op) {
    char text[48];
    char* p = std::to_chars(text, text + 16, x).ptr;
    *p++ = ' ';
    p = std::to_chars(p, p + 16, y).ptr;
    *p++ = ' ';
    out.write(text, p - text);
    out << op;
}

void BM_Baseline_ToCharsMoveToLineTo(benchmark::State& state) {
    long long bytes = 0;
    for (auto _ : state) {
        CountingStreambuf buffer;
        std::ostream out(&buffer);
        DevicePoint from, to;
        for (long i = 0; i < v_segments; ++i) {
            exportSegment(i, from, to);
            writeLine(out, from.x(), from.y(), "moveto\n");
            writeLine(out, to.x(), to.y(), "lineto\n");
        }
        out.flush();
        bytes = buffer.bytes();
    }
    state.counters["bytes"] = double(bytes);
    state.counters["segments"] = double(v_segments);
}
BENCHMARK(BM_Baseline_ToCharsMoveToLineTo)->Unit(benchmark::kMillisecond)->UseRealTime();

// The drawing through EPSDevice: every segment through the device's polyline composite and
// its primitives, with the colour and dash changes, into the same counting stream.
void BM_EPSDevice_Segments(benchmark::State& state) {
    long long bytes = 0;
    for (auto _ : state) {
        CountingStreambuf buffer;
        std::ostream out(&buffer);
        EPSDevice device(nullptr, "bench", out, ExportParameters());
        device.open(DeviceRectangle(0, 0, 20000, 17000), DeviceRectangle(300, 400, 2800, 3400));
        drawExportSegments(device, v_segments);
        device.endPath();
        device.close();
        device.endOfPage();
        out.flush();
        bytes = buffer.bytes();
    }
    state.counters["bytes"] = double(bytes);
    state.counters["segments"] = double(v_segments);
}
BENCHMARK(BM_EPSDevice_Segments)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();
