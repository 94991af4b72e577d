/// \file
/// The framed messages of the IPC channel: the 20-byte header that starts every frame, the
/// message base class and its kinds (commands sent to the peer, status and error messages).
#pragma once

#include "core/TqExport.h"

#include <cstdint>
#include <iosfwd>
#include <memory>

/// The frame header: five 32-bit integers in network byte order, then the payload text.
struct TQ_EXPORT IPCHeader {
    static constexpr std::uint32_t magic = 0xC0CAC01A; ///< The first integer of every frame.
    static constexpr int size = 20;                    ///< The header's length in bytes.

    std::uint32_t start = magic; ///< magic in a valid frame
    std::int32_t length = 0;     ///< payload bytes that follow
    std::int32_t reserved = 12;  ///< read and not used; the command server writes 12
    std::int32_t code = 14;      ///< the message code; the command server writes 14
    std::int32_t value = 0;      ///< the second message value; the server writes the length

    ///@{
    /// Writes the five integers big-endian into out (20 bytes).
    void encode(char* out) const;
    static IPCHeader decode(const char* in);
    ///@}
};

///@{
/// Writes value big-endian into out; returns the position after it.
TQ_EXPORT char* ipcWriteInt(char* out, std::int32_t value);
TQ_EXPORT std::int32_t ipcReadInt(const char* in);
///@}

/// What a message is, as IPCMessage::isa() answers.
enum IPCMessageKind {
    IPC_MESSAGE = 0,
    IPC_COMMAND = 1,
    IPC_STATUS_MESSAGE = 2,
    IPC_ERROR_MESSAGE = 3,
};

/// The state changes of the channel that its threads report to the main thread.
enum IPC_STATUS_MSG_CODE : int {
    FOUND_PORTFILE = 0,       ///< the poller found the peer's port file
    GO_TO_POLLING = 1,        ///< look for the port file again
    GO_TO_DISCONNECTING = 2,  ///< close the connection
    CONNECTED_TO_SE = 3,      ///< the connection to the peer is up
    DISCONNECTED_FROM_SE = 4, ///< the connection to the peer is down
};

/// A message received from (or made for) the peer: the header's code and value and an
/// optional text. Dumps go through the debug print at DBG_INFO.
class TQ_EXPORT IPCMessage {
public:
    IPCMessage() = default;
    ///@{
    /// text is copied; null gives a message without text.
    IPCMessage(int code, int value, const char* text);
    virtual ~IPCMessage();
    IPCMessage(const IPCMessage&) = delete;
    IPCMessage& operator=(const IPCMessage&) = delete;
    ///@}

    /// The message's kind (each derived class answers its own).
    virtual IPCMessageKind isa() const { return IPC_MESSAGE; }
    /// Prints "Dumping IPCMessage.\n".
    virtual void dump() const;

    ///@{
    /// The header's message code and second value.
    int code() const { return m_code; }
    int value() const { return m_value; }
    ///@}
    /// The text, owned by the message; null when it has none.
    const char* text() const { return m_text.get(); }
    /// Replaces the text with a copy of text (null clears it).
    void setText(const char* text);

private:
    int m_code = 0;
    int m_value = 0;
    std::unique_ptr<char[]> m_text;
};

/// A command for the peer. Its text is written as a command-server request: a 4-byte
/// big-endian length, then the text without terminator.
class TQ_EXPORT IPCCommand : public IPCMessage {
public:
    /// text (copied) is the script to send; code and value are 0.
    explicit IPCCommand(const char* text) : IPCMessage(0, 0, text) {}
    /// IPC_COMMAND.
    IPCMessageKind isa() const override { return IPC_COMMAND; }
    /// Prints "Dumping IPCCommand.\n".
    void dump() const override;
    /// Writes the request; the stream's state tells whether it went out.
    virtual void writeOn(std::ostream& out) const;
};

/// A change of the channel's state, sent by its threads to the main thread.
class TQ_EXPORT IPCStatusMessage : public IPCMessage {
public:
    /// A message without text whose code() is code.
    explicit IPCStatusMessage(IPC_STATUS_MSG_CODE code)
        : IPCMessage(code, 0, nullptr), v_code(code) {}
    /// IPC_STATUS_MESSAGE.
    IPCMessageKind isa() const override { return IPC_STATUS_MESSAGE; }
    /// Prints "Dumping IPCStatusMessage: ", "  v_code is %d :" and the code's text
    /// (" Found portfile.\n" and so on); codes above 4 print no text.
    void dump() const override;

    IPC_STATUS_MSG_CODE v_code; ///< The state change reported.
};

/// A failure of the channel, told with its text.
class TQ_EXPORT IPCErrorMessage : public IPCMessage {
public:
    ///@{
    /// The text is copied; without one the message has none.
    IPCErrorMessage() = default;
    explicit IPCErrorMessage(char* errMessage) : IPCMessage(0, 0, errMessage) {}
    void setErrMessage(char* errMessage) { setText(errMessage); }
    ///@}
    /// IPC_ERROR_MESSAGE.
    IPCMessageKind isa() const override { return IPC_ERROR_MESSAGE; }
    /// Prints "Dumping IPCErrorMessage:" followed by the text ("NULL" without one).
    void dump() const override;
};
