// EPSDevice: the text of every operation, line by line.
#include "EPSTestSupport.h"

#include "graphics/export/eps/PostScriptFont.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

namespace {

// An EPSDevice whose page (the deviceSize of the header) the test chooses.
class PageDevice : public EPSDevice {
public:
    PageDevice(std::ostream& out, const ExportParameters& parameters, DevicePoint page)
        : EPSDevice(nullptr, "test", out, parameters), m_page(page) {}
    DevicePoint deviceSize() const override { return m_page; }

    using EPSDevice::primitiveDrawText;
    using EPSDevice::primitiveLineTo;
    using EPSDevice::primitiveMoveTo;

private:
    DevicePoint m_page;
};

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
    EPSText() : m_device(m_out, ExportParameters(), DevicePoint(1000, 1000)) {
        m_device.open(DeviceRectangle(0, 0, 1000, 1000), DeviceRectangle(0, 0, 1000, 1000));
        m_device.endPath(); // the path-open flag that open sets
        m_mark = m_out.str().size();
    }
    // The text since the last call (or since the set-up).
    std::string written() {
        std::string text = m_out.str().substr(m_mark);
        m_mark = m_out.str().size();
        return text;
    }

    std::ostringstream m_out;
    PageDevice m_device;
    std::size_t m_mark = 0;
};

// The header with its variable parts: the bounding box, the landscape turn, the page height
// in points, the target's origin, the scale and the source's negated origin.
std::string header(const char* box, const char* turn, const char* height, const char* origin,
                   const char* scale, const char* source) {
    return std::string("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: ") + box +
           " \ngsave\n/languagelevel where {pop languagelevel} {1} ifelse 2 lt {} {true "
           "setstrokeadjust} ifelse\n" +
           turn + "0 " + height + " translate\n1 -1 scale\n" + origin + " translate\n" + scale +
           " scale\n" + source + " translate\n0 setlinejoin\n1 setlinecap\n0 setlinewidth\ngsave\n";
}

TEST(EPSHeader, IsWrittenExactlyForEachOrientationAndScale) {
    const struct {
        const char* rule;
        ExportOrientation orientation;
        ExportPaperFeed feed;
        DevicePoint page;
        DeviceRectangle source, target;
        std::string expected;
    } cases[] = {
        // clang-format off
        {"a 500-unit target on a 1000-high device", exportPortrait, paperFeedDefault, {1000, 1000},
         DeviceRectangle(0, 0, 500, 500), DeviceRectangle(0, 0, 500, 500),
         header("0 100 100 200", "", "200", "0 0", "0.2 0.2", "0 0")},
        {"portrait letter: scale in six significant digits, fifths truncated toward zero, the "
         "source's origin negated", exportPortrait, paperFeedDefault, {3060, 3960},
         DeviceRectangle(-100, 250, 19900, 17250), DeviceRectangle(-7, 404, 2493, 3404),
         header("-1 111 498 711", "", "792", "-1 80", "0.025 0.0352941", "100 -250")},
        {"landscape: rotated, the width written straight before \"0 translate\"", exportLandscape,
         paperFeedDefault, {3960, 3060}, DeviceRectangle(0, 0, 3960, 3060),
         DeviceRectangle(0, 0, 3960, 3060),
         header("0 0 792 612", "90 rotate\n7920 translate\n-1 -1 scale\n", "612", "0 0", "0.2 0.2",
                "0 0")},
        {"landscape on paper fed by its long edge: not rotated", exportLandscape, paperFeedLongEdge,
         {3960, 3060}, DeviceRectangle(0, 0, 3960, 3060), DeviceRectangle(0, 0, 3960, 3060),
         header("0 0 792 612", "", "612", "0 0", "0.2 0.2", "0 0")}};
    // clang-format on
    for (const auto& c : cases) {
        std::ostringstream out;
        PageDevice device(out, parametersWith(c.orientation, c.feed), c.page);
        EXPECT_TRUE(device.open(c.source, c.target));
        EXPECT_EQ(out.str(), c.expected) << c.rule;
    }
}

TEST(EPSHeader, WritesThePenWidthSetBeforeOpenAndTheScaleOfUnequalRectangles) {
    std::ostringstream out;
    PageDevice device(out, ExportParameters(), DevicePoint(3060, 3960));
    device.setPenWidth(4);
    EXPECT_EQ(out.str(), "") << "nothing is written before open";
    device.open(DeviceRectangle(0, 0, 3000, 1000), DeviceRectangle(0, 0, 1000, 3000));
    EXPECT_NE(out.str().find("\n0.0666667 0.6 scale\n"), std::string::npos);
    EXPECT_TRUE(out.str().ends_with("\n4 setlinewidth\ngsave\n")) << out.str();
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
}

TEST(EPSColours, FollowTheTableInBothModes) {
    // wsiColor 0 to 20; 0 writes nothing, every value from 19 on is black.
    const char* rgb[] = {
        "",       "1 1 1", "0 0 0", "0 0 0",  ".25 .25 .25", ".5 .5 .5", ".75 .75 .75",
        ".7 0 0", "1 0 0", "1 0 0", "0 .7 0", "0 1 0",       "0 1 0",    "0 0 .7",
        "0 0 1",  "0 0 1", "1 0 1", "1 1 0",  "1 1 1",       "0 0 0",    "0 0 0"};
    const char* gray[] = {"",  "1", "0", "0", ".2", ".5", ".8", "0", "0", "0", "0",
                          "0", "0", "0", "0", "0",  "0",  "0",  "1", "0", "0"};
    for (const bool grayMode : {false, true}) {
        std::ostringstream out;
        PageDevice device(out, parametersWith(exportPortrait, paperFeedDefault, grayMode),
                          DevicePoint(1000, 1000));
        device.open(DeviceRectangle(0, 0, 1000, 1000), DeviceRectangle(0, 0, 1000, 1000));
        EXPECT_EQ(device.isMonochrome(), grayMode);
        for (int value = 0; value <= 21; ++value) { // 21 stands for any larger value
            out.str("");
            device.setColor(static_cast<wsiColor>(value < 21 ? value : 1000));
            const std::string operands = (grayMode ? gray : rgb)[value < 20 ? value : 20];
            EXPECT_EQ(out.str(), operands.empty()
                                     ? ""
                                     : operands + (grayMode ? " setgray\n" : " setrgbcolor\n"))
                << "colour " << value << (grayMode ? " in grey mode" : "");
        }
    }
}

TEST_F(EPSText, PenStylesFollowTheTable) {
    // Styles -1 to 6: the custom dash (-1) and 6 write nothing.
    const char* dashes[] = {"", "[]", "[3]", "[1 2]", "[3 2 1 2]", "[3 2 1 2 1 2]", "[]", ""};
    for (int style = -1; style <= 6; ++style) {
        m_device.setPenStyle(static_cast<wsiPenStyle>(style));
        const std::string dash = dashes[style + 1];
        EXPECT_EQ(written(), dash.empty() ? "" : dash + " 0 setdash\n") << "style " << style;
    }
}

// One drawing operation and the text it writes; the steps run in order on one device.
struct Step {
    const char* rule;
    std::function<void(PageDevice&)> act;
    std::string text;
};

TEST_F(EPSText, OperationsWriteTheirFixedTextInOrder) {
    const SheetPoint a(1, 2), b(3, 4);
    const SheetPoint triangle[] = {SheetPoint(0, 0), SheetPoint(8, 0), SheetPoint(4, 6)};
    const std::string fillRest = "  gsave fill grestore\n  stroke\ngrestore\nnewpath\n";
    const Step steps[] = {
        {"a line", [&](PageDevice& d) { d.drawLine(a, b); }, "1 2 moveto\n3 4 lineto\n"},
        {"a colour strokes the lines drawn before it", [](PageDevice& d) { d.setColor(wsiRed); },
         "stroke\n1 0 0 setrgbcolor\n"},
        {"so does a dash",
         [&](PageDevice& d) {
             d.drawLine(a, b);
             d.setPenStyle(wsiPenDot);
         },
         "1 2 moveto\n3 4 lineto\nstroke\n[1 2] 0 setdash\n"},
        {"and a width",
         [&](PageDevice& d) {
             d.drawLine(a, b);
             d.setPenWidth(2);
         },
         "1 2 moveto\n3 4 lineto\nstroke\n2 setlinewidth\n"},
        {"colour 0 writes nothing; no stroke without pending lines",
         [](PageDevice& d) {
             d.setColor(wsiNoColor);
             d.setColor(wsiBlue);
         },
         "0 0 1 setrgbcolor\n"},
        {"lines from the current point, which each moves",
         [](PageDevice& d) {
             d.primitiveMoveTo(10, 20);
             d.primitiveLineTo(30, 40);
             d.primitiveLineTo(50, 60);
             EXPECT_EQ(d.currentPoint(), DevicePoint(50, 60));
         },
         "10 20 moveto\n30 40 lineto\n30 40 moveto\n50 60 lineto\n"},
        {"endPath strokes", [](PageDevice& d) { d.endPath(); }, "stroke\n"},
        {"once: no path is open", [](PageDevice& d) { d.endPath(); }, ""},
        {"closePath", [](PageDevice& d) { d.closePath(); }, "closepath\n"},
        {"a polyline",
         [](PageDevice& d) {
             DevicePoint points[] = {{0, 0}, {5, 0}, {5, 5}};
             d.drawPolylineUnTransformed(3, points);
         },
         "0 0 moveto\n5 0 lineto\n5 0 moveto\n5 5 lineto\n"},
        {"a width", [](PageDevice& d) { d.setPenWidth(3); }, "stroke\n3 setlinewidth\n"},
        {"a curve", [](PageDevice& d) { d.drawCurve(SheetPoint(10, 20), SheetPoint(110, 80)); },
         "3 setlinewidth\nnewpath\n10 20 moveto\n60 20\n60 80\n110 80\ncurveto\nstroke\n"},
        {"a circle",
         [](PageDevice& d) { d.drawEllipse(SheetRectangle(100, 100, 140, 140), false); },
         "120 120 20 0 360 arc\n3 setlinewidth\nstroke\n"},
        {"a filled ellipse: an integer centre, the mean of its half axes as radius",
         [](PageDevice& d) { d.drawEllipse(SheetRectangle(0, 0, 41, 30), true); },
         "20 15 17.75 0 360 arc\ngsave\n  0 0 1 setrgbcolor\n  fill\ngrestore\n"
         "3 setlinewidth\nstroke\n"},
        {"a filled rectangle", [](PageDevice& d) { d.fillRectangle(SheetRectangle(1, 2, 11, 22)); },
         "newpath\n1 2 moveto\n11 2 lineto\n11 22 lineto\n1 22 lineto\nclosepath\ngsave\n"
         "  0 0 1 setrgbcolor\n" +
             fillRest},
        {"erase fills in the background colour and sets the drawing colour back",
         [](PageDevice& d) {
             d.setBackgroundColor(wsiYellow);
             d.erase(DeviceRectangle(0, 0, 5, 5));
         },
         "1 1 0 setrgbcolor\nnewpath\n0 0 moveto\n5 0 lineto\n5 5 lineto\n0 5 lineto\n"
         "closepath\ngsave\n  1 1 0 setrgbcolor\n" +
             fillRest + "0 0 1 setrgbcolor\n"},
        {"a polygon filled in its colour",
         [&](PageDevice& d) { d.fillPolygon(wsiRed, 3, triangle); },
         "newpath\n0 0 moveto\n8 0 lineto\n4 6 lineto\nclosepath\ngsave\n"
         "  1 0 0 setrgbcolor\n" +
             fillRest},
        {"a single point fills nothing", [&](PageDevice& d) { d.fillPolygon(wsiRed, 1, triangle); },
         ""},
        {"an arrow head as a filled triangle, the line to its base",
         [](PageDevice& d) {
             DevicePoint points[] = {{0, 0}, {100, 0}};
             d.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, {10, 8}, 2,
                                               points);
             EXPECT_EQ(points[1], DevicePoint(100, 0)) << "the caller's points are left as given";
         },
         "newpath\n100 0 moveto\n90 4 lineto\n90 -4 lineto\nclosepath\ngsave\n"
         "  0 0 1 setrgbcolor\n" +
             fillRest + "0 0 moveto\n90 0 lineto\n"},
        {"a clip ends the open path and replaces the previous clip",
         [](PageDevice& d) { d.setClipRect(DeviceRectangle(100, 100, 200, 200)); },
         "stroke\ngrestore\ngsave\nnewpath\n100 100 moveto\n200 100 lineto\n200 200 lineto\n"
         "100 200 lineto\nclosepath\nclip\nnewpath\n"},
        {"a line across the clip: both ends moved onto its edges",
         [](PageDevice& d) {
             d.primitiveMoveTo(50, 150);
             d.primitiveLineTo(250, 150);
         },
         "100 150 moveto\n200 150 lineto\n"},
        {"a line wholly outside it: nothing",
         [](PageDevice& d) {
             d.primitiveMoveTo(0, 0);
             d.primitiveLineTo(50, 300);
         },
         ""},
        {"a line beside one of its edges: nothing",
         [](PageDevice& d) {
             d.primitiveMoveTo(300, 100);
             d.primitiveLineTo(300, 200);
         },
         ""},
        {"close strokes and ends both states", [](PageDevice& d) { d.close(); },
         "stroke\ngrestore\ngrestore\n"},
        {"endOfPage", [](PageDevice& d) { d.endOfPage(); }, "showpage\n"},
        {"nothing is drawn after close",
         [&](PageDevice& d) {
             d.setColor(wsiRed);
             d.drawLine(a, b);
             d.close();
         },
         ""}};
    for (const Step& step : steps) {
        step.act(m_device);
        EXPECT_EQ(written(), step.text) << step.rule;
    }
}

TEST_F(EPSText, TextEscapesEachCharacterByTheRuleUpToTheLength) {
    const struct {
        const char* text;
        int length;
        const char* shown;
    } cases[] = {{"a(b)\\c", -1, "(a\\(b\\)\\\\c) show"},
                 {"\xA9", -1, "(\\37777777651) show"},
                 {"\x80\xFF", -1, "(\\37777777600\\37777777777) show"},
                 {"tab\there\n", -1, "(tab\\11here\\12) show"},
                 {"\x1F ~\x7F", -1, "(\\37 ~\x7F) show"},
                 {"", -1, "() show"},
                 {"abcdef", 3, "(abc) show"}};
    WsiFont font("Helvetica", 10);
    for (const auto& c : cases) {
        long advance = -1;
        m_device.primitiveDrawText(c.text, DevicePoint(0, 0), c.length, font, advance);
        const std::string text = written();
        EXPECT_TRUE(text.ends_with(std::string("\n") + c.shown + "\ngrestore\n")) << text;
    }
}

TEST_F(EPSText, TextWritesTheFontThePrologueTheColourAndTheString) {
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
    EXPECT_NEAR(advance, 80, 20);
    EXPECT_EQ(m_device.selectedFont(), nullptr) << "the caller's font is not kept selected";
}

TEST_F(EPSText, TextAdvancesByTheFirstLengthBytesAndAlignsFromItsBox) {
    WsiFont font("Courier", 10);
    long advance = 0;
    m_device.primitiveDrawText("abcdef", DevicePoint(5, 6), 3, font, advance);
    EXPECT_NE(written().find("/Courier findfont 50 scalefont setfont\n"), std::string::npos);
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

TEST(PostScriptFont, The35StandardNamesAndTheFamiliesMappedOntoThem) {
    const auto names = PostScriptFont::standardNames();
    EXPECT_EQ(names.size(), 35u);
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 35u);
    for (const char* name : names)
        EXPECT_STREQ(PostScriptFont::nameFor(name, false, false), name) << "maps onto itself";
    const struct {
        const char* family;
        bool bold, italic;
        const char* name;
    } cases[] = {// clang-format off
        {"Times", 0, 0, "Times-Roman"},                 {"Times New Roman", 1, 0, "Times-Bold"},
        {"serif", 0, 1, "Times-Italic"},                {"times", 1, 1, "Times-BoldItalic"},
        {"Arial", 0, 0, "Helvetica"},                   {"Helvetica", 1, 1, "Helvetica-BoldOblique"},
        {"sans-serif", 0, 1, "Helvetica-Oblique"},      {"Arial Narrow", 1, 0, "Helvetica-Narrow-Bold"},
        {"Courier New", 0, 0, "Courier"},               {"monospace", 1, 1, "Courier-BoldOblique"},
        {"Symbol", 1, 1, "Symbol"},                     {"Zapf Dingbats", 0, 0, "ZapfDingbats"},
        {"ITC Avant Garde Gothic", 1, 0, "AvantGarde-Demi"}, {"Bookman", 0, 1, "Bookman-LightItalic"},
        {"New Century Schoolbook", 1, 1, "NewCenturySchlbk-BoldItalic"},
        {"Palatino Linotype", 0, 0, "Palatino-Roman"},  {"Zapf Chancery", 1, 0, "ZapfChancery-MediumItalic"},
        // A standard name adds its own weight and slant; anything else is Helvetica.
        {"Times-Bold", 0, 1, "Times-BoldItalic"},       {"Helvetica-Oblique", 1, 0, "Helvetica-BoldOblique"},
        {"Comic Sans", 0, 0, "Helvetica"},              {"Comic Sans", 1, 0, "Helvetica-Bold"},
        {"Wingdings", 0, 1, "Helvetica-Oblique"},       {"", 1, 1, "Helvetica-BoldOblique"},
        {"a family name much longer than any of the standard font names that there are", 0, 0,
         "Helvetica"}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_STREQ(PostScriptFont::nameFor(c.family, c.bold, c.italic), c.name) << c.family;
    WsiFont font(nullptr, 9);
    font.setItalic(true);
    EXPECT_STREQ(PostScriptFont::nameFor(font), "Helvetica-Oblique");
    EXPECT_STREQ(PostScriptFont::measuringFamily("NewCenturySchlbk-Bold"),
                 "New Century Schoolbook");
    EXPECT_STREQ(PostScriptFont::measuringFamily("nonsense"), "Helvetica");
}

TEST(EPSDevice, ErrorKeepsTheFirstFailureOfTheStream) {
    std::ostringstream sound, failed;
    failed.setstate(std::ios::badbit);
    EPSDevice good(nullptr, "job", sound, ExportParameters());
    EPSDevice broken(nullptr, "job", failed, ExportParameters());
    for (EPSDevice* device : {&good, &broken}) {
        EXPECT_EQ(device->error(), nullptr) << "nothing written yet";
        EXPECT_TRUE(device->open(DeviceRectangle(0, 0, 100, 100), DeviceRectangle(0, 0, 500, 500)))
            << "open keeps its answer";
        device->close();
        device->endOfPage();
    }
    EXPECT_EQ(good.error(), nullptr);
    EXPECT_STREQ(broken.error(), "the output stream failed");
}

} // namespace
