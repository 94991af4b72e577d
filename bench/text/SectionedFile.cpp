#include "SectionedFile.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace {

// Raw engine output only: the standard distributions differ between libraries, the engine
// does not.
class Generator {
public:
    explicit Generator(std::uint32_t seed) : m_engine(seed) {}
    unsigned pick(unsigned n) { return static_cast<unsigned>(m_engine() % n); }

    void identifier(std::string& out) {
        static const char* const stems[] = {"clk", "data", "addr", "rst_n", "valid",  "ready",
                                            "bus", "q",    "sel",  "wr_en", "u_core", "state"};
        out += stems[pick(12)];
        if (pick(2)) {
            out += '_';
            out += std::to_string(pick(64));
        }
    }
    void number(std::string& out) {
        switch (pick(4)) {
        case 0:
            out += std::to_string(pick(100000));
            break;
        case 1:
            out += std::to_string(pick(1000)) + "." + std::to_string(pick(1000));
            break;
        case 2:
            out += std::to_string(pick(10)) + "." + std::to_string(pick(100)) + "e" +
                   (pick(2) ? "-" : "+") + std::to_string(pick(15));
            break;
        default:
            out += '-';
            out += std::to_string(pick(5000));
            break;
        }
    }
    void hdlValue(std::string& out) {
        static const char bits[] = "01xz";
        out += "\"";
        unsigned width = 1 + pick(16);
        out += std::to_string(width) + "'b";
        for (unsigned i = 0; i < width; ++i)
            out += bits[pick(4)];
        out += "\"";
    }
    void section(std::string& out) {
        switch (pick(5)) {
        case 0: // a signal with its edges
            out += "Signal( name(\"";
            identifier(out);
            out += "\") ";
            for (unsigned i = 0, n = 4 + pick(24); i < n; ++i) {
                out += "edge(";
                number(out);
                out += pick(2) ? " rise" : " fall";
                out += ", ";
                hdlValue(out);
                out += ") ";
            }
            out += ")\n";
            break;
        case 1: // times and nested lists
            out += "Waveform( time(";
            number(out);
            out += ", \"";
            number(out);
            out += "\") list( ";
            for (unsigned i = 0, n = 2 + pick(10); i < n; ++i) {
                out += "(";
                number(out);
                out += " ";
                number(out);
                out += ") [";
                identifier(out);
                out += "] <";
                number(out);
                out += "> ";
            }
            out += ") )\n";
            break;
        case 2: // a section that no reader knows
            out += "VendorExtension( (opaque [";
            identifier(out);
            out += " (deep <";
            number(out);
            out += ">)] \"skipped text\") ";
            identifier(out);
            out += " )\n";
            break;
        case 3: // settings
            out += "View( zoom(";
            number(out);
            out += ") grid show ruler(\"ns\") font(\"Sans Serif\", 10) )\n";
            break;
        default: // a bus with a quoted value per slice
            out += "Bus( ";
            identifier(out);
            out += '[';
            out += std::to_string(pick(64));
            out += ":0] ";
            for (unsigned i = 0, n = 2 + pick(12); i < n; ++i) {
                out += "slice(";
                number(out);
                out += ",";
                hdlValue(out);
                out += ") ";
            }
            out += ")\n";
            break;
        }
    }

private:
    std::mt19937 m_engine;
};

} // namespace

std::string sectionedFilePath(std::size_t minBytes) {
    constexpr std::uint32_t seed = 20240601;
    namespace fs = std::filesystem;
    fs::path path =
        fs::temp_directory_path() / ("tq_bench_sections_" + std::to_string(minBytes) + ".txt");
    // The size of the complete file, as written by the same generator.
    std::string marker = path.string() + ".size";
    std::error_code ignored;
    if (fs::exists(path, ignored) && fs::exists(marker, ignored)) {
        std::ifstream sizeFile(marker);
        std::uintmax_t expected = 0;
        sizeFile >> expected;
        if (expected > 0 && fs::file_size(path, ignored) == expected)
            return path.string();
    }
    Generator generator(seed);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    std::string chunk;
    std::size_t written = 0;
    while (written < minBytes) {
        chunk.clear();
        while (chunk.size() < (1u << 20))
            generator.section(chunk);
        out.write(chunk.data(), static_cast<std::streamsize>(chunk.size()));
        written += chunk.size();
    }
    out.close();
    std::ofstream(marker) << written << '\n';
    return path.string();
}
