#include "graphics/export/ExportParameters.h"

#include <array>
#include <charconv>
#include <string_view>
#include <vector>

namespace {

constexpr int v_fieldCount = 14;

// The words of one enumerated field, indexed by value.
template <std::size_t N>
using Words = std::array<std::string_view, N>;

constexpr Words<3> kDestinations{"file", "printer", "clipboard"};
constexpr Words<2> kOrientations{"portrait", "landscape"};
constexpr Words<2> kCopyWords{"noclipboard", "clipboard"};
constexpr Words<8> kPaperSizes{"letter", "legal", "executive", "tabloid", "a3", "a4", "a5", "b5"};
constexpr Words<3> kPaperFeeds{"default", "shortedge", "longedge"};
constexpr Words<4> kUnits{"in", "cm", "mm", "pt"};
constexpr Words<2> kColourWords{"color", "gray"};
constexpr Words<2> kScalingWords{"fixed", "scaleable"};
constexpr Words<2> kMifForms{"mifframe", "mifshape"};
constexpr Words<2> kPreviewWords{"nopreview", "preview"};

// Upright paper sizes in points, indexed by ExportPaperSize.
constexpr std::array<std::array<double, 2>, 8> kPaperPoints{{
    {612, 792},        // letter
    {612, 1008},       // legal
    {522, 756},        // executive
    {792, 1224},       // tabloid
    {841.89, 1190.55}, // A3
    {595.28, 841.89},  // A4
    {419.53, 595.28},  // A5
    {498.9, 708.66},   // B5
}};

// Points per unit, indexed by ExportUnits.
constexpr std::array<double, 4> kPointsPerUnit{72.0, 72.0 / 2.54, 72.0 / 25.4, 1.0};

std::string_view trimmed(std::string_view s) {
    const auto first = s.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(" \t");
    return s.substr(first, last - first + 1);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const char ca = (a[i] >= 'A' && a[i] <= 'Z') ? char(a[i] - 'A' + 'a') : a[i];
        if (ca != b[i])
            return false;
    }
    return true;
}

template <std::size_t N>
int wordIndex(std::string_view field, const Words<N>& words) {
    for (std::size_t i = 0; i < N; ++i)
        if (equalIgnoringCase(field, words[i]))
            return int(i);
    return -1;
}

// Locale-independent, so a settings file reads the same whatever the user's locale.
bool parsePositive(std::string_view field, double& value) {
    if (!field.empty() && field.front() == '+')
        field.remove_prefix(1);
    const auto [end, ec] = std::from_chars(field.data(), field.data() + field.size(), value);
    return ec == std::errc() && end == field.data() + field.size() && value > 0;
}

void appendNumber(std::string& out, double value) {
    char buffer[32];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string_view text(buffer, std::size_t(result.ptr - buffer));
    out += text;
    // "5" would read back the same, but the default text writes "5.0".
    if (text.find_first_of(".e") == std::string_view::npos)
        out += ".0";
}

} // namespace

ExportParameters::ExportParameters() = default;

ExportParameters::ExportParameters(const char* text) {
    (void)read(text);
}

ExportParameters::ExportParameters(const char* printSetup, int exportMifAsAFrame)
    : m_mifAnchoredFrameOnly(exportMifAsAFrame != 0) {
    (void)read(printSetup);
}

const char* ExportParameters::defaultText() {
    return "file,,,portrait,clipboard,letter,default,6.5,5.0,in,color,scaleable,mifframe,preview";
}

void ExportParameters::setDefaults() {
    const bool anchoredFrameOnly = m_mifAnchoredFrameOnly;
    *this = ExportParameters();
    m_mifAnchoredFrameOnly = anchoredFrameOnly;
}

bool ExportParameters::read(const char* text) {
    setDefaults();
    if (!text) {
        m_message = "Export parameters: no text; the defaults are used";
        return false;
    }
    std::vector<std::string_view> fields;
    std::string_view rest(text);
    for (;;) {
        const auto comma = rest.find(',');
        fields.push_back(trimmed(rest.substr(0, comma)));
        if (comma == std::string_view::npos)
            break;
        rest.remove_prefix(comma + 1);
    }
    if (fields.size() != v_fieldCount) {
        m_message = "Export parameters: " + std::to_string(fields.size()) + " fields instead of " +
                    std::to_string(v_fieldCount) + "; the defaults are used";
        return false;
    }

    int bad = -1;
    const auto word = [&](int field, const auto& words) {
        const int index = wordIndex(fields[std::size_t(field)], words);
        if (index < 0 && bad < 0)
            bad = field;
        return index < 0 ? 0 : index;
    };
    const auto number = [&](int field) {
        double value = 0;
        if (!parsePositive(fields[std::size_t(field)], value) && bad < 0)
            bad = field;
        return value;
    };

    m_destination = ExportDestination(word(0, kDestinations));
    m_printerName = fields[1];
    m_fileName = fields[2];
    m_orientation = ExportOrientation(word(3, kOrientations));
    m_copyToClipboard = word(4, kCopyWords) == 1;
    m_paperSize = ExportPaperSize(word(5, kPaperSizes));
    m_paperFeed = ExportPaperFeed(word(6, kPaperFeeds));
    m_pictureWidth = number(7);
    m_pictureHeight = number(8);
    m_units = ExportUnits(word(9, kUnits));
    m_grayScale = word(10, kColourWords) == 1;
    m_scaleable = word(11, kScalingWords) == 1;
    m_mifFrameForm = MifFrameForm(word(12, kMifForms));
    m_preview = word(13, kPreviewWords) == 1;
    if (bad >= 0) {
        const std::string field(fields[std::size_t(bad)]);
        setDefaults();
        m_message = "Export parameters: field " + std::to_string(bad + 1) + " (\"" + field +
                    "\") is not understood; the defaults are used";
        return false;
    }
    m_message.clear();
    return true;
}

std::string ExportParameters::asText() const {
    std::string out;
    const auto add = [&out](std::string_view field) {
        out += field;
        out += ',';
    };
    add(kDestinations[std::size_t(m_destination)]);
    add(m_printerName);
    add(m_fileName);
    add(kOrientations[std::size_t(m_orientation)]);
    add(kCopyWords[m_copyToClipboard ? 1 : 0]);
    add(kPaperSizes[std::size_t(m_paperSize)]);
    add(kPaperFeeds[std::size_t(m_paperFeed)]);
    appendNumber(out, m_pictureWidth);
    out += ',';
    appendNumber(out, m_pictureHeight);
    out += ',';
    add(kUnits[std::size_t(m_units)]);
    add(kColourWords[m_grayScale ? 1 : 0]);
    add(kScalingWords[m_scaleable ? 1 : 0]);
    add(kMifForms[std::size_t(m_mifFrameForm)]);
    out += kPreviewWords[m_preview ? 1 : 0];
    return out;
}

FloatPoint ExportParameters::paperSizeInPoints() const {
    const auto& size = kPaperPoints[std::size_t(m_paperSize)];
    return FloatPoint(size[0], size[1]);
}

FloatPoint ExportParameters::pictureSizeInPoints() const {
    const double scale = kPointsPerUnit[std::size_t(m_units)];
    return FloatPoint(m_pictureWidth * scale, m_pictureHeight * scale);
}
