#pragma once
// The running instance's end of the command-line control: a Unix socket in
// the per-user runtime folder (mode 0600, no TCP), served by a thread that
// only reads requests, refuses callers of another user id (SO_PEERCRED) and
// hands each request to the main thread, then writes the main thread's
// answer back.

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "desktop/control/control_protocol.h"

class ControlServer {
public:
    using Handler = std::function<ControlAnswer(const ControlRequest&)>;
    // Runs a task on the main thread soon (wxApp::CallAfter in the window,
    // the runner's own queue headless). The task may never run if the
    // program ends first.
    using MainThreadPoster = std::function<void(std::function<void()>)>;

    ControlServer(Handler handler, MainThreadPoster poster);
    // Stops the thread and removes the socket.
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    // Binds the socket (replacing a stale one: call only while holding the
    // instance lock) and starts serving. False with a reason when it cannot.
    bool Start(std::string* error);

private:
    void Serve();
    void HandleConnection(int fd);

    Handler m_handler;
    MainThreadPoster m_poster;
    std::string m_path;
    int m_listenFd = -1;
    int m_wakePipe[2] = {-1, -1};
    std::atomic<bool> m_bStopping{false};
    std::thread m_thread;
};
