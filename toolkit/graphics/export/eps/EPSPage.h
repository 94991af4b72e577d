#pragma once

#include "core/TqExport.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <iosfwd>
#include <memory>

class EPSWriter;

/// EPSPage: the page of an Encapsulated PostScript export, shared by EPSDevice and EPSEngine:
/// the writer that both hand every operation to, and the page's opening, closing and scale.
class TQ_EXPORT EPSPage {
public:
    EPSPage(const EPSPage&) = delete;
    EPSPage& operator=(const EPSPage&) = delete;

    /// Writes the header for source (device units of the drawing) mapped onto target (device
    /// units of the page, y down from its top edge). Always true: a failure of the stream is
    /// told by error().
    bool open(const DeviceRectangle& source, const DeviceRectangle& target);
    /// Strokes pending lines and writes "grestore\ngrestore\n" (once, after open).
    void close();
    /// "showpage\n".
    void endOfPage();
    /// "stroke\n" when a path is open (set by open and by every line).
    void endPath();
    /// "closepath\n".
    void closePath();
    ///@{
    /// The factor font sizes in points are divided by to give drawing units: points on paper
    /// per source device unit, vertically (target height / source height / 5). Writes
    /// nothing.
    void computeFontScaleFactor(const DeviceRectangle& source, const DeviceRectangle& target);
    double fontScaleFactor() const;
    ///@}
    /// The paper of the parameters in device units (fifths of a point), upright; by value.
    DevicePoint paperSize() const;
    /// The page as drawn: the paper, turned for a landscape export (width > height); by
    /// value. Its height is the H of the header.
    virtual DevicePoint deviceSize() const;
    ///@{
    /// In place; owned by the page.
    const char* jobName() const;
    const ExportParameters& parameters() const;
    ///@}
    /// Null while all the text reached the stream; otherwise the first failure ("the output
    /// stream failed"), a static string, kept for the page's lifetime.
    const char* error() const;

protected:
    ///@{
    /// jobName is kept for the caller (the header has no line for it). The text goes to out,
    /// which must outlive the page; parameters give the paper, the orientation and the
    /// grey-scale option, and are copied.
    EPSPage(const char* jobName, std::ostream& out, const ExportParameters& parameters);
    virtual ~EPSPage();
    ///@}

    ///@{
    /// The page's writer, owned by the page.
    EPSWriter& writer() { return *m_writer; }
    const EPSWriter& writer() const { return *m_writer; }
    ///@}
    /// Called after open and computeFontScaleFactor changed the scale of the page.
    virtual void scaleChanged() = 0;
    /// Called after open wrote a header, which resets the PostScript graphics state.
    virtual void pageOpened() {}

private:
    std::unique_ptr<EPSWriter> m_writer;
};
