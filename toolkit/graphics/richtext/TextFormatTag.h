/// The tags of the label markup: which word opens and closes each style run, and its type.
///
/// Rich text lives in graphics/richtext, above graphics/device and beside the export layer,
/// not in text/: every node of a parsed label knows the device or painter it measures and
/// draws on, so the family depends on the device layer, and text/ sits below graphics. The
/// markup is still scanned by the text layer's Scanner. The build enforces the direction:
/// this folder sees core, text, graphics/geometry and graphics/device only.
#pragma once

/// The type of a tag; the values are stored with labels and must not change. The colour of
/// a colour tag of type n is the wsiColor n - 4.
enum textformat_tag_type : int {
    TF_NoTag = 0,
    TF_Bold = 1,
    TF_Italic = 2,
    TF_Underline = 3,
    TF_Overline = 4,
    TF_Subscript = 5,
    TF_Superscript = 6,
    TF_Black = 7,
    TF_DarkGray = 8,
    TF_Gray = 9,
    TF_PaleGray = 10,
    TF_DarkRed = 11,
    TF_Red = 12,
    TF_PaleRed = 13,
    TF_DarkGreen = 14,
    TF_Green = 15,
    TF_PaleGreen = 16,
    TF_DarkBlue = 17,
    TF_Blue = 18,
    TF_PaleBlue = 19,
    TF_Purple = 20,
    TF_Yellow = 21,
    TF_White = 22
};

/// One record of the tag table: the start word, the end word and the type they make.
struct TextFormatTag {
    /// The word that opens the run (as "b" in `<b>`), a static string; null in the last record.
    const char* startText;
    /// The word that closes it (as "/b"), a static string; null in the last record.
    const char* endText;
    /// The kind of run the tag makes.
    textformat_tag_type type;
};
