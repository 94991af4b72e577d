// Feeds arbitrary bytes to the message parser as a stream of frames, as a peer would send
// them, until the input is used up.
#include "ipc/IPCByteSource.h"
#include "ipc/IPCMessage.h"
#include "ipc/IPCMessageParser.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The first byte chooses whether the stream ends cleanly or fails.
    const bool failAtEnd = size > 0 && (data[0] & 1);
    IPCMemorySource source(std::string_view(reinterpret_cast<const char*>(data), size), failAtEnd);
    IPCMessageParser parser;
    while (source.remaining() > 0) {
        bool readError = false;
        std::unique_ptr<IPCMessage> message(parser.getMessage(source, readError));
        if (message && message->text() && std::strlen(message->text()) > size)
            __builtin_trap(); // a text longer than the input came from nowhere
    }
    return 0;
}
