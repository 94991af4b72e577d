// The MIF device: the text of every graphic object, the catalogues, tables and the assembled
// file, read back line by line.
#include "../CommaLocale.h"
#include "MIFTestSupport.h"
#include "graphics/export/mif/MIFFormat.h"
#include "graphics/geometry/SheetPoint.h"

#include <QPaintDevice>
#include <algorithm>
#include <climits>
#include <fstream>

namespace {

const std::string solid = "<DashedPattern \n <DashedStyle Solid>\n> # end of DashedPattern\n";
const std::string fileStart =
    "<MIFFile 5.00> # Ondrivel\n<Units Upt>\n<FontCatalog\n\n> # end FontCatalog\n";

std::string lineText(const std::string& x1y1, const std::string& x2y2, int separation = 0,
                     const std::string& pattern = solid, const std::string& width = "0.0") {
    return "<PolyLine\n <Pen 0>\n <PenWidth " + width + ">\n <Fill 15>\n" + pattern +
           " <Separation " + std::to_string(separation) +
           ">\n <HeadCap Round>\n <TailCap Round>\n <NumPoints 2>\n <Point " + x1y1 +
           ">\n <Point " + x2y2 + ">\n> # end PolyLine\n";
}

std::string fontText(const std::string& tag, const std::string& family, const char* size,
                     int separation, const char* bold, const char* italic,
                     const char* underlining) {
    return "<Font\n  <FTag `" + tag + "'>\n  <FFamily `" + family + "'>\n  <FSize " + size +
           " pt>\n  <FSeparation " + std::to_string(separation) + ">\n  <FBold " + bold +
           ">\n  <FItalic " + italic + ">\n  <FUnderlining " + underlining +
           " >\n\n > # end Font\n";
}

// The path (0, 0), (100, 0), (100, 100) cut to its first n points, with the caps given.
void capped(MIFDevice& d, wsiLineCap start, wsiLineCap end, unsigned short n = 3) {
    DevicePoint points[] = {{0, 0}, {100, 0}, {100, 100}};
    d.drawCappedPolylineUnTransformed(start, end, {25, 10}, n, points);
}

struct ObjectCase {
    const char* what;
    std::function<void(MIFDevice&)> draw;
    std::string objects;
    ExportParameters parameters = fixedParameters();
};

std::string textLine(const char* alignment, const std::string& font, const char* string) {
    return std::string("<TextLine\n <TLOrigin 10.0 20.0>\n <TLAlignment ") + alignment + ">\n" +
           font + " <String `" + string + "'>\n> # end TextLine\n";
}

TEST(MIFDevice, GraphicObjectsAndTextAreWrittenLineByLine) {
    const std::string times =
        fontText("Times 12.0 Bold", "Times", "12.0", 2, "Yes", "No", "FNoUnderlining");
    const std::string helvetica =
        fontText("Helvetica 10.0 Italic Underline", "Helvetica", "10.0", 0, "No", "Yes", "FSingle");
    WsiFont bold("Times", 12), plain;
    bold.setBold(true);
    plain.setItalic(true);
    plain.setUnderline(true);
    const SheetPoint at(100, 200);
    const std::string arc = "<Arc\n <Pen 0>\n <PenWidth 0.0>\n <Separation 0>\n";
    const std::string arcEnd = " <HeadCap Square>\n <TailCap Square>\n"
                               " <ArcRect 1.0 2.0 30.0 40.0>\n <ArcTheta 0> <ArcDTheta 360>>\n";
    const std::string cappedStart =
        "<PolyLine\n <Pen 0>\n <PenWidth 0.0>\n <Fill 15>\n" + solid + " <Separation 0>\n";
    const std::string points3 = " <NumPoints 3 >\n <Point 0.0 0.0>\n <Point 10.0 0.0>\n"
                                " <Point 10.0 10.0>\n> # end PolyLine\n";
    const std::string polygonStart = "<Polygon\n <Pen 15>\n <Fill 0>\n <Separation ";
    const ObjectCase cases[] = {
        {"line with colour and width",
         [](MIFDevice& d) {
             d.setColor(wsiRed);
             d.setPenWidth(15);
             line(d, 100, 200, 305, 400);
         },
         lineText("10.0 20.0", "30.5 40.0", 2, solid, "1.5")},
        {"negative coordinates", [](MIFDevice& d) { line(d, -5, -100, 0, 7); },
         lineText("-0.5 -10.0", "0.0 0.7")},
        {"colour 0 keeps the separation",
         [](MIFDevice& d) {
             d.setColor(wsiBlue);
             d.setColor(wsiNoColor);
             line(d, 0, 0, 10, 0);
         },
         lineText("0.0 0.0", "1.0 0.0", 4)},
        {"line clipped at both ends",
         [](MIFDevice& d) {
             d.setClipRect(DeviceRectangle(0, 0, 200, 200));
             line(d, -100, 100, 300, 100);
         },
         lineText("0.0 10.0", "20.0 10.0")},
        {"line missing the clip rectangle",
         [](MIFDevice& d) {
             d.setClipRect(DeviceRectangle(0, 0, 200, 200));
             line(d, 300, 300, 400, 300);
         },
         ""},
        {"pen style 5 writes no dashed pattern",
         [](MIFDevice& d) {
             d.setPenStyle(wsiPenNull);
             line(d, 0, 0, 10, 0);
         },
         lineText("0.0 0.0", "1.0 0.0", 0, "")},
        {"polygon closed by its fourth line",
         [](MIFDevice& d) { d.drawRectangle(SheetRectangle(0, 0, 10, 20)); },
         lineText("0.0 0.0", "1.0 0.0") + lineText("1.0 0.0", "1.0 2.0") +
             lineText("1.0 2.0", "0.0 2.0") + lineText("0.0 2.0", "0.0 0.0")},
        {"filled ellipse",
         [](MIFDevice& d) { d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), true); },
         arc + " <Fill  0>\n" + arcEnd},
        {"unfilled ellipse",
         [](MIFDevice& d) { d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), false); },
         arc + " <Fill  7>\n" + arcEnd},
        {"arrow at the end", [](MIFDevice& d) { capped(d, wsiLineCapRound, wsiLineCapArrow); },
         cappedStart + " <arrow1>\n <HeadCap Round>\n <TailCap ArrowHead>\n" + points3},
        {"arrows at both ends", [](MIFDevice& d) { capped(d, wsiLineCapArrow, wsiLineCapArrow); },
         cappedStart + " <arrow1>\n <HeadCap ArrowHead>\n <TailCap ArrowHead>\n" + points3},
        {"capped without arrows", [](MIFDevice& d) { capped(d, wsiLineCapRound, wsiLineCapRound); },
         cappedStart + " <HeadCap Round>\n <TailCap Round>\n" + points3},
        {"capped polyline of one point",
         [](MIFDevice& d) { capped(d, wsiLineCapArrow, wsiLineCapArrow, 1); }, ""},
        {"filled polygon in its own colour, the separation kept for what follows",
         [](MIFDevice& d) {
             DevicePoint p[] = {{0, 0}, {100, 0}, {0, 100}};
             d.setColor(wsiRed);
             d.filledPolygonUnTransformed(wsiBlue, 3, p);
             line(d, 0, 0, 10, 0);
         },
         polygonStart +
             "4>\n <NumPoints 3 >\n <Point 0.0 0.0>\n <Point 10.0 0.0>\n"
             " <Point 0.0 10.0>\n> # end Polygon\n" +
             lineText("0.0 0.0", "1.0 0.0", 2)},
        {"erase fills with the background colour",
         [](MIFDevice& d) { d.erase(DeviceRectangle(0, 0, 10, 20)); },
         polygonStart + "1>\n <NumPoints 4 >\n <Point 0.0 0.0>\n <Point 1.0 0.0>\n"
                        " <Point 1.0 2.0>\n <Point 0.0 2.0>\n> # end Polygon\n"},
        {"pixels have no MIF form", [](MIFDevice& d) { d.setPixel(1, 1); }, ""},
        {"grey scale prints only black and white",
         [](MIFDevice& d) {
             EXPECT_TRUE(d.isMonochrome());
             d.setColor(wsiYellow);
             line(d, 0, 0, 10, 0);
             d.setColor(wsiWhite);
             line(d, 0, 0, 10, 0);
         },
         lineText("0.0 0.0", "1.0 0.0", 0) + lineText("0.0 0.0", "1.0 0.0", 1),
         ExportParameters("file,,,portrait,clipboard,letter,default,6.5,5.0,in,gray,fixed,mifframe,"
                          "preview")},
        {"text left on the baseline",
         [&](MIFDevice& d) {
             d.setColor(wsiDarkRed);
             EXPECT_GT(d.drawText("a'b>`c\\", at, bold), 0);
         },
         textLine("Left", times, "a\\qb\\>\\Qc\\\\")},
        {"text centred, default family",
         [&](MIFDevice& d) {
             d.drawAlignedText("x\ty", at, plain, wsiAlignHCenter, wsiAlignBaseline);
         },
         textLine("Center", helvetica, "x\\ty")},
        {"text on the right",
         [&](MIFDevice& d) { d.drawAlignedText("", at, plain, wsiAlignRight, wsiAlignBaseline); },
         textLine("Right", helvetica, "")},
        {"null text", [&](MIFDevice& d) { d.drawText(nullptr, at, plain); }, ""}};
    for (const ObjectCase& c : cases)
        EXPECT_EQ(frameObjects(fileDrawnBy(c.draw, c.parameters)), c.objects) << c.what;
}

TEST(MIFDevice, ManyLinesExpandAcrossChunksAndStateChanges) {
    // About 20 bytes a line are kept, so this spans two megabyte chunks.
    std::string expected;
    const std::string objects = frameObjects(fileDrawnBy([&](MIFDevice& d) {
        for (int i = 0; i < 70000; ++i) {
            const int phase = i / 7000;
            if (i % 7000 == 0) {
                d.setColor(phase % 2 ? wsiRed : wsiGreen);
                d.setPenWidth(phase);
            }
            line(d, i % 1000, 5, i % 1000 + 10, 15);
            expected += lineText(MIFFormat::real(i % 1000 / 10.0) + " 0.5",
                                 MIFFormat::real((i % 1000 + 10) / 10.0) + " 1.5",
                                 phase % 2 ? 2 : 3, solid, MIFFormat::real(phase / 10.0));
        }
    }));
    EXPECT_EQ(objects.size(), expected.size());
    const auto differ = std::mismatch(objects.begin(), objects.end(), expected.begin()).first;
    EXPECT_TRUE(differ == objects.end()) << "first difference at " << differ - objects.begin();
}

TEST(MIFDevice, AlignedTextMovesTheBaselineByTheFontMeasures) {
    WsiFont font("Times", 20);
    int ascent = 0;
    const std::string file = fileDrawnBy([&](MIFDevice& d) {
        const WsiFontMetric metric(font, d.measuringDevice());
        ascent = metric.ascent();
        const DeviceRectangle& top =
            d.drawAlignedText("Ag", SheetPoint(100, 200), font, wsiAlignLeft, wsiAlignTop);
        EXPECT_EQ(top.top(), 200);
        EXPECT_EQ(top.bottom(), 200 + metric.height());
    });
    // A 20-point font at a tenth of a point per unit rises about 200 units.
    EXPECT_NEAR(ascent, 190, 70);
    EXPECT_NE(file.find(" <TLOrigin 10.0 " + MIFFormat::real((200 + ascent) / 10.0) +
                        ">\n <TLAlignment Left>\n"),
              std::string::npos);
}

TEST(MIFDevice, DashedPatternFollowsThePenStyleTable) {
    // Styles 1 to 4 are dashed, 0 is solid; -1, 5 and 6 write no pattern.
    const char* segments[] = {"8.0 6.0", "2.0 4.0", "12.0 6.0 2.0 6.0", "12.0 6.0 2.0 6.0 2.0 6.0"};
    for (int style = -1; style <= 6; ++style) {
        std::string text, expected = style == 0 ? solid : "";
        MIFDocument::emitDashedPattern(text, static_cast<wsiPenStyle>(style));
        if (style >= 1 && style <= 4) {
            std::istringstream lengths(segments[style - 1]);
            std::string lines;
            int count = 0;
            for (std::string length; lengths >> length; ++count)
                lines += " <DashSegment  " + length + " pt>\n";
            expected = "<DashedPattern \n <DashedStyle Dashed>\n <NumSegments " +
                       std::to_string(count) + ">\n" + lines + "> # end of DashedPattern\n";
        }
        EXPECT_EQ(text, expected) << style;
    }
}

TEST(MIFDevice, ArrowTypesAreNumberedOnFirstUseAndCatalogued) {
    std::ostringstream out;
    MIFDevice device("job", out, fixedParameters(), v_drawing);
    const MIFArrowType& first = device.getArrowType({25, 10});
    EXPECT_EQ(device.getArrowType({12345670, 8}).number, 2);
    for (int i = 0; i < 40; ++i)
        device.getArrowType({100 + i, 1});
    EXPECT_EQ(first.number, 1);
    EXPECT_EQ(&device.getArrowType({25, 10}), &first); // records stay where they are
    EXPECT_EQ(device.getArrowType({12345670, 8}).number, 2);
    EXPECT_EQ(device.getArrowType({25, 11}).number, 43);
    std::string catalog;
    device.emitArrowCatalog(catalog);
    const std::string style = ", ArrowStyle <TipAngle 24> <BaseAngle 90> <Length ";
    EXPECT_EQ(catalog.substr(0, catalog.find("define (arrow3")),
              "define (arrow1" + style + "2.5> <HeadType Filled> )\ndefine (arrow2" + style +
                  "1.23457e+06> <HeadType Filled> )\n");
}

TEST(MIFDevice, FontCatalogHasOneEntryPerFontInOrderOfUse) {
    WsiFont a("Courier", 9), b("Courier", 9);
    b.setBold(true);
    const std::string file = fileDrawnBy([&](MIFDevice& d) {
        d.drawText("1", SheetPoint(0, 0), a);
        d.setColor(wsiGreen);
        d.drawText("2", SheetPoint(0, 0), b);
        d.drawText("3", SheetPoint(0, 0), a);
    });
    EXPECT_EQ(file.substr(0, file.find("<AFrames")),
              "<MIFFile 5.00> # Ondrivel\n<Units Upt>\n<FontCatalog\n" +
                  fontText("Courier 9.0", "Courier", "9.0", 0, "No", "No", "FNoUnderlining") +
                  fontText("Courier 9.0 Bold", "Courier", "9.0", 0, "Yes", "No", "FNoUnderlining") +
                  "\n> # end FontCatalog\n");
    // Text lines carry the colour they are drawn in; the catalogue's formats are black.
    EXPECT_NE(file.find("  <FSeparation 3>\n"), std::string::npos);
}

TEST(MIFDevice, DrawingFileEndsByFrameFormAndAnchoredFrameSetting) {
    const std::string page = "<Page \n <PageType BodyPage >\n <TextRect \n  <ID 1>\n"
                             "  <BRect  0 0 100.0 50.0>\n > # end of TextRect\n> # end of Page\n"
                             "<TextFlow \n <Para \n  <ParaLine \n   <TextRectID 1>\n"
                             "   <AFrame 1>\n  >\n > # end of Para\n> # end of TextFlow\n";
    const struct {
        MifFrameForm form;
        int anchoredOnly;
        const char* rect;
        std::string ending;
    } cases[] = {{mifFrameBRect, 0, "BRect", page},
                 {mifFrameShapeRect, 0, "ShapeRect", page},
                 {mifFrameBRect, 1, "BRect", ""},
                 {mifFrameShapeRect, 1, "ShapeRect", ""}};
    for (const auto& c : cases) {
        ExportParameters parameters(fixedParameters().asText().c_str(), c.anchoredOnly);
        parameters.setMifFrameForm(c.form);
        EXPECT_EQ(fileDrawnBy([](MIFDevice& d) { line(d, 0, 0, 10, 0); }, parameters),
                  fileStart + "<AFrames\n <Frame\n  <ID 1>\n  <" + c.rect +
                      "  0 0 100.0 50.0>\n  <Pen 15>\n  <FrameType Below>\n" +
                      lineText("0.0 0.0", "1.0 0.0") + " > # end of Frame\n> # end of AFrames\n" +
                      c.ending + "# End of MIFFile\n")
            << c.rect << c.anchoredOnly;
    }
}

TEST(MIFDevice, ScalingStretchesToThePictureAndKeepsTheWholeDeviceRangeInside) {
    std::ostringstream out;
    // 6.5 by 5 inches is 468 by 360 points.
    MIFDevice device("job", out, ExportParameters(), DeviceRectangle(100, 100, 1100, 600));
    device.setPenWidth(10);
    line(device, 100, 100, 1100, 600);
    ASSERT_TRUE(device.close());
    EXPECT_NE(out.str().find("  <BRect  0 0 468.0 360.0>\n"), std::string::npos);
    EXPECT_EQ(frameObjects(out.str()), lineText("0.0 0.0", "468.0 360.0", 0, solid, "4.68"));
    // The whole device range, fixed or scaled, stays inside it.
    for (const ExportParameters& parameters : {fixedParameters(), ExportParameters()}) {
        std::ostringstream whole;
        MIFDevice device("job", whole, parameters,
                         DeviceRectangle(INT_MIN, INT_MIN, INT_MAX, INT_MAX));
        EXPECT_EQ(device.measuringDevice()->width(), INT_MAX);
        line(device, INT_MIN, INT_MIN, INT_MAX, INT_MAX);
        ASSERT_TRUE(device.close());
        EXPECT_EQ(unbalancedAt(whole.str()), "");
    }
}

// A header row with a cell over two columns, and a body row with an empty cell.
void writeTable(MIFDevice& d) {
    d.startTable(nullptr, false);
    d.startHeader();
    d.startRow();
    d.startCell(2);
    d.writeCellText("Signal's name");
    d.endCell();
    d.endRow();
    d.endHeader();
    d.startBody();
    d.startRow();
    d.startCell();
    d.writeCellText("clk");
    d.endCell();
    d.startCell(0);
    d.endCell();
    d.endRow();
    d.endBody();
}

const std::string cellStart = "   <Cell <CellContent <Para <PgfTag `Cell";
const std::string tableText =
    "<Tbl\n <TblID 1>\n <TblTag `Format A'>\n <TblH\n  <Row\n   <Cell <CellColumns 2> "
    "<CellContent <Para <PgfTag `CellHeading'> <ParaLine <String `Signal\\qs name'> > > > >\n" +
    cellStart + "Heading'> <ParaLine <String `'> > > > >\n > >\n <TblBody\n  <Row\n" + cellStart +
    "Body'> <ParaLine <String `clk'> > > > >\n" + cellStart + "Body'>> > >\n > >> # end Tbl\n";

TEST(MIFDevice, TableIsWrittenWithItsRulingCatalogAndTextFlow) {
    const std::string file =
        fileStart +
        "<RulingCatalog\n <Ruling\n  <RulingTag `Thin'>\n  <RulingPenWidth  0.5 pt>\n"
        "  <RulingGap  0.0 pt>\n  <RulingSeparation 0>\n  <RulingColor `Black'>\n"
        "  <RulingPen 0>\n  <RulingLines 1>\n > # end of Ruling\n>\n<Tbls\n" +
        tableText +
        "> # end Tbls\n\n<TextFlow \n <Para \n  <ParaLine \n   <ATbl 1>\n"
        "  > # end of ParaLine\n > # end of Para\n> # end of TextFlow\n# End of MIFFile\n";
    EXPECT_EQ(fileDrawnBy([](MIFDevice& d) {
                  writeTable(d);
                  d.endTable();
              }),
              file);
    EXPECT_EQ(fileDrawnBy([](MIFDevice& d) { writeTable(d); }), file) << "ended at close";
    EXPECT_EQ(fileDrawnBy([](MIFDevice& d) {
                  d.startRow();
                  line(d, 0, 0, 10, 0);
                  writeTable(d);
                  d.startTable("again", true);
                  d.endTable();
                  d.startCell();
                  d.endTable();
              }),
              file)
        << "graphic objects, a second table and table calls after its end are left out";
}

TEST(MIFDevice, TableCallsOutOfOrderAreRepairedToAWellFormedTable) {
    const std::string file = fileDrawnBy([](MIFDevice& d) {
        d.startTable("", false);
        d.endCell();
        d.endRow();
        d.endBody();
        d.writeCellText("nowhere");
        d.startHeader();
        d.startRow();
        d.startCell();
        d.writeCellText("a");
        d.startCell(2);
        d.startBody();
        d.startRow();
        d.startCell();
        d.endHeader();
    });
    EXPECT_NE(
        file.find("<Tbls\n<Tbl\n <TblID 1>\n <TblTag `Format A'>\n <TblH\n  <Row\n" + cellStart +
                  "Heading'> <ParaLine <String `a'> > > > >\n"
                  "   <Cell <CellColumns 2> <CellContent <Para <PgfTag `CellHeading'>> > >\n" +
                  cellStart +
                  "Heading'> <ParaLine <String `'> > > > >\n"
                  " > >\n <TblBody\n  <Row\n" +
                  cellStart + "Body'>> > >\n > >> # end Tbl\n> # end Tbls\n"),
        std::string::npos);
    EXPECT_EQ(unbalancedAt(file), "");
}

TEST(MIFDevice, TableTitleGoesAboveOrBelowTheTable) {
    for (const bool below : {false, true}) {
        const std::string file = fileDrawnBy([&](MIFDevice& d) {
            d.startTable("Timing <1>", below);
            d.endTable();
        });
        EXPECT_NE(file.find("<Tbl\n <TblID 1>\n <TblTag `Format A'>\n <TblFormat \n"
                            "  <TblTitlePlacement " +
                            std::string(below ? "InFooter" : "InHeader") +
                            ">\n > # end of TblFormat\n <TblTitleContent \n  <Para \n"
                            "   <PgfTag `TableTitle'>\n   <ParaLine \n"
                            "    <String `Timing <1\\>'>\n   >\n  >\n"
                            " > # end of TblTitleContent\n> # end Tbl\n"),
                  std::string::npos);
        EXPECT_EQ(unbalancedAt(file), "");
    }
}

// What every drawing file must hold, each with the rule it serves: an oracle for the gold file.
void expectRequiredStatements(const std::string& file) {
    EXPECT_EQ(file.rfind("<MIFFile 5.00> # Ondrivel\n", 0), 0u) << "starts with the version";
    EXPECT_NE(file.find("\n<Units Upt>\n"), std::string::npos) << "points as units";
    EXPECT_LT(file.find("\n<FontCatalog\n"), file.find("<AFrames")) << "the font catalogue first";
    EXPECT_EQ(file.substr(file.size() - 17), "# End of MIFFile\n") << "ends with its end";
    for (const char* statement : {"<AFrames\n", "<Frame\n", "<ID 1>", "<Page ", "<AFrame 1>"})
        EXPECT_NE(file.find(statement), std::string::npos) << statement;
    EXPECT_EQ(unbalancedAt(file), "") << "statements and strings balanced";
}

void drawSmallDrawing(MIFDevice& d) {
    WsiFont font("Courier", 8);
    d.setColor(wsiBlue);
    d.setPenStyle(wsiPenDashDot);
    d.setPenWidth(5);
    line(d, 0, 0, 500, 0);
    d.drawCurveUnTransformed({500, 0}, {700, 200});
    d.setColor(wsiPurple);
    d.setPenStyle(wsiPenSolid);
    d.drawEllipseUnTransformed(DeviceRectangle(10, 10, 90, 60), true);
    DevicePoint arrow[] = {{100, 300}, {400, 300}};
    d.drawCappedPolylineUnTransformed(wsiLineCapArrow, wsiLineCapRound, {40, 20}, 2, arrow);
    d.drawText("d<0> = `1'\\ \xC3\xA4", SheetPoint(100, 450), font);
}

TEST(MIFDevice, SmallDrawingHoldsEveryRequiredStatementAndMatchesTheGoldFile) {
    // Written through a stream whose locale has a decimal comma, which must not reach it.
    std::ostringstream out, expected;
    out.imbue(commaLocale());
    MIFDevice device("job", out, fixedParameters(), v_drawing);
    drawSmallDrawing(device);
    ASSERT_TRUE(device.close());
    EXPECT_FALSE(device.close()) << "written once";
    expectRequiredStatements(out.str());
    std::ifstream gold(TQ_TEST_DATA_DIR "/mif_small_drawing.mif", std::ios::binary);
    ASSERT_TRUE(gold) << "missing gold file";
    expected << gold.rdbuf();
    EXPECT_EQ(out.str(), expected.str());
}

TEST(MIFDevice, CloseReportsAFailedStream) {
    std::ostringstream failed;
    failed.setstate(std::ios::badbit);
    MIFDevice broken(nullptr, failed, fixedParameters(), v_drawing);
    EXPECT_STREQ(broken.jobName(), "") << "no job name";
    EXPECT_EQ(broken.error(), nullptr);
    EXPECT_FALSE(broken.close());
    EXPECT_STREQ(broken.error(), "the output stream failed");
    EXPECT_FALSE(broken.close());
    EXPECT_STREQ(broken.error(), "the output stream failed") << "the first failure is kept";
}

} // namespace
