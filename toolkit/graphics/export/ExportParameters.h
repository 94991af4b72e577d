#pragma once

#include "core/TqExport.h"
#include "graphics/geometry/FloatPoint.h"

#include <string>

/// The text holds fourteen comma-separated fields, in this order:
///   destination     "file", "printer" or "clipboard"
///   printer name    free text without commas (may be empty)
///   file name       free text without commas (may be empty)
///   orientation     "portrait" or "landscape"
///   copy            "clipboard" (an export is also copied there) or "noclipboard"
///   paper size      "letter", "legal", "executive", "tabloid", "a3", "a4", "a5" or "b5"
///   paper feed      "default", "shortedge" or "longedge"
///   picture width   a real number, greater than zero
///   picture height  a real number, greater than zero
///   units           "in", "cm", "mm" or "pt"
///   colour          "color" or "gray"
///   scaling         "scaleable" (the picture is scaled to its size) or "fixed"
///   MIF frame form  "mifframe" (frames sized by BRect) or "mifshape" (by ShapeRect)
///   EPS preview     "preview" or "nopreview"
/// Words are matched without regard to case; blanks around a field are ignored.

enum ExportDestination : int { exportToFile = 0, exportToPrinter = 1, exportToClipboard = 2 };
enum ExportOrientation : int { exportPortrait = 0, exportLandscape = 1 };
enum ExportPaperSize : int {
    paperLetter = 0,
    paperLegal = 1,
    paperExecutive = 2,
    paperTabloid = 3,
    paperA3 = 4,
    paperA4 = 5,
    paperA5 = 6,
    paperB5 = 7
};
/// How the paper goes through the printer. Paper fed by its long edge is already landscape,
/// so a landscape export on it is not rotated.
enum ExportPaperFeed : int { paperFeedDefault = 0, paperFeedShortEdge = 1, paperFeedLongEdge = 2 };
enum ExportUnits : int { unitsInch = 0, unitsCentimetre = 1, unitsMillimetre = 2, unitsPoint = 3 };
enum MifFrameForm : int { mifFrameBRect = 0, mifFrameShapeRect = 1 };

/// ExportParameters: the export and print parameters of one export (paper, orientation,
/// colour, picture size, MIF frame form), read from and written to the "PrintSetup" text.
class TQ_EXPORT ExportParameters {
public:
    /// The parameters of defaultText().
    ExportParameters();
    /// Reads text as read() does, keeping the defaults when it is malformed.
    explicit ExportParameters(const char* text);
    /// The parameters of the two settings as they are stored: the "PrintSetup" text, read as
    /// read() does, and the "ExportMifAsAFrame" integer, non-zero for MIF drawings written as
    /// an anchored frame only.
    ExportParameters(const char* printSetup, int exportMifAsAFrame);

    /// The "PrintSetup" default: "file,,,portrait,clipboard,letter,default,6.5,5.0,in,color,
    /// scaleable,mifframe,preview" (one line). A static string.
    static const char* defaultText();

    /// Replaces every field from text. On a malformed text (a null text, the wrong number of
    /// fields, an unknown word, a number that does not parse or is not above zero) every
    /// field returns to its default, message() says what was wrong and false is returned.
    [[nodiscard]] bool read(const char* text);
    /// What the last read() found wrong; "" after a good read. Owned by the parameters.
    const char* message() const { return m_message.c_str(); }
    /// The text that read() turns back into these parameters.
    std::string asText() const;

    ///@{
    /// The fields read from the print setup text (see read), in the text's order; the names
    /// are owned by the parameters.
    ExportDestination destination() const { return m_destination; }
    const std::string& printerName() const { return m_printerName; }
    const std::string& fileName() const { return m_fileName; }
    ExportOrientation orientation() const { return m_orientation; }
    bool copyToClipboard() const { return m_copyToClipboard; }
    ExportPaperSize paperSize() const { return m_paperSize; }
    ExportPaperFeed paperFeed() const { return m_paperFeed; }
    ///@}
    ///@{
    /// The picture's size in its units.
    double pictureWidth() const { return m_pictureWidth; }
    double pictureHeight() const { return m_pictureHeight; }
    ExportUnits units() const { return m_units; }
    bool isGrayScale() const { return m_grayScale; }
    bool isScaleable() const { return m_scaleable; }
    MifFrameForm mifFrameForm() const { return m_mifFrameForm; }
    bool withPreview() const { return m_preview; }
    ///@}
    /// Whether a MIF drawing is written as an anchored frame only, without the page and text
    /// flow that hold it. Not part of the text: it comes from the "ExportMifAsAFrame" setting.
    bool mifAnchoredFrameOnly() const { return m_mifAnchoredFrameOnly; }

    ///@{
    /// Change one field; the others stay.
    void setOrientation(ExportOrientation o) { m_orientation = o; }
    void setPaperSize(ExportPaperSize size) { m_paperSize = size; }
    void setPaperFeed(ExportPaperFeed feed) { m_paperFeed = feed; }
    void setGrayScale(bool on) { m_grayScale = on; }
    void setMifFrameForm(MifFrameForm form) { m_mifFrameForm = form; }
    void setMifAnchoredFrameOnly(bool on) { m_mifAnchoredFrameOnly = on; }
    ///@}

    /// The paper's width and height in PostScript points, upright (width <= height); by
    /// value.
    FloatPoint paperSizeInPoints() const;
    /// The picture's width and height in PostScript points; by value.
    FloatPoint pictureSizeInPoints() const;

private:
    void setDefaults();

    ExportDestination m_destination = exportToFile;
    std::string m_printerName;
    std::string m_fileName;
    ExportOrientation m_orientation = exportPortrait;
    bool m_copyToClipboard = true;
    ExportPaperSize m_paperSize = paperLetter;
    ExportPaperFeed m_paperFeed = paperFeedDefault;
    double m_pictureWidth = 6.5;
    double m_pictureHeight = 5.0;
    ExportUnits m_units = unitsInch;
    bool m_grayScale = false;
    bool m_scaleable = true;
    MifFrameForm m_mifFrameForm = mifFrameBRect;
    bool m_preview = true;
    bool m_mifAnchoredFrameOnly = false;
    std::string m_message;
};
