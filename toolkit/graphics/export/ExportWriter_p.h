#pragma once

#include "graphics/device/wsiTypes.h"
#include "graphics/export/ExportParameters.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <QColor>
#include <ostream>
#include <string>

/// ExportWriter: what the writers of every export format share: the job, its parameters,
/// the stream the file goes to, the first failure met while writing it, and the drawing-state
/// and curve operations every format writes, as hooks, so that ExportDevice forwards the
/// device's state to any format's writer in one place. Internal to the library.
class ExportWriter {
public:
    ///@{
    /// out must outlive the writer; parameters are copied; a null jobName is kept as "".
    ExportWriter(const char* jobName, std::ostream& out, const ExportParameters& parameters)
        : m_jobName(jobName ? jobName : ""), m_out(out), m_parameters(parameters) {}
    ExportWriter(const ExportWriter&) = delete;
    ExportWriter& operator=(const ExportWriter&) = delete;
    ///@}

    ///@{
    /// In place, owned by the writer.
    const char* jobName() const { return m_jobName.c_str(); }
    const ExportParameters& parameters() const { return m_parameters; }
    ///@}
    /// Null while everything was written; otherwise the first failure, a static string. A
    /// later failure does not replace it: the first one is what the caller can act on.
    const char* error() const { return m_error; }

    // --- Hooks each format writes -----------------------------------------------------------
    /// The colour of what is drawn next; an invalid colour writes nothing and keeps the
    /// current one.
    virtual void setColor(const QColor& color) = 0;
    /// The dash pattern of the lines drawn next.
    virtual void setPenStyle(wsiPenStyle style) = 0;
    /// The line width of what is drawn next, in device units.
    virtual void setLineWidth(long width) = 0;
    /// What is drawn next is clipped to r (device units, edges included).
    virtual void setClipRect(const DeviceRectangle& r) = 0;
    /// The cubic curve from from to to with the two control points, in the current colour,
    /// dash pattern and width.
    virtual void curve(const DevicePoint& from, const DevicePoint& first, const DevicePoint& second,
                       const DevicePoint& to) = 0;

protected:
    virtual ~ExportWriter() = default;

    std::ostream& out() { return m_out; }
    /// Records message (a static string) unless a failure is recorded already.
    void fail(const char* message) {
        if (!m_error)
            m_error = message;
    }

private:
    std::string m_jobName;
    std::ostream& m_out;
    ExportParameters m_parameters;
    const char* m_error = nullptr;
};
