// The MIF export of the benchmark drawing: a million segments through MIFDevice into the
// counting stream, the file assembled by close(). Compare with the std::to_chars baseline of
// ExportBench.cpp, which formats the same segments' coordinates only.
#include "ExportDrawing.h"
#include "graphics/export/mif/MIFDevice.h"

#include <benchmark/benchmark.h>

namespace {

constexpr long v_segments = 1'000'000;

void BM_MIFDevice_ExportSegments(benchmark::State& state) {
    // Unscaled: a device unit is a tenth of a point.
    const ExportParameters parameters(
        "file,,,portrait,clipboard,letter,default,6.5,5.0,in,color,fixed,mifframe,preview");
    long long bytes = 0;
    for (auto _ : state) {
        CountingStreambuf buffer;
        std::ostream out(&buffer);
        MIFDevice device("bench", out, parameters, DeviceRectangle(0, 0, 20000, 18000));
        drawExportSegments(device, v_segments);
        if (!device.close())
            state.SkipWithError("the MIF file was not written");
        out.flush();
        bytes = buffer.bytes();
    }
    state.counters["bytes"] = double(bytes);
    state.counters["segments"] = double(v_segments);
}
BENCHMARK(BM_MIFDevice_ExportSegments)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
