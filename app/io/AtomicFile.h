/// AtomicFile: an output file that appears under its name only when it was written whole.
/// The content goes to a temporary file beside it, renamed over the name on commit and
/// removed on failure, on destruction without commit and on an interrupt (SIGINT, SIGTERM).
#pragma once

#include <string>

class FileWritingAgent;

class AtomicFile {
public:
    /// Reserves a temporary name beside path ("path.tmp-PID").
    explicit AtomicFile(std::string path);
    /// Removes the temporary file unless commit succeeded.
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Where to write; in place, owned by this object.
    const std::string& temporaryPath() const { return m_temporary; }
    const std::string& path() const { return m_path; }
    /// Renames the temporary file to the path; false (error set) when that fails.
    [[nodiscard]] bool commit(std::string& error);

    /// Installs the interrupt handlers that remove pending temporary files and then end the
    /// process with the signal's usual status. Called once by a program's main.
    static void installInterruptCleanup();

private:
    std::string m_path;
    std::string m_temporary;
    bool m_committed = false;
    int m_slot = -1;
};

/// Renders writer into its file through an AtomicFile: false (error set) when the file cannot
/// be written, and then no file of that name was created or changed. The writer's file name
/// is the same afterwards.
[[nodiscard]] bool saveAtomically(FileWritingAgent& writer, std::string& error);
