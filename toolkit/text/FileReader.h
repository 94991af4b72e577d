#pragma once

#include "core/TqExport.h"

#include <fstream>
#include <iosfwd>
#include <string>

class iTaskDescription;

/// FileReader and FileWritingAgent: the file name and stream of one read or one write of an
/// application file, with the task that a long read reports to.
class TQ_EXPORT FileReader {
public:
    ///@{
    /// A reader of the named file (none yet, or filename; null is none), not yet opened.
    FileReader() = default;
    explicit FileReader(const char* filename);
    ///@}
    virtual ~FileReader();
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;

    /// Reads from stream (not owned) instead of opening the file.
    void setStream(std::ifstream& stream) { m_stream = &stream; }
    ///@{
    /// The task a long read reports its progress to and is cancelled through (not owned).
    void setTask(iTaskDescription& task) { m_task = &task; }
    iTaskDescription* task() const { return m_task; }
    ///@}

protected:
    /// Opens the named file for reading unless a stream was set; false if it cannot be opened.
    [[nodiscard]] bool open();
    /// Closes a file that open() opened (a set stream is left alone).
    void close();
    /// The stream to read from, null before open() or setStream().
    std::istream* stream() const { return m_stream; }
    /// Names the file open() opens (null is none).
    void setFilename(const char* filename) { m_filename = filename ? filename : ""; }
    /// The file name, in place (owned by the reader); "" when none was given.
    const char* filename() const { return m_filename.c_str(); }

private:
    std::string m_filename;
    std::ifstream m_file;
    std::ifstream* m_stream = nullptr;
    iTaskDescription* m_task = nullptr;
};

/// FileWritingAgent: the base of the writers of an application file, holding its name.
class TQ_EXPORT FileWritingAgent {
public:
    /// A writer of the named file (copied; null is none); nothing is opened yet.
    explicit FileWritingAgent(const char* filename);
    virtual ~FileWritingAgent();
    FileWritingAgent(const FileWritingAgent&) = delete;
    FileWritingAgent& operator=(const FileWritingAgent&) = delete;

    /// Creates (or truncates) the named file and has writeContents fill it; false if the file
    /// cannot be opened or the writing fails.
    [[nodiscard]] virtual bool render();
    /// Names the file render() writes (copied; null is none).
    void setFilename(const char* filename) { m_filename = filename ? filename : ""; }
    /// The file name, in place (owned by the agent).
    const char* filename() const { return m_filename.c_str(); }

protected:
    /// Writes the file's sections; the toolkit's version writes nothing.
    virtual void writeContents(std::ostream& out);

private:
    std::string m_filename;
};
