#include "ipc/IPCPortFile.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool IPCPortFile::writePortFile() const {
    if (m_fileName.empty())
        return false;
    std::string temporary = m_fileName + ".XXXXXX";
    // mkstemp creates the file with mode 0600.
    const int descriptor = ::mkstemp(temporary.data());
    if (descriptor < 0)
        return false;
    char text[64];
    const int length = std::snprintf(text, sizeof text, "owner = %d\nport = %d\n", m_owner, m_port);
    const bool written = ::write(descriptor, text, static_cast<std::size_t>(length)) == length;
    const bool closed = ::close(descriptor) == 0;
    if (!written || !closed || std::rename(temporary.c_str(), m_fileName.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

bool IPCPortFile::readPortFile() {
    std::FILE* file = m_fileName.empty() ? nullptr : std::fopen(m_fileName.c_str(), "r");
    if (!file)
        return false;
    bool haveOwner = false;
    bool havePort = false;
    int owner = 0;
    int port = 0;
    char line[100];
    while (std::fgets(line, sizeof line, file)) {
        char key[21];
        char value[61];
        if (std::sscanf(line, "%20s = %60s", key, value) != 2)
            continue;
        if (std::strcmp(key, "owner") == 0) {
            owner = std::atoi(value);
            haveOwner = true;
        } else if (std::strcmp(key, "port") == 0) {
            port = std::atoi(value);
            havePort = true;
        }
    }
    std::fclose(file);
    if (!haveOwner || !havePort)
        return false;
    m_owner = owner;
    m_port = port;
    return true;
}

bool IPCPortFile::removePortFile() const {
    return !m_fileName.empty() && ::unlink(m_fileName.c_str()) == 0;
}
