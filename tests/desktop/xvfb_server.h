#pragma once
// A private X server (Xvfb) for one test program: started on a free display
// number that the server picks itself, stopped by its process id.

#include <string>

#include <sys/types.h>

class XvfbServer {
public:
    // `screen` as Xvfb takes it: "<width>x<height>x<depth>".
    explicit XvfbServer(const std::string& screen = "1024x768x24");
    ~XvfbServer();
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;

    bool IsRunning() const { return m_pid > 0 && !m_display.empty(); }
    // ":N"
    const std::string& Display() const { return m_display; }

private:
    pid_t m_pid = -1;
    std::string m_display;
};
