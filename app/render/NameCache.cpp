#include "render/NameCache.h"

#include "render/Label.h"

#include "graphics/device/TqPainter.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/FloatPoint.h"

#include <QPaintEngine>

#include <cmath>

TqPainter* pixelPainter(Device& device) {
    TqPainter* painter = device.painter();
    if (!painter || painter->testRenderHint(QPainter::Antialiasing) || !painter->paintEngine() ||
        painter->paintEngine()->type() != QPaintEngine::Raster ||
        painter->deviceTransform().type() > QTransform::TxTranslate)
        return nullptr;
    return painter;
}

bool NameCache::drawRightAligned(Device& device, const std::string& text, const SheetPoint& at,
                                 WsiFont& font) {
    TqPainter* painter = pixelPainter(device);
    const TqMatrix& m = device.displayTransformation(false);
    if (!painter || m.m11() != 1 || m.m22() != 1 || text.empty() ||
        text.find_first_of("<\n") != std::string::npos)
        return false;
    // Points become pixels at the target's resolution, which the picture takes on.
    const QPaintDevice& target = *painter->device();
    // The key is built from the font's fields: Qt's own font key costs more than the copy.
    std::string key = text;
    key.append(1, '\n').append(font.family().toStdString());
    key.append(1, '\n').append(std::to_string(font.pointSize()));
    key.append(1, static_cast<char>('0' + font.isBold() + 2 * font.isItalic() +
                                    4 * font.isUnderline() + 8 * font.isOverline()));
    key.append(1, '\n').append(std::to_string(static_cast<int>(device.color())));
    key.append(1, '\n').append(std::to_string(target.logicalDpiX()));
    key.append(1, 'x').append(std::to_string(target.logicalDpiY()));
    auto found = m_pictures.find(key);
    if (found == m_pictures.end()) {
        if (m_pictures.size() >= v_maxPictures)
            m_pictures.clear();
        // A margin around the text takes what its letters draw beyond their advance; the
        // height is a row's, well over the font's.
        const int margin = 4;
        const int height = 2 * static_cast<int>(std::ceil(font.pointSize() * 96 / 72));
        Picture picture;
        picture.anchorX = static_cast<int>(labelWidth(device, text, font)) + margin;
        picture.anchorY = height / 2;
        picture.image = QImage(picture.anchorX + margin, height, QImage::Format_RGB32);
        picture.image.setDotsPerMeterX(
            static_cast<int>(std::lround(target.logicalDpiX() / 0.0254)));
        picture.image.setDotsPerMeterY(
            static_cast<int>(std::lround(target.logicalDpiY() / 0.0254)));
        picture.image.fill(Qt::white);
        TqPainter imagePainter(&picture.image);
        Device imageDevice(imagePainter);
        imageDevice.setDisplayTransformation(TqMatrix(FloatPoint(1, 1), FloatPoint(0, 0)));
        imageDevice.setColor(device.color());
        imageDevice.setBackgroundFillMode(wsiTransparent);
        drawLabel(imageDevice, text, SheetPoint(picture.anchorX, picture.anchorY), font,
                  wsiAlignRight, wsiAlignVCenter);
        imagePainter.end();
        found = m_pictures.emplace(std::move(key), std::move(picture)).first;
    }
    const Picture& picture = found->second;
    const DevicePoint anchor(at, m);
    painter->drawImage(QPoint(anchor.x() - picture.anchorX, anchor.y() - picture.anchorY),
                       picture.image);
    return true;
}
