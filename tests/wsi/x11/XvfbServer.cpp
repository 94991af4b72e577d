#include "XvfbServer.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

XvfbServer::XvfbServer(int width, int height) {
    int pipeFds[2];
    if (pipe(pipeFds) != 0) {
        m_message = "pipe failed";
        return;
    }
    char screen[32], displayFd[16];
    std::snprintf(screen, sizeof screen, "%dx%dx24", width, height);
    std::snprintf(displayFd, sizeof displayFd, "%d", pipeFds[1]);
    const pid_t pid = fork();
    if (pid == 0) {
        close(pipeFds[0]);
        const int null = open("/dev/null", O_RDWR);
        dup2(null, STDOUT_FILENO);
        dup2(null, STDERR_FILENO);
        // Only the local socket: no TCP listener. -br gives a black root window.
        execlp("Xvfb", "Xvfb", "-displayfd", displayFd, "-screen", "0", screen, "-nolisten", "tcp",
               "-br", static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeFds[1]);
    if (pid < 0) {
        close(pipeFds[0]);
        m_message = "fork failed";
        return;
    }
    // Xvfb writes its display number when it accepts connections.
    char number[16] = {};
    std::size_t length = 0;
    pollfd reader{pipeFds[0], POLLIN, 0};
    while (!std::memchr(number, '\n', length) && length + 1 < sizeof number &&
           poll(&reader, 1, 10000) > 0) {
        const ssize_t got = read(pipeFds[0], number + length, sizeof number - 1 - length);
        if (got <= 0)
            break;
        length += static_cast<std::size_t>(got);
    }
    close(pipeFds[0]);
    char* end = static_cast<char*>(std::memchr(number, '\n', length));
    if (!end) {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
        m_message = "Xvfb did not start (is the xvfb package installed?)";
        return;
    }
    m_pid = pid;
    *end = '\0';
    m_display = std::string(":").append(number);
}

XvfbServer::~XvfbServer() {
    if (m_pid > 0) {
        kill(m_pid, SIGTERM);
        waitpid(m_pid, nullptr, 0);
    }
}
