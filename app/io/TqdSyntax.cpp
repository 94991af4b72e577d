#include "io/TqdSyntax.h"

namespace tqd {

namespace {

SectionDescriptor v_diagram{"TimingDiagram", SectionDiagram, 0};
SectionDescriptor v_group{"Group", SectionGroup, 0};
SectionDescriptor v_signal{"Signal", SectionSignal, 0};
SectionDescriptor v_changes{"Changes", SectionChanges, 0};
SectionDescriptor v_arrow{"Arrow", SectionArrow, 0};
SectionDescriptor v_marker{"Marker", SectionMarker, 0};
SectionDescriptor v_annotation{"Annotation", SectionAnnotation, 0};
SectionDescriptor v_gap{"Gap", SectionGap, 0};
SectionDescriptor* v_sections[] = {&v_diagram, &v_group,      &v_signal, &v_changes, &v_arrow,
                                   &v_marker,  &v_annotation, &v_gap,    nullptr};

// clang-format off
KeywordDescriptor v_keywords[] = {
    {"version", KeyVersion, 0}, {"title", KeyTitle, 0},       {"timeunit", KeyTimeUnit, 0},
    {"span", KeySpan, 0},       {"grid", KeyGrid, 0},         {"name", KeyName, 0},
    {"group", KeyGroup, 0},     {"clock", KeyClock, 0},       {"period", KeyPeriod, 0},
    {"duty", KeyDuty, 0},       {"phase", KeyPhase, 0},       {"start", KeyStart, 0},
    {"bit", KeyBit, 0},         {"bus", KeyBus, 0},           {"width", KeyWidth, 0},
    {"radix", KeyRadix, 0},     {"notation", KeyNotation, 0}, {"from", KeyFrom, 0},
    {"to", KeyTo, 0},           {"label", KeyLabel, 0},       {"at", KeyAt, 0},
    {"signal", KeySignal, 0},   {"text", KeyText, 0},         {"spacer", KeySpacer, 0},
    {"shape", KeyShape, 0},     {"heads", KeyHeads, 0},       {"nameless", KeyNameless, 0},
    {nullptr, 0, 0},
};
// clang-format on

struct Named {
    int value;
    const char* name;
};
constexpr Named v_radixNames[] = {{RadixBinary, "bin"},
                                  {RadixOctal, "oct"},
                                  {RadixDecimal, "dec"},
                                  {RadixHexadecimal, "hex"},
                                  {RadixPlainDecimal, "sdec"}};
constexpr Named v_notationNames[] = {
    {HDLNone, "plain"}, {HDLVerilog, "verilog"}, {HDLVHDL, "vhdl"}};
constexpr Named v_shapeNames[] = {{static_cast<int>(ArrowShape::Straight), "straight"},
                                  {static_cast<int>(ArrowShape::Curved), "curved"}};
constexpr Named v_headsNames[] = {{static_cast<int>(ArrowHeads::End), "end"},
                                  {static_cast<int>(ArrowHeads::None), "none"},
                                  {static_cast<int>(ArrowHeads::Start), "begin"},
                                  {static_cast<int>(ArrowHeads::Both), "both"}};

template <std::size_t N>
const char* nameOf(const Named (&table)[N], int value) {
    for (const Named& entry : table) {
        if (entry.value == value)
            return entry.name;
    }
    return table[0].name;
}

template <std::size_t N>
bool valueOf(const Named (&table)[N], std::string_view text, int& value) {
    for (const Named& entry : table) {
        if (text == entry.name) {
            value = entry.value;
            return true;
        }
    }
    return false;
}

} // namespace

SectionDescriptor** sections() {
    return v_sections;
}

KeywordDescriptor* keywords() {
    return v_keywords;
}

const char* radixName(Radix radix) {
    return nameOf(v_radixNames, radix);
}

bool parseRadix(std::string_view text, Radix& radix) {
    int value = 0;
    if (!valueOf(v_radixNames, text, value))
        return false;
    radix = static_cast<Radix>(value);
    return true;
}

const char* notationName(HDLanguage language) {
    return nameOf(v_notationNames, language);
}

bool parseNotation(std::string_view text, HDLanguage& language) {
    int value = 0;
    if (!valueOf(v_notationNames, text, value))
        return false;
    language = static_cast<HDLanguage>(value);
    return true;
}

const char* arrowShapeName(ArrowShape shape) {
    return nameOf(v_shapeNames, static_cast<int>(shape));
}

bool parseArrowShape(std::string_view text, ArrowShape& shape) {
    int value = 0;
    if (!valueOf(v_shapeNames, text, value))
        return false;
    shape = static_cast<ArrowShape>(value);
    return true;
}

const char* arrowHeadsName(ArrowHeads heads) {
    return nameOf(v_headsNames, static_cast<int>(heads));
}

bool parseArrowHeads(std::string_view text, ArrowHeads& heads) {
    int value = 0;
    if (!valueOf(v_headsNames, text, value))
        return false;
    heads = static_cast<ArrowHeads>(value);
    return true;
}

} // namespace tqd
