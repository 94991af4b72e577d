/// IPCPortFile: the small text file through which two processes on one machine find each
/// other: who owns the port ("owner = %d"), which loopback port it is ("port = %d") and,
/// optionally, the token a client presents to be served ("token = %s").
#pragma once

#include "core/TqExport.h"

#include <string>

class TQ_EXPORT IPCPortFile {
public:
    IPCPortFile() = default;
    /// path is copied; null leaves the file name empty.
    explicit IPCPortFile(const char* path) { setFileName(path); }

    /// path is copied; null leaves the file name empty.
    void setFileName(const char* path) { m_fileName = path ? path : ""; }
    /// In place: the path, owned by the port file; "" when none was set.
    const char* fileName() const { return m_fileName.c_str(); }
    ///@{
    /// "owner": 1 asks the command server to listen on the stored port; the server writes 2.
    int owner() const { return m_owner; }
    void setOwner(int owner) { m_owner = owner; }
    ///@}
    ///@{
    /// "port": the TCP port on 127.0.0.1.
    int port() const { return m_port; }
    void setPort(int port) { m_port = port; }
    ///@}
    ///@{
    /// In place: the token, "" when the file names none. A token is written as a third line
    /// after "owner" and "port", so readers that know only those two keys still accept the
    /// file (they skip keys they do not know). It must be one word of at most 60 characters.
    const char* token() const { return m_token.c_str(); }
    void setToken(const char* token) { m_token = token ? token : ""; }
    ///@}
    /// The errno of the last failed writePortFile(), 0 after a successful one.
    int lastWriteError() const { return m_lastWriteError; }

    /// Writes exactly "owner = %d\n" and "port = %d\n" (then "token = %s\n" when a token is
    /// set). The file is readable and writable by its owner only, and replaces an earlier one
    /// in one step (written beside it, then renamed), so a reader never sees half a file.
    /// False when it cannot be written (lastWriteError() tells why).
    [[nodiscard]] bool writePortFile() const;
    /// Reads "key = value" lines in any order (lines up to 100 bytes, keys up to 20 and
    /// values up to 60); other keys are ignored. True only when the file exists and both
    /// "owner" and "port" were found; owner(), port() and token() change only then.
    [[nodiscard]] bool readPortFile();
    /// Deletes the file; false when it could not be removed (or did not exist).
    bool removePortFile() const;

private:
    std::string m_fileName;
    int m_owner = 0;
    int m_port = 0;
    std::string m_token;
    mutable int m_lastWriteError = 0;
};
