#include "ipc/IPCMessageParser.h"

#include "core/DebugPrint.h"
#include "core/StringFunctions.h"
#include "ipc/IPCByteSource.h"
#include "ipc/IPCMessage.h"
#include "ipc/platform/piSocket.h"

#include <algorithm>
#include <string>

namespace {
// The payload is read in pieces and the buffer grows with what arrives, so a header that
// claims a huge length costs only the bytes the peer really sends.
constexpr long payloadPiece = 64 * 1024;

long readPayload(IPCByteSource& source, long length, std::string& text) {
    long received = 0;
    while (received < length) {
        const long piece = std::min(payloadPiece, length - received);
        text.resize(static_cast<std::size_t>(received + piece));
        const long count =
            source.readFully(text.data() + received, static_cast<std::size_t>(piece));
        if (count <= 0) {
            text.resize(static_cast<std::size_t>(received));
            return received > 0 ? received : count;
        }
        received += count;
        if (count < piece)
            break;
    }
    text.resize(static_cast<std::size_t>(received));
    return received;
}
} // namespace

IPCMessageParser::~IPCMessageParser() = default;

void IPCMessageParser::setRecord(const char* text) {
    m_record.reset(mem_strdup(text));
}

IPCMessage* IPCMessageParser::getMessage(unsigned int socket, bool& readError) {
    IPCSocketSource source(socket);
    return getMessage(source, readError);
}

IPCMessage* IPCMessageParser::getMessage(IPCByteSource& source, bool& readError) {
    const unsigned int socket = source.handle();
    char headerBytes[IPCHeader::size];
    const long count = source.readFully(headerBytes, sizeof headerBytes);
    m_lastHeaderBytes = count;
    if (count != IPCHeader::size) {
        const int error = getLastSocketError();
        Printf(DBG_INFO,
               "\nIPCMessageParser got wrong number of bytes reading header, bytes read = '%d' on "
               "socket %d\n",
               static_cast<int>(count), socket);
        if (count < 0)
            Printf(DBG_INFO, "\tSocketError is %d on socket %d\n", error, socket);
        return nullptr;
    }
    const IPCHeader header = IPCHeader::decode(headerBytes);
    if (header.start != IPCHeader::magic) {
        Printf(DBG_INFO, "\nIPCMessageParser got invalid header, Ignoring on socket %d\n", socket);
        Printf(DBG_INFO, "hdrBuf is");
        dumpBuff(DBG_INFO, headerBytes, sizeof headerBytes);
        return nullptr;
    }
    Printf(DBG_INFO, "\nIPCMessageParser::getMessage got valid header on socket %d\n", socket);

    std::string text;
    bool haveText = false;
    if (header.length > 0) {
        const long received = readPayload(source, header.length, text);
        if (received <= 0) {
            Printf(DBG_INFO,
                   "\nIPCMessageParser bytes < 0 reading data errCode = '%d' on socket %d\n",
                   getLastSocketError(), socket);
            readError = true;
        } else {
            Printf(DBG_INFO, "\nIPCMessageParser go whole message of %d bytes on socket %d\n",
                   static_cast<int>(received), socket);
            haveText = true;
        }
    }
    setRecord(haveText ? text.c_str() : nullptr);
    Printf(DBG_INFO, "\nIPCMessageParser::getMessage received '%s' on socket %d\n",
           m_record ? m_record.get() : "NULL", socket);
    return createMessage(header.length, header.code, header.value);
}

IPCMessage* IPCMessageParser::createMessage(int, int code, int value) {
    return new IPCMessage(code, value, m_record.get());
}
