#include "io/TqdWriter.h"

#include "io/AtomicFile.h"
#include "io/TqdSyntax.h"
#include "model/Diagram.h"

#include "core/StringFunctions.h"
#include "text/FileParser.h"

#include <charconv>
#include <fstream>
#include <memory>
#include <ostream>

namespace {

std::string quoted(const std::string& text) {
    std::unique_ptr<char[]> q(strAsQuotedString(text.c_str()));
    return q ? std::string(q.get()) : std::string("\"\"");
}

std::string number(Time value) {
    return std::to_string(value);
}

// The shortest text that reads back as the same double, quoted as the file's numbers are.
std::string quotedReal(double value) {
    char buffer[40];
    auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, value);
    (void)ec;
    std::string text(1, '"');
    text.append(buffer, end).push_back('"');
    return text;
}

void writeDiagramSection(const Diagram& diagram, std::ostream& out) {
    out << "TimingDiagram( ";
    FileParser::storeKeyword(out, "version", std::to_string(tqd::v_version).c_str());
    FileParser::storeKeywordQuotedString(out, "title", diagram.title().c_str());
    FileParser::storeKeyword(out, "timeunit", timeUnitName(diagram.timeUnit()));
    if (diagram.hasExplicitSpan()) {
        FileParser::storeKeyword(out, "span", number(diagram.spanStart()).c_str(),
                                 number(diagram.spanEnd()).c_str());
    }
    FileParser::storeKeyword(out, "grid", diagram.grid().visible ? "on" : "off",
                             number(diagram.grid().spacing).c_str());
    out << ")\n";
}

void writeSignalSection(const Signal& signal, std::ostream& out) {
    out << "Signal( ";
    FileParser::storeKeyword(out, "name", quoted(signal.name()).c_str());
    switch (signal.kind()) {
    case SignalKind::Clock: {
        const ClockSpec& clock = signal.clock();
        out << "clock( ";
        FileParser::storeKeyword(out, "period", number(clock.period).c_str());
        FileParser::storeKeyword(out, "duty", quotedReal(clock.duty).c_str());
        FileParser::storeKeyword(out, "phase", number(clock.phase).c_str());
        FileParser::storeKeyword(out, "start", clock.startLevel == BitState::High ? "high" : "low");
        out << ") ";
        break;
    }
    case SignalKind::Bit:
        FileParser::storeKeyword(out, "bit");
        break;
    case SignalKind::Bus:
        out << "bus( ";
        FileParser::storeKeyword(out, "width", std::to_string(signal.width()).c_str());
        FileParser::storeKeyword(out, "radix", tqd::radixName(signal.busFormat().radix));
        FileParser::storeKeyword(out, "notation", tqd::notationName(signal.busFormat().notation));
        out << ") ";
        break;
    case SignalKind::Spacer:
        FileParser::storeKeyword(out, "spacer");
        break;
    }
    if (!signal.group().empty())
        FileParser::storeKeyword(out, "group", quoted(signal.group()).c_str());
    if (!signal.nameShown())
        FileParser::storeKeyword(out, "nameless");
    out << ")\n";
}

// A bus value in hexadecimal when every digit is whole (four known bits, or four X, or four
// Z), otherwise in binary; the first character says which.
void appendBusValue(const std::string& bits, std::string& line) {
    const std::size_t digits = (bits.size() + 3) / 4;
    const std::size_t pad = digits * 4 - bits.size();
    std::string hex = "h";
    for (std::size_t d = 0; d < digits; ++d) {
        int value = 0, flagged = 0;
        char kind = 0;
        bool uniform = true;
        for (std::size_t b = 0; b < 4; ++b) {
            const std::size_t at = d * 4 + b;
            const char c =
                at < pad ? (bits[0] == 'x' || bits[0] == 'z' ? bits[0] : '0') : bits[at - pad];
            value = value * 2 + (c == '1' || c == 'z');
            const bool unknown = c == 'x' || c == 'z';
            flagged += unknown;
            if (unknown) {
                uniform = uniform && (kind == 0 || kind == c);
                kind = c;
            }
        }
        if (flagged != 0 && (flagged != 4 || !uniform)) {
            line.append("\"b").append(bits).append("\"");
            return;
        }
        hex.push_back(flagged == 4 ? kind : "0123456789abcdef"[value]);
    }
    line.append("\"").append(hex).append("\"");
}

void writeChanges(const Signal& signal, std::ostream& out) {
    const std::size_t count = signal.changeCount();
    std::string line;
    for (std::size_t first = 0; first < count; first += TqdWriter::v_changesPerSection) {
        const std::size_t last = std::min(count, first + TqdWriter::v_changesPerSection);
        line = "Changes( ";
        line.append(quoted(signal.name()));
        for (std::size_t i = first; i < last; ++i) {
            line.push_back((i - first) % 8 == 0 ? '\n' : ' ');
            char buffer[24];
            auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, signal.changeTime(i));
            (void)ec;
            line.append(buffer, end).push_back(' ');
            if (signal.kind() == SignalKind::Bit)
                line.push_back(bitStateChar(signal.changeState(i)));
            else if (signal.changeHasText(i))
                line.append("\"t").append(quoted(std::string(signal.changeText(i))), 1);
            else
                appendBusValue(signal.changeBinary(i), line);
            if (line.size() > 60000) {
                out << line;
                line.clear();
            }
        }
        line.append(" )\n");
        out << line;
    }
}

void writeEdge(std::ostream& out, const char* keyword, const EdgeRef& edge) {
    FileParser::storeKeyword(out, keyword, quoted(edge.signal).c_str(), number(edge.time).c_str());
}

} // namespace

TqdWriter::TqdWriter(const char* filename, const Diagram& diagram)
    : FileWritingAgent(filename), m_diagram(diagram) {}

void TqdWriter::writeContents(std::ostream& out) {
    write(m_diagram, out);
}

bool TqdWriter::save(std::string& error) {
    return saveAtomically(*this, error);
}

void TqdWriter::write(const Diagram& diagram, std::ostream& out) {
    writeDiagramSection(diagram, out);
    for (const std::string& group : diagram.groups()) {
        out << "Group( ";
        FileParser::storeKeyword(out, "name", quoted(group).c_str());
        out << ")\n";
    }
    for (std::size_t i = 0; i < diagram.signalCount(); ++i)
        writeSignalSection(diagram.signal(i), out);
    for (std::size_t i = 0; i < diagram.signalCount(); ++i)
        writeChanges(diagram.signal(i), out);
    for (const Arrow& arrow : diagram.arrows()) {
        out << "Arrow( ";
        writeEdge(out, "from", arrow.from);
        writeEdge(out, "to", arrow.to);
        FileParser::storeKeywordQuotedString(out, "label", arrow.label.c_str());
        // The common arrow leaves both out, as files before curved arrows did.
        if (arrow.shape == ArrowShape::Curved)
            FileParser::storeKeyword(out, "shape", tqd::arrowShapeName(arrow.shape));
        if (arrow.heads != ArrowHeads::End)
            FileParser::storeKeyword(out, "heads", tqd::arrowHeadsName(arrow.heads));
        out << ")\n";
    }
    for (const Marker& marker : diagram.markers()) {
        out << "Marker( ";
        FileParser::storeKeyword(out, "at", number(marker.time).c_str());
        FileParser::storeKeywordQuotedString(out, "label", marker.label.c_str());
        out << ")\n";
    }
    for (const Annotation& annotation : diagram.annotations()) {
        out << "Annotation( ";
        FileParser::storeKeyword(out, "at", number(annotation.time).c_str());
        if (!annotation.signal.empty())
            FileParser::storeKeyword(out, "signal", quoted(annotation.signal).c_str());
        FileParser::storeKeywordQuotedString(out, "text", annotation.text.c_str());
        out << ")\n";
    }
    for (const Gap& gap : diagram.gaps()) {
        out << "Gap( ";
        FileParser::storeKeyword(out, "at", number(gap.time).c_str());
        if (!gap.signal.empty())
            FileParser::storeKeyword(out, "signal", quoted(gap.signal).c_str());
        out << ")\n";
    }
    for (const ForeignSection& section : diagram.foreignSections())
        out << section.name << section.text << "\n";
}
