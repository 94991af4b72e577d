// Feeds arbitrary bytes to the command server's frame reader (length header, then script,
// cut at the receive capacity) until the input is used up. Scripts are not evaluated.
#include "ipc/IPCByteSource.h"
#include "ipc/TclConnectionWithClient.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    IPCMemorySource source(std::string_view(reinterpret_cast<const char*>(data), size));
    char buffer[TclConnectionWithClient::receiveCapacity];
    for (;;) {
        const TclConnectionWithClient::FrameResult frame =
            TclConnectionWithClient::readFrame(source, buffer, sizeof buffer);
        if (frame.status != TclConnectionWithClient::Frame)
            break;
        if (frame.length >= TclConnectionWithClient::receiveCapacity ||
            frame.received > frame.length || buffer[frame.received] != '\0')
            __builtin_trap();
    }
    return 0;
}
