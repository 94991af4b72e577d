#include "io/TqdReader.h"

#include "io/TqdSyntax.h"
#include "model/Diagram.h"

#include "core/StringFunctions.h"
#include "core/iTaskDescription.h"
#include "text/FileParser.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <iterator>
#include <memory>
#include <streambuf>
#include <unordered_map>

namespace {

// Reads the text in place, without the copy a string stream would make.
class MemoryBuffer : public std::streambuf {
public:
    explicit MemoryBuffer(std::string_view text) {
        char* begin = const_cast<char*>(text.data());
        setg(begin, begin, begin + text.size());
    }
};

// A string token's text keeps the escapes the writer put in (\" \\ \t \n \r); this undoes
// them.
std::string unescaped(const char* text) {
    std::unique_ptr<char[]> expanded(strExpandQuotedString(text));
    return expanded ? std::string(expanded.get()) : std::string();
}

std::string shown(const char* text) {
    return text && *text ? std::string("'") + text + "'" : std::string("nothing");
}

// The parser of one .tqd text into a fresh diagram. Every section is processed as soon as it
// is read, so a section may refer only to signals defined above it. Positions are byte
// offsets into the text, turned into line numbers only for the message.
class TqdParser : public FileParser {
public:
    TqdParser(std::istream& in, std::string_view text, Diagram& diagram)
        : FileParser(in, &diagram, tqd::sections(), tqd::keywords()), m_text(text),
          m_diagram(diagram) {}

    // The message for a failed read, "LINE: what was expected", or empty after a good one.
    std::string failure() {
        if (!m_message.empty())
            return std::to_string(lineAt(m_errorOffset)) + ": " + m_message;
        if (hasError()) {
            std::string message = errorMessage();
            const std::string prefix = "Syntax error: ";
            if (message.compare(0, prefix.size(), prefix) == 0)
                message.erase(0, prefix.size());
            message += ", found " + (token().type() == ST_END ? std::string("the end of the file")
                                                              : shown(token().text()));
            return std::to_string(lineAt(numRead())) + ": " + message;
        }
        if (m_parenDepth > 0)
            return std::to_string(lineAt(m_text.size())) +
                   ": expected ')' before the end of the file";
        return std::string();
    }

protected:
    // Counts parentheses over the whole text, so that a list cut off by the end of the file
    // is an error rather than a list "as far as it got". The scanner calls this once more for
    // every white-space character, nested; only the outermost call has the final token.
    Token& scanToken() override {
        ++m_scanDepth;
        Token& scanned = FileParser::scanToken();
        if (--m_scanDepth == 0) {
            if (scanned.type() == ST_LPAREN)
                ++m_parenDepth;
            else if (scanned.type() == ST_RPAREN && m_parenDepth > 0)
                --m_parenDepth;
        }
        return scanned;
    }

    FileSection* parseSection() override {
        // The previous section's elements are gone; their addresses may come back.
        m_offsets.clear();
        m_changes = nullptr;
        m_changeStep = ChangeStep::Name;
        while (!hasError() && token().type() != ST_END) {
            if (sectionDescriptor(token().text()) != nullptr) {
                m_sectionOffset = numRead();
                return FileParser::parseSection();
            }
            if (token().type() == ST_WORD) {
                std::string name = token().text();
                advance();
                if (token().type() == ST_LPAREN)
                    keepForeign(std::move(name));
            } else {
                advance();
            }
        }
        return nullptr;
    }

    MultipleFileElement* parseKeyword(const KeywordDescriptor& descriptor) override {
        const unsigned long offset = numRead();
        MultipleFileElement* element = FileParser::parseKeyword(descriptor);
        m_offsets[element] = offset;
        return element;
    }

    bool processNowTest(const SectionDescriptor&) override { return true; }
    bool keepTest(const SectionDescriptor&) override { return false; }

    bool processNow(FileSection& section) override {
        switch (section.sectionDescriptor().id) {
        case tqd::SectionDiagram:
            return readDiagram(section);
        case tqd::SectionGroup:
            return readGroup(section);
        case tqd::SectionSignal:
            return readSignal(section);
        case tqd::SectionChanges:
            return m_changeStep != ChangeStep::Value ||
                   fail(m_changeOffset, "expected a value after the time in Changes");
        case tqd::SectionArrow:
            return readArrow(section);
        case tqd::SectionMarker:
            return readMarker(section);
        case tqd::SectionAnnotation:
            return readAnnotation(section);
        case tqd::SectionGap:
            return readGap(section);
        default:
            return true;
        }
    }

    // Changes( "signal" time value time value ... ) are taken token by token here, without
    // building file elements: a signal may have millions of them.
    bool itemFilter(MultipleFileElement&, ScanType type, short id) override {
        if (id != tqd::SectionChanges)
            return false;
        const Token& current = token();
        switch (m_changeStep) {
        case ChangeStep::Name:
            takeChangesName(type, current);
            break;
        case ChangeStep::Time:
            if (type == ST_MINUS && !m_negative) {
                m_negative = true;
                advance();
                return true;
            }
            takeChangeTime(type, current);
            break;
        case ChangeStep::Value:
            takeChangeValue(type, current);
            break;
        }
        if (!hasError())
            advance();
        return true;
    }

private:
    enum class ChangeStep { Name, Time, Value };

    unsigned long lineAt(std::size_t offset) const {
        offset = std::min(offset, m_text.size());
        return 1 + static_cast<unsigned long>(std::count(
                       m_text.begin(), m_text.begin() + static_cast<long>(offset), '\n'));
    }

    bool fail(unsigned long offset, std::string message) {
        if (m_message.empty()) {
            m_message = std::move(message);
            m_errorOffset = offset;
        }
        return false;
    }

    // Stops the parse at the current token with message.
    void stop(std::string message) {
        fail(numRead(), std::move(message));
        error(m_message.c_str(), PARSER_ERROR_SYNTAX);
    }

    // The current token is the opening parenthesis of an unknown section: keeps its text.
    void keepForeign(std::string name) {
        const unsigned long start = numRead() - 1;
        const int depth = m_parenDepth - 1;
        while (!hasError() && token().type() != ST_END) {
            advance();
            if (token().type() == ST_RPAREN && m_parenDepth == depth)
                break;
        }
        if (token().type() != ST_RPAREN)
            return;
        const unsigned long end = std::min<unsigned long>(numRead(), m_text.size());
        m_diagram.addForeignSection(
            {std::move(name), std::string(m_text.substr(start, end - start))});
        advance();
    }

    unsigned long offsetOf(const FileElement& element) const {
        const auto it = m_offsets.find(&element);
        return it == m_offsets.end() ? m_sectionOffset : it->second;
    }

    // --- Items of the sections -----------------------------------------------------------------

    // The single text item at index of element (a string, word or number, with a leading
    // '-' for a negative number), or null.
    static const char* item(FileElement& element, int index) {
        if (index >= element.numberOfElements())
            return nullptr;
        auto* single = dynamic_cast<SingleFileElement*>(&element.element(index));
        return single ? single->value(0) : nullptr;
    }

    bool text(FileElement& element, int index, std::string& out) {
        const char* value = item(element, index);
        if (!value)
            return fail(offsetOf(element),
                        std::string("expected a text in ") + element.key() + "(...)");
        out = element.element(index).type(0) == ST_STRING ? unescaped(value) : value;
        return true;
    }

    template <class Integer>
    bool integer(FileElement& element, int index, Integer& out, const char* what) {
        const char* value = item(element, index);
        const std::string_view digits = value ? value : "";
        auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), out);
        if (value && ec == std::errc() && end == digits.data() + digits.size() && !digits.empty())
            return true;
        return fail(offsetOf(element), std::string("expected ") + what + " in " + element.key() +
                                           "(...), found " + shown(value));
    }

    bool real(FileElement& element, int index, double& out) {
        const char* value = item(element, index);
        const std::string_view digits = value ? value : "";
        auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), out);
        if (value && ec == std::errc() && end == digits.data() + digits.size() && !digits.empty())
            return true;
        return fail(offsetOf(element), std::string("expected a number in ") + element.key() +
                                           "(...), found " + shown(value));
    }

    bool unexpected(FileElement& element, const char* section, const char* allowed) {
        const char* found = element.key() ? element.key() : item(element, 0);
        return fail(offsetOf(element), std::string("expected one of ") + allowed + " in " +
                                           section + ", found " +
                                           (found ? shown(found) : std::string("a list")));
    }

    bool knownSignal(FileElement& element, const std::string& name) {
        return m_diagram.findSignal(name) != Signal::npos ||
               fail(offsetOf(element),
                    "unknown signal '" + name + "' (a Signal section must define it above)");
    }

    bool readDiagram(FileSection& section) {
        const char* allowed = "version, title, timeunit, span, grid";
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            std::string word;
            switch (e.id()) {
            case tqd::KeyVersion: {
                int version = 0;
                if (!integer(e, 0, version, "a version number"))
                    return false;
                if (version > tqd::v_version)
                    return fail(offsetOf(e), "file version " + std::to_string(version) +
                                                 " is newer than this program reads (" +
                                                 std::to_string(tqd::v_version) + ")");
                break;
            }
            case tqd::KeyTitle:
                if (!text(e, 0, word))
                    return false;
                m_diagram.setTitle(word);
                break;
            case tqd::KeyTimeUnit: {
                TimeUnit unit{};
                if (!text(e, 0, word) || !parseTimeUnit(word, unit))
                    return fail(offsetOf(e), "expected a time unit fs, ps, ns, us, ms or s, "
                                             "found " +
                                                 shown(item(e, 0)));
                m_diagram.setTimeUnit(unit);
                break;
            }
            case tqd::KeySpan: {
                Time start = 0, end = 0;
                if (!integer(e, 0, start, "a start time") || !integer(e, 1, end, "an end time"))
                    return false;
                if (end <= start)
                    return fail(offsetOf(e), "expected a span whose end is after its start");
                m_diagram.setSpan(start, end);
                break;
            }
            case tqd::KeyGrid: {
                Grid grid;
                if (!text(e, 0, word) || (word != "on" && word != "off"))
                    return fail(offsetOf(e),
                                "expected on or off in grid(...), found " + shown(item(e, 0)));
                grid.visible = word == "on";
                if (e.numberOfElements() > 1 && !integer(e, 1, grid.spacing, "a spacing"))
                    return false;
                m_diagram.setGrid(grid);
                break;
            }
            default:
                return unexpected(e, "TimingDiagram", allowed);
            }
        }
        return true;
    }

    bool readGroup(FileSection& section) {
        std::string name;
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            if (e.id() != tqd::KeyName)
                return unexpected(e, "Group", "name");
            if (!text(e, 0, name))
                return false;
        }
        if (name.empty())
            return fail(m_sectionOffset, "expected name(\"...\") in Group");
        m_diagram.addGroup(name);
        return true;
    }

    bool readClock(FileElement& clockElement, ClockSpec& clock) {
        for (int i = 0; i < clockElement.numberOfElements(); ++i) {
            FileElement& e = clockElement.element(i);
            std::string word;
            switch (e.id()) {
            case tqd::KeyPeriod:
                if (!integer(e, 0, clock.period, "a period"))
                    return false;
                break;
            case tqd::KeyDuty:
                if (!real(e, 0, clock.duty))
                    return false;
                break;
            case tqd::KeyPhase:
                if (!integer(e, 0, clock.phase, "a time"))
                    return false;
                break;
            case tqd::KeyStart:
                if (!text(e, 0, word) || (word != "low" && word != "high"))
                    return fail(offsetOf(e),
                                "expected low or high in start(...), found " + shown(item(e, 0)));
                clock.startLevel = word == "high" ? BitState::High : BitState::Low;
                break;
            default:
                return unexpected(e, "clock(...)", "period, duty, phase, start");
            }
        }
        return true;
    }

    bool readBus(FileElement& busElement, unsigned& width, BusFormat& format) {
        for (int i = 0; i < busElement.numberOfElements(); ++i) {
            FileElement& e = busElement.element(i);
            std::string word;
            switch (e.id()) {
            case tqd::KeyWidth:
                if (!integer(e, 0, width, "a width"))
                    return false;
                if (width < 1 || width > 1u << 20)
                    return fail(offsetOf(e), "expected a width from 1 to 1048576");
                break;
            case tqd::KeyRadix:
                if (!text(e, 0, word) || !tqd::parseRadix(word, format.radix))
                    return fail(offsetOf(e), "expected bin, oct, dec, hex or sdec in radix(...), "
                                             "found " +
                                                 shown(item(e, 0)));
                break;
            case tqd::KeyNotation:
                if (!text(e, 0, word) || !tqd::parseNotation(word, format.notation))
                    return fail(offsetOf(e), "expected plain, verilog or vhdl in notation(...), "
                                             "found " +
                                                 shown(item(e, 0)));
                break;
            default:
                return unexpected(e, "bus(...)", "width, radix, notation");
            }
        }
        return true;
    }

    bool readSignal(FileSection& section) {
        std::string name, group;
        int kinds = 0;
        SignalKind kind = SignalKind::Bit;
        ClockSpec clock;
        BusFormat format;
        unsigned width = 1;
        bool nameless = false;
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            switch (e.id()) {
            case tqd::KeyName:
                if (!text(e, 0, name))
                    return false;
                break;
            case tqd::KeyNameless:
                nameless = true;
                break;
            case tqd::KeyGroup:
                if (!text(e, 0, group))
                    return false;
                break;
            case tqd::KeyClock:
                kind = SignalKind::Clock;
                ++kinds;
                if (!readClock(e, clock))
                    return false;
                break;
            case tqd::KeyBit:
                kind = SignalKind::Bit;
                ++kinds;
                break;
            case tqd::KeyBus:
                kind = SignalKind::Bus;
                ++kinds;
                if (!readBus(e, width, format))
                    return false;
                break;
            case tqd::KeySpacer:
                kind = SignalKind::Spacer;
                ++kinds;
                break;
            default:
                return unexpected(e, "Signal", "name, clock, bit, bus, spacer, group, nameless");
            }
        }
        if (name.empty())
            return fail(m_sectionOffset, "expected name(\"...\") in Signal");
        if (kinds != 1)
            return fail(m_sectionOffset, "expected exactly one of clock(...), bit, bus(...) or "
                                         "spacer in Signal '" +
                                             name + "'");
        if (m_diagram.findSignal(name) != Signal::npos)
            return fail(m_sectionOffset, "signal '" + name + "' is defined twice");
        Signal& signal = m_diagram.addSignal(name, kind, width, group);
        signal.setBusFormat(format);
        signal.setNameShown(!nameless);
        if (kind == SignalKind::Clock && !signal.setClock(clock))
            return fail(m_sectionOffset, "expected a clock with a period of at least 2 and a "
                                         "duty between 0 and 100 in Signal '" +
                                             name + "'");
        return true;
    }

    bool edge(FileElement& element, EdgeRef& edge) {
        return text(element, 0, edge.signal) && knownSignal(element, edge.signal) &&
               integer(element, 1, edge.time, "a time");
    }

    bool readArrow(FileSection& section) {
        Arrow arrow;
        int ends = 0;
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            switch (e.id()) {
            case tqd::KeyFrom:
                ++ends;
                if (!edge(e, arrow.from))
                    return false;
                break;
            case tqd::KeyTo:
                ++ends;
                if (!edge(e, arrow.to))
                    return false;
                break;
            case tqd::KeyLabel:
                if (!text(e, 0, arrow.label))
                    return false;
                break;
            case tqd::KeyShape: {
                std::string word;
                if (!text(e, 0, word) || !tqd::parseArrowShape(word, arrow.shape))
                    return fail(offsetOf(e), "expected straight or curved in shape(...), found " +
                                                 shown(item(e, 0)));
                break;
            }
            case tqd::KeyHeads: {
                std::string word;
                if (!text(e, 0, word) || !tqd::parseArrowHeads(word, arrow.heads))
                    return fail(offsetOf(e), "expected none, end, begin or both in heads(...), "
                                             "found " +
                                                 shown(item(e, 0)));
                break;
            }
            default:
                return unexpected(e, "Arrow", "from, to, label, shape, heads");
            }
        }
        if (ends != 2 || arrow.from.signal.empty() || arrow.to.signal.empty())
            return fail(m_sectionOffset, "expected from(\"signal\", time) and to(\"signal\", time) "
                                         "in Arrow");
        m_diagram.addArrow(arrow);
        return true;
    }

    bool readMarker(FileSection& section) {
        Marker marker;
        bool placed = false;
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            if (e.id() == tqd::KeyAt) {
                placed = true;
                if (!integer(e, 0, marker.time, "a time"))
                    return false;
            } else if (e.id() == tqd::KeyLabel) {
                if (!text(e, 0, marker.label))
                    return false;
            } else {
                return unexpected(e, "Marker", "at, label");
            }
        }
        if (!placed)
            return fail(m_sectionOffset, "expected at(time) in Marker");
        m_diagram.addMarker(marker);
        return true;
    }

    bool readAnnotation(FileSection& section) {
        Annotation annotation;
        bool placed = false;
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            if (e.id() == tqd::KeyAt) {
                placed = true;
                if (!integer(e, 0, annotation.time, "a time"))
                    return false;
            } else if (e.id() == tqd::KeySignal) {
                if (!text(e, 0, annotation.signal) || !knownSignal(e, annotation.signal))
                    return false;
            } else if (e.id() == tqd::KeyText) {
                if (!text(e, 0, annotation.text))
                    return false;
            } else {
                return unexpected(e, "Annotation", "at, signal, text");
            }
        }
        if (!placed)
            return fail(m_sectionOffset, "expected at(time) in Annotation");
        m_diagram.addAnnotation(annotation);
        return true;
    }

    bool readGap(FileSection& section) {
        Gap gap;
        bool placed = false;
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& e = section.element(i);
            if (e.id() == tqd::KeyAt) {
                placed = true;
                if (!integer(e, 0, gap.time, "a time"))
                    return false;
            } else if (e.id() == tqd::KeySignal) {
                if (!text(e, 0, gap.signal) || !knownSignal(e, gap.signal))
                    return false;
            } else {
                return unexpected(e, "Gap", "at, signal");
            }
        }
        if (!placed)
            return fail(m_sectionOffset, "expected at(time) in Gap");
        m_diagram.addGap(gap);
        return true;
    }

    // --- Changes ------------------------------------------------------------------------------

    void takeChangesName(ScanType type, const Token& current) {
        if (type != ST_STRING && type != ST_WORD) {
            stop("expected the signal's name in quotes first in Changes, found " +
                 shown(current.text()));
            return;
        }
        const std::string name = type == ST_STRING ? unescaped(current.text()) : current.text();
        const std::size_t index = m_diagram.findSignal(name);
        if (index == Signal::npos) {
            stop("unknown signal '" + name + "' (a Signal section must define it above)");
            return;
        }
        m_changes = &m_diagram.signal(index);
        if (m_changes->kind() == SignalKind::Clock) {
            stop("clock '" + name + "' has no changes");
            return;
        }
        if (m_changes->kind() == SignalKind::Spacer) {
            stop("spacer '" + name + "' has no changes");
            return;
        }
        m_changeStep = ChangeStep::Time;
    }

    void takeChangeTime(ScanType type, const Token& current) {
        Time time = 0;
        const char* text = current.text();
        auto [end, ec] = std::from_chars(text, text + current.length(), time);
        if (type != ST_NUMBER || ec != std::errc() || end != text + current.length()) {
            stop("expected a time (a whole number) in Changes, found " + shown(text));
            return;
        }
        m_time = m_negative ? -time : time;
        m_negative = false;
        m_changeOffset = numRead();
        m_changeStep = ChangeStep::Value;
    }

    void takeChangeValue(ScanType type, const Token& current) {
        const char* text = current.text();
        m_changeStep = ChangeStep::Time;
        if (m_changes->kind() == SignalKind::Bit) {
            BitState state{};
            if ((type != ST_NUMBER && type != ST_WORD) || current.length() != 1 ||
                !parseBitState(text[0], state)) {
                stop("expected a bit value 0, 1, x, z, l or h in Changes, found " + shown(text));
                return;
            }
            (void)m_changes->appendChange(m_time, state);
            return;
        }
        if (type == ST_STRING && text[0] == 't') {
            (void)m_changes->appendText(m_time, unescaped(text + 1));
            return;
        }
        if (type != ST_STRING || !busBits(text, current.length())) {
            stop("expected a bus value \"h...\", \"b...\" or \"t...\" in Changes, found " +
                 shown(text));
            return;
        }
        (void)m_changes->appendBinary(m_time, m_bits);
    }

    // Binary digits of a written bus value into m_bits; false for a bad value.
    bool busBits(const char* text, unsigned length) {
        m_bits.clear();
        if (length < 2 || (text[0] != 'h' && text[0] != 'b'))
            return false;
        for (unsigned i = 1; i < length; ++i) {
            const char c = text[i];
            if (text[0] == 'b') {
                if (c != '0' && c != '1' && c != 'x' && c != 'z')
                    return false;
                m_bits.push_back(c);
            } else if (c == 'x' || c == 'z') {
                m_bits.append(4, c);
            } else {
                const int digit = BigInt::asDigit(c);
                if (digit < 0 || (c >= 'A' && c <= 'F'))
                    return false;
                for (int b = 3; b >= 0; --b)
                    m_bits.push_back((digit >> b) & 1 ? '1' : '0');
            }
        }
        return true;
    }

    std::string_view m_text;
    Diagram& m_diagram;
    std::string m_message;
    unsigned long m_errorOffset = 0;
    unsigned long m_sectionOffset = 0;
    std::unordered_map<const FileElement*, unsigned long> m_offsets;
    int m_parenDepth = 0;
    int m_scanDepth = 0;

    Signal* m_changes = nullptr;
    ChangeStep m_changeStep = ChangeStep::Name;
    bool m_negative = false;
    Time m_time = 0;
    unsigned long m_changeOffset = 0;
    std::string m_bits;
};

} // namespace

bool TqdReader::read(Diagram& diagram, std::string& error) {
    if (!open()) {
        error = std::string(filename()) + ": cannot open the file";
        return false;
    }
    std::string text((std::istreambuf_iterator<char>(*stream())), std::istreambuf_iterator<char>());
    close();
    return readText(text, filename(), diagram, error, task());
}

bool TqdReader::readText(std::string_view text, const char* name, Diagram& diagram,
                         std::string& error, iTaskDescription* task) {
    MemoryBuffer buffer(text);
    std::istream in(&buffer);
    Diagram fresh;
    TqdParser parser(in, text, fresh);
    if (task) {
        task->setTotal(text.size());
        parser.setTask(*task);
    }
    const bool accepted = parser.read(1);
    const std::string failure = parser.failure();
    if (!failure.empty()) {
        error = std::string(name) + ":" + failure;
        return false;
    }
    if (!accepted || (task && task->isCancelled())) {
        error = std::string(name) + ": the read was cancelled";
        return false;
    }
    diagram.assign(std::move(fresh));
    return true;
}
