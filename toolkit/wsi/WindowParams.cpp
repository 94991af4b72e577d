#include "wsi/WindowParams.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

int showStateOfLetter(char letter) {
    switch (std::toupper(static_cast<unsigned char>(letter))) {
    case 'A':
        return WindowParams::Active;
    case 'H':
        return WindowParams::Hidden;
    case 'I':
        return WindowParams::Iconic;
    case 'N':
        return WindowParams::Normal;
    case 'Z':
        return WindowParams::Zoomed;
    default:
        return WindowParams::Unspecified;
    }
}

char letterOfShowState(int state) {
    static const char letters[] = "UNIHZA";
    return state >= 0 && state <= WindowParams::Active ? letters[state] : 'U';
}

} // namespace

void WindowParams::decode(const char* text) {
    int values[4] = {0, 0, 0, 0};
    m_showState = text && *text ? showStateOfLetter(*text) : Unspecified;
    const char* field = text ? std::strchr(text, ',') : nullptr;
    for (int i = 0; i < 4 && field; ++i) {
        ++field;
        // strtol reads what atoi reads but saturates instead of overflowing.
        values[i] = static_cast<int>(std::clamp(std::strtol(field, nullptr, 10), 0L, 1000L));
        field = std::strchr(field, ',');
    }
    m_left = values[0];
    m_top = values[1];
    m_right = values[2];
    m_bottom = values[3];
    if (m_right < m_left)
        m_right = m_left + 1;
    if (m_bottom < m_top)
        m_bottom = m_top + 1;
}

int WindowParams::encode(char* buffer, int size) const {
    char text[64];
    const int length =
        std::snprintf(text, sizeof text, "%c,%d,%d,%d,%d", letterOfShowState(m_showState), m_left,
                      m_top, m_right, m_bottom);
    if (buffer && size > 0) {
        const int kept = std::min(length, size - 1);
        std::memcpy(buffer, text, static_cast<std::size_t>(kept));
        buffer[kept] = '\0';
    }
    return length;
}

void WindowParams::setRectangle(int left, int top, int right, int bottom) {
    m_left = left;
    m_top = top;
    m_right = right;
    m_bottom = bottom;
}
