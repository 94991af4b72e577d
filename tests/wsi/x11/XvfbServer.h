// XvfbServer: a virtual X display without a window manager, started for the tests of this
// executable and ended by its pid when they finish.
#pragma once

#include <string>
#include <sys/types.h>

class XvfbServer {
public:
    // Starts Xvfb with one screen of the given size on a display it picks itself; on failure
    // running() is false and message() says why.
    XvfbServer(int width, int height);
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    bool running() const { return m_pid > 0; }
    // ":<number>", the value for DISPLAY.
    const std::string& display() const { return m_display; }
    const std::string& message() const { return m_message; }

private:
    pid_t m_pid = -1;
    std::string m_display;
    std::string m_message;
};
