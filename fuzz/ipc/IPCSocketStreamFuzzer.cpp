// Feeds arbitrary bytes, as a server would send them, to the framed reply stream over a
// socket pair; every other message's payload is read and the rest skipped, until the stream
// ends.
#include "ipc/SocketStreambuf.h"
#include "ipc/platform/piSocket.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <sys/socket.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    int pair[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0)
        return 0;
    const auto ours = static_cast<unsigned int>(pair[0]), peer = static_cast<unsigned int>(pair[1]);
    // All of it is written before the reading starts: no more than the socket buffer holds.
    piSocket::sendAll(peer, data, std::min<std::size_t>(size, 32 * 1024));
    piSocket::close(peer);
    {
        IPCSocketIStream in(ours);
        for (bool read = true; in.nextMessage(0) == IPCSocketStreambuf::MessageReady;
             read = !read) {
            const std::string text =
                read ? std::string(std::istreambuf_iterator<char>(in), {}) : std::string();
            if (text.size() > static_cast<std::size_t>(in.messageLength()))
                __builtin_trap(); // more payload than the header announced
        }
    }
    piSocket::close(ours);
    return 0;
}
