#include "io/WaveJsonReader.h"

#include "io/JsLiteral.h"
#include "model/Diagram.h"

#include "core/iTaskDescription.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <map>
#include <sstream>

namespace {

constexpr std::string_view v_colourTags[] = {
    "black", "darkgray",  "gray",     "palegray", "darkred",  "red",    "palered", "darkgreen",
    "green", "palegreen", "darkblue", "blue",     "paleblue", "purple", "yellow",  "white"};

// The classes of the diagram tool's style sheet, by the tag that looks most like them.
const std::map<std::string, std::string, std::less<>> v_classTags = {
    {"h1", "b"},           {"h2", "b"},      {"h3", "b"},      {"h4", "b"},
    {"h5", "b"},           {"h6", "b"},      {"info", "blue"}, {"success", "green"},
    {"warning", "yellow"}, {"error", "red"}, {"muted", "gray"}};

// A node: a named point on a lane at a time.
struct Node {
    std::string signal;
    Time time = 0;
};

// The reader of one parsed diagram into a fresh Diagram.
class WaveBuilder {
public:
    WaveBuilder(const char* name, Diagram& diagram, std::vector<std::string>& warnings)
        : m_name(name), m_diagram(diagram), m_warnings(warnings) {}

    bool build(const JsValue& root, std::string& error) {
        if (!root.isObject())
            return fail(root, "expected an object with a 'signal' list", error);
        const JsValue* signal = root.member("signal");
        if (!signal || !signal->isArray()) {
            if (root.member("reg") || root.member("assign"))
                return fail(root, "expected a timing diagram, found a register or logic diagram",
                            error);
            return fail(signal ? *signal : root, "expected a 'signal' list of wave lanes", error);
        }
        for (const auto& [key, value] : root.members) {
            if (key != "signal" && key != "edge" && key != "head" && key != "foot" &&
                key != "config")
                warn("the keys other than signal, edge, head, foot and config are left out");
        }
        m_diagram.setTimeUnit(TimeUnit::ns);
        config(root.member("config"));
        if (!lanes(*signal, std::string(), error))
            return false;
        edges(root.member("edge"));
        headAndFoot(root.member("head"), root.member("foot"));
        if (m_end > m_start)
            m_diagram.setSpan(m_start, m_end);
        return true;
    }

private:
    bool fail(const JsValue& where, const std::string& message, std::string& error) {
        error = std::string(m_name) + ":" + std::to_string(where.line) + ": " + message;
        return false;
    }

    void warn(std::string text) {
        if (std::find(m_warnings.begin(), m_warnings.end(), text) == m_warnings.end())
            m_warnings.push_back(std::move(text));
    }

    void config(const JsValue* config) {
        if (!config || !config->isObject())
            return;
        for (const auto& [key, value] : config->members) {
            if (key == "hscale" && value.isNumber() && value.number >= 1 && value.number <= 100)
                // A wider slot is a longer time: the picture keeps its proportions.
                m_slot = static_cast<Time>(std::lround(value.number)) * WaveJsonReader::v_slotTime;
            else
                warn("config keys other than hscale (skin, ...) are left out");
        }
    }

    // Rich text from a name, a label or a head text: a string as it is, a markup list
    // ["tspan", {style}, children...] with the tags its style maps to.
    std::string text(const JsValue& value) {
        switch (value.type) {
        case JsValue::Type::String:
            return value.text;
        case JsValue::Type::Number: {
            std::ostringstream out;
            out << value.number;
            return out.str();
        }
        case JsValue::Type::Array:
            return markup(value, 0);
        default:
            return std::string();
        }
    }

    std::string markup(const JsValue& list, int depth) {
        std::size_t first = 0;
        std::vector<std::string> tags;
        if (!list.items.empty() && list.items[0].isString()) {
            const std::string& element = list.items[0].text;
            if (element == "sub" || element == "sup")
                tags.push_back(element == "sub" ? "sub" : "super");
            else if (element == "b" || element == "i" || element == "u")
                tags.push_back(element);
            first = 1;
            if (list.items.size() > 1 && list.items[1].isObject()) {
                style(list.items[1], tags);
                first = 2;
            }
        }
        std::string out;
        for (const std::string& tag : tags)
            out.append("<").append(tag).append(">");
        for (std::size_t i = first; i < list.items.size(); ++i) {
            const JsValue& item = list.items[i];
            out += item.isArray() && depth < v_maxJsDepth ? markup(item, depth + 1) : text(item);
        }
        for (auto tag = tags.rbegin(); tag != tags.rend(); ++tag)
            out.append("</").append(*tag).append(">");
        return out;
    }

    void style(const JsValue& attributes, std::vector<std::string>& tags) {
        for (const auto& [key, value] : attributes.members) {
            const std::string& v = value.text;
            std::string tag;
            if (key == "class") {
                std::istringstream classes(v);
                for (std::string c; classes >> c;) {
                    const auto found = v_classTags.find(c);
                    if (found != v_classTags.end())
                        tags.push_back(found->second);
                    else
                        warn("markup styles without a rich-text tag are shown as plain text");
                }
                continue;
            }
            if (key == "font-weight" && (v == "bold" || v == "bolder" || v >= "600"))
                tag = "b";
            else if (key == "font-style" && (v == "italic" || v == "oblique"))
                tag = "i";
            else if (key == "text-decoration" && (v == "underline" || v == "overline"))
                tag = v == "underline" ? "u" : "o";
            else if (key == "baseline-shift" && (v == "sub" || v == "super"))
                tag = v;
            else if (key == "fill" && std::find(std::begin(v_colourTags), std::end(v_colourTags),
                                                v) != std::end(v_colourTags))
                tag = v;
            if (tag.empty())
                warn("markup styles without a rich-text tag are shown as plain text");
            else
                tags.push_back(tag);
        }
    }

    bool lanes(const JsValue& list, const std::string& group, std::string& error) {
        for (const JsValue& item : list.items) {
            if (item.isArray()) {
                // A group: its name first, then lanes and groups.
                std::string inner = group;
                std::size_t first = 0;
                if (!item.items.empty() && !item.items[0].isObject()) {
                    const std::string name = text(item.items[0]);
                    if (!name.empty())
                        inner = group.empty() ? name : group + "." + name;
                    first = 1;
                }
                if (!inner.empty())
                    m_diagram.addGroup(inner);
                JsValue rest;
                rest.items.assign(item.items.begin() + static_cast<std::ptrdiff_t>(first),
                                  item.items.end());
                if (!lanes(rest, inner, error))
                    return false;
            } else if (item.isObject()) {
                if (!lane(item, group, error))
                    return false;
            } else if (item.type != JsValue::Type::Null) {
                return fail(item, "expected a wave lane {...} or a group [...]", error);
            }
        }
        return true;
    }

    std::string uniqueName(std::string name) {
        if (name.empty())
            name = "lane " + std::to_string(m_diagram.signalCount() + 1);
        if (m_diagram.findSignal(name) == Signal::npos)
            return name;
        for (int n = 2;; ++n) {
            const std::string candidate = name + " (" + std::to_string(n) + ")";
            if (m_diagram.findSignal(candidate) == Signal::npos)
                return candidate;
        }
    }

    // The data labels of a lane: a list, or one string of space-separated labels.
    std::vector<std::string> labels(const JsValue* data) {
        std::vector<std::string> out;
        if (!data)
            return out;
        if (data->isArray()) {
            for (const JsValue& item : data->items)
                out.push_back(text(item));
        } else if (data->isString()) {
            std::istringstream words(data->text);
            for (std::string word; words >> word;)
                out.push_back(word);
        } else {
            out.push_back(text(*data));
        }
        return out;
    }

    static bool isClockChar(char c) { return c == 'p' || c == 'n' || c == 'P' || c == 'N'; }
    static bool isDataChar(char c) { return c == '=' || (c >= '2' && c <= '9'); }

    bool lane(const JsValue& lane, const std::string& group, std::string& error) {
        const JsValue* waveValue = lane.member("wave");
        const JsValue* nameValue = lane.member("name");
        for (const auto& [key, value] : lane.members) {
            if (key != "name" && key != "wave" && key != "data" && key != "period" &&
                key != "phase" && key != "node")
                warn("lane keys other than name, wave, data, period, phase and node are left "
                     "out");
        }
        if (waveValue && !waveValue->isString())
            return fail(*waveValue, "expected the wave as a string", error);
        const std::string wave = waveValue ? waveValue->text : std::string();
        double period = 1, phase = 0;
        if (const JsValue* p = lane.member("period")) {
            if (!p->isNumber() || !(p->number > 0 && p->number <= 1e6))
                return fail(*p, "expected a period above 0", error);
            period = p->number;
        }
        if (const JsValue* p = lane.member("phase")) {
            if (!p->isNumber() || !(std::fabs(p->number) <= 1e6))
                return fail(*p, "expected the phase as a number", error);
            phase = p->number;
        }
        const double slotLength = period * static_cast<double>(m_slot);
        const double shift = phase * static_cast<double>(m_slot);
        auto slotTime = [&](std::size_t i) {
            return static_cast<Time>(std::llround(static_cast<double>(i) * slotLength - shift));
        };
        const Time half = std::max<Time>(1, static_cast<Time>(std::llround(slotLength / 2)));

        const std::string name = uniqueName(nameValue ? text(*nameValue) : std::string());
        if (!waveValue) {
            // A lane without a wave is an empty row: a spacer, which may carry a name and the
            // nodes of arrows drawn across the diagram.
            Signal& spacer = m_diagram.addSignal(name, SignalKind::Spacer, 1, group);
            spacer.setNameShown(nameValue != nullptr);
            nodes(lane.member("node"), name, slotTime);
            return true;
        }
        const std::vector<std::string> data = labels(lane.member("data"));
        const bool clockOnly = !wave.empty() && isClockChar(wave[0]) &&
                               wave.find_first_not_of(".|", 1) == std::string::npos;
        const bool bus = std::any_of(wave.begin(), wave.end(), isDataChar);

        // Numbers as labels become the bus values; a lane with any other label shows every label
        // as the text of its slot. Empty labels are empty slots in either.
        unsigned width = 1;
        bool numeric = std::any_of(data.begin(), data.end(), [](auto& l) { return !l.empty(); });
        bool hexadecimal = false;
        std::vector<BigInt> values;
        if (bus) {
            for (const std::string& label : data) {
                BigInt value;
                if (!label.empty() && !numericLabel(label, value, hexadecimal)) {
                    numeric = false;
                    break;
                }
                values.push_back(value);
                if (!label.empty())
                    width = std::max(width, significantBits(value));
            }
            if (!numeric)
                width = 1;
        }
        const SignalKind kind = clockOnly ? SignalKind::Clock
                                : bus     ? SignalKind::Bus
                                          : SignalKind::Bit;
        Signal& signal = m_diagram.addSignal(name, kind, bus ? width : 1, group);
        signal.setNameShown(nameValue != nullptr);
        if (bus && !(numeric && hexadecimal))
            signal.setBusFormat({RadixDecimal, HDLNone});
        if (!wave.empty()) {
            m_start = std::min(m_start, slotTime(0));
            m_end = std::max(m_end, slotTime(wave.size()));
        }

        if (clockOnly) {
            const Time clockPeriod = std::max<Time>(2, static_cast<Time>(std::llround(slotLength)));
            const Time first = slotTime(0);
            ClockSpec clock;
            clock.period = clockPeriod;
            clock.startLevel = wave[0] == 'p' || wave[0] == 'P' ? BitState::Low : BitState::High;
            clock.phase = (first % clockPeriod + clockPeriod) % clockPeriod;
            (void)signal.setClock(clock);
            if (wave[0] == 'P' || wave[0] == 'N')
                warn("edge arrow marks (P N H L) are drawn as plain edges");
        }

        std::size_t nextLabel = 0;
        char previous = 0;
        for (std::size_t i = 0; i < wave.size(); ++i) {
            char c = wave[i];
            const Time t = slotTime(i);
            if (c == '|') {
                m_diagram.addGap({t, name});
                c = '.';
            }
            if (clockOnly)
                continue;
            // A dot repeats a clock slot, and holds every other state.
            if (c == '.') {
                if (!isClockChar(previous))
                    continue;
                c = previous;
            }
            previous = c;
            if (isDataChar(c)) {
                if (c >= '3' && c <= '9')
                    warn("bus slot colours (3-9) are drawn in the one bus colour");
                const std::size_t index = nextLabel++;
                if (numeric && index < values.size() && !data[index].empty())
                    (void)signal.appendChange(t, values[index]);
                else
                    // The label as text; a slot without one is drawn empty, as the tool draws it.
                    (void)signal.appendText(t, index < data.size() ? data[index] : std::string());
                continue;
            }
            if (c == 'P' || c == 'N' || c == 'H' || c == 'L')
                warn("edge arrow marks (P N H L) are drawn as plain edges");
            BitState state = BitState::Unknown;
            switch (c) {
            case 'p':
            case 'P':
                (void)signal.appendChange(t, BitState::High);
                (void)signal.appendChange(t + half, BitState::Low);
                continue;
            case 'n':
            case 'N':
                (void)signal.appendChange(t, BitState::Low);
                (void)signal.appendChange(t + half, BitState::High);
                continue;
            case '0':
            case 'l':
            case 'L':
                state = BitState::Low;
                break;
            case '1':
            case 'h':
            case 'H':
                state = BitState::High;
                break;
            case 'z':
                state = BitState::HighZ;
                break;
            case 'u':
                state = bus ? BitState::High : BitState::WeakHigh;
                break;
            case 'd':
                state = bus ? BitState::Low : BitState::WeakLow;
                break;
            case 'x':
                break;
            default:
                warn("unknown wave characters are shown as x");
                break;
            }
            (void)signal.appendChange(t, state);
        }
        if (bus && nextLabel < data.size())
            warn("data labels beyond the lane's data slots are left out");

        nodes(lane.member("node"), name, slotTime);
        return true;
    }

    template <typename SlotTime>
    void nodes(const JsValue* node, const std::string& name, const SlotTime& slotTime) {
        if (!node || !node->isString())
            return;
        for (std::size_t i = 0; i < node->text.size(); ++i) {
            if (node->text[i] != '.')
                m_nodes[node->text[i]] = {name, slotTime(i)};
        }
    }

    // A label that reads as a number: decimal digits, or 0x / 0b and digits.
    static bool numericLabel(const std::string& label, BigInt& value, bool& hexadecimal) {
        if (label.empty() || label.size() > 200)
            return false;
        Radix radix = RadixDecimal;
        std::string digits = label;
        if (label.size() > 2 && label[0] == '0' && (label[1] == 'x' || label[1] == 'X')) {
            radix = RadixHexadecimal;
            digits = label.substr(2);
            hexadecimal = true;
        } else if (label.size() > 2 && label[0] == '0' && (label[1] == 'b' || label[1] == 'B')) {
            radix = RadixBinary;
            digits = label.substr(2);
        }
        const auto valid = [radix](unsigned char d) {
            return radix == RadixHexadecimal ? std::isxdigit(d) != 0
                   : radix == RadixBinary    ? d == '0' || d == '1'
                                             : std::isdigit(d) != 0;
        };
        if (!std::all_of(digits.begin(), digits.end(), valid))
            return false;
        value = BigInt(digits.c_str(), radix, 0);
        return value.hasValue();
    }

    static unsigned significantBits(const BigInt& value) {
        const std::string bits = value.hasValue() ? std::string(value.bsl() + 1) : std::string();
        const std::size_t one = bits.find('1');
        return one == std::string::npos ? 1u : static_cast<unsigned>(bits.size() - one);
    }

    void edges(const JsValue* list) {
        if (!list || !list->isArray())
            return;
        for (const JsValue& item : list->items) {
            if (!item.isString() || item.text.size() < 2) {
                warn("edges that name no two nodes are left out");
                continue;
            }
            const std::string& edge = item.text;
            const char from = edge[0];
            std::size_t i = 1;
            while (i < edge.size() && std::string_view("~-<>|+").find(edge[i]) != std::string::npos)
                ++i;
            const std::string shape = edge.substr(1, i - 1);
            if (i >= edge.size() || shape.empty()) {
                warn("edges that name no two nodes are left out");
                continue;
            }
            const char to = edge[i];
            std::string label = i + 1 < edge.size() ? edge.substr(i + 1) : std::string();
            label.erase(0, label.find_first_not_of(' '));
            const auto a = m_nodes.find(from), b = m_nodes.find(to);
            if (a == m_nodes.end() || b == m_nodes.end()) {
                warn("edges between nodes that no lane defines are left out");
                continue;
            }
            Arrow arrow{{a->second.signal, a->second.time},
                        {b->second.signal, b->second.time},
                        label,
                        ArrowShape::Straight,
                        ArrowHeads::None};
            arrowStyle(shape, arrow);
            m_diagram.addArrow(arrow);
        }
    }

    // The shape characters between an edge's nodes: '~' bends the arrow into a curve, '<'
    // and '>' put heads on its ends. Right-angled and marked shapes become the straight or
    // curved arrow nearest to them.
    void arrowStyle(const std::string& shape, Arrow& arrow) {
        if (shape.find_first_of("|+") != std::string::npos)
            warn("edge shapes -| |- -|- and + are drawn as straight or curved arrows");
        if (shape.find('~') != std::string::npos)
            arrow.shape = ArrowShape::Curved;
        const bool start = shape.front() == '<', end = shape.back() == '>';
        arrow.heads = start && end ? ArrowHeads::Both
                      : start      ? ArrowHeads::Start
                      : end        ? ArrowHeads::End
                                   : ArrowHeads::None;
    }

    void headAndFoot(const JsValue* head, const JsValue* foot) {
        // Numbered cycles become grid lines every `every` slots (given in either part); the
        // numbering itself is the time axis.
        double every = 1;
        for (const JsValue* part : {foot, head}) {
            const JsValue* value = part ? part->member("every") : nullptr;
            if (value && value->isNumber() && value->number >= 1 && value->number <= 1e6)
                every = value->number;
        }
        for (const JsValue* part : {head, foot}) {
            if (!part || !part->isObject())
                continue;
            for (const auto& [key, value] : part->members) {
                if (key == "text") {
                    if (part == head)
                        m_diagram.setTitle(text(value));
                    else
                        warn("the foot text is left out");
                } else if (key == "tick" || key == "tock") {
                    m_diagram.setGrid({true, static_cast<Time>(std::llround(every)) * m_slot});
                    if (!value.isNumber() || value.number != 0)
                        warn("tick and tock numbering is shown as the time axis");
                } else if (key != "every") {
                    warn("head and foot keys other than text, tick, tock and every are left out");
                }
            }
        }
    }

    const char* m_name;
    Diagram& m_diagram;
    std::vector<std::string>& m_warnings;
    Time m_slot = WaveJsonReader::v_slotTime;
    Time m_start = 0;
    Time m_end = 0;
    std::map<char, Node> m_nodes;
};

} // namespace

bool WaveJsonReader::read(Diagram& diagram, std::string& error) {
    if (!open()) {
        error = std::string(filename()) + ": cannot be opened for reading";
        return false;
    }
    const std::string text((std::istreambuf_iterator<char>(*stream())),
                           std::istreambuf_iterator<char>());
    close();
    if (task()) {
        task()->setTotal(static_cast<unsigned long>(text.size()));
        if (task()->isCancelled()) {
            error = std::string(filename()) + ": reading was cancelled";
            return false;
        }
    }
    const bool good = readText(text, filename(), diagram, error);
    if (task())
        task()->setProgress(static_cast<unsigned long>(text.size()));
    return good;
}

bool WaveJsonReader::readText(std::string_view text, const char* name, Diagram& diagram,
                              std::string& error) {
    m_warnings.clear();
    JsValue root;
    if (!parseJsLiteral(text, name, root, error))
        return false;
    Diagram fresh;
    WaveBuilder builder(name, fresh, m_warnings);
    if (!builder.build(root, error))
        return false;
    diagram.assign(std::move(fresh));
    return true;
}
