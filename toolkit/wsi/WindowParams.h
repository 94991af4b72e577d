/// WindowParams: a top-level window's saved place and show state, in the text form that
/// settings keep ("N,100,50,600,450") and in thousandths of the display.
#pragma once

#include "core/TqExport.h"

/// Left, top, right and bottom are the outer frame's edges in thousandths of the display's
/// available area (0 its left or top edge, 1000 its right or bottom edge), so that a saved
/// place fits a display of another size. The text form is a show-state letter followed by
/// left, top, right and bottom, all separated by commas.
class TQ_EXPORT WindowParams {
public:
    /// The show states, with the letters of the text form.
    enum ShowState : int {
        Unspecified = 0, ///< any other letter; encoded as 'U'
        Normal = 1,      ///< 'N'
        Iconic = 2,      ///< 'I'
        Hidden = 3,      ///< 'H'
        Zoomed = 4,      ///< 'Z', maximised
        Active = 5,      ///< 'A', shown as it last was and given the focus
    };

    ///@{
    /// State 0 and the rectangle (0, 0, 0, 0), or the values as given (not limited).
    WindowParams() = default;
    WindowParams(int left, int top, int right, int bottom, int showState)
        : m_left(left), m_right(right), m_top(top), m_bottom(bottom), m_showState(showState) {}
    ///@}

    /// Reads the text form: the first character, in any case, gives the show state ('A' 5,
    /// 'H' 3, 'I' 2, 'N' 1, 'Z' 4, anything else 0); after the first comma up to four
    /// comma-separated integers are read as atoi reads them, each limited to 0..1000, as
    /// left, top, right and bottom (a field without a number, or a missing one, is 0); then
    /// a right below left becomes left + 1 and a bottom below top becomes top + 1 (so they may
    /// reach 1001). A null or empty text gives state 0 and a rectangle (0, 0, 0, 0). Example:
    /// "z,-5,2000,10" gives state 4, left 0, top 1000, right 10, bottom 1001.
    void decode(const char* text);
    /// Writes the text form that decode() reads back to the same values (values outside
    /// 0..1000 are written as they are and limited when read, so a right or bottom of 1001
    /// comes back as 1000) into buffer, truncated to
    /// size - 1 characters and always terminated when size > 0. Returns the length of the
    /// whole text, as snprintf does, so a result >= size means it was cut.
    int encode(char* buffer, int size) const;

    ///@{
    /// The frame's edges in thousandths of the display's available area, and the show
    /// state; set stores the values as given.
    int left() const { return m_left; }
    int right() const { return m_right; }
    int top() const { return m_top; }
    int bottom() const { return m_bottom; }
    int showState() const { return m_showState; }
    void setRectangle(int left, int top, int right, int bottom);
    void setShowState(int state) { m_showState = state; }
    ///@}

    /// Equal when all five values are.
    bool operator==(const WindowParams& other) const = default;

private:
    int m_left = 0;
    int m_right = 0;
    int m_top = 0;
    int m_bottom = 0;
    int m_showState = Unspecified;
};
