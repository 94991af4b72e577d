// EPSDevice: the text of every operation, line by line.
#include "EPSTestSupport.h"

#include "graphics/PostScriptFont.h"
#include "graphics/SheetPoint.h"
#include "graphics/SheetRectangle.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using eps_test::linesOf;
using eps_test::PageDevice;

ExportParameters parametersWith(ExportOrientation orientation, ExportPaperFeed feed,
                                bool gray = false) {
    ExportParameters p;
    p.setOrientation(orientation);
    p.setPaperFeed(feed);
    p.setGrayScale(gray);
    return p;
}

// A device opened on a 1000 x 1000 page with source and target the page, and the text
// written after the header.
class EPSText : public testing::Test {
protected:
    explicit EPSText(bool gray = false)
        : m_device(m_out, parametersWith(exportPortrait, paperFeedDefault, gray),
                   DevicePoint(1000, 1000)) {
        m_device.open(DeviceRectangle(0, 0, 1000, 1000), DeviceRectangle(0, 0, 1000, 1000));
        m_device.endPath(); // the path-open flag that open sets
        mark();
    }
    void mark() { m_mark = m_out.str().size(); }
    // The text since the last mark, and a new mark.
    std::string written() {
        std::string text = m_out.str().substr(m_mark);
        mark();
        return text;
    }

    std::ostringstream m_out;
    PageDevice m_device;
    std::size_t m_mark = 0;
};

TEST(EPSHeader, IsWrittenExactlyForEachOrientationAndScale) {
    const struct {
        const char* rule;
        ExportOrientation orientation;
        ExportPaperFeed feed;
        DevicePoint page;
        DeviceRectangle source, target;
        const char* expected;
    } cases[] = {
        {"a 500-unit target on a 1000-high device", exportPortrait, paperFeedDefault,
         DevicePoint(1000, 1000), DeviceRectangle(0, 0, 500, 500), DeviceRectangle(0, 0, 500, 500),
         "%!PS-Adobe-3.0 EPSF-3.0\n"
         "%%BoundingBox: 0 100 100 200 \n"
         "gsave\n"
         "/languagelevel where {pop languagelevel} {1} ifelse 2 lt {} {true setstrokeadjust} "
         "ifelse\n"
         "0 200 translate\n"
         "1 -1 scale\n"
         "0 0 translate\n"
         "0.2 0.2 scale\n"
         "0 0 translate\n"
         "0 setlinejoin\n"
         "1 setlinecap\n"
         "0 setlinewidth\n"
         "gsave\n"},
        {"portrait letter: scale in six significant digits, fifths truncated toward zero, "
         "the source's origin negated",
         exportPortrait, paperFeedDefault, DevicePoint(3060, 3960),
         DeviceRectangle(-100, 250, 19900, 17250), DeviceRectangle(-7, 404, 2493, 3404),
         "%!PS-Adobe-3.0 EPSF-3.0\n"
         "%%BoundingBox: -1 111 498 711 \n"
         "gsave\n"
         "/languagelevel where {pop languagelevel} {1} ifelse 2 lt {} {true setstrokeadjust} "
         "ifelse\n"
         "0 792 translate\n"
         "1 -1 scale\n"
         "-1 80 translate\n"
         "0.025 0.0352941 scale\n"
         "100 -250 translate\n"
         "0 setlinejoin\n"
         "1 setlinecap\n"
         "0 setlinewidth\n"
         "gsave\n"},
        {"landscape: rotated, the width written straight before \"0 translate\"", exportLandscape,
         paperFeedDefault, DevicePoint(3960, 3060), DeviceRectangle(0, 0, 3960, 3060),
         DeviceRectangle(0, 0, 3960, 3060),
         "%!PS-Adobe-3.0 EPSF-3.0\n"
         "%%BoundingBox: 0 0 792 612 \n"
         "gsave\n"
         "/languagelevel where {pop languagelevel} {1} ifelse 2 lt {} {true setstrokeadjust} "
         "ifelse\n"
         "90 rotate\n"
         "7920 translate\n"
         "-1 -1 scale\n"
         "0 612 translate\n"
         "1 -1 scale\n"
         "0 0 translate\n"
         "0.2 0.2 scale\n"
         "0 0 translate\n"
         "0 setlinejoin\n"
         "1 setlinecap\n"
         "0 setlinewidth\n"
         "gsave\n"},
        {"landscape on paper fed by its long edge: not rotated", exportLandscape, paperFeedLongEdge,
         DevicePoint(3960, 3060), DeviceRectangle(0, 0, 3960, 3060),
         DeviceRectangle(0, 0, 3960, 3060),
         "%!PS-Adobe-3.0 EPSF-3.0\n"
         "%%BoundingBox: 0 0 792 612 \n"
         "gsave\n"
         "/languagelevel where {pop languagelevel} {1} ifelse 2 lt {} {true setstrokeadjust} "
         "ifelse\n"
         "0 612 translate\n"
         "1 -1 scale\n"
         "0 0 translate\n"
         "0.2 0.2 scale\n"
         "0 0 translate\n"
         "0 setlinejoin\n"
         "1 setlinecap\n"
         "0 setlinewidth\n"
         "gsave\n"},
    };
    for (const auto& c : cases) {
        std::ostringstream out;
        PageDevice device(out, parametersWith(c.orientation, c.feed), c.page);
        EXPECT_TRUE(device.open(c.source, c.target));
        EXPECT_EQ(linesOf(out.str()), linesOf(c.expected)) << c.rule;
        EXPECT_EQ(out.str(), c.expected) << c.rule;
    }
}

TEST(EPSHeader, WritesThePenWidthSetBeforeOpenAndTheScaleOfUnequalRectangles) {
    std::ostringstream out;
    PageDevice device(out, ExportParameters(), DevicePoint(3060, 3960));
    device.setPenWidth(4);
    EXPECT_EQ(out.str(), "") << "nothing is written before open";
    device.open(DeviceRectangle(0, 0, 3000, 1000), DeviceRectangle(0, 0, 1000, 3000));
    const auto lines = linesOf(out.str());
    EXPECT_EQ(lines[7], "0.0666667 0.6 scale");
    EXPECT_EQ(lines[11], "4 setlinewidth");
    EXPECT_DOUBLE_EQ(device.fontScaleFactor(), 0.6);
}

TEST(EPSPage, SizesFollowThePaperAndTheOrientation) {
    ExportParameters p;
    p.setPaperSize(paperA4);
    EPSDevice portrait(nullptr, "job", std::cout, p);
    EXPECT_EQ(portrait.paperSize(), DevicePoint(2976, 4209)); // 595.28 x 841.89 points
    EXPECT_EQ(portrait.deviceSize(), DevicePoint(2976, 4209));
    p.setOrientation(exportLandscape);
    EPSDevice landscape(nullptr, "job", std::cout, p);
    EXPECT_EQ(landscape.paperSize(), DevicePoint(2976, 4209));
    EXPECT_EQ(landscape.deviceSize(), DevicePoint(4209, 2976));
    EXPECT_STREQ(landscape.jobName(), "job");
}

TEST_F(EPSText, Colours_FollowTheTableInColourMode) {
    const char* expected[] = {"",
                              "1 1 1 setrgbcolor\n",
                              "0 0 0 setrgbcolor\n",
                              "0 0 0 setrgbcolor\n",
                              ".25 .25 .25 setrgbcolor\n",
                              ".5 .5 .5 setrgbcolor\n",
                              ".75 .75 .75 setrgbcolor\n",
                              ".7 0 0 setrgbcolor\n",
                              "1 0 0 setrgbcolor\n",
                              "1 0 0 setrgbcolor\n",
                              "0 .7 0 setrgbcolor\n",
                              "0 1 0 setrgbcolor\n",
                              "0 1 0 setrgbcolor\n",
                              "0 0 .7 setrgbcolor\n",
                              "0 0 1 setrgbcolor\n",
                              "0 0 1 setrgbcolor\n",
                              "1 0 1 setrgbcolor\n",
                              "1 1 0 setrgbcolor\n",
                              "1 1 1 setrgbcolor\n",
                              "0 0 0 setrgbcolor\n",
                              "0 0 0 setrgbcolor\n",
                              "0 0 0 setrgbcolor\n"};
    for (int value = 0; value <= 21; ++value) {
        m_device.setColor(static_cast<wsiColor>(value));
        EXPECT_EQ(written(), expected[value]) << "colour " << value;
    }
    m_device.setColor(static_cast<wsiColor>(1000));
    EXPECT_EQ(written(), "0 0 0 setrgbcolor\n") << "every value above 19 is black";
}

class EPSGrayText : public EPSText {
protected:
    EPSGrayText() : EPSText(true) {}
};

TEST_F(EPSGrayText, Colours_FollowTheTableInGreyMode) {
    const char* expected[] = {"",  "1", "0", "0", ".2", ".5", ".8", "0", "0", "0", "0",
                              "0", "0", "0", "0", "0",  "0",  "0",  "1", "0", "0"};
    for (int value = 0; value <= 20; ++value) {
        m_device.setColor(static_cast<wsiColor>(value));
        const std::string line = value == 0 ? "" : std::string(expected[value]) + " setgray\n";
        EXPECT_EQ(written(), line) << "colour " << value;
    }
    EXPECT_TRUE(m_device.isMonochrome());
}

TEST_F(EPSText, PenStylesAndWidths_FollowTheTable) {
    const struct {
        int style;
        const char* text;
    } cases[] = {
        {-1, ""},
        {0, "[] 0 setdash\n"},
        {1, "[3] 0 setdash\n"},
        {2, "[1 2] 0 setdash\n"},
        {3, "[3 2 1 2] 0 setdash\n"},
        {4, "[3 2 1 2 1 2] 0 setdash\n"},
        {5, "[] 0 setdash\n"},
        {6, ""},
    };
    for (const auto& c : cases) {
        m_device.setPenStyle(static_cast<wsiPenStyle>(c.style));
        EXPECT_EQ(written(), c.text) << "style " << c.style;
    }
    m_device.setPenWidth(7);
    EXPECT_EQ(written(), "7 setlinewidth\n");
    m_device.setPenWidth(0);
    EXPECT_EQ(written(), "0 setlinewidth\n");
}

TEST_F(EPSText, StateChanges_StrokeTheLinesDrawnBeforeThem) {
    m_device.drawLine(SheetPoint(1, 2), SheetPoint(3, 4));
    m_device.setColor(wsiRed);
    EXPECT_EQ(written(), "1 2 moveto\n3 4 lineto\nstroke\n1 0 0 setrgbcolor\n")
        << "the lines take the colour they were drawn in";
    m_device.drawLine(SheetPoint(1, 2), SheetPoint(3, 4));
    m_device.setPenStyle(wsiPenDot);
    EXPECT_EQ(written(), "1 2 moveto\n3 4 lineto\nstroke\n[1 2] 0 setdash\n");
    m_device.drawLine(SheetPoint(1, 2), SheetPoint(3, 4));
    m_device.setPenWidth(2);
    EXPECT_EQ(written(), "1 2 moveto\n3 4 lineto\nstroke\n2 setlinewidth\n");
    m_device.setColor(wsiNoColor);
    m_device.setColor(wsiBlue);
    EXPECT_EQ(written(), "0 0 1 setrgbcolor\n") << "no stroke without pending lines";
}

TEST_F(EPSText, Lines_AreWrittenFromTheCurrentPointAndMoveIt) {
    m_device.primitiveMoveTo(10, 20);
    m_device.primitiveLineTo(30, 40);
    m_device.primitiveLineTo(50, 60);
    EXPECT_EQ(written(), "10 20 moveto\n30 40 lineto\n30 40 moveto\n50 60 lineto\n");
    EXPECT_EQ(m_device.currentPoint(), DevicePoint(50, 60));
    m_device.endPath();
    EXPECT_EQ(written(), "stroke\n");
    m_device.endPath();
    EXPECT_EQ(written(), "") << "no path is open";
    m_device.closePath();
    EXPECT_EQ(written(), "closepath\n");
    const DevicePoint points[] = {DevicePoint(0, 0), DevicePoint(5, 0), DevicePoint(5, 5)};
    m_device.drawPolylineUnTransformed(3, const_cast<DevicePoint*>(points));
    EXPECT_EQ(written(), "0 0 moveto\n5 0 lineto\n5 0 moveto\n5 5 lineto\n");
}

TEST_F(EPSText, Clip_ReplacesThePreviousClipAndClipsLines) {
    m_device.setClipRect(DeviceRectangle(100, 100, 200, 200));
    EXPECT_EQ(written(), "grestore\ngsave\nnewpath\n100 100 moveto\n200 100 lineto\n"
                         "200 200 lineto\n100 200 lineto\nclosepath\nclip\nnewpath\n");
    const struct {
        const char* rule;
        DevicePoint from, to;
        const char* text;
    } cases[] = {
        {"inside: as drawn", DevicePoint(110, 120), DevicePoint(190, 180),
         "110 120 moveto\n190 180 lineto\n"},
        {"across: both ends moved onto the edges", DevicePoint(50, 150), DevicePoint(250, 150),
         "100 150 moveto\n200 150 lineto\n"},
        {"one end outside", DevicePoint(150, 150), DevicePoint(150, 300),
         "150 150 moveto\n150 200 lineto\n"},
        {"diagonal through a corner region", DevicePoint(0, 100), DevicePoint(200, 300),
         "100 200 moveto\n100 200 lineto\n"},
        {"wholly outside: nothing", DevicePoint(0, 0), DevicePoint(50, 300), ""},
        {"beside one edge: nothing", DevicePoint(300, 100), DevicePoint(300, 200), ""},
    };
    for (const auto& c : cases) {
        m_device.primitiveMoveTo(c.from.x(), c.from.y());
        m_device.primitiveLineTo(c.to.x(), c.to.y());
        EXPECT_EQ(written(), c.text) << c.rule;
    }
    m_device.setClipRect(DeviceRectangle(0, 0, 10, 10));
    EXPECT_EQ(linesOf(written()).front(), "stroke") << "the open path is ended first";
}

TEST_F(EPSText, CurvesEllipsesAndFills_AreWrittenInTheirFixedForms) {
    m_device.setPenWidth(3);
    written();
    m_device.drawCurve(SheetPoint(10, 20), SheetPoint(110, 80));
    EXPECT_EQ(written(), "3 setlinewidth\nnewpath\n10 20 moveto\n60 20\n60 80\n110 80\n"
                         "curveto\nstroke\n");
    m_device.drawEllipse(SheetRectangle(SheetPoint(100, 100), SheetPoint(140, 140)), false);
    EXPECT_EQ(written(), "120 120 20 0 360 arc\n3 setlinewidth\nstroke\n");
    m_device.setColor(wsiBlue);
    written();
    m_device.drawEllipse(SheetRectangle(SheetPoint(0, 0), SheetPoint(41, 30)), true);
    EXPECT_EQ(written(), "20 15 17.75 0 360 arc\ngsave\n  0 0 1 setrgbcolor\n  fill\n"
                         "grestore\n3 setlinewidth\nstroke\n")
        << "a non-circular ellipse: an integer centre, the mean of its half axes as radius";
    m_device.fillRectangle(SheetRectangle(SheetPoint(1, 2), SheetPoint(11, 22)));
    EXPECT_EQ(written(), "newpath\n1 2 moveto\n11 2 lineto\n11 22 lineto\n1 22 lineto\n"
                         "closepath\ngsave\n  0 0 1 setrgbcolor\n  gsave fill grestore\n"
                         "  stroke\ngrestore\nnewpath\n");
    m_device.setBackgroundColor(wsiYellow);
    written();
    m_device.erase(DeviceRectangle(0, 0, 5, 5));
    EXPECT_EQ(written(),
              "1 1 0 setrgbcolor\nnewpath\n0 0 moveto\n5 0 lineto\n5 5 lineto\n"
              "0 5 lineto\nclosepath\ngsave\n  1 1 0 setrgbcolor\n  gsave fill grestore\n"
              "  stroke\ngrestore\nnewpath\n0 0 1 setrgbcolor\n")
        << "erase fills in the background colour and sets the drawing colour back";
    const SheetPoint triangle[] = {SheetPoint(0, 0), SheetPoint(8, 0), SheetPoint(4, 6)};
    m_device.fillPolygon(wsiRed, 3, triangle);
    EXPECT_EQ(written(), "newpath\n0 0 moveto\n8 0 lineto\n4 6 lineto\nclosepath\ngsave\n"
                         "  1 0 0 setrgbcolor\n  gsave fill grestore\n  stroke\ngrestore\n"
                         "newpath\n");
    m_device.fillPolygon(wsiRed, 1, triangle);
    EXPECT_EQ(written(), "") << "a single point fills nothing";
}

TEST_F(EPSText, CappedPolyline_DrawsItsArrowHeadAsAFilledTriangle) {
    DevicePoint points[] = {DevicePoint(0, 0), DevicePoint(100, 0)};
    m_device.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, DevicePoint(10, 8),
                                             2, points);
    EXPECT_EQ(written(), "newpath\n100 0 moveto\n90 4 lineto\n90 -4 lineto\nclosepath\n"
                         "gsave\n  0 0 0 setrgbcolor\n  gsave fill grestore\n  stroke\n"
                         "grestore\nnewpath\n0 0 moveto\n90 0 lineto\n");
    EXPECT_EQ(points[1], DevicePoint(100, 0)) << "the caller's points are left as given";
}

TEST_F(EPSText, Text_EscapesEachCharacterByTheRule) {
    const struct {
        const char* text;
        const char* shown;
    } cases[] = {
        {"a(b)\\c", "(a\\(b\\)\\\\c) show"},
        {"\xA9", "(\\37777777651) show"},
        {"\x80\xFF", "(\\37777777600\\37777777777) show"},
        {"tab\there\n", "(tab\\11here\\12) show"},
        {"\x1F ~\x7F", "(\\37 ~\x7F) show"},
        {"", "() show"},
    };
    WsiFont font("Helvetica", 10);
    for (const auto& c : cases) {
        long advance = -1;
        m_device.primitiveDrawText(c.text, DevicePoint(0, 0), -1, font, advance);
        const auto lines = linesOf(written());
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines[lines.size() - 2], c.shown) << c.text;
    }
}

TEST_F(EPSText, Text_WritesTheFontThePrologueTheColourAndTheString) {
    m_device.setColor(wsiRed);
    m_device.setClipRect(DeviceRectangle(0, 0, 500, 400));
    m_device.drawLine(SheetPoint(0, 0), SheetPoint(1, 1));
    written();
    WsiFont font("Times New Roman", 12);
    font.setBold(true);
    const long advance = m_device.drawText("Hi", SheetPoint(100, 200), font);
    EXPECT_EQ(written(),
              "/Times-Bold findfont 60 scalefont setfont\n"
              "currentfont /FontBBox get aload pop exch pop dup 2 index sub exch div exch pop "
              "exch pop\n"
              "stroke\n"
              "gsave\n"
              "newpath\n0 0 moveto\n500 0 lineto\n500 400 lineto\n0 400 lineto\n"
              "closepath\nclip\nnewpath\n"
              "100 200 currentfont dup /FontMatrix get 0 get exch /FontType get 42 ne {1000 "
              "mul}if\n"
              "0 mul add moveto\n"
              "currentfont /FontBBox get aload pop exch pop dup 2 index sub div exch pop exch "
              "pop mul 1 scale\n"
              "1 -1 scale\n"
              "1 0 0 setrgbcolor\n"
              "(Hi) show\n"
              "grestore\n");
    // "Hi" in a 12-point bold Times is about 1.33 em wide: 60 units to the em here.
    EXPECT_GT(advance, 60);
    EXPECT_LT(advance, 100);
    EXPECT_EQ(m_device.selectedFont(), nullptr) << "the caller's font is not kept selected";
}

TEST_F(EPSText, Text_OnlyTheFirstLengthBytesAndAlignedTextFromItsBox) {
    WsiFont font("Courier", 10);
    long advance = 0;
    m_device.primitiveDrawText("abcdef", DevicePoint(5, 6), 3, font, advance);
    const std::string text = written();
    EXPECT_NE(text.find("/Courier findfont 50 scalefont setfont\n"), std::string::npos);
    EXPECT_NE(text.find("(abc) show\n"), std::string::npos);
    EXPECT_EQ(advance, 90) << "Courier advances 0.6 em per character";
    const DevicePoint box = m_device.pixelBox("abc", font);
    EXPECT_EQ(box.x(), 90);
    EXPECT_GT(box.y(), 40);
    const DeviceRectangle& bounds =
        m_device.drawAlignedText("abc", SheetPoint(200, 300), font, wsiAlignRight, wsiAlignTop);
    EXPECT_EQ(bounds.right(), 200);
    EXPECT_EQ(bounds.top(), 300);
    EXPECT_EQ(bounds.width(), 90);
    EXPECT_NE(written().find("110 "), std::string::npos) << "starts 90 units left of 200";
}

TEST_F(EPSText, CloseAndEndOfPage_EndTheDocument) {
    m_device.drawLine(SheetPoint(0, 0), SheetPoint(1, 1));
    written();
    m_device.close();
    EXPECT_EQ(written(), "stroke\ngrestore\ngrestore\n");
    m_device.endOfPage();
    EXPECT_EQ(written(), "showpage\n");
    m_device.setColor(wsiRed);
    m_device.drawLine(SheetPoint(0, 0), SheetPoint(1, 1));
    m_device.close();
    EXPECT_EQ(written(), "") << "nothing is drawn after close";
}

TEST(EPSDevice, TakesOverTheDisplayTransformationOfTheExportedDevice) {
    std::ostringstream out;
    EPSDevice window(nullptr, "window", out, ExportParameters());
    window.setDisplayTransformation(TqMatrix(FloatPoint(2, 3), FloatPoint(10, 20)));
    EPSDevice device(&window, "job", out, ExportParameters());
    device.open(DeviceRectangle(0, 0, 100, 100), DeviceRectangle(0, 0, 100, 100));
    out.str("");
    device.drawLine(SheetPoint(1, 1), SheetPoint(5, 2));
    EXPECT_EQ(out.str(), "12 23 moveto\n20 26 lineto\n");
    EXPECT_EQ(device.displayResolution(), DevicePoint(360, 360));
}

TEST(PostScriptFont, TheTableHasThe35StandardNames) {
    const auto names = PostScriptFont::standardNames();
    EXPECT_EQ(names.size(), 35u);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 35u);
    for (const char* name : names) {
        EXPECT_STREQ(PostScriptFont::nameFor(name, false, false), name)
            << "a standard name maps onto itself";
        EXPECT_NE(std::string(PostScriptFont::measuringFamily(name)), "");
    }
}

TEST(PostScriptFont, FamiliesMapOntoTheStandardFonts) {
    const struct {
        const char* family;
        bool bold, italic;
        const char* name;
    } cases[] = {
        {"Times", false, false, "Times-Roman"},
        {"Times New Roman", true, false, "Times-Bold"},
        {"serif", false, true, "Times-Italic"},
        {"times", true, true, "Times-BoldItalic"},
        {"Arial", false, false, "Helvetica"},
        {"Helvetica", true, true, "Helvetica-BoldOblique"},
        {"sans-serif", false, true, "Helvetica-Oblique"},
        {"Arial Narrow", true, false, "Helvetica-Narrow-Bold"},
        {"Courier New", false, false, "Courier"},
        {"monospace", true, true, "Courier-BoldOblique"},
        {"Symbol", true, true, "Symbol"},
        {"Zapf Dingbats", false, false, "ZapfDingbats"},
        {"ITC Avant Garde Gothic", true, false, "AvantGarde-Demi"},
        {"Bookman", false, true, "Bookman-LightItalic"},
        {"New Century Schoolbook", true, true, "NewCenturySchlbk-BoldItalic"},
        {"Palatino Linotype", false, false, "Palatino-Roman"},
        {"Zapf Chancery", true, false, "ZapfChancery-MediumItalic"},
        {"Times-Bold", false, true, "Times-BoldItalic"},
        {"Helvetica-Oblique", true, false, "Helvetica-BoldOblique"},
        {"Comic Sans", false, false, "Helvetica"},
        {"Comic Sans", true, false, "Helvetica-Bold"},
        {"Wingdings", false, true, "Helvetica-Oblique"},
        {"", true, true, "Helvetica-BoldOblique"},
        {"a family name much longer than any of the standard font names that there are", false,
         false, "Helvetica"},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(PostScriptFont::nameFor(c.family, c.bold, c.italic), c.name) << c.family;
    WsiFont font(nullptr, 9);
    font.setItalic(true);
    EXPECT_STREQ(PostScriptFont::nameFor(font), "Helvetica-Oblique");
    EXPECT_STREQ(PostScriptFont::measuringFamily("NewCenturySchlbk-Bold"),
                 "New Century Schoolbook");
    EXPECT_STREQ(PostScriptFont::measuringFamily("nonsense"), "Helvetica");
}

} // namespace
