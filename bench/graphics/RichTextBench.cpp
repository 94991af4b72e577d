// Marked-up labels parsed and measured (TextFormatParser, MetaString::calcTextExtent) beside
// Qt's own rich text doing the same for the equivalent HTML (QTextDocument::setHtml,
// idealWidth, size), interleaved in chunks and timed in the thread's CPU time so that the
// ratio holds on a busy machine. Target: speed_ratio (Qt time / ours) of at least 10.
// Allocations are counted on our side per label, beside the tree's nodes per label.
#include "ThreadClock.h"
#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"
#include "graphics/device/WsiFont.h"
#include "graphics/richtext/MetaString.h"
#include "graphics/richtext/TextFormatParser.h"

#include "CountingAllocator.h"

#include <QGuiApplication>
#include <QImage>
#include <QTextDocument>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_set>
#include <vector>

namespace {

constexpr int v_labels = 100'000;
constexpr int v_chunk = 500;

// Typical signal names: one or two tags, a bus range in a subscript, an active-low overline;
// distinct of them, repeated in turn to fill count (a diagram draws its names again on every
// repaint). The numbers in the names start at first.
std::vector<std::string> typicalLabels(int distinct, int count = v_labels, int first = 0) {
    const char* patterns[] = {"<b>CLK%d</b>_EN",
                              "DATA%d<sub>[%d:0]</sub>",
                              "<o>RESET%d</o>_N",
                              "<i>addr%d</i><sub>[31:%d]</sub>",
                              "<red>ERR%d</red> flag",
                              "<b>Q%d</b><sub>[%d]</sub>",
                              "<o>CS%d</o> <i>chip %d</i>",
                              "ready%d"};
    std::vector<std::string> labels;
    labels.reserve(count);
    char buffer[80];
    for (int i = 0; i < count; ++i) {
        const int k = i % distinct;
        std::snprintf(buffer, sizeof buffer, patterns[k % 8], first + k / 8, k % 16);
        labels.emplace_back(buffer);
    }
    return labels;
}

int distinctOf(const std::vector<std::string>& labels) {
    std::unordered_set<std::string> distinct(labels.begin(), labels.end());
    return static_cast<int>(distinct.size());
}

int runsOf(MetaString& node) {
    int runs = node.firstChild() ? 0 : 1;
    for (MetaString* child = node.firstChild(); child; child = child->nextSibling())
        runs += runsOf(*child);
    return runs;
}

int nodesOf(MetaString& node) {
    int nodes = 1;
    for (MetaString* child = node.firstChild(); child; child = child->nextSibling())
        nodes += nodesOf(*child);
    return nodes;
}

// The argument is the number of distinct labels: a diagram's worth (1,000), or every label
// new (100,000) so that every run of ours is shaped afresh.
void BM_LabelsVersusQtRichText(benchmark::State& state) {
    const std::vector<std::string> labels = typicalLabels(static_cast<int>(state.range(0)));
    std::vector<QString> html;
    html.reserve(labels.size());
    for (const std::string& label : labels)
        html.push_back(TextFormatParser::toHTML(QString::fromStdString(label), true));
    QImage image(64, 64, QImage::Format_RGB32);
    TqPainter painter(&image);
    Device device(painter);
    WsiFont font(nullptr, 10);
    const QFont qfont = font.toQFont();
    // Both sides meet the fonts before timing (our advance tables are built per font in
    // steady use, Qt loads its font engines), with names that do not occur among the timed
    // ones.
    for (const std::string& label : typicalLabels(400, 400, 10 * v_labels)) {
        TextFormatParser parser(label.c_str(), device);
        benchmark::DoNotOptimize(parser.parse().calcTextExtent(font));
        QTextDocument document;
        document.setDefaultFont(qfont);
        document.setHtml(TextFormatParser::toHTML(QString::fromStdString(label), true));
        benchmark::DoNotOptimize(document.size());
    }

    double ours = 0, qt = 0;
    long allocations = 0, nodes = 0, runs = 0;
    for (auto _ : state) {
        for (int from = 0; from < v_labels; from += v_chunk) {
            const int to = std::min(v_labels, from + v_chunk);
            const long before = allocationCount();
            const double t0 = threadSeconds();
            for (int i = from; i < to; ++i) {
                TextFormatParser parser(labels[i].c_str(), device);
                benchmark::DoNotOptimize(parser.parse().calcTextExtent(font));
            }
            const double t1 = threadSeconds();
            allocations += allocationCount() - before;
            for (int i = from; i < to; ++i) {
                QTextDocument document;
                document.setDefaultFont(qfont);
                document.setHtml(html[i]);
                benchmark::DoNotOptimize(document.idealWidth());
                benchmark::DoNotOptimize(document.size());
            }
            const double t2 = threadSeconds();
            ours += t1 - t0;
            qt += t2 - t1;
        }
    }
    for (const std::string& label : labels) {
        TextFormatParser parser(label.c_str(), device);
        MetaString& root = parser.parse();
        nodes += nodesOf(root) - 1; // the root is the label's, not a run's
        runs += runsOf(root);
    }
    const double iterations = static_cast<double>(state.iterations());
    state.counters["ours_ms"] = 1000 * ours / iterations;
    state.counters["qt_ms"] = 1000 * qt / iterations;
    state.counters["speed_ratio"] = qt / ours;
    state.counters["allocs_per_label"] = static_cast<double>(allocations) / iterations / v_labels;
    state.counters["nodes_per_label"] = static_cast<double>(nodes) / v_labels;
    state.counters["runs_per_label"] = static_cast<double>(runs) / v_labels;
    state.counters["distinct_labels"] = distinctOf(labels);
}
BENCHMARK(BM_LabelsVersusQtRichText)
    ->Arg(1'000)
    ->Arg(v_labels)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

// Parsing alone: its allocations are the tree's nodes and a fixed few for the scanner.
void BM_ParseAllocations(benchmark::State& state) {
    const std::vector<std::string> labels = typicalLabels(8);
    long allocations = 0, nodes = 0;
    for (auto _ : state) {
        for (int i = 0; i < 8; ++i) {
            const long before = allocationCount();
            TextFormatParser parser(labels[i].c_str());
            MetaString& root = parser.parse();
            allocations += allocationCount() - before;
            nodes += nodesOf(root);
        }
    }
    state.counters["allocs_per_parse"] = static_cast<double>(allocations) / state.iterations() / 8;
    state.counters["nodes_per_parse"] = static_cast<double>(nodes) / state.iterations() / 8;
}
BENCHMARK(BM_ParseAllocations);

} // namespace

int main(int argc, char** argv) {
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
