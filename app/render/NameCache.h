/// NameCache: signal names drawn once as small pictures and copied into later frames, so that
/// a viewer does not lay out and draw the same text on every frame. Only for painters that
/// draw pixels one for one without antialiasing (the screen); other devices draw the text.
#pragma once

#include "graphics/device/Device.h"

#include <QImage>

#include <string>
#include <unordered_map>

class TqPainter;

/// The painter of device when it paints pixels one for one (its transformation at most moves
/// them) without antialiasing, as the screen does; there the renderer takes Qt's fast paths.
/// Null for every other device (files, printers, antialiased or scaled images).
TqPainter* pixelPainter(Device& device);

class NameCache {
public:
    /// Draws text (plain, without markup) in font and the device's current colour,
    /// right-aligned at at and centred on it vertically, as drawLabel would: from a picture of
    /// it drawn the first time. False, drawing nothing, when device is not one pixelPainter
    /// accepts at one device unit a layout pixel, or text carries markup; the caller then
    /// draws the text itself. The picture is as tall as a row and hides what lies under it.
    [[nodiscard]] bool drawRightAligned(Device& device, const std::string& text,
                                        const SheetPoint& at, WsiFont& font);
    /// How many pictures are kept; a name, font or colour not seen before adds one.
    std::size_t size() const { return m_pictures.size(); }
    void clear() { m_pictures.clear(); }

private:
    struct Picture {
        QImage image;
        /// Where the anchor lies in the image.
        int anchorX = 0;
        int anchorY = 0;
    };
    // A long session with many files keeps at most this many names (some 14 KB each) before
    // starting over; a screen shows a few dozen.
    static constexpr std::size_t v_maxPictures = 1024;

    std::unordered_map<std::string, Picture> m_pictures;
};
