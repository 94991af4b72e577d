#include "ipc/IPCPortFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool IPCPortFile::writePortFile() const {
    m_lastWriteError = EINVAL;
    if (m_fileName.empty())
        return false;
    std::string temporary = m_fileName + ".XXXXXX";
    // mkstemp creates the file with mode 0600, which keeps the token to its owner.
    const int descriptor = ::mkstemp(temporary.data());
    if (descriptor < 0) {
        m_lastWriteError = errno;
        return false;
    }
    char text[160];
    int length = std::snprintf(text, sizeof text, "owner = %d\nport = %d\n", m_owner, m_port);
    if (!m_token.empty())
        length += std::snprintf(text + length, sizeof text - std::size_t(length), "token = %.60s\n",
                                m_token.c_str());
    const bool written = ::write(descriptor, text, static_cast<std::size_t>(length)) == length;
    int error = written ? 0 : (errno ? errno : EIO);
    if (::close(descriptor) != 0 && error == 0)
        error = errno;
    if (error == 0 && std::rename(temporary.c_str(), m_fileName.c_str()) != 0)
        error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        m_lastWriteError = error;
        return false;
    }
    m_lastWriteError = 0;
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
    std::string token;
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
        } else if (std::strcmp(key, "token") == 0) {
            token = value;
        }
    }
    std::fclose(file);
    if (!haveOwner || !havePort)
        return false;
    m_owner = owner;
    m_port = port;
    m_token = token;
    return true;
}

bool IPCPortFile::removePortFile() const {
    return !m_fileName.empty() && ::unlink(m_fileName.c_str()) == 0;
}
