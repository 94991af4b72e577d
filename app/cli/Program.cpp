#include "cli/Program.h"

#include "cli/ProgressBar.h"
#include "commands/ScriptRunner.h"
#include "io/DiagramFile.h"
#include "io/TqdWriter.h"
#include "io/WaveJsonWriter.h"
#include "model/Diagram.h"
#include "render/DiagramExporter.h"

#include <charconv>
#include <cstring>
#include <filesystem>
#include <iomanip>
#include <ostream>
#include <string>
#include <vector>

namespace {

const char* const v_mainHelp =
    "usage: tqdiagram VERB ...\n"
    "\n"
    "Timing diagrams from a .tqd, WaveJSON (.json .json5 .js) or value change dump (.vcd)\n"
    "file, rendered as PNG, PDF, SVG, EPS or MIF.\n"
    "\n"
    "verbs:\n"
    "  render INPUT -o OUTPUT [options]   draw a diagram into a picture\n"
    "  convert INPUT -o OUTPUT.tqd|.json  write a diagram as a .tqd or WaveJSON file\n"
    "  info INPUT                         list signals, widths, time span and changes\n"
    "  script FILE.tcl [ARG...]           run a Tcl script with the diagram commands\n"
    "  view [FILE...] [--serve]           open diagrams in windows, driven live from Tcl\n"
    "\n"
    "'tqdiagram VERB --help' tells more. Exit status: 0 success, 1 bad input, 2 usage error.\n";

const char* const v_renderHelp =
    "usage: tqdiagram render INPUT -o OUTPUT [options]\n"
    "\n"
    "Draws the diagram in INPUT into OUTPUT. The format follows OUTPUT's extension unless\n"
    "--format names it.\n"
    "\n"
    "options:\n"
    "  -o, --output FILE       the picture to write (required)\n"
    "  --format FORMAT         png, pdf, svg, eps or mif\n"
    "  --signals PATTERN       draw only the signals whose hierarchical names match; may be\n"
    "                          given more than once. '*' matches within one level, '**'\n"
    "                          across levels, '?' one character (quote it for the shell)\n"
    "  --from TIME, --to TIME  the window of time, with a unit: 250ns, 1.5us (default: the\n"
    "                          diagram's span)\n"
    "  --width PX              the picture's width in pixels, names included (default 1000)\n"
    "  --scale N               device pixels per pixel of a PNG (default 1)\n"
    "  --sharp-edges           draw transitions upright instead of sloped\n"
    "  --print-setup TEXT      export parameters of EPS and MIF, fourteen fields:\n"
    "                          file,,,portrait,noclipboard,a4,default,6.5,2,in,color,\n"
    "                          scaleable,mifframe,nopreview\n";

const char* const v_convertHelp =
    "usage: tqdiagram convert INPUT -o OUTPUT.tqd|OUTPUT.json\n"
    "\n"
    "Reads INPUT and writes the same diagram as a .tqd file, or as a WaveJSON file when\n"
    "OUTPUT ends in .json, .json5 or .js (one common slot length; what that format cannot\n"
    "hold is named on standard error).\n";

const char* const v_infoHelp = "usage: tqdiagram info INPUT\n"
                               "\n"
                               "Lists the diagram's signals with their kinds, widths, number of "
                               "changes and\ngroups (a spacer row has neither width "
                               "nor changes: \"-\"), its time unit\nand its span.\n";

struct Usage {
    std::ostream& err;
    const char* verb;
    int fail(const std::string& message) const {
        err << "tqdiagram " << verb << ": " << message << "\n"
            << "Try 'tqdiagram " << verb << " --help'.\n";
        return ProgramUsage;
    }
};

bool isHelp(const char* arg) {
    return std::strcmp(arg, "--help") == 0 || std::strcmp(arg, "-h") == 0;
}

// Reads the input with a progress bar for a long read.
bool readInput(const std::string& path, Diagram& diagram, std::ostream& err,
               const std::vector<std::string>& patterns = {}) {
    ProgressBar progress("reading " + std::filesystem::path(path).filename().string());
    std::string error;
    if (!readDiagramFile(path, diagram, error, &progress, patterns)) {
        err << "tqdiagram: " << error << "\n";
        return false;
    }
    return true;
}

// A word of a verb's command line that is not an option it knows: the one INPUT. Returns
// the usage error, or "" when the word was taken.
std::string takeInput(const std::string& arg, std::string& input) {
    if (!arg.empty() && arg[0] == '-')
        return "unknown option " + arg;
    if (!input.empty())
        return "one input only, not also " + arg;
    input = arg;
    return std::string();
}

// A time option, checked for its form now and converted to the diagram's unit once read.
bool checkTime(const char* text, std::string& error) {
    Time ignored = 0;
    return parseTime(text, TimeUnit::fs, ignored, error) ||
           parseTime(text, TimeUnit::s, ignored, error);
}

int render(int argc, char** argv, std::ostream& out, std::ostream& err) {
    const Usage usage{err, "render"};
    std::string input, output, format, from, to, printSetup;
    RenderOptions options;
    for (int i = 0; i < argc; ++i) {
        const std::string arg = argv[i];
        if (isHelp(argv[i])) {
            out << v_renderHelp;
            return ProgramSuccess;
        }
        const bool takesValue = arg == "-o" || arg == "--output" || arg == "--format" ||
                                arg == "--signals" || arg == "--from" || arg == "--to" ||
                                arg == "--width" || arg == "--scale" || arg == "--print-setup";
        if (takesValue && i + 1 >= argc)
            return usage.fail("option " + arg + " needs a value");
        const char* value = takesValue ? argv[++i] : nullptr;
        if (arg == "-o" || arg == "--output") {
            output = value;
        } else if (arg == "--format") {
            format = value;
        } else if (arg == "--signals") {
            options.patterns.emplace_back(value);
        } else if (arg == "--from") {
            from = value;
        } else if (arg == "--to") {
            to = value;
        } else if (arg == "--width") {
            int width = 0;
            auto [end, ec] = std::from_chars(value, value + std::strlen(value), width);
            if (ec != std::errc() || *end != '\0' || width < 200 || width > 100000)
                return usage.fail(std::string("--width takes pixels from 200 to 100000, not '") +
                                  value + "'");
            options.width = width;
        } else if (arg == "--scale") {
            double scale = 0;
            auto [end, ec] = std::from_chars(value, value + std::strlen(value), scale);
            if (ec != std::errc() || *end != '\0' || !(scale >= 0.25 && scale <= 16))
                return usage.fail(std::string("--scale takes a number from 0.25 to 16, not '") +
                                  value + "'");
            options.scale = scale;
        } else if (arg == "--sharp-edges") {
            options.slopedEdges = false;
        } else if (arg == "--print-setup") {
            printSetup = value;
        } else if (const std::string wrong = takeInput(arg, input); !wrong.empty()) {
            return usage.fail(wrong);
        }
    }
    if (input.empty())
        return usage.fail("an INPUT file is needed");
    if (output.empty())
        return usage.fail("an output file is needed: -o OUTPUT");
    OutputFormat outputFormat{};
    if (!format.empty() ? !parseOutputFormat(format, outputFormat)
                        : !outputFormatOfFile(output, outputFormat))
        return usage.fail(format.empty()
                              ? "cannot tell the format from '" + output +
                                    "': use --format png|pdf|svg|eps|mif"
                              : "unknown format '" + format + "': use png, pdf, svg, eps or mif");
    std::string error;
    if ((!from.empty() && !checkTime(from.c_str(), error)) ||
        (!to.empty() && !checkTime(to.c_str(), error)))
        return usage.fail(error);
    if (!printSetup.empty()) {
        ExportParameters parameters;
        if (!parameters.read(printSetup.c_str()))
            return usage.fail(std::string("--print-setup: ") + parameters.message());
        options.exportParameters = parameters;
    }

    Diagram diagram;
    if (!readInput(input, diagram, err, options.patterns))
        return ProgramBadInput;
    Time time = 0;
    if (!from.empty() && parseTime(from, diagram.timeUnit(), time, error))
        options.from = time;
    if (!to.empty() && parseTime(to, diagram.timeUnit(), time, error))
        options.to = time;
    if (!DiagramExporter::exportFile(diagram, options, output, outputFormat, error)) {
        err << "tqdiagram: " << error << "\n";
        return ProgramBadInput;
    }
    return ProgramSuccess;
}

int convert(int argc, char** argv, std::ostream& out, std::ostream& err) {
    const Usage usage{err, "convert"};
    std::string input, output;
    for (int i = 0; i < argc; ++i) {
        const std::string arg = argv[i];
        if (isHelp(argv[i])) {
            out << v_convertHelp;
            return ProgramSuccess;
        }
        if (arg == "-o" || arg == "--output") {
            if (i + 1 >= argc)
                return usage.fail("option " + arg + " needs a value");
            output = argv[++i];
        } else if (const std::string wrong = takeInput(arg, input); !wrong.empty()) {
            return usage.fail(wrong);
        }
    }
    if (input.empty() || output.empty())
        return usage.fail(input.empty() ? "an INPUT file is needed"
                                        : "an output file is needed: -o OUTPUT.tqd");
    Diagram diagram;
    if (!readInput(input, diagram, err))
        return ProgramBadInput;
    std::string error;
    const std::string extension = std::filesystem::path(output).extension().string();
    if (extension == ".json" || extension == ".json5" || extension == ".js") {
        WaveJsonWriter writer(output.c_str(), diagram);
        if (!writer.save(error)) {
            err << "tqdiagram: " << error << "\n";
            return ProgramBadInput;
        }
        for (const std::string& warning : writer.warnings())
            err << "tqdiagram: " << output << ": warning: " << warning << "\n";
        return ProgramSuccess;
    }
    if (!TqdWriter(output.c_str(), diagram).save(error)) {
        err << "tqdiagram: " << error << "\n";
        return ProgramBadInput;
    }
    return ProgramSuccess;
}

const char* kindName(SignalKind kind) {
    switch (kind) {
    case SignalKind::Clock:
        return "clock";
    case SignalKind::Bit:
        return "bit";
    case SignalKind::Bus:
        return "bus";
    case SignalKind::Spacer:
        break;
    }
    return "spacer";
}

int info(int argc, char** argv, std::ostream& out, std::ostream& err) {
    const Usage usage{err, "info"};
    std::string input;
    for (int i = 0; i < argc; ++i) {
        if (isHelp(argv[i])) {
            out << v_infoHelp;
            return ProgramSuccess;
        }
        if (const std::string wrong = takeInput(argv[i], input); !wrong.empty())
            return usage.fail(wrong);
    }
    if (input.empty())
        return usage.fail("an INPUT file is needed");
    Diagram diagram;
    if (!readInput(input, diagram, err))
        return ProgramBadInput;
    const TimeUnit unit = diagram.timeUnit();
    const Time start = diagram.spanStart(), end = diagram.spanEnd();
    if (!diagram.title().empty())
        out << "title:     " << diagram.title() << "\n";
    out << "time unit: " << timeUnitName(unit) << "\n"
        << "span:      " << formatTime(start, unit) << " to " << formatTime(end, unit) << "\n"
        << "signals:   " << diagram.signalCount() << "\n"
        << "changes:   " << diagram.totalChanges() << "\n"
        << "texts:     " << diagram.totalTexts() << "\n\n";
    std::size_t nameWidth = 6;
    for (std::size_t i = 0; i < diagram.signalCount(); ++i)
        nameWidth = std::max(nameWidth, diagram.signal(i).name().size());
    out << std::left << std::setw(static_cast<int>(nameWidth)) << "signal"
        << "  kind    width   changes  group\n";
    for (std::size_t i = 0; i < diagram.signalCount(); ++i) {
        const Signal& s = diagram.signal(i);
        // A spacer is an empty row: it has neither a width nor values, so both read "-".
        const bool spacer = s.kind() == SignalKind::Spacer;
        const auto changes = s.kind() == SignalKind::Clock
                                 ? static_cast<std::size_t>(s.clockEdgeCount(start, end))
                                 : s.changeCount();
        out << std::left << std::setw(static_cast<int>(nameWidth)) << s.name() << "  "
            << std::setw(6) << kindName(s.kind()) << std::right << std::setw(7)
            << (spacer ? "-" : std::to_string(s.width())) << std::setw(10)
            << (spacer ? "-" : std::to_string(changes)) << "  " << s.group();
        if (s.kind() == SignalKind::Clock)
            out << (s.group().empty() ? "" : " ") << "(period "
                << formatTime(s.clock().period, unit) << ")";
        out << "\n";
    }
    return ProgramSuccess;
}

int script(int argc, char** argv, std::ostream& out, std::ostream& err) {
    const Usage usage{err, "script"};
    if (argc >= 1 && isHelp(argv[0])) {
        out << ScriptRunner::help();
        return ProgramSuccess;
    }
    if (argc < 1)
        return usage.fail("a FILE.tcl is needed");
    std::vector<std::string> arguments(argv + 1, argv + argc);
    ScriptRunner runner;
    std::string result;
    if (!runner.runFile(argv[0], arguments, result)) {
        err << "tqdiagram: " << result << "\n";
        return ProgramBadInput;
    }
    if (!result.empty())
        out << result << "\n";
    return ProgramSuccess;
}

} // namespace

int runProgram(int argc, char** argv, std::ostream& out, std::ostream& err) {
    if (argc < 2) {
        err << v_mainHelp;
        return ProgramUsage;
    }
    const std::string verb = argv[1];
    if (verb == "--help" || verb == "-h" || verb == "help") {
        out << v_mainHelp;
        return ProgramSuccess;
    }
    struct Verb {
        const char* name;
        int (*run)(int, char**, std::ostream&, std::ostream&);
    };
    const Verb verbs[] = {
        {"render", render}, {"convert", convert}, {"info", info}, {"script", script}};
    for (const Verb& v : verbs) {
        if (verb == v.name)
            return v.run(argc - 2, argv + 2, out, err);
    }
    err << "tqdiagram: unknown verb '" << verb << "'\n" << v_mainHelp;
    return ProgramUsage;
}
