#include "io/WaveJsonWriter.h"

#include "io/AtomicFile.h"
#include "model/Diagram.h"
#include "render/DiagramPainter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <ostream>
#include <sstream>
#include <utility>

namespace {

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
                out += escape;
            } else {
                out.push_back(c);
            }
        }
    }
    out.push_back('"');
    return out;
}

std::string number(double value) {
    std::ostringstream out;
    out.precision(12);
    out << value;
    return out.str();
}

void warn(std::vector<std::string>& warnings, std::string text) {
    if (std::find(warnings.begin(), warnings.end(), text) == warnings.end())
        warnings.push_back(std::move(text));
}

// One wave lane as it is written.
struct Lane {
    std::string name;
    // False for a row whose name is not shown: written without one.
    bool named = true;
    // An empty row: written as {} with only its name and nodes.
    bool spacer = false;
    std::string group;
    std::string wave;
    std::vector<std::string> data;
    std::string node;
    double period = 1;
    double phase = 0;
    // Where the lane's first character starts and how long one is, for placing nodes and gaps.
    Time start = 0;
    Time charLength = 1;

    // The character index nearest to time, or npos outside the lane (a spacer spans the
    // diagram through its node string).
    std::size_t indexOf(Time time) const {
        const double at =
            std::round(static_cast<double>(time - start) / static_cast<double>(charLength));
        if (at < 0 || at >= static_cast<double>(node.size()))
            return std::string::npos;
        return static_cast<std::size_t>(at);
    }
};

class LaneBuilder {
public:
    LaneBuilder(const Diagram& diagram, std::vector<std::string>& warnings)
        : m_diagram(diagram), m_warnings(warnings) {
        m_from = diagram.spanStart();
        m_to = std::max(diagram.spanEnd(), m_from + 1);
        chooseSlot();
    }

    std::vector<Lane> lanes() {
        std::vector<Lane> out;
        for (std::size_t i = 0; i < m_diagram.signalCount(); ++i) {
            const Signal& signal = m_diagram.signal(i);
            Lane lane;
            lane.group = signal.group();
            lane.name = signal.name();
            // A dump's hierarchical name repeats its group, which the nesting already shows.
            if (!lane.group.empty() && lane.name.size() > lane.group.size() + 1 &&
                lane.name.compare(0, lane.group.size() + 1, lane.group + ".") == 0)
                lane.name.erase(0, lane.group.size() + 1);
            lane.named = signal.nameShown();
            lane.start = m_from;
            lane.charLength = m_slot;
            lane.spacer = signal.kind() == SignalKind::Spacer;
            if (signal.kind() == SignalKind::Clock)
                clockLane(signal, lane);
            else if (!lane.spacer)
                sampledLane(signal, lane);
            lane.node.assign(lane.spacer ? m_slots : lane.wave.size(), '.');
            out.push_back(std::move(lane));
        }
        if (!m_diagram.annotations().empty())
            warn(m_warnings, "notes are left out");
        return out;
    }

    Time slot() const { return m_slot; }

private:
    // One slot length for every lane: the greatest common divisor of the times at which
    // something happens, so that every change starts a slot, unless that makes too many.
    void chooseSlot() {
        Time g = 0;
        auto add = [&](Time t) {
            if (t > m_from && t < m_to)
                g = std::gcd(g, t - m_from);
        };
        for (std::size_t i = 0; i < m_diagram.signalCount(); ++i) {
            const Signal& signal = m_diagram.signal(i);
            if (signal.kind() == SignalKind::Clock) {
                g = std::gcd(g, signal.clock().period);
                continue;
            }
            for (std::size_t c = signal.firstIndexFrom(m_from);
                 c < signal.changeCount() && signal.changeTime(c) < m_to; ++c)
                add(signal.changeTime(c));
        }
        for (const Arrow& arrow : m_diagram.arrows()) {
            add(arrow.from.time);
            add(arrow.to.time);
        }
        for (const Gap& gap : m_diagram.gaps())
            add(gap.time);
        const Time span = m_to - m_from;
        m_slot = g > 0 ? g : span;
        if (span / m_slot > WaveJsonWriter::v_maxSlots) {
            m_slot = (span + WaveJsonWriter::v_maxSlots - 1) / WaveJsonWriter::v_maxSlots;
            warn(m_warnings, std::string("changes closer than one slot of ")
                                 .append(formatTime(m_slot, m_diagram.timeUnit()))
                                 .append(" were merged"));
        }
        m_slots = static_cast<std::size_t>((span + m_slot - 1) / m_slot);
    }

    void clockLane(const Signal& signal, Lane& lane) {
        const ClockSpec& clock = signal.clock();
        const Time period = clock.period;
        if (clock.duty != 50)
            warn(m_warnings, "clock duty cycles other than 50% are written as 50%");
        // The lane starts at the clock's first edge, or at the last whole period that starts
        // before the span.
        Time first = clock.phase;
        if (first < m_from)
            first += (m_from - first) / period * period;
        lane.start = first;
        lane.charLength = period;
        lane.period = static_cast<double>(period) / static_cast<double>(m_slot);
        lane.phase = static_cast<double>(m_from - first) / static_cast<double>(m_slot);
        const Time count = std::max<Time>(1, (m_to - first + period - 1) / period);
        lane.wave.assign(1, clock.startLevel == BitState::Low ? 'p' : 'n');
        lane.wave.append(static_cast<std::size_t>(count - 1), '.');
    }

    static char stateChar(BitState state) {
        switch (state) {
        case BitState::Low:
            return '0';
        case BitState::High:
            return '1';
        case BitState::HighZ:
            return 'z';
        case BitState::WeakLow:
            return 'd';
        case BitState::WeakHigh:
            return 'u';
        default:
            return 'x';
        }
    }

    // A bus value as a data label the reader takes back as the same number.
    static std::string label(const Signal& signal, std::size_t change) {
        std::string text = busValueText(signal, change);
        const BusFormat& format = signal.busFormat();
        if (format.notation == HDLNone && signal.changeIsKnown(change)) {
            if (format.radix == RadixHexadecimal)
                text = std::string("0x").append(text);
            else if (format.radix == RadixBinary)
                text = std::string("0b").append(text);
        }
        return text;
    }

    void sampledLane(const Signal& signal, Lane& lane) {
        const bool bus = signal.kind() == SignalKind::Bus;
        std::size_t previous = Signal::npos;
        char previousChar = 0;
        for (std::size_t i = 0; i < m_slots; ++i) {
            const Time t = m_from + static_cast<Time>(i) * m_slot;
            const std::size_t change = signal.indexAt(t);
            char c = 'x';
            if (change != Signal::npos && i > 0 && change == previous) {
                c = '.';
            } else if (change != Signal::npos && !bus) {
                c = stateChar(signal.changeState(change));
            } else if (change != Signal::npos && signal.changeHasText(change)) {
                // Every text slot is a slot of its own, as the reader made it.
                c = '=';
                lane.data.emplace_back(signal.changeText(change));
            } else if (change != Signal::npos) {
                const std::string digits = signal.changeBinary(change);
                if (digits.find_first_not_of('x') == std::string::npos) {
                    c = 'x';
                } else if (digits.find_first_not_of('z') == std::string::npos) {
                    c = 'z';
                } else if (previous != Signal::npos && signal.sameValue(previous, change)) {
                    c = '.';
                } else {
                    c = '=';
                    lane.data.push_back(label(signal, change));
                }
            }
            if (c != '=' && c == previousChar)
                c = '.';
            if (c != '.')
                previousChar = c;
            previous = change;
            lane.wave.push_back(c);
        }
    }

    const Diagram& m_diagram;
    std::vector<std::string>& m_warnings;
    Time m_from = 0;
    Time m_to = 1;
    Time m_slot = 1;
    std::size_t m_slots = 1;
};

// Places a node for an arrow end; its letter, or 0 when the lane or the letters ran out.
char placeNode(std::vector<Lane>& lanes, const Diagram& diagram, const EdgeRef& end,
               std::string& letters) {
    const std::size_t index = diagram.findSignal(end.signal);
    if (index == Signal::npos)
        return 0;
    Lane& lane = lanes[index];
    const std::size_t at = lane.indexOf(end.time);
    if (at == std::string::npos)
        return 0;
    if (lane.node[at] != '.')
        return lane.node[at];
    if (letters.empty())
        return 0;
    lane.node[at] = letters.front();
    letters.erase(0, 1);
    return lane.node[at];
}

void writeLane(const Lane& lane, std::ostream& out, const std::string& indent) {
    out << indent << "{";
    const char* separator = "";
    if (lane.named) {
        out << "\"name\": " << quoted(lane.name);
        separator = ", ";
    }
    if (!lane.spacer) {
        out << separator << "\"wave\": " << quoted(lane.wave);
        separator = ", ";
    }
    if (!lane.data.empty()) {
        out << ", \"data\": [";
        for (std::size_t i = 0; i < lane.data.size(); ++i)
            out << (i ? ", " : "") << quoted(lane.data[i]);
        out << "]";
    }
    if (lane.node.find_first_not_of('.') != std::string::npos)
        out << separator
            << "\"node\": " << quoted(lane.node.substr(0, lane.node.find_last_not_of('.') + 1));
    if (lane.period != 1)
        out << ", \"period\": " << number(lane.period);
    if (lane.phase != 0)
        out << ", \"phase\": " << number(lane.phase);
    out << "}";
}

std::vector<std::string> groupPath(const std::string& group) {
    std::vector<std::string> path;
    std::size_t from = 0;
    while (!group.empty() && from <= group.size()) {
        const std::size_t dot = std::min(group.find('.', from), group.size());
        path.push_back(group.substr(from, dot - from));
        from = dot + 1;
    }
    return path;
}

// The lanes in their order, with runs of one group nested as ["group", lanes...].
void writeLanes(const std::vector<Lane>& lanes, std::ostream& out) {
    std::vector<std::string> open;
    bool first = true;
    for (const Lane& lane : lanes) {
        const std::vector<std::string> path = groupPath(lane.group);
        std::size_t common = 0;
        while (common < open.size() && common < path.size() && open[common] == path[common])
            ++common;
        while (open.size() > common) {
            open.pop_back();
            out << "\n" << std::string(2 * open.size() + 2, ' ') << "]";
        }
        for (std::size_t level = common; level < path.size(); ++level) {
            out << (first ? "\n" : ",\n") << std::string(2 * open.size() + 2, ' ') << "["
                << quoted(path[level]);
            open.push_back(path[level]);
            first = false;
        }
        out << (first ? "\n" : ",\n");
        writeLane(lane, out, std::string(2 * open.size() + 2, ' '));
        first = false;
    }
    while (!open.empty()) {
        open.pop_back();
        out << "\n" << std::string(2 * open.size() + 2, ' ') << "]";
    }
}

} // namespace

WaveJsonWriter::WaveJsonWriter(const char* filename, const Diagram& diagram)
    : FileWritingAgent(filename), m_diagram(diagram) {}

bool WaveJsonWriter::save(std::string& error) {
    return saveAtomically(*this, error);
}

void WaveJsonWriter::writeContents(std::ostream& out) {
    m_warnings.clear();
    write(m_diagram, out, m_warnings);
}

void WaveJsonWriter::write(const Diagram& diagram, std::ostream& out,
                           std::vector<std::string>& warnings) {
    LaneBuilder builder(diagram, warnings);
    std::vector<Lane> lanes = builder.lanes();

    for (const Gap& gap : diagram.gaps()) {
        for (std::size_t i = 0; i < lanes.size(); ++i) {
            if (lanes[i].spacer || (!gap.signal.empty() && gap.signal != diagram.signal(i).name()))
                continue;
            const std::size_t at = lanes[i].indexOf(gap.time);
            if (at != std::string::npos && lanes[i].wave[at] == '.')
                lanes[i].wave[at] = '|';
            else
                warn(warnings, "gaps where a lane changes are left out");
        }
    }
    std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::vector<std::string> edges;
    for (const Arrow& arrow : diagram.arrows()) {
        char from = placeNode(lanes, diagram, arrow.from, letters);
        char to = placeNode(lanes, diagram, arrow.to, letters);
        if (!from || !to) {
            warn(warnings, "arrows outside the span or beyond 52 nodes are left out");
            continue;
        }
        // The diagram tool has no shape with a head at the start only: such an arrow is
        // written the other way round.
        if (arrow.heads == ArrowHeads::Start)
            std::swap(from, to);
        std::string edge{from};
        if (arrow.heads == ArrowHeads::Both)
            edge.push_back('<');
        edge.push_back(arrow.shape == ArrowShape::Curved ? '~' : '-');
        if (arrow.heads != ArrowHeads::None)
            edge.push_back('>');
        edge.push_back(to);
        if (!arrow.label.empty())
            edge.append(" ").append(arrow.label);
        edges.push_back(edge);
    }
    if (!diagram.markers().empty())
        warn(warnings, "markers are left out");

    out << "{\"signal\": [";
    writeLanes(lanes, out);
    out << "\n]";
    if (!edges.empty()) {
        out << ",\n\"edge\": [";
        for (std::size_t i = 0; i < edges.size(); ++i)
            out << (i ? ", " : "") << quoted(edges[i]);
        out << "]";
    }
    const Grid& grid = diagram.grid();
    if (!diagram.title().empty() || grid.visible) {
        out << ",\n\"head\": {";
        if (!diagram.title().empty())
            out << "\"text\": " << quoted(diagram.title()) << (grid.visible ? ", " : "");
        if (grid.visible) {
            const Time every =
                grid.spacing > 0 ? std::max<Time>(1, grid.spacing / builder.slot()) : 1;
            out << "\"tick\": 0, \"every\": " << every;
        }
        out << "}";
    }
    out << "\n}\n";
}
