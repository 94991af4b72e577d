/// TqdSyntax: the section and keyword names of the .tqd format, shared by its reader and its
/// writer (see docs/tqd-format.md).
#pragma once

#include "model/Diagram.h"

#include "text/FileElement.h"

#include "hdl/HDLConstant.h"

#include <string_view>

namespace tqd {

/// Section ids.
enum Section : short {
    SectionDiagram = 1,
    SectionGroup,
    SectionSignal,
    SectionChanges,
    SectionArrow,
    SectionMarker,
    SectionAnnotation,
    SectionGap,
};

/// Keyword ids.
enum Keyword : short {
    KeyVersion = 1,
    KeyTitle,
    KeyTimeUnit,
    KeySpan,
    KeyGrid,
    KeyName,
    KeyGroup,
    KeyClock,
    KeyPeriod,
    KeyDuty,
    KeyPhase,
    KeyStart,
    KeyBit,
    KeyBus,
    KeyWidth,
    KeyRadix,
    KeyNotation,
    KeyFrom,
    KeyTo,
    KeyLabel,
    KeyAt,
    KeySignal,
    KeyText,
    KeySpacer,
    KeyNameless,
    KeyShape,
    KeyHeads,
};

/// The version this program writes and the newest it reads.
inline constexpr int v_version = 1;

/// The section table, ended by a null pointer.
SectionDescriptor** sections();
/// The keyword table, ended by a record with a null name.
KeywordDescriptor* keywords();

/// Static text: "bin", "oct", "dec", "hex" or "sdec" (plain signed decimal).
const char* radixName(Radix radix);
[[nodiscard]] bool parseRadix(std::string_view text, Radix& radix);
/// Static text: "plain", "verilog" or "vhdl".
const char* notationName(HDLanguage language);
[[nodiscard]] bool parseNotation(std::string_view text, HDLanguage& language);
/// Static text: "straight" or "curved".
const char* arrowShapeName(ArrowShape shape);
[[nodiscard]] bool parseArrowShape(std::string_view text, ArrowShape& shape);
/// Static text: "none", "end", "begin" or "both" ("start" is a keyword of clocks).
const char* arrowHeadsName(ArrowHeads heads);
[[nodiscard]] bool parseArrowHeads(std::string_view text, ArrowHeads& heads);

} // namespace tqd
