#include "graphics/export/ExportParameters.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

TEST(ExportParameters, WellFormedTextIsReadAndWrittenBackInItsOwnWords) {
    const char* every = "printer,Laser 5,/tmp/out.eps,landscape,noclipboard,a4,longedge,12.5,"
                        "8.25,cm,gray,fixed,mifshape,nopreview";
    const struct {
        std::string text, asText;
    } cases[] = {{ExportParameters::defaultText(), ExportParameters::defaultText()},
                 {every, every},
                 {" FILE ,,, Landscape ,clipboard, Legal ,default, 4 ,3e0,MM,Color,scaleable,"
                  "MIFFRAME,preview",
                  "file,,,landscape,clipboard,legal,default,4.0,3.0,mm,color,scaleable,mifframe,"
                  "preview"}};
    for (const auto& c : cases) {
        ExportParameters p;
        EXPECT_TRUE(p.read(c.text.c_str()));
        EXPECT_STREQ(p.message(), "");
        EXPECT_EQ(p.asText(), c.asText);
    }
    const ExportParameters p(every);
    // Every field in text order; the sizes are exact in binary.
    EXPECT_EQ(std::tuple(p.destination(), p.printerName(), p.fileName(), p.orientation(),
                         p.copyToClipboard(), p.paperSize(), p.paperFeed(), p.pictureWidth(),
                         p.pictureHeight(), p.units(), p.isGrayScale(), p.isScaleable(),
                         p.mifFrameForm(), p.withPreview()),
              std::tuple(exportToPrinter, "Laser 5", "/tmp/out.eps", exportLandscape, false,
                         paperA4, paperFeedLongEdge, 12.5, 8.25, unitsCentimetre, true, false,
                         mifFrameShapeRect, false));
    EXPECT_EQ(ExportParameters().asText(), ExportParameters::defaultText());
    EXPECT_FALSE(ExportParameters().mifAnchoredFrameOnly());
}

TEST(ExportParameters, MalformedTextKeepsTheDefaultsAndSaysWhy) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {nullptr, "Export parameters: no text; the defaults are used"},
        {"", "Export parameters: 1 fields instead of 14; the defaults are used"},
        {"file,,,portrait", "Export parameters: 4 fields instead of 14; the defaults are used"},
        {"file,,,sideways,clipboard,a4,default,6.5,5.0,in,gray,scaleable,mifframe,preview",
         "Export parameters: field 4 (\"sideways\") is not understood; the defaults are used"},
        {"file,,,landscape,clipboard,a4,default,0,5.0,in,gray,scaleable,mifframe,preview",
         "Export parameters: field 8 (\"0\") is not understood; the defaults are used"},
        {"file,,,landscape,clipboard,a4,default,6.5,5,0,in,gray,scaleable,mifframe,preview",
         "Export parameters: 15 fields instead of 14; the defaults are used"},
        {"file,,,landscape,clipboard,a4,default,6.5,5.0x,in,gray,scaleable,mifframe,preview",
         "Export parameters: field 9 (\"5.0x\") is not understood; the defaults are used"}};
    for (const auto& c : cases) {
        ExportParameters p;
        p.setMifAnchoredFrameOnly(true);
        p.setGrayScale(true);
        EXPECT_FALSE(p.read(c.text)) << (c.text ? c.text : "(null)");
        EXPECT_STREQ(p.message(), c.message);
        EXPECT_EQ(p.asText(), ExportParameters::defaultText());
        // The anchored-frame choice is a setting of its own: a bad text leaves it.
        EXPECT_TRUE(p.mifAnchoredFrameOnly());
    }
}

TEST(ExportParameters, BothSettingsAsStored) {
    const ExportParameters frameOnly("file,,,landscape,clipboard,a4,default,1,1,in,color,"
                                     "scaleable,mifshape,preview",
                                     1);
    EXPECT_TRUE(frameOnly.mifAnchoredFrameOnly());
    EXPECT_EQ(frameOnly.orientation(), exportLandscape);
    EXPECT_EQ(frameOnly.mifFrameForm(), mifFrameShapeRect);
    const ExportParameters withPage("nonsense", 0);
    EXPECT_FALSE(withPage.mifAnchoredFrameOnly());
    EXPECT_EQ(withPage.asText(), ExportParameters::defaultText());
    EXPECT_TRUE(ExportParameters("nonsense", -1).mifAnchoredFrameOnly());
}

TEST(ExportParameters, PictureSizeInPointsConvertsFromItsUnits) {
    ExportParameters p("file,,,portrait,clipboard,a4,default,2.54,10,cm,color,scaleable,"
                       "mifframe,preview");
    EXPECT_NEAR(p.pictureSizeInPoints().x(), 72.0, 1e-9);
    EXPECT_NEAR(p.pictureSizeInPoints().y(), 72.0 / 2.54 * 10, 1e-9);
}

} // namespace
