#include "graphics/geometry/CoordinateReader_p.h"

#include "text/FileElement.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

bool readCoordinates(FileElement& element, long* out, short count) {
    for (short i = 0; i < count; ++i) {
        if (element.type(i) != ST_NUMBER || !element.value(i))
            return false;
    }
    for (short i = 0; i < count; ++i) {
        const long long value = std::strtoll(element.value(i), nullptr, 10);
        out[i] = static_cast<long>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
    }
    return true;
}
