#include "commands/DiagramCommands.h"

#include "commands/DiagramSession.h"
#include "io/DiagramFile.h"
#include "io/TqdSyntax.h"
#include "io/TqdWriter.h"
#include "model/SignalPattern.h"
#include "render/DiagramExporter.h"

#include <tcl.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <memory>
#include <string>

namespace {

// One call of a command: the interpreter, the session and the words after the subcommand.
struct Call {
    Tcl_Interp* interp;
    DiagramSession& session;
    int argc;
    Tcl_Obj* const* argv;

    std::string arg(int i) const { return Tcl_GetString(argv[i]); }
    int fail(const std::string& message) const {
        Tcl_SetObjResult(interp, Tcl_NewStringObj(message.c_str(), -1));
        return TCL_ERROR;
    }
    int ok(const std::string& result = std::string()) const {
        Tcl_SetObjResult(interp, Tcl_NewStringObj(result.c_str(), -1));
        return TCL_OK;
    }
    Diagram& diagram() const { return session.diagram; }
};

struct Subcommand {
    const char* name;
    const char* arguments;
    const char* help;
    int minimum;
    int maximum; // -1: any number
    int (*run)(const Call&);
};

struct Command {
    const char* name;
    const Subcommand* subcommands;
    std::size_t count;
};

std::string quote(const std::string& text) {
    std::string quoted = "\"";
    quoted.append(text).append("\"");
    return quoted;
}

// "-name value" pairs from argument first on; false (with the result set) for an unknown
// name or a missing value.
bool options(const Call& call, int first, std::initializer_list<const char*> known,
             std::map<std::string, std::string>& values) {
    for (int i = first; i < call.argc; i += 2) {
        const std::string name = call.arg(i);
        if (std::find_if(known.begin(), known.end(), [&](const char* k) { return name == k; }) ==
            known.end()) {
            std::string allowed;
            for (const char* k : known)
                allowed.append(allowed.empty() ? "" : ", ").append(k);
            call.fail("unknown option " + quote(name) + ": must be " + allowed);
            return false;
        }
        if (i + 1 >= call.argc) {
            call.fail("option " + quote(name) + " needs a value");
            return false;
        }
        values[name] = call.arg(i + 1);
    }
    return true;
}

bool time(const Call& call, const std::string& text, Time& result) {
    std::string error;
    if (parseTime(text, call.diagram().timeUnit(), result, error))
        return true;
    call.fail(error);
    return false;
}

bool integer(const Call& call, const std::string& text, long& result, const char* what) {
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (ec == std::errc() && end == text.data() + text.size() && !text.empty())
        return true;
    call.fail(std::string("expected ") + what + ", found " + quote(text));
    return false;
}

// The signal named by argument i, or npos with the result set.
std::size_t signalNamed(const Call& call, const std::string& name) {
    const std::size_t index = call.diagram().findSignal(name);
    if (index == Signal::npos)
        call.fail("no signal named " + quote(name));
    return index;
}

// --- diagram --------------------------------------------------------------------------------

// The session's diagram was replaced: it belongs to path (empty: none yet) and exports show
// its whole span again.
void beginDiagram(DiagramSession& session, const std::string& path) {
    session.path = path;
    session.from.reset();
    session.to.reset();
}

int diagramNew(const Call& call) {
    std::map<std::string, std::string> values;
    if (!options(call, 0, {"-title", "-unit", "-span"}, values))
        return TCL_ERROR;
    Diagram fresh;
    TimeUnit unit = TimeUnit::ns;
    if (values.count("-unit") && !parseTimeUnit(values["-unit"], unit))
        return call.fail("expected a time unit fs, ps, ns, us, ms or s, found " +
                         quote(values["-unit"]));
    fresh.setTimeUnit(unit);
    fresh.setTitle(values["-title"]);
    if (values.count("-span")) {
        int count = 0;
        Tcl_Obj** ends = nullptr;
        Tcl_Obj* list = Tcl_NewStringObj(values["-span"].c_str(), -1);
        Tcl_IncrRefCount(list);
        const bool listed =
            Tcl_ListObjGetElements(call.interp, list, &count, &ends) == TCL_OK && count == 2;
        std::string error;
        Time from = 0, to = 0;
        const bool read = listed && parseTime(Tcl_GetString(ends[0]), unit, from, error) &&
                          parseTime(Tcl_GetString(ends[1]), unit, to, error) && to > from;
        Tcl_DecrRefCount(list);
        if (!read)
            return call.fail("-span takes {FROM TO} with FROM before TO, not " +
                             quote(values["-span"]));
        fresh.setSpan(from, to);
    }
    call.session.diagram.assign(std::move(fresh));
    beginDiagram(call.session, std::string());
    return call.ok();
}

int diagramOpen(const Call& call) {
    std::string error;
    if (!readDiagramFile(call.arg(0), call.session.diagram, error))
        return call.fail(error);
    beginDiagram(call.session, call.arg(0));
    return call.ok(std::to_string(call.diagram().signalCount()));
}

int diagramSave(const Call& call) {
    const std::string path = call.argc > 0 ? call.arg(0) : call.session.path;
    if (path.empty())
        return call.fail("the diagram has no file yet: diagram save FILE");
    std::string error;
    if (!TqdWriter(path.c_str(), call.diagram()).save(error))
        return call.fail(error);
    call.session.path = path;
    return call.ok();
}

int diagramExport(const Call& call) {
    std::map<std::string, std::string> values;
    if (!options(call, 1,
                 {"-format", "-signals", "-from", "-to", "-width", "-scale", "-print-setup",
                  "-sharp-edges"},
                 values))
        return TCL_ERROR;
    const std::string path = call.arg(0);
    OutputFormat format{};
    if (values.count("-format") ? !parseOutputFormat(values["-format"], format)
                                : !outputFormatOfFile(path, format))
        return call.fail("cannot tell the format of " + quote(path) +
                         ": use -format png|pdf|svg|eps|mif");
    RenderOptions render;
    render.from = call.session.from;
    render.to = call.session.to;
    if (values.count("-signals")) {
        int count = 0;
        const char** patterns = nullptr;
        if (Tcl_SplitList(call.interp, values["-signals"].c_str(), &count, &patterns) != TCL_OK)
            return TCL_ERROR;
        render.patterns.assign(patterns, patterns + count);
        Tcl_Free(reinterpret_cast<char*>(patterns));
    }
    Time t = 0;
    if (values.count("-from")) {
        if (!time(call, values["-from"], t))
            return TCL_ERROR;
        render.from = t;
    }
    if (values.count("-to")) {
        if (!time(call, values["-to"], t))
            return TCL_ERROR;
        render.to = t;
    }
    long number = 0;
    if (values.count("-width")) {
        if (!integer(call, values["-width"], number, "a width in pixels") || number < 200 ||
            number > 100000)
            return call.fail("-width takes pixels from 200 to 100000");
        render.width = static_cast<int>(number);
    }
    if (values.count("-scale")) {
        if (!integer(call, values["-scale"], number, "a whole scale") || number < 1 || number > 16)
            return call.fail("-scale takes a whole number from 1 to 16");
        render.scale = static_cast<double>(number);
    }
    if (values.count("-sharp-edges"))
        render.slopedEdges = values["-sharp-edges"] == "0";
    if (values.count("-print-setup")) {
        ExportParameters parameters;
        if (!parameters.read(values["-print-setup"].c_str()))
            return call.fail(std::string("-print-setup: ") + parameters.message());
        render.exportParameters = parameters;
    }
    std::string error;
    if (!DiagramExporter::exportFile(call.diagram(), render, path, format, error))
        return call.fail(error);
    return call.ok(path);
}

int diagramInfo(const Call& call) {
    const Diagram& d = call.diagram();
    Tcl_Obj* result = Tcl_NewListObj(0, nullptr);
    auto add = [&](const char* key, const std::string& value) {
        Tcl_ListObjAppendElement(call.interp, result, Tcl_NewStringObj(key, -1));
        Tcl_ListObjAppendElement(call.interp, result, Tcl_NewStringObj(value.c_str(), -1));
    };
    add("title", d.title());
    add("file", call.session.path);
    add("unit", timeUnitName(d.timeUnit()));
    add("span",
        formatTime(d.spanStart(), d.timeUnit()) + " " + formatTime(d.spanEnd(), d.timeUnit()));
    add("signals", std::to_string(d.signalCount()));
    add("changes", std::to_string(d.totalChanges()));
    add("texts", std::to_string(d.totalTexts()));
    add("arrows", std::to_string(d.arrows().size()));
    add("markers", std::to_string(d.markers().size()));
    Tcl_SetObjResult(call.interp, result);
    return TCL_OK;
}

int diagramClose(const Call& call) {
    Diagram empty;
    call.session.diagram.assign(std::move(empty));
    beginDiagram(call.session, std::string());
    return call.ok();
}

// --- signal ---------------------------------------------------------------------------------

int signalAdd(const Call& call) {
    std::map<std::string, std::string> values;
    if (!options(call, 1,
                 {"-kind", "-width", "-group", "-radix", "-notation", "-period", "-duty", "-phase",
                  "-start"},
                 values))
        return TCL_ERROR;
    const std::string name = call.arg(0);
    if (name.empty() || call.diagram().findSignal(name) != Signal::npos)
        return call.fail(name.empty() ? "a signal needs a name"
                                      : "a signal named " + quote(name) + " exists already");
    long width = 1;
    if (values.count("-width") &&
        (!integer(call, values["-width"], width, "a width") || width < 1 || width > 1 << 20))
        return call.fail("-width takes a number of bits from 1 to 1048576");
    SignalKind kind = values.count("-period") ? SignalKind::Clock
                      : width > 1             ? SignalKind::Bus
                                              : SignalKind::Bit;
    if (values.count("-kind")) {
        const std::string k = values["-kind"];
        if (k != "bit" && k != "bus" && k != "clock" && k != "spacer")
            return call.fail("-kind takes bit, bus, clock or spacer, not " + quote(k));
        kind = k == "bit"     ? SignalKind::Bit
               : k == "bus"   ? SignalKind::Bus
               : k == "clock" ? SignalKind::Clock
                              : SignalKind::Spacer;
    }
    BusFormat format;
    if (values.count("-radix") && !tqd::parseRadix(values["-radix"], format.radix))
        return call.fail("-radix takes bin, oct, dec, hex or sdec, not " + quote(values["-radix"]));
    if (values.count("-notation") && !tqd::parseNotation(values["-notation"], format.notation))
        return call.fail("-notation takes plain, verilog or vhdl, not " +
                         quote(values["-notation"]));
    ClockSpec clock;
    if (values.count("-period") && !time(call, values["-period"], clock.period))
        return TCL_ERROR;
    if (values.count("-phase") && !time(call, values["-phase"], clock.phase))
        return TCL_ERROR;
    if (values.count("-duty")) {
        const std::string& duty = values["-duty"];
        auto [end, ec] = std::from_chars(duty.data(), duty.data() + duty.size(), clock.duty);
        if (ec != std::errc() || end != duty.data() + duty.size())
            return call.fail("-duty takes a percentage, not " + quote(duty));
    }
    if (values.count("-start")) {
        if (values["-start"] != "low" && values["-start"] != "high")
            return call.fail("-start takes low or high, not " + quote(values["-start"]));
        clock.startLevel = values["-start"] == "high" ? BitState::High : BitState::Low;
    }
    Signal probe(name, kind, static_cast<unsigned>(width));
    if (kind == SignalKind::Clock && !probe.setClock(clock))
        return call.fail("a clock needs a period of at least 2 time units and a duty between 0 "
                         "and 100");
    Signal& signal =
        call.diagram().addSignal(name, kind, static_cast<unsigned>(width), values["-group"]);
    signal.setBusFormat(format);
    (void)signal.setClock(clock);
    call.diagram().changed(aspectContents);
    return call.ok(name);
}

int signalRemove(const Call& call) {
    const SignalPattern pattern(call.arg(0).c_str());
    std::size_t removed = 0;
    for (std::size_t i = call.diagram().signalCount(); i-- > 0;) {
        if (pattern.matches(call.diagram().signal(i).name().c_str())) {
            call.diagram().removeSignal(i);
            ++removed;
        }
    }
    if (removed == 0)
        return call.fail("no signal matches " + quote(call.arg(0)));
    return call.ok(std::to_string(removed));
}

int signalRename(const Call& call) {
    const std::size_t index = signalNamed(call, call.arg(0));
    if (index == Signal::npos)
        return TCL_ERROR;
    if (!call.diagram().renameSignal(index, call.arg(1)))
        return call.fail("cannot rename to " + quote(call.arg(1)) + ": the name is empty or taken");
    return call.ok(call.arg(1));
}

int signalMove(const Call& call) {
    const std::size_t index = signalNamed(call, call.arg(0));
    if (index == Signal::npos)
        return TCL_ERROR;
    long position = 0;
    if (call.arg(1) == "end")
        position = static_cast<long>(call.diagram().signalCount()) - 1;
    else if (!integer(call, call.arg(1), position, "a position or end") || position < 0)
        return call.fail("expected a position (0 is the top) or end, found " + quote(call.arg(1)));
    call.diagram().moveSignal(index, static_cast<std::size_t>(position));
    return call.ok(std::to_string(call.diagram().findSignal(call.arg(0))));
}

// Bare digits are read in the signal's own radix ("A5" on a hexadecimal bus); Verilog and
// VHDL constants and plain decimal numbers in theirs; a lone x or z fills every bit.
bool busValue(const Call& call, const Signal& signal, const std::string& text, BigInt& value) {
    if (text.size() == 1 && std::strchr("xXzZ", text[0])) {
        value = BigInt(std::string(signal.width(), text[0]).c_str(), RadixBinary, signal.width());
        return true;
    }
    const Radix radix = signal.busFormat().radix;
    unsigned bits = 0;
    const bool bare = radix == RadixBinary        ? isBinary(text.c_str(), bits)
                      : radix == RadixOctal       ? !text.empty() && isOctal(text.c_str(), bits)
                      : radix == RadixHexadecimal ? isHexadecimal(text.c_str(), bits, true)
                                                  : isDecimal(text.c_str(), bits);
    if (bare) {
        value =
            BigInt(text.c_str(), radix == RadixDecimal ? RadixPlainDecimal : radix, signal.width());
        return true;
    }
    HDLanguage language = HDLNone;
    Radix parsed = RadixNone;
    char upper = 0;
    unsigned size = 0;
    std::unique_ptr<char[]> digits(
        parseHDLConstant(text.c_str(), language, parsed, upper, size, bits));
    if (digits) {
        value = BigInt(digits.get(), parsed, signal.width());
        return value.hasValue();
    }
    call.fail("expected a value for bus " + quote(signal.name()) +
              " such as A5, 8'hA5, X\"A5\", x or z, found " + quote(text));
    return false;
}

int signalSet(const Call& call) {
    const std::size_t index = signalNamed(call, call.arg(0));
    if (index == Signal::npos)
        return TCL_ERROR;
    Signal& signal = call.diagram().signal(index);
    if (signal.kind() == SignalKind::Clock || signal.kind() == SignalKind::Spacer)
        return call.fail(std::string(signal.kind() == SignalKind::Clock ? "clock " : "spacer ") +
                         quote(signal.name()) + " has no values to set");
    // With -text every value is the text a bus slot shows instead of a number.
    const bool text = call.argc > 1 && call.arg(1) == "-text";
    const int first = text ? 2 : 1;
    if ((call.argc - first) % 2 != 0 || call.argc == first)
        return call.fail(
            "wrong # args: should be \"signal set NAME ?-text? TIME VALUE ?TIME VALUE ...?\"");
    if (text && signal.kind() != SignalKind::Bus)
        return call.fail("bit " + quote(signal.name()) + " shows no text: -text is for buses");
    int set = 0;
    for (int i = first; i + 1 < call.argc; i += 2) {
        Time t = 0;
        if (!time(call, call.arg(i), t))
            return TCL_ERROR;
        const std::string value = call.arg(i + 1);
        if (text) {
            (void)signal.appendText(t, value);
        } else if (signal.kind() == SignalKind::Bit) {
            BitState state{};
            if (value.size() != 1 || !parseBitState(value[0], state))
                return call.fail("expected a bit value 0, 1, x, z, l or h, found " + quote(value));
            (void)signal.appendChange(t, state);
        } else {
            BigInt number;
            if (!busValue(call, signal, value, number))
                return TCL_ERROR;
            (void)signal.appendChange(t, number);
        }
        ++set;
    }
    call.diagram().changed(aspectContents);
    return call.ok(std::to_string(set));
}

int signalClear(const Call& call) {
    const std::size_t index = signalNamed(call, call.arg(0));
    if (index == Signal::npos)
        return TCL_ERROR;
    if (call.argc == 2)
        return call.fail("wrong # args: should be \"signal clear NAME ?FROM TO?\"");
    Signal& signal = call.diagram().signal(index);
    std::size_t removed = signal.changeCount();
    if (call.argc == 3) {
        Time from = 0, to = 0;
        if (!time(call, call.arg(1), from) || !time(call, call.arg(2), to))
            return TCL_ERROR;
        removed = signal.eraseChanges(from, to);
    } else {
        signal.clearChanges();
    }
    call.diagram().changed(aspectContents);
    return call.ok(std::to_string(removed));
}

int signalList(const Call& call) {
    const SignalPattern pattern(call.argc > 0 ? call.arg(0).c_str() : "**");
    Tcl_Obj* result = Tcl_NewListObj(0, nullptr);
    for (std::size_t i = 0; i < call.diagram().signalCount(); ++i) {
        const std::string& name = call.diagram().signal(i).name();
        if (pattern.matches(name.c_str()))
            Tcl_ListObjAppendElement(call.interp, result, Tcl_NewStringObj(name.c_str(), -1));
    }
    Tcl_SetObjResult(call.interp, result);
    return TCL_OK;
}

// --- arrow, marker, view --------------------------------------------------------------------

bool edge(const Call& call, int at, EdgeRef& edge) {
    edge.signal = call.arg(at);
    return signalNamed(call, edge.signal) != Signal::npos &&
           time(call, call.arg(at + 1), edge.time);
}

int arrowAdd(const Call& call) {
    Arrow arrow;
    if (!edge(call, 0, arrow.from) || !edge(call, 2, arrow.to))
        return TCL_ERROR;
    // A word after the ends other than an option's name is the label, which may begin with a
    // dash ("-5ns").
    const bool labelled = call.argc > 4 && call.arg(4) != "-shape" && call.arg(4) != "-heads";
    arrow.label = labelled ? call.arg(4) : "";
    std::map<std::string, std::string> values;
    if (!options(call, labelled ? 5 : 4, {"-shape", "-heads"}, values))
        return TCL_ERROR;
    if (values.count("-shape") && !tqd::parseArrowShape(values["-shape"], arrow.shape))
        return call.fail("-shape takes straight or curved, not " + quote(values["-shape"]));
    if (values.count("-heads") && !tqd::parseArrowHeads(values["-heads"], arrow.heads))
        return call.fail("-heads takes none, end, begin or both, not " + quote(values["-heads"]));
    call.diagram().addArrow(arrow);
    return call.ok(std::to_string(call.diagram().arrows().size() - 1));
}

int removeAt(const Call& call, bool (Diagram::*remove)(std::size_t), const char* what) {
    long index = 0;
    if (!integer(call, call.arg(0), index, "an index") || index < 0 ||
        !(call.diagram().*remove)(static_cast<std::size_t>(index)))
        return call.fail(std::string("no ") + what + " with index " + quote(call.arg(0)));
    return call.ok();
}

int arrowRemove(const Call& call) {
    return removeAt(call, &Diagram::removeArrow, "arrow");
}

int markerAdd(const Call& call) {
    Marker marker;
    if (!time(call, call.arg(0), marker.time))
        return TCL_ERROR;
    marker.label = call.argc > 1 ? call.arg(1) : "";
    call.diagram().addMarker(marker);
    return call.ok(std::to_string(call.diagram().markers().size() - 1));
}

int markerRemove(const Call& call) {
    return removeAt(call, &Diagram::removeMarker, "marker");
}

int viewRange(const Call& call) {
    DiagramSession& s = call.session;
    if (call.argc == 1) {
        if (call.arg(0) != "all")
            return call.fail("wrong # args: should be \"view range ?FROM TO?\" or \"view range "
                             "all\"");
        s.from.reset();
        s.to.reset();
    } else if (call.argc == 2) {
        Time from = 0, to = 0;
        if (!time(call, call.arg(0), from) || !time(call, call.arg(1), to))
            return TCL_ERROR;
        if (to <= from)
            return call.fail("the range must end after it starts");
        s.from = from;
        s.to = to;
    }
    const TimeUnit unit = call.diagram().timeUnit();
    return call.ok(formatTime(s.from.value_or(call.diagram().spanStart()), unit) + " " +
                   formatTime(s.to.value_or(call.diagram().spanEnd()), unit));
}

// clang-format off
const Subcommand v_diagram[] = {
    {"new", "?-title TEXT? ?-unit UNIT? ?-span {FROM TO}?", "starts an empty diagram", 0, 6, diagramNew},
    {"open", "FILE", "reads a diagram file", 1, 1, diagramOpen},
    {"save", "?FILE?", "writes the diagram as .tqd (to the file it came from by default)", 0, 1, diagramSave},
    {"export", "FILE ?-format F? ?-signals PATTERNS? ?-from T? ?-to T? ?-width PX? ?-scale N? ?-sharp-edges 0|1? ?-print-setup TEXT?",
     "renders the diagram as png, pdf, svg, eps or mif", 1, 17, diagramExport},
    {"info", "", "title, file, unit, span and counts as a dictionary", 0, 0, diagramInfo},
    {"close", "", "drops the diagram", 0, 0, diagramClose},
};
const Subcommand v_signal[] = {
    {"add", "NAME ?-kind bit|bus|clock|spacer? ?-width W? ?-group G? ?-radix R? ?-notation N? ?-period T? ?-duty D? ?-phase T? ?-start low|high?",
     "adds a signal at the bottom", 1, 19, signalAdd},
    {"remove", "PATTERN", "removes the matching signals; returns how many", 1, 1, signalRemove},
    {"rename", "NAME NEWNAME", "renames a signal and what refers to it", 2, 2, signalRename},
    {"move", "NAME POSITION", "moves a signal to a position (0 the top, or end)", 2, 2, signalMove},
    {"set", "NAME ?-text? TIME VALUE ?TIME VALUE ...?", "sets values from the times on (0 1 x z l h, or a bus value; with -text, the texts bus slots show)", 3, -1, signalSet},
    {"clear", "NAME ?FROM TO?", "removes a signal's changes (within [FROM, TO))", 1, 3, signalClear},
    {"list", "?PATTERN?", "the names of the (matching) signals, in order", 0, 1, signalList},
};
const Subcommand v_arrow[] = {
    {"add", "FROMSIGNAL FROMTIME TOSIGNAL TOTIME ?LABEL? ?-shape straight|curved? ?-heads none|end|begin|both?",
     "adds an arrow between two edges (straight, a head at the TO end by default; begin is the FROM end); returns its index", 4, 9, arrowAdd},
    {"remove", "INDEX", "removes an arrow", 1, 1, arrowRemove},
};
const Subcommand v_marker[] = {
    {"add", "TIME ?LABEL?", "adds a vertical marker; returns its index", 1, 2, markerAdd},
    {"remove", "INDEX", "removes a marker", 1, 1, markerRemove},
};
const Subcommand v_view[] = {
    {"range", "?FROM TO? | all", "the window exports draw by default", 0, 2, viewRange},
};
const Command v_commands[] = {
    {"diagram", v_diagram, std::size(v_diagram)},
    {"signal", v_signal, std::size(v_signal)},
    {"arrow", v_arrow, std::size(v_arrow)},
    {"marker", v_marker, std::size(v_marker)},
    {"view", v_view, std::size(v_view)},
};
// clang-format on

std::string helpOf(const Command& command) {
    std::string text;
    for (std::size_t i = 0; i < command.count; ++i) {
        const Subcommand& sub = command.subcommands[i];
        text.append(command.name).append(" ").append(sub.name);
        if (*sub.arguments)
            text.append(" ").append(sub.arguments);
        text.append("\n    ").append(sub.help).append("\n");
    }
    return text;
}

struct Registration {
    const Command* command;
    DiagramSession* session;
};

int dispatch(ClientData data, Tcl_Interp* interp, int objc, Tcl_Obj* const objv[]) {
    const auto& registration = *static_cast<Registration*>(data);
    const Command& command = *registration.command;
    std::string names;
    for (std::size_t i = 0; i < command.count; ++i)
        names.append(command.subcommands[i].name).append(", ");
    names.append("help");
    Call call{interp, *registration.session, objc - 2, objv + 2};
    if (objc < 2)
        return call.fail(std::string("wrong # args: should be \"") + command.name +
                         " subcommand ?arg ...?\": subcommands are " + names);
    const std::string name = Tcl_GetString(objv[1]);
    if (name == "help")
        return call.ok(helpOf(command));
    for (std::size_t i = 0; i < command.count; ++i) {
        const Subcommand& sub = command.subcommands[i];
        if (name != sub.name)
            continue;
        if (call.argc < sub.minimum || (sub.maximum >= 0 && call.argc > sub.maximum)) {
            std::string usage = command.name;
            usage.append(" ").append(sub.name);
            if (*sub.arguments)
                usage.append(" ").append(sub.arguments);
            return call.fail("wrong # args: should be \"" + usage + "\"");
        }
        return sub.run(call);
    }
    return call.fail("unknown subcommand " + quote(name) + ": must be " + names);
}

void deleteRegistration(ClientData data) {
    delete static_cast<Registration*>(data);
}

} // namespace

void DiagramCommands::registerIn(Tcl_Interp* interp, DiagramSession& session) {
    for (const Command& command : v_commands) {
        Tcl_CreateObjCommand(interp, command.name, dispatch, new Registration{&command, &session},
                             deleteRegistration);
    }
}

const char* DiagramCommands::overview() {
    static const std::string text = [] {
        std::string all;
        for (const Command& command : v_commands)
            all.append(helpOf(command));
        return all;
    }();
    return text.c_str();
}
