// Reads arbitrary bytes as a port file.
#include "ipc/IPCPortFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::string path = "/tmp/tq_fuzz_port_file." + std::to_string(::getpid());
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return 0;
    std::fwrite(data, 1, size, file);
    std::fclose(file);
    IPCPortFile portFile(path.c_str());
    (void)portFile.readPortFile();
    return 0;
}
