#pragma once
// The running instance's end of the command-line control: a Unix socket in
// the per-user runtime folder (mode 0600, no TCP), served by one thread that
// waits on every caller at once with non-blocking reads: it refuses callers
// of another user id (SO_PEERCRED), keeps at most a few callers of one
// process waiting for their request line, hands each request to the main
// thread and writes the main thread's answer back. A caller that sends
// nothing, or half a line, delays nobody else.

#include <functional>
#include <memory>
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

    // Callers of one process waiting for their request line at once; an
    // older one is closed when more arrive.
    static constexpr std::size_t kIdlePerCaller = 8;
    // All open connections; beyond it the oldest waiting caller is closed.
    static constexpr std::size_t kMaxConnections = 128;

    ControlServer(Handler handler, MainThreadPoster poster);
    // Stops the thread and removes the socket.
    ~ControlServer();
    ControlServer(const ControlServer&) = delete;
    ControlServer& operator=(const ControlServer&) = delete;

    // Binds the socket in the runtime folder and starts serving (call only
    // while holding the instance lock). Refuses a folder that is not wholly
    // ours, a file at the socket's place that is not our socket, and a
    // socket someone still listens on. False with a reason when it cannot.
    bool Start(std::string* error);
    // Where it listens, once started.
    const std::string& SocketPath() const { return m_path; }

private:
    struct Mailbox;
    void Serve();

    Handler m_handler;
    MainThreadPoster m_poster;
    std::string m_path;
    unsigned long m_socketInode = 0;
    int m_listenFd = -1;
    // Shared with tasks on the main thread, which may outlive the server.
    std::shared_ptr<Mailbox> m_mailbox;
    std::thread m_thread;
};
