#pragma once

#include "core/TqExport.h"

#include <memory>

class IPCByteSource;
class IPCMessage;

/// IPCMessageParser: reads one framed message (20-byte header, then the payload text) from a
/// socket or another byte source and turns it into an IPCMessage through a virtual factory.
class TQ_EXPORT IPCMessageParser {
public:
    IPCMessageParser() = default;
    virtual ~IPCMessageParser();
    IPCMessageParser(const IPCMessageParser&) = delete;
    IPCMessageParser& operator=(const IPCMessageParser&) = delete;

    ///@{
    /// Reads one message from the socket. Returns a new message (the caller deletes it), or
    /// null for a short header or a header without the magic number. When the payload could
    /// not be read, readError is set and the message comes back without text.
    IPCMessage* getMessage(unsigned int socket, bool& readError);
    IPCMessage* getMessage(IPCByteSource& source, bool& readError);
    ///@}

    ///@{
    /// The separator character of the record (a line feed at first), kept for the
    /// application; the parser itself does not split records.
    void setSeparater(char separater) { m_separater = separater; }
    char separater() const { return m_separater; }
    ///@}
    /// The text of the last message read, owned by the parser; null when it had none.
    const char* record() const { return m_record.get(); }
    /// Keeps a copy of text (null clears the record).
    void setRecord(const char* text);
    ///@{
    /// The header bytes the last getMessage read: 20, fewer when the stream ended, -1 when
    /// it failed.
    long lastHeaderBytes() const { return m_lastHeaderBytes; }
    bool done() const { return m_done; }
    void setDone(bool done) { m_done = done; }
    ///@}

protected:
    /// Makes the message for a frame; record() holds its text. The base makes a plain
    /// IPCMessage with the code, the second value and a copy of the text.
    virtual IPCMessage* createMessage(int length, int code, int value);

private:
    char m_separater = '\n';
    std::unique_ptr<char[]> m_record;
    bool m_done = false;
    long m_lastHeaderBytes = 0;
};
