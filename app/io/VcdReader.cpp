#include "io/VcdReader.h"

#include "io/VcdTokens.h"

#include "model/Diagram.h"
#include "model/SignalPattern.h"

#include "core/iTaskDescription.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <istream>
#include <limits>
#include <unordered_map>

namespace {

// How a variable's values are kept.
enum class VarKind { Logic, Real, Event, Text };

struct Target {
    Signal* signal;
    VarKind kind;
};

// Wider vectors would make every change of the variable cost more than the dump itself.
constexpr unsigned v_maxWidth = 1u << 16;

// The parser of one dump into a fresh diagram.
class VcdParser {
public:
    VcdParser(VcdTokens& tokens, const char* name, const std::vector<std::string>& patterns,
              Diagram& diagram, std::vector<std::string>& warnings)
        : m_tokens(tokens), m_name(name), m_diagram(diagram), m_warnings(warnings) {
        for (const std::string& pattern : patterns)
            m_patterns.emplace_back(pattern.c_str());
        m_shortIds.assign(128 + 128 * 128, -1);
    }

    bool parse(std::string& error) {
        const bool good = header() && body();
        if (!good)
            error = m_error;
        return good;
    }

private:
    bool fail(std::string message) {
        m_error = m_name;
        // A cancelled read stops at once, without looking for its line.
        const std::size_t line = m_tokens.cancelled() ? 0 : m_tokens.line();
        if (line > 0)
            m_error.append(":").append(std::to_string(line));
        m_error.append(": ").append(m_tokens.cancelled() ? "reading was cancelled" : message);
        return false;
    }

    void warn(std::string text) {
        if (std::find(m_warnings.begin(), m_warnings.end(), text) == m_warnings.end())
            m_warnings.push_back(std::move(text));
    }

    // The words of a declaration up to its $end.
    bool wordsToEnd(std::vector<std::string>& words) {
        words.clear();
        std::string_view token;
        while (m_tokens.next(token)) {
            if (token == "$end")
                return true;
            words.emplace_back(token);
        }
        return fail("expected $end before the end of the file");
    }

    bool skipToEnd() {
        std::vector<std::string> ignored;
        return wordsToEnd(ignored);
    }

    bool header() {
        std::string_view token;
        std::vector<std::string> words;
        while (m_tokens.next(token)) {
            if (token == "$enddefinitions") {
                if (!skipToEnd())
                    return false;
                if (!m_patterns.empty() && m_diagram.signalCount() == 0)
                    warn("no variable matches the signal patterns");
                return true;
            }
            if (token == "$timescale") {
                if (!wordsToEnd(words) || !timescale(words))
                    return false;
            } else if (token == "$scope") {
                if (!wordsToEnd(words))
                    return false;
                if (words.size() != 2)
                    return fail("expected a scope's type and name before $end");
                m_scopes.push_back(words[1]);
            } else if (token == "$upscope") {
                if (!skipToEnd())
                    return false;
                if (m_scopes.empty())
                    return fail("$upscope without an open $scope");
                m_scopes.pop_back();
            } else if (token == "$var") {
                if (!wordsToEnd(words) || !variable(words))
                    return false;
            } else if (!token.empty() && token[0] == '$') {
                // $date, $version, $comment and the keywords of other writers carry nothing
                // the diagram shows.
                if (!skipToEnd())
                    return false;
            } else {
                return fail("expected a declaration such as $var or $scope, found '" +
                            std::string(token) + "'");
            }
        }
        return fail("expected $enddefinitions before the end of the file");
    }

    bool timescale(const std::vector<std::string>& words) {
        std::string text;
        for (const std::string& word : words)
            text += word;
        std::size_t digits = 0;
        while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9')
            ++digits;
        std::int64_t magnitude = 0;
        TimeUnit unit{};
        auto [end, ec] = std::from_chars(text.data(), text.data() + digits, magnitude);
        if (ec != std::errc() || magnitude < 1 || magnitude > 1000000 ||
            !parseTimeUnit(std::string_view(text).substr(digits), unit))
            return fail("expected a time scale such as 1ns or 100 ps, found '" + text + "'");
        m_diagram.setTimeUnit(unit);
        m_magnitude = magnitude;
        return true;
    }

    bool variable(const std::vector<std::string>& words) {
        if (words.size() < 4)
            return fail("expected a variable's type, width, identifier code and name");
        const std::string& type = words[0];
        unsigned width = 0;
        const std::string& size = words[1];
        auto [end, ec] = std::from_chars(size.data(), size.data() + size.size(), width);
        if (ec != std::errc() || end != size.data() + size.size() || width < 1 ||
            width > v_maxWidth)
            return fail("expected a width from 1 to " + std::to_string(v_maxWidth) + ", found '" +
                        size + "'");
        VarKind kind = VarKind::Logic;
        if (type == "real" || type == "realtime" || type == "shortreal")
            kind = VarKind::Real;
        else if (type == "event")
            kind = VarKind::Event;
        else if (type == "string")
            kind = VarKind::Text;

        // A bit select ("data [3]") names a different variable from "data" and keeps its
        // index; a vector's range is shown by its width and dropped, so that patterns match
        // the name designers type.
        std::string reference = words[3];
        std::string range = words.size() > 4 ? words[4] : std::string();
        // An escaped identifier may start with a bracket; only a bracket after a name opens a
        // range.
        if (const std::size_t bracket = reference.find('[');
            bracket != std::string::npos && bracket > 0) {
            range = reference.substr(bracket);
            reference.erase(bracket);
        }
        std::string group;
        for (const std::string& scope : m_scopes)
            group.append(group.empty() ? "" : ".").append(scope);
        std::string name = group.empty() ? reference : group + "." + reference;
        if (!range.empty() && range.find(':') == std::string::npos)
            name += range;

        const std::int32_t id = idIndex(words[2], true);
        if (!selected(name))
            return true;
        if (m_diagram.findSignal(name) != Signal::npos && !range.empty())
            name += range;
        if (m_diagram.findSignal(name) != Signal::npos) {
            warn("variables declared twice under one name were kept once");
            return true;
        }
        // Real and string variables are buses whose changes show their values as text.
        const bool bus =
            (kind == VarKind::Logic && width > 1) || kind == VarKind::Real || kind == VarKind::Text;
        Signal& signal = m_diagram.addSignal(name, bus ? SignalKind::Bus : SignalKind::Bit,
                                             bus ? width : 1, group);
        if (type == "integer")
            signal.setBusFormat({RadixPlainDecimal, HDLNone});
        m_ids[static_cast<std::size_t>(id)].push_back({&signal, kind});
        return true;
    }

    bool selected(const std::string& name) const {
        return m_patterns.empty() ||
               std::any_of(m_patterns.begin(), m_patterns.end(),
                           [&](const SignalPattern& p) { return p.matches(name.c_str()); });
    }

    // The index of an identifier code's targets; with add, a new code gets an empty list, and
    // without it an unknown code gives -1.
    std::int32_t idIndex(std::string_view code, bool add) {
        std::int32_t* slot = nullptr;
        const auto c0 = static_cast<unsigned char>(code[0]);
        if (code.size() == 1 && c0 < 128) {
            slot = &m_shortIds[c0];
        } else if (code.size() == 2 && c0 < 128 && static_cast<unsigned char>(code[1]) < 128) {
            slot = &m_shortIds[128 + c0 * 128 + static_cast<unsigned char>(code[1])];
        } else {
            const auto found = m_longIds.find(std::string(code));
            if (found != m_longIds.end())
                return found->second;
            if (!add)
                return -1;
            slot = &m_longIds[std::string(code)];
            *slot = -1;
        }
        if (*slot < 0 && add) {
            *slot = static_cast<std::int32_t>(m_ids.size());
            m_ids.emplace_back();
        }
        return *slot;
    }

    const std::vector<Target>* targets(std::string_view code) {
        // Most dumps' codes are one or two characters: looked up here without a call.
        const std::int32_t index = code.size() == 1 && static_cast<unsigned char>(code[0]) < 128
                                       ? m_shortIds[static_cast<unsigned char>(code[0])]
                                   : code.empty() ? -1
                                                  : idIndex(code, false);
        if (index < 0) {
            warn("value changes of undeclared identifier codes were skipped");
            return nullptr;
        }
        return &m_ids[static_cast<std::size_t>(index)];
    }

    bool body() {
        std::string_view token;
        while (m_tokens.next(token)) {
            const char c = token[0];
            if (c == '#') {
                if (!time(token.substr(1)))
                    return false;
            } else if (c == 'b' || c == 'B' || c == 'r' || c == 'R' || c == 's' || c == 'S') {
                std::string_view code;
                if (!m_tokens.nextAfter(token, code))
                    return fail("expected an identifier code after '" +
                                std::string(token.substr(1)) + "'");
                const std::string_view value = token.substr(1);
                const std::vector<Target>* list = targets(code);
                if (!list)
                    continue;
                for (const Target& target : *list)
                    if (!(c == 'b' || c == 'B' ? vector(target, value) : text(target, value)))
                        return false;
            } else if (c == '$') {
                // $dumpvars, $dumpall, $dumpon and $dumpoff only frame value changes (those of
                // $dumpoff set every variable to x); a comment is skipped.
                if (token == "$comment" && !skipToEnd())
                    return false;
            } else if (token.size() >= 2 && scalarDigit(c) != 0) {
                const std::vector<Target>* list = targets(token.substr(1));
                if (!list)
                    continue;
                for (const Target& target : *list)
                    if (!scalar(target, c))
                        return false;
            } else {
                return fail("expected a time (#...), a value change or a keyword, found '" +
                            std::string(token) + "'");
            }
        }
        if (m_tokens.cancelled())
            return fail(std::string());
        if (m_timeSeen && m_last > std::min<Time>(0, m_first))
            m_diagram.setSpan(std::min<Time>(0, m_first), m_last);
        return true;
    }

    bool time(std::string_view digits) {
        std::int64_t count = 0;
        auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
        if (ec != std::errc() || end != digits.data() + digits.size() ||
            count > std::numeric_limits<Time>::max() / m_magnitude ||
            count < std::numeric_limits<Time>::min() / m_magnitude)
            return fail("expected a time after '#', found '#" + std::string(digits) + "'");
        m_now = count * m_magnitude;
        if (!m_timeSeen)
            m_first = m_now;
        m_timeSeen = true;
        m_last = std::max(m_last, m_now);
        return true;
    }

    // The binary digit a value character stands for (the nine-valued logic of other languages'
    // simulators folded onto four states), or 0 for a character that is no value.
    static char scalarDigit(char c) {
        switch (c) {
        case '0':
        case 'l':
        case 'L':
            return '0';
        case '1':
        case 'h':
        case 'H':
            return '1';
        case 'x':
        case 'X':
        case 'u':
        case 'U':
        case 'w':
        case 'W':
        case '-':
            return 'x';
        case 'z':
        case 'Z':
            return 'z';
        default:
            return 0;
        }
    }

    static BitState bitState(char c) {
        switch (c) {
        case '0':
            return BitState::Low;
        case '1':
            return BitState::High;
        case 'l':
        case 'L':
            return BitState::WeakLow;
        case 'h':
        case 'H':
            return BitState::WeakHigh;
        case 'z':
        case 'Z':
            return BitState::HighZ;
        default:
            return BitState::Unknown;
        }
    }

    bool scalar(const Target& target, char c) {
        Signal& signal = *target.signal;
        switch (target.kind) {
        case VarKind::Event:
            // An event has no duration: it shows as a pulse one time step long.
            (void)signal.appendChange(m_now, BitState::High);
            (void)signal.appendChange(m_now + 1, BitState::Low);
            return true;
        case VarKind::Real:
        case VarKind::Text:
            warn("bit values given to real or string variables were skipped");
            return true;
        case VarKind::Logic:
            break;
        }
        if (signal.kind() == SignalKind::Bit)
            return signal.appendChange(m_now, bitState(c)) || fail("cannot keep the change");
        const char digit = scalarDigit(c);
        return signal.appendBinary(m_now, std::string_view(&digit, 1)) ||
               fail("cannot keep the change");
    }

    bool vector(const Target& target, std::string_view digits) {
        if (digits.empty())
            return fail("expected binary digits after 'b'");
        Signal& signal = *target.signal;
        const bool bus = target.kind == VarKind::Logic && signal.kind() == SignalKind::Bus;
        // The common case, digits of 0 1 x z only, is checked once, by the signal.
        if (bus && signal.appendBinary(m_now, digits))
            return true;
        std::string folded(digits);
        for (char& d : folded)
            if ((d = scalarDigit(d)) == 0)
                return fail("expected binary digits after 'b', found 'b" + std::string(digits) +
                            "'");
        if (!bus)
            return scalar(target, digits.back());
        return signal.appendBinary(m_now, folded) || fail("cannot keep the change");
    }

    // A real or string value, shown as it is written as the text of a bus slot.
    bool text(const Target& target, std::string_view value) {
        if (target.kind == VarKind::Logic || target.kind == VarKind::Event) {
            warn("real or string values given to logic variables were skipped");
            return true;
        }
        return target.signal->appendText(m_now, value) || fail("cannot keep the change");
    }

    VcdTokens& m_tokens;
    const char* m_name;
    Diagram& m_diagram;
    std::vector<std::string>& m_warnings;
    std::vector<SignalPattern> m_patterns;
    std::vector<std::string> m_scopes;
    // Identifier codes of one or two characters (all of most dumps) are found by index.
    std::vector<std::int32_t> m_shortIds;
    std::unordered_map<std::string, std::int32_t> m_longIds;
    std::vector<std::vector<Target>> m_ids;
    std::int64_t m_magnitude = 1;
    Time m_now = 0;
    Time m_first = 0;
    Time m_last = 0;
    bool m_timeSeen = false;
    std::string m_error;
};

} // namespace

bool VcdReader::read(Diagram& diagram, std::string& error) {
    if (!open()) {
        error = std::string(filename()) + ": cannot be opened for reading";
        return false;
    }
    std::istream& in = *stream();
    if (task()) {
        in.seekg(0, std::ios::end);
        const auto size = in.tellg();
        in.seekg(0, std::ios::beg);
        if (size > 0)
            task()->setTotal(static_cast<unsigned long>(size));
    }
    const bool good = parse(&in, std::string_view(), filename(), diagram, error);
    close();
    return good;
}

bool VcdReader::readText(std::string_view text, const char* name, Diagram& diagram,
                         std::string& error) {
    return parse(nullptr, text, name, diagram, error);
}

bool VcdReader::parse(std::istream* in, std::string_view text, const char* name, Diagram& diagram,
                      std::string& error) {
    m_warnings.clear();
    VcdTokens tokens(in, text, task(), v_chunkBytes);
    Diagram fresh;
    VcdParser parser(tokens, name, m_patterns, fresh, m_warnings);
    if (!parser.parse(error))
        return false;
    diagram.assign(std::move(fresh));
    return true;
}
