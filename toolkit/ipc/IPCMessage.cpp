#include "ipc/IPCMessage.h"

#include "core/DebugPrint.h"
#include "core/StringFunctions.h"

#include <cstring>
#include <ostream>

void IPCHeader::encode(char* out) const {
    out = ipcWriteInt(out, static_cast<std::int32_t>(start));
    out = ipcWriteInt(out, length);
    out = ipcWriteInt(out, reserved);
    out = ipcWriteInt(out, code);
    ipcWriteInt(out, value);
}

IPCHeader IPCHeader::decode(const char* in) {
    IPCHeader header;
    header.start = static_cast<std::uint32_t>(ipcReadInt(in));
    header.length = ipcReadInt(in + 4);
    header.reserved = ipcReadInt(in + 8);
    header.code = ipcReadInt(in + 12);
    header.value = ipcReadInt(in + 16);
    return header;
}

char* ipcWriteInt(char* out, std::int32_t value) {
    const auto bits = static_cast<std::uint32_t>(value);
    out[0] = static_cast<char>(bits >> 24);
    out[1] = static_cast<char>(bits >> 16);
    out[2] = static_cast<char>(bits >> 8);
    out[3] = static_cast<char>(bits);
    return out + 4;
}

std::int32_t ipcReadInt(const char* in) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(in);
    const std::uint32_t bits = (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) |
                               (std::uint32_t{bytes[2]} << 8) | std::uint32_t{bytes[3]};
    return static_cast<std::int32_t>(bits);
}

IPCMessage::IPCMessage(int code, int value, const char* text)
    : m_code(code), m_value(value), m_text(mem_strdup(text)) {}

IPCMessage::~IPCMessage() = default;

void IPCMessage::dump() const {
    Printf(DBG_INFO, "Dumping IPCMessage.\n");
}

void IPCMessage::setText(const char* text) {
    m_text.reset(mem_strdup(text));
}

void IPCCommand::dump() const {
    Printf(DBG_INFO, "Dumping IPCCommand.\n");
}

void IPCCommand::writeOn(std::ostream& out) const {
    const std::size_t length = text() ? std::strlen(text()) : 0;
    char prefix[4];
    ipcWriteInt(prefix, static_cast<std::int32_t>(length));
    out.write(prefix, sizeof prefix);
    if (length > 0)
        out.write(text(), static_cast<std::streamsize>(length));
    out.flush();
}

void IPCStatusMessage::dump() const {
    static const char* const texts[] = {" Found portfile.\n", " Go to polling.\n",
                                        " Go to disconnecting.\n", " Connected to SE.\n",
                                        " Disconnected from SE.\n"};
    Printf(DBG_INFO, "Dumping IPCStatusMessage: ");
    Printf(DBG_INFO, "  v_code is %d :", v_code);
    if (v_code >= 0 && v_code <= DISCONNECTED_FROM_SE)
        Printf(DBG_INFO, "%s", texts[v_code]);
}

void IPCErrorMessage::dump() const {
    Printf(DBG_INFO, "Dumping IPCErrorMessage:");
    Printf(DBG_INFO, "%s", text() ? text() : "NULL");
}
