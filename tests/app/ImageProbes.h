/// What the renderer's and viewer's pixel comparisons share: whether a colour lies within a
/// pixel of a place, where Qt may step a line a pixel aside.
#pragma once

#include <QImage>

/// Whether image has a pixel of colour within a pixel of (x, y).
inline bool colourNear(const QImage& image, int x, int y, QRgb colour) {
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (image.valid(x + dx, y + dy) && image.pixel(x + dx, y + dy) == colour)
                return true;
    return false;
}
