// tqdiagram's figures, each as a ratio against a baseline timed in the same iterations in
// this thread's CPU time, so that the ratios hold on a busy machine:
//
// - level of detail: rendering 200 signals of 1,000,000 changes each into a 2000-pixel PNG
//   and PDF costs per signal at most 2x what 200 signals of 1,000 changes cost;
// - windows: rendering 1% of the time span costs at most 5% of rendering the whole span, on
//   signals whose every change is visible across the whole span (with more changes the
//   whole span is drawn in dense blocks and costs no more than a window);
// - the .tqd reader and writer run at no less than 40% of FileParser::read's throughput on
//   the same bytes;
// - SVG export of the WaveJSON comparison's 100 signals x 1,000 cycles (bench/app/peer-bench
//   wavejson), against painting the same diagram into an image and against writing the same
//   bytes with fwrite; and its drawing alone (the layout done once) against that fwrite.
//
// The million-change diagram takes about 2 GB: bit signals keep 9 bytes a change.
#include "ThreadClock.h"
#include "io/TqdReader.h"
#include "io/TqdSyntax.h"
#include "io/TqdWriter.h"
#include "io/WaveJsonReader.h"
#include "model/Diagram.h"
#include "render/DiagramExporter.h"
#include "render/DiagramPainter.h"

#include "graphics/export/svg/SVGDevice.h"

#include "text/FileParser.h"

#include <QGuiApplication>
#include <QImage>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <streambuf>

namespace {

// rows signals over span: every tenth an 8-bit bus, the others bits, changes spread in bursts
// and pauses.
std::unique_ptr<Diagram> makeDiagram(int rows, std::size_t changes, Time span) {
    auto d = std::make_unique<Diagram>();
    d->setTitle("Benchmark");
    d->setSpan(0, span);
    std::mt19937_64 random(42);
    const Time meanGap = span / static_cast<Time>(std::max<std::size_t>(changes, 1));
    for (int s = 0; s < rows; ++s) {
        const bool bus = s % 10 == 9;
        std::string name = "top.block";
        name.append(std::to_string(s / 10)).append(".sig").append(std::to_string(s));
        Signal& signal = d->addSignal(name, bus ? SignalKind::Bus : SignalKind::Bit, bus ? 8 : 1);
        signal.reserve(changes);
        Time t = 0;
        for (std::size_t c = 0; c < changes && t < span; ++c) {
            if (bus)
                (void)signal.appendChange(t, BigInt(static_cast<long>(random() % 256)));
            else
                (void)signal.appendChange(t, static_cast<BitState>(random() % 4 == 0 ? 2 : c % 2));
            // Mostly short steps, now and then a pause; the mean step is below meanGap, so
            // the changes fit in the span.
            const auto gap = static_cast<std::uint64_t>(meanGap);
            t += random() % 16 == 0 ? 4 * meanGap : 1 + static_cast<Time>(random() % gap);
        }
    }
    return d;
}

std::string outputPath(const char* name) {
    return (std::filesystem::temp_directory_path() / name).string();
}

// The seconds a picture takes. A PNG is painted and, with encode, also compressed into its
// file (a cost of the picture's size alone).
double renderSeconds(const Diagram& d, const RenderOptions& options, OutputFormat format,
                     const std::string& path, bool encode = true) {
    std::string error;
    const double start = threadSeconds();
    bool ok = false;
    if (format == OutputFormat::Png) {
        QImage image;
        ok = DiagramExporter::renderImage(d, options, image, error) &&
             (!encode || image.save(QString::fromStdString(path), "PNG"));
    } else {
        ok = DiagramExporter::exportFile(d, options, path, format, error);
    }
    const double elapsed = threadSeconds() - start;
    if (!ok)
        std::fprintf(stderr, "render failed: %s\n", error.c_str());
    return elapsed;
}

void BM_RenderCostPerSignal_MillionVsThousandChanges(benchmark::State& state) {
    const auto format = static_cast<OutputFormat>(state.range(0));
    static const auto big = makeDiagram(200, 1000000, 100000000);
    static const auto small = makeDiagram(200, 1000, 100000000);
    RenderOptions options;
    options.width = 2000;
    const std::string path = outputPath(format == OutputFormat::Png ? "bench.png" : "bench.pdf");
    double bigSeconds = 0, smallSeconds = 0;
    for (auto _ : state) {
        const double a = renderSeconds(*big, options, format, path);
        const double b = renderSeconds(*small, options, format, path);
        bigSeconds += a;
        smallSeconds += b;
        state.SetIterationTime(a);
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["ms_per_signal_1M"] = bigSeconds / n / 200 * 1e3;
    state.counters["ms_per_signal_1k"] = smallSeconds / n / 200 * 1e3;
    state.counters["ratio"] = bigSeconds / smallSeconds;
    state.counters["changes_M"] = static_cast<double>(big->totalChanges()) / 1e6;
    std::filesystem::remove(path);
}
BENCHMARK(BM_RenderCostPerSignal_MillionVsThousandChanges)
    ->ArgName("png0_pdf1")
    ->Arg(static_cast<int>(OutputFormat::Png))
    ->Arg(static_cast<int>(OutputFormat::Pdf))
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

void BM_RenderOnePercentWindowVsWholeSpan(benchmark::State& state) {
    const auto format = static_cast<OutputFormat>(state.range(0));
    // About 1,500 changes a signal: at 2000 pixels the whole span shows each of them.
    static const auto diagram = makeDiagram(200, 1500, 3000000);
    // The same rows without changes: what every picture of them costs (background, names,
    // axis), whatever the window.
    static const auto frame = makeDiagram(200, 0, 3000000);
    RenderOptions whole;
    whole.width = 2000;
    RenderOptions window = whole;
    window.from = 1500000;
    window.to = 1530000;
    const std::string path = outputPath(format == OutputFormat::Png ? "window.png" : "window.pdf");
    double wholeSeconds = 0, windowSeconds = 0, frameSeconds = 0;
    for (auto _ : state) {
        const double a = renderSeconds(*diagram, whole, format, path, false);
        const double b = renderSeconds(*diagram, window, format, path, false);
        frameSeconds += renderSeconds(*frame, whole, format, path, false);
        wholeSeconds += a;
        windowSeconds += b;
        state.SetIterationTime(b);
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["ms_whole"] = wholeSeconds / n * 1e3;
    state.counters["ms_window"] = windowSeconds / n * 1e3;
    state.counters["ms_frame"] = frameSeconds / n * 1e3;
    state.counters["ratio"] = windowSeconds / wholeSeconds;
    // The waveforms alone: what each picture costs beyond its empty frame.
    state.counters["waveform_ratio"] =
        (windowSeconds - frameSeconds) / (wholeSeconds - frameSeconds);
    std::filesystem::remove(path);
}
BENCHMARK(BM_RenderOnePercentWindowVsWholeSpan)
    ->ArgName("png0_pdf1")
    ->Arg(static_cast<int>(OutputFormat::Png))
    ->Arg(static_cast<int>(OutputFormat::Pdf))
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

class MemoryBuffer : public std::streambuf {
public:
    explicit MemoryBuffer(const std::string& text) {
        char* begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

const std::string& tqdText() {
    static const std::string text = [] {
        const auto d = makeDiagram(40, 100000, 50000000);
        std::ostringstream out;
        TqdWriter::write(*d, out);
        return out.str();
    }();
    return text;
}

double fileParserSeconds(const std::string& text) {
    MemoryBuffer buffer(text);
    std::istream in(&buffer);
    const double start = threadSeconds();
    FileParser parser(in, nullptr, tqd::sections(), tqd::keywords());
    benchmark::DoNotOptimize(parser.read(1));
    return threadSeconds() - start;
}

void BM_TqdReadAndWriteVsFileParserRead(benchmark::State& state) {
    const std::string& text = tqdText();
    double baseline = 0, reading = 0, writing = 0;
    for (auto _ : state) {
        baseline += fileParserSeconds(text);
        Diagram d;
        std::string error;
        double start = threadSeconds();
        if (!TqdReader::readText(text, "bench.tqd", d, error))
            state.SkipWithError(error.c_str());
        const double read = threadSeconds() - start;
        std::ostringstream out;
        start = threadSeconds();
        TqdWriter::write(d, out);
        const double written = threadSeconds() - start;
        benchmark::DoNotOptimize(out.str().size());
        reading += read;
        writing += written;
        state.SetIterationTime(read);
    }
    const double mb =
        static_cast<double>(text.size()) * static_cast<double>(state.iterations()) / 1e6;
    state.counters["MB"] = static_cast<double>(text.size()) / 1e6;
    state.counters["fileparser_MBps"] = mb / baseline;
    state.counters["read_MBps"] = mb / reading;
    state.counters["write_MBps"] = mb / writing;
    state.counters["read_ratio"] = baseline / reading;
    state.counters["write_ratio"] = baseline / writing;
}
BENCHMARK(BM_TqdReadAndWriteVsFileParserRead)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

// The diagrams of bench/app/peer-bench wavejson, drawn from another random sequence: every
// fourth signal a clock, every fourth from the second a bus whose value changes in three of
// eight cycles (unknown in one), the others bits.
std::string waveJson(int rows, int cycles) {
    std::mt19937 random(11);
    std::string text = "{signal: [\n";
    for (int s = 0; s < rows; ++s) {
        std::string wave, data;
        for (int c = 0; c < cycles; ++c) {
            const auto r = random() % 8;
            if (s % 4 == 0) {
                wave += c == 0 ? 'p' : '.';
            } else if (s % 4 == 1 && r < 3) {
                wave += '=';
                data.append(data.empty() ? "D" : " D").append(std::to_string(c));
            } else if (s % 4 == 1) {
                wave += r == 3 ? 'x' : '.';
            } else {
                wave += r < 2 ? '0' : r < 4 ? '1' : '.';
            }
        }
        text.append("  {name: \"s").append(std::to_string(s)).append("\", wave: \"").append(wave);
        if (s % 4 == 1)
            text.append("\", data: \"").append(data);
        text.append("\"},\n");
    }
    return text.append("]}\n");
}

void BM_SvgExportVsPngPaintAndFwrite(benchmark::State& state) {
    Diagram d;
    std::string error;
    WaveJsonReader reader("wave.json");
    if (!reader.readText(waveJson(100, 1000), "wave.json", d, error))
        return state.SkipWithError(error.c_str());
    const RenderOptions options;
    const std::string path = outputPath("wave.svg"), copy = outputPath("wave-copy.svg");
    // Drawing alone, the layout done once: what the SVG device itself costs.
    DiagramPainter laidOut(d, options);
    if (!laidOut.layout(error))
        return state.SkipWithError(error.c_str());
    double svg = 0, png = 0, written = 0, drawing = 0;
    std::size_t bytes = 0;
    for (auto _ : state) {
        const double a = renderSeconds(d, options, OutputFormat::Svg, path);
        double start = threadSeconds();
        {
            SVGDevice device(copy.c_str(), "wave", laidOut.width(), laidOut.height());
            laidOut.paint(device, 1);
            if (!device.close())
                state.SkipWithError("the SVG device failed");
        }
        drawing += threadSeconds() - start;
        png += renderSeconds(d, options, OutputFormat::Png, path, false);
        std::ifstream in(path, std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(in), {}};
        bytes = text.size();
        start = threadSeconds();
        if (std::FILE* out = std::fopen(copy.c_str(), "wb")) {
            std::fwrite(text.data(), 1, text.size(), out);
            std::fclose(out);
        }
        written += threadSeconds() - start;
        svg += a;
        state.SetIterationTime(a);
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["svg_ms"] = svg / n * 1e3;
    state.counters["svg_drawing_ms"] = drawing / n * 1e3;
    state.counters["png_paint_ms"] = png / n * 1e3;
    state.counters["fwrite_ms"] = written / n * 1e3;
    state.counters["png_over_svg"] = png / svg;
    state.counters["svg_over_fwrite"] = svg / written;
    state.counters["drawing_over_fwrite"] = drawing / written;
    state.counters["svg_KB"] = static_cast<double>(bytes) / 1e3;
    std::filesystem::remove(path);
    std::filesystem::remove(copy);
}
BENCHMARK(BM_SvgExportVsPngPaintAndFwrite)
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication application(argc, argv);
    TqObject::startUp();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    TqObject::shutDown();
    return 0;
}
