#pragma once

#include "graphics/export/ExportParameters.h"

#include <ostream>
#include <string>

/// ExportWriter: what the writers of every export format share: the job, its parameters,
/// the stream the file goes to and the first failure met while writing it. Internal to the
/// library.
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

protected:
    ~ExportWriter() = default;

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
