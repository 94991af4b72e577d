// The MIF device: the text of every graphic object, the catalogues, tables and the assembled
// file, read back line by line.
#include "graphics/MIFDevice.h"
#include "MIFTestSupport.h"
#include "graphics/MIFFormat.h"
#include "graphics/SheetPoint.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <fstream>
#include <functional>
#include <locale>
#include <sstream>

namespace {

const std::string solid = "<DashedPattern \n <DashedStyle Solid>\n> # end of DashedPattern\n";

// The line object from (x1, y1) to (x2, y2) in points.
std::string lineText(const char* x1y1, const char* x2y2, int separation = 0,
                     const std::string& pattern = solid, const char* width = "0.0") {
    return std::string("<PolyLine\n <Pen 0>\n <PenWidth ") + width + ">\n <Fill 15>\n" + pattern +
           " <Separation " + std::to_string(separation) +
           ">\n <HeadCap Round>\n <TailCap Round>\n <NumPoints 2>\n <Point " + x1y1 +
           ">\n <Point " + x2y2 + ">\n> # end PolyLine\n";
}

const DeviceRectangle drawing(0, 0, 1000, 500);

// The whole file of a drawing on an unscaled device over drawing.
std::string fileDrawnBy(const std::function<void(MIFDevice&)>& draw,
                        const ExportParameters& parameters = fixedParameters()) {
    std::ostringstream out;
    MIFDevice device("job", out, parameters, drawing);
    draw(device);
    EXPECT_TRUE(device.close());
    return out.str();
}

struct ObjectCase {
    const char* what;
    std::function<void(MIFDevice&)> draw;
    std::string objects;
};

void drawLine(MIFDevice& d, DevicePoint a, DevicePoint b) {
    DevicePoint points[] = {a, b};
    d.drawPolylineUnTransformed(2, points);
}

TEST(MIFDevice, GraphicObjects_AreWrittenLineByLine) {
    const std::string dashed = "<DashedPattern \n <DashedStyle Dashed>\n <NumSegments 2>\n"
                               " <DashSegment  8.0 pt>\n <DashSegment  6.0 pt>\n"
                               "> # end of DashedPattern\n";
    const std::string arc = "<Arc\n <Pen 0>\n <PenWidth 0.0>\n <Separation 0>\n";
    const std::string arcEnd = " <HeadCap Square>\n <TailCap Square>\n"
                               " <ArcRect 1.0 2.0 30.0 40.0>\n <ArcTheta 0> <ArcDTheta 360>>\n";
    const std::string capped =
        "<PolyLine\n <Pen 0>\n <PenWidth 0.0>\n <Fill 15>\n" + solid + " <Separation 0>\n";
    const std::string points3 = " <NumPoints 3 >\n <Point 0.0 0.0>\n <Point 10.0 0.0>\n"
                                " <Point 10.0 10.0>\n> # end PolyLine\n";
    const ObjectCase cases[] = {
        {"line with colour and width",
         [](MIFDevice& d) {
             d.setColor(wsiRed);
             d.setPenWidth(15);
             drawLine(d, {100, 200}, {305, 400});
         },
         lineText("10.0 20.0", "30.5 40.0", 2, solid, "1.5")},
        {"negative coordinates",
         [](MIFDevice& d) {
             drawLine(d, {-5, -100}, {0, 7});
         },
         lineText("-0.5 -10.0", "0.0 0.7")},
        {"colour 0 keeps the separation",
         [](MIFDevice& d) {
             d.setColor(wsiBlue);
             d.setColor(wsiNoColor);
             drawLine(d, {0, 0}, {10, 0});
         },
         lineText("0.0 0.0", "1.0 0.0", 4)},
        {"line clipped at both ends",
         [](MIFDevice& d) {
             d.setClipRect(DeviceRectangle(0, 0, 200, 200));
             drawLine(d, {-100, 100}, {300, 100});
         },
         lineText("0.0 10.0", "20.0 10.0")},
        {"line missing the clip rectangle",
         [](MIFDevice& d) {
             d.setClipRect(DeviceRectangle(0, 0, 200, 200));
             drawLine(d, {300, 300}, {400, 300});
         },
         ""},
        {"pen style 1 has 8 and 6 point segments",
         [](MIFDevice& d) {
             d.setPenStyle(wsiPenDash);
             drawLine(d, {0, 0}, {10, 0});
         },
         lineText("0.0 0.0", "1.0 0.0", 0, dashed)},
        {"pen style 5 writes no dashed pattern",
         [](MIFDevice& d) {
             d.setPenStyle(wsiPenNull);
             drawLine(d, {0, 0}, {10, 0});
         },
         lineText("0.0 0.0", "1.0 0.0", 0, "")},
        {"polygon closed by its fourth line",
         [](MIFDevice& d) { d.drawRectangle(SheetRectangle(0, 0, 10, 20)); },
         lineText("0.0 0.0", "1.0 0.0") + lineText("1.0 0.0", "1.0 2.0") +
             lineText("1.0 2.0", "0.0 2.0") + lineText("0.0 2.0", "0.0 0.0")},
        {"curve through its control points",
         [](MIFDevice& d) {
             d.drawCurveUnTransformed({0, 0}, {100, 50});
         },
         "<PolyLine\n <Pen 0>\n <PenWidth 0.0>\n <Smoothed Yes> <Fill 15>\n" + solid +
             " <Separation 0>\n <NumPoints 4 >\n <Point 0.0 0.0>\n <Point 5.0 0.0>\n"
             " <Point 5.0 5.0>\n <Point 10.0 5.0>\n> # end PolyLine\n"},
        {"filled ellipse",
         [](MIFDevice& d) { d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), true); },
         arc + " <Fill  0>\n" + arcEnd},
        {"unfilled ellipse",
         [](MIFDevice& d) { d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), false); },
         arc + " <Fill  7>\n" + arcEnd},
        {"arrow at the end",
         [](MIFDevice& d) {
             DevicePoint p[] = {{0, 0}, {100, 0}, {100, 100}};
             d.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, {25, 10}, 3, p);
         },
         capped + " <arrow1>\n <HeadCap Round>\n <TailCap ArrowHead>\n" + points3},
        {"arrows at both ends",
         [](MIFDevice& d) {
             DevicePoint p[] = {{0, 0}, {100, 0}, {100, 100}};
             d.drawCappedPolylineUnTransformed(wsiLineCapArrow, wsiLineCapArrow, {25, 10}, 3, p);
         },
         capped + " <arrow1>\n <HeadCap ArrowHead>\n <TailCap ArrowHead>\n" + points3},
        {"capped polyline without arrows",
         [](MIFDevice& d) {
             DevicePoint p[] = {{0, 0}, {100, 0}, {100, 100}};
             d.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapRound, {25, 10}, 3, p);
         },
         capped + " <HeadCap Round>\n <TailCap Round>\n" + points3},
        {"capped polyline of one point",
         [](MIFDevice& d) {
             DevicePoint p[] = {{0, 0}};
             d.drawCappedPolylineUnTransformed(wsiLineCapArrow, wsiLineCapArrow, {25, 10}, 1, p);
         },
         ""},
        {"filled polygon in its own colour",
         [](MIFDevice& d) {
             d.setColor(wsiRed);
             DevicePoint p[] = {{0, 0}, {100, 0}, {0, 100}};
             d.filledPolygonUnTransformed(wsiBlue, 3, p);
             drawLine(d, {0, 0}, {10, 0});
         },
         "<Polygon\n <Pen 15>\n <Fill 0>\n <Separation 4>\n <NumPoints 3 >\n <Point 0.0 0.0>\n"
         " <Point 10.0 0.0>\n <Point 0.0 10.0>\n> # end Polygon\n" +
             lineText("0.0 0.0", "1.0 0.0", 2)},
        {"erase fills with the background colour",
         [](MIFDevice& d) { d.erase(DeviceRectangle(0, 0, 10, 20)); },
         "<Polygon\n <Pen 15>\n <Fill 0>\n <Separation 1>\n <NumPoints 4 >\n <Point 0.0 0.0>\n"
         " <Point 1.0 0.0>\n <Point 1.0 2.0>\n <Point 0.0 2.0>\n> # end Polygon\n"},
        {"pixels have no MIF form", [](MIFDevice& d) { d.setPixel(1, 1); }, ""},
    };
    for (const ObjectCase& c : cases)
        EXPECT_EQ(frameObjects(fileDrawnBy(c.draw)), c.objects) << c.what;
}

TEST(MIFDevice, ManyLines_ExpandAcrossChunksAndStateChanges) {
    // About 20 bytes a line are kept, so this spans two megabyte chunks.
    constexpr int lines = 70000;
    std::string expected;
    const std::string objects = frameObjects(fileDrawnBy([&](MIFDevice& d) {
        for (int i = 0; i < lines; ++i) {
            if (i % 7000 == 0) {
                d.setColor(i / 7000 % 2 ? wsiRed : wsiGreen);
                d.setPenWidth(i / 7000);
            }
            drawLine(d, {i % 1000, 5}, {i % 1000 + 10, 15});
            const std::string from = MIFFormat::real(i % 1000 / 10.0) + " 0.5";
            const std::string to = MIFFormat::real((i % 1000 + 10) / 10.0) + " 1.5";
            expected += lineText(from.c_str(), to.c_str(), i / 7000 % 2 ? 2 : 3, solid,
                                 MIFFormat::real(i / 7000 / 10.0).c_str());
        }
    }));
    EXPECT_EQ(objects.size(), expected.size());
    const auto differ = std::mismatch(objects.begin(), objects.end(), expected.begin()).first;
    EXPECT_TRUE(differ == objects.end()) << "first difference at " << differ - objects.begin();
}

std::string textLine(const char* origin, const char* alignment, const char* font,
                     const char* string) {
    return std::string("<TextLine\n <TLOrigin ") + origin + ">\n <TLAlignment " + alignment +
           ">\n" + font + " <String `" + string + "'>\n> # end TextLine\n";
}

TEST(MIFDevice, Text_IsATextLineWithItsFontAndQuotedString) {
    const char* times = "<Font\n  <FTag `Times 12.0 Bold'>\n  <FFamily `Times'>\n"
                        "  <FSize 12.0 pt>\n  <FSeparation 2>\n  <FBold Yes>\n  <FItalic No>\n"
                        "  <FUnderlining FNoUnderlining >\n\n > # end Font\n";
    const char* helvetica = "<Font\n  <FTag `Helvetica 10.0 Italic Underline'>\n"
                            "  <FFamily `Helvetica'>\n  <FSize 10.0 pt>\n  <FSeparation 0>\n"
                            "  <FBold No>\n  <FItalic Yes>\n  <FUnderlining FSingle >\n\n"
                            " > # end Font\n";
    WsiFont bold("Times", 12);
    bold.setBold(true);
    WsiFont plain;
    plain.setItalic(true);
    plain.setUnderline(true);
    const ObjectCase cases[] = {
        {"left on the baseline",
         [&](MIFDevice& d) {
             d.setColor(wsiDarkRed);
             EXPECT_GT(d.drawText("a'b>`c\\", SheetPoint(100, 200), bold), 0);
         },
         textLine("10.0 20.0", "Left", times, "a\\qb\\>\\Qc\\\\")},
        {"centred, default family",
         [&](MIFDevice& d) {
             d.drawAlignedText("x\ty", SheetPoint(100, 200), plain, wsiAlignHCenter,
                               wsiAlignBaseline);
         },
         textLine("10.0 20.0", "Center", helvetica, "x\\ty")},
        {"right",
         [&](MIFDevice& d) {
             d.drawAlignedText("", SheetPoint(100, 200), plain, wsiAlignRight, wsiAlignBaseline);
         },
         textLine("10.0 20.0", "Right", helvetica, "")},
        {"null text", [&](MIFDevice& d) { d.drawText(nullptr, SheetPoint(1, 1), plain); }, ""},
    };
    for (const ObjectCase& c : cases)
        EXPECT_EQ(frameObjects(fileDrawnBy(c.draw)), c.objects) << c.what;
}

TEST(MIFDevice, AlignedText_MovesTheBaselineByTheFontMeasures) {
    std::ostringstream out;
    MIFDevice device("job", out, fixedParameters(), drawing);
    WsiFont font("Times", 20);
    const WsiFontMetric metric(font, device.measuringDevice());
    const DeviceRectangle& top =
        device.drawAlignedText("Ag", SheetPoint(100, 200), font, wsiAlignLeft, wsiAlignTop);
    EXPECT_EQ(top.top(), 200);
    EXPECT_EQ(top.bottom(), 200 + metric.height());
    // A 20-point font at a tenth of a point per unit rises about 200 units.
    EXPECT_GT(metric.ascent(), 120);
    EXPECT_LT(metric.ascent(), 260);
    ASSERT_TRUE(device.close());
    EXPECT_NE(out.str().find(" <TLOrigin 10.0 " + MIFFormat::real((200 + metric.ascent()) / 10.0) +
                             ">\n <TLAlignment Left>\n"),
              std::string::npos);
}

TEST(MIFDevice, DashedPattern_FollowsThePenStyleTable) {
    const char* segments[] = {"", "8.0 6.0", "2.0 4.0", "12.0 6.0 2.0 6.0",
                              "12.0 6.0 2.0 6.0 2.0 6.0"};
    for (int style = -1; style <= 6; ++style) {
        std::string text;
        MIFWriter::emitDashedPattern(text, static_cast<wsiPenStyle>(style));
        if (style < 0 || style > 4) {
            EXPECT_EQ(text, "") << style;
            continue;
        }
        std::string expected = "<DashedPattern \n";
        if (style == 0) {
            expected += " <DashedStyle Solid>\n";
        } else {
            std::istringstream lengths(segments[style]);
            std::string length, lines;
            int count = 0;
            while (lengths >> length) {
                lines += " <DashSegment  " + length + " pt>\n";
                ++count;
            }
            expected +=
                " <DashedStyle Dashed>\n <NumSegments " + std::to_string(count) + ">\n" + lines;
        }
        EXPECT_EQ(text, expected + "> # end of DashedPattern\n") << style;
    }
}

TEST(MIFDevice, ArrowTypes_AreNumberedOnFirstUseAndCatalogued) {
    std::ostringstream out;
    MIFDevice device("job", out, fixedParameters(), drawing);
    const MIFArrowType& first = device.getArrowType({25, 10});
    const MIFArrowType& second = device.getArrowType({12345670, 8});
    for (int i = 0; i < 40; ++i)
        device.getArrowType({100 + i, 1});
    EXPECT_EQ(first.number, 1);
    EXPECT_EQ(second.number, 2);
    EXPECT_EQ(&device.getArrowType({25, 10}), &first); // records stay where they are
    EXPECT_EQ(device.getArrowType({12345670, 8}).number, 2);
    EXPECT_EQ(device.getArrowType({25, 11}).number, 43);
    std::string catalog;
    device.writer().emitArrowCatalog(catalog);
    EXPECT_EQ(catalog.substr(0, catalog.find("define (arrow3")),
              "define (arrow1, ArrowStyle <TipAngle 24> <BaseAngle 90> <Length 2.5> <HeadType "
              "Filled> )\n"
              "define (arrow2, ArrowStyle <TipAngle 24> <BaseAngle 90> <Length 1.23457e+06> "
              "<HeadType Filled> )\n");
    ASSERT_TRUE(device.close());
    EXPECT_EQ(out.str().find("define (arrow1"),
              std::string("<MIFFile 5.00> # Ondrivel\n<Units Upt>\n").size());
}

TEST(MIFDevice, FontCatalog_HasOneEntryPerFontInOrderOfUse) {
    WsiFont a("Courier", 9), b("Courier", 9);
    b.setBold(true);
    const std::string file = fileDrawnBy([&](MIFDevice& d) {
        d.drawText("1", SheetPoint(0, 0), a);
        d.setColor(wsiGreen);
        d.drawText("2", SheetPoint(0, 0), b);
        d.drawText("3", SheetPoint(0, 0), a);
    });
    const std::string entry = "  <FSize 9.0 pt>\n  <FSeparation 0>\n  <FBold No>\n"
                              "  <FItalic No>\n  <FUnderlining FNoUnderlining >\n\n > # end Font\n";
    const std::string catalog =
        "<FontCatalog\n<Font\n  <FTag `Courier 9.0'>\n  <FFamily `Courier'>\n" + entry +
        "<Font\n  <FTag `Courier 9.0 Bold'>\n  <FFamily `Courier'>\n" +
        "  <FSize 9.0 pt>\n  <FSeparation 0>\n  <FBold Yes>\n  <FItalic No>\n"
        "  <FUnderlining FNoUnderlining >\n\n > # end Font\n" +
        "\n> # end FontCatalog\n";
    EXPECT_EQ(file.substr(0, file.find("<AFrames")),
              "<MIFFile 5.00> # Ondrivel\n<Units Upt>\n" + catalog);
    // Text lines carry the colour they are drawn in; the catalogue's formats are black.
    EXPECT_NE(file.find("  <FSeparation 3>\n"), std::string::npos);
    EXPECT_EQ(fileDrawnBy([](MIFDevice&) {}).find("<FontCatalog\n\n> # end FontCatalog\n"),
              std::string("<MIFFile 5.00> # Ondrivel\n<Units Upt>\n").size());
}

// The end of a drawing's file after its graphic objects, by its two settings.
TEST(MIFDevice, DrawingFile_EndsByFrameFormAndAnchoredFrameSetting) {
    const std::string page = "<Page \n <PageType BodyPage >\n <TextRect \n  <ID 1>\n"
                             "  <BRect  0 0 100.0 50.0>\n > # end of TextRect\n> # end of Page\n"
                             "<TextFlow \n <Para \n  <ParaLine \n   <TextRectID 1>\n"
                             "   <AFrame 1>\n  >\n > # end of Para\n> # end of TextFlow\n";
    const struct {
        MifFrameForm form;
        bool anchoredOnly;
        const char* rect;
        std::string ending;
    } cases[] = {
        {mifFrameBRect, false, "  <BRect  0 0 100.0 50.0>\n", page},
        {mifFrameShapeRect, false, "  <ShapeRect  0 0 100.0 50.0>\n", page},
        {mifFrameBRect, true, "  <BRect  0 0 100.0 50.0>\n", ""},
        {mifFrameShapeRect, true, "  <ShapeRect  0 0 100.0 50.0>\n", ""},
    };
    for (const auto& c : cases) {
        ExportParameters parameters = fixedParameters();
        parameters.setMifFrameForm(c.form);
        parameters.setMifAnchoredFrameOnly(c.anchoredOnly);
        const std::string file = fileDrawnBy(
            [](MIFDevice& d) {
                drawLine(d, {0, 0}, {10, 0});
            },
            parameters);
        EXPECT_EQ(file, "<MIFFile 5.00> # Ondrivel\n<Units Upt>\n<FontCatalog\n\n"
                        "> # end FontCatalog\n<AFrames\n <Frame\n  <ID 1>\n" +
                            std::string(c.rect) + "  <Pen 15>\n  <FrameType Below>\n" +
                            lineText("0.0 0.0", "1.0 0.0") +
                            " > # end of Frame\n> # end of AFrames\n" + c.ending +
                            "# End of MIFFile\n")
            << c.rect << c.anchoredOnly;
    }
}

TEST(MIFDevice, ScaleablePicture_StretchesTheDrawingToThePictureSize) {
    std::ostringstream out;
    // 6.5 by 5 inches is 468 by 360 points.
    MIFDevice device("job", out, ExportParameters(), DeviceRectangle(100, 100, 1100, 600));
    device.setPenWidth(10);
    drawLine(device, {100, 100}, {1100, 600});
    ASSERT_TRUE(device.close());
    EXPECT_NE(out.str().find("  <BRect  0 0 468.0 360.0>\n"), std::string::npos);
    EXPECT_EQ(frameObjects(out.str()), lineText("0.0 0.0", "468.0 360.0", 0, solid, "4.68"));
}

TEST(MIFDevice, WholeDeviceRange_StaysInsideTheDeviceRange) {
    const DeviceRectangle everything(INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX);
    for (const ExportParameters& parameters : {fixedParameters(), ExportParameters()}) {
        std::ostringstream out;
        MIFDevice device("job", out, parameters, everything);
        EXPECT_EQ(device.measuringDevice()->width(), INT32_MAX);
        drawLine(device, everything.origin(), everything.corner());
        ASSERT_TRUE(device.close());
        EXPECT_EQ(unbalancedAt(out.str()), "");
    }
}

TEST(MIFDevice, GrayScale_PrintsOnlyBlackAndWhite) {
    ExportParameters parameters = fixedParameters();
    parameters.setGrayScale(true);
    std::ostringstream out;
    MIFDevice device("job", out, parameters, drawing);
    EXPECT_TRUE(device.isMonochrome());
    device.setColor(wsiYellow);
    drawLine(device, {0, 0}, {10, 0});
    device.setColor(wsiWhite);
    drawLine(device, {0, 0}, {10, 0});
    ASSERT_TRUE(device.close());
    EXPECT_EQ(frameObjects(out.str()),
              lineText("0.0 0.0", "1.0 0.0", 0) + lineText("0.0 0.0", "1.0 0.0", 1));
}

// A header row with a cell over two columns, and a body row.
void writeTable(MIFDevice& d, const char* title = nullptr) {
    d.startTable(title, false);
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

const std::string tableText =
    "<Tbl\n <TblID 1>\n <TblTag `Format A'>\n"
    " <TblH\n  <Row\n"
    "   <Cell <CellColumns 2> <CellContent <Para <PgfTag `CellHeading'> <ParaLine <String "
    "`Signal\\qs name'> > > > >\n"
    "   <Cell <CellContent <Para <PgfTag `CellHeading'> <ParaLine <String `'> > > > >\n"
    " > >\n"
    " <TblBody\n  <Row\n"
    "   <Cell <CellContent <Para <PgfTag `CellBody'> <ParaLine <String `clk'> > > > >\n"
    "   <Cell <CellContent <Para <PgfTag `CellBody'>> > >\n"
    " > >> # end Tbl\n";

const std::string tableFileEnd =
    "<RulingCatalog\n <Ruling\n  <RulingTag `Thin'>\n  <RulingPenWidth  0.5 pt>\n"
    "  <RulingGap  0.0 pt>\n  <RulingSeparation 0>\n  <RulingColor `Black'>\n"
    "  <RulingPen 0>\n  <RulingLines 1>\n > # end of Ruling\n>\n<Tbls\n" +
    tableText +
    "> # end Tbls\n\n<TextFlow \n <Para \n  <ParaLine \n   <ATbl 1>\n"
    "  > # end of ParaLine\n > # end of Para\n> # end of TextFlow\n# End of MIFFile\n";

const std::string fileStart =
    "<MIFFile 5.00> # Ondrivel\n<Units Upt>\n<FontCatalog\n\n> # end FontCatalog\n";

TEST(MIFDevice, Table_IsWrittenWithItsRulingCatalogAndTextFlow) {
    EXPECT_EQ(fileDrawnBy([](MIFDevice& d) {
                  writeTable(d);
                  d.endTable();
              }),
              fileStart + tableFileEnd);
    // A table still open at close is ended first, the same way.
    EXPECT_EQ(fileDrawnBy([](MIFDevice& d) { writeTable(d); }), fileStart + tableFileEnd);
    // Graphic objects, a second table and table calls after its end are left out.
    EXPECT_EQ(fileDrawnBy([](MIFDevice& d) {
                  d.startRow();
                  drawLine(d, {0, 0}, {10, 0});
                  writeTable(d);
                  d.startTable("again", true);
                  d.endTable();
                  d.startCell();
                  d.endTable();
              }),
              fileStart + tableFileEnd);
}

TEST(MIFDevice, TableCallsOutOfOrder_AreRepairedToAWellFormedTable) {
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
    EXPECT_NE(file.find("<Tbls\n<Tbl\n <TblID 1>\n <TblTag `Format A'>\n <TblH\n  <Row\n"
                        "   <Cell <CellContent <Para <PgfTag `CellHeading'> <ParaLine <String "
                        "`a'> > > > >\n"
                        "   <Cell <CellColumns 2> <CellContent <Para <PgfTag `CellHeading'>> > >\n"
                        "   <Cell <CellContent <Para <PgfTag `CellHeading'> <ParaLine <String `'> "
                        "> > > >\n"
                        " > >\n <TblBody\n  <Row\n"
                        "   <Cell <CellContent <Para <PgfTag `CellBody'>> > >\n"
                        " > >> # end Tbl\n> # end Tbls\n"),
              std::string::npos);
    EXPECT_EQ(unbalancedAt(file), "");
}

TEST(MIFDevice, TableTitle_GoesAboveOrBelowTheTable) {
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

// What every drawing or table file must hold, each with the rule it serves.
void expectRequiredStatements(const std::string& file, bool table) {
    EXPECT_EQ(file.rfind("<MIFFile 5.00> # Ondrivel\n", 0), 0u) << "starts with the version";
    EXPECT_NE(file.find("\n<Units Upt>\n"), std::string::npos) << "points as units";
    EXPECT_NE(file.find("\n<FontCatalog\n"), std::string::npos) << "font catalogue";
    EXPECT_LT(file.find("<FontCatalog"), file.find(table ? "<Tbls" : "<AFrames"))
        << "catalogues first";
    EXPECT_EQ(file.substr(file.size() - 17), "# End of MIFFile\n") << "ends with its end";
    for (const char* statement :
         table
             ? std::vector<const char*>{"<RulingCatalog", "<Tbls\n", "<Tbl\n", "<ATbl 1>"}
             : std::vector<const char*>{"<AFrames\n", "<Frame\n", "<ID 1>", "<Page ", "<AFrame 1>"})
        EXPECT_NE(file.find(statement), std::string::npos) << statement;
    EXPECT_EQ(unbalancedAt(file), "") << "statements and strings balanced";
}

void drawSmallDrawing(MIFDevice& d) {
    WsiFont font("Courier", 8);
    d.setColor(wsiBlue);
    d.setPenStyle(wsiPenDashDot);
    d.setPenWidth(5);
    drawLine(d, {0, 0}, {500, 0});
    d.drawCurveUnTransformed({500, 0}, {700, 200});
    d.setColor(wsiPurple);
    d.setPenStyle(wsiPenSolid);
    d.drawEllipseUnTransformed(DeviceRectangle(10, 10, 90, 60), true);
    DevicePoint arrow[] = {{100, 300}, {400, 300}};
    d.drawCappedPolylineUnTransformed(wsiLineCapArrow, wsiLineCapRound, {40, 20}, 2, arrow);
    d.drawText("d<0> = `1'\\ \xC3\xA4", SheetPoint(100, 450), font);
}

TEST(MIFDevice, SmallDrawingAndTable_HoldEveryRequiredStatementBalanced) {
    expectRequiredStatements(fileDrawnBy(drawSmallDrawing), false);
    expectRequiredStatements(fileDrawnBy([](MIFDevice& d) { writeTable(d, "T'`>"); }), true);
}

TEST(MIFDevice, SmallDrawing_MatchesTheGoldFile) {
    std::ifstream gold(TQ_TEST_DATA_DIR "/mif_small_drawing.mif", std::ios::binary);
    ASSERT_TRUE(gold) << "missing gold file";
    std::ostringstream expected;
    expected << gold.rdbuf();
    EXPECT_EQ(fileDrawnBy(drawSmallDrawing), expected.str());
}

// A decimal comma on the stream must not reach the file: numbers never go through it.
struct CommaDecimal : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

TEST(MIFDevice, Numbers_IgnoreTheStreamsLocale) {
    std::ostringstream out;
    out.imbue(std::locale(out.getloc(), new CommaDecimal));
    MIFDevice device("job", out, fixedParameters(), drawing);
    drawSmallDrawing(device);
    ASSERT_TRUE(device.close());
    EXPECT_EQ(out.str(), fileDrawnBy(drawSmallDrawing));
}

TEST(MIFDevice, Close_WritesOnceAndReportsAFailedStream) {
    std::ostringstream out;
    MIFDevice device("job name", out, fixedParameters(), drawing);
    EXPECT_STREQ(device.writer().jobName(), "job name");
    ASSERT_TRUE(device.close());
    const std::string once = out.str();
    EXPECT_FALSE(device.close());
    EXPECT_EQ(out.str(), once);

    std::ostringstream failed;
    failed.setstate(std::ios::badbit);
    MIFDevice broken(nullptr, failed, fixedParameters(), drawing);
    EXPECT_STREQ(broken.writer().jobName(), "");
    EXPECT_FALSE(broken.close());
}

} // namespace
