#pragma once

#include "core/TqExport.h"

#include <ostream>
#include <string>
#include <string_view>
#include <vector>

/// MIFObjectBuffer: the graphic objects of a MIF file collected while drawing, kept compact.
/// Line objects, which make up nearly all of a drawing and differ only in their points, store
/// the text they share once per change of it and otherwise only their coordinates; writeTo
/// expands them into the file's text.
class MIFObjectBuffer {
public:
    ///@{
    /// Bytes that stand for text in the buffer. MIF text never holds them: strings escape
    /// every control character.
    static constexpr char v_line = '\x01';      ///< the current line head
    static constexpr char v_nextPoint = '\x04'; ///< ">\n <Point "
    static constexpr char v_endLine = '\x05';   ///< ">\n> # end PolyLine\n"
    ///@}

    /// The text the next object is appended to: plain MIF text, or a compact line written as
    /// v_line, "x y", v_nextPoint, "x y", v_endLine. Valid until the next call.
    std::string& text();
    ///@{
    /// Lines appended from now on begin with head (their text up to the first point's
    /// coordinates), which must hold no control character.
    void setLineHead(std::string_view head);
    bool isEmpty() const { return m_chunks.empty(); }
    ///@}
    /// Writes the expanded text to out; false when the stream failed.
    [[nodiscard]] bool writeTo(std::ostream& out) const;

private:
    /// Chunks of about a megabyte, so that a large drawing never copies what it has
    /// collected.
    std::vector<std::string> m_chunks;
};
