#pragma once
// Real X clients for the window, screenshot and input job tests: a private
// Xvfb for the whole program, openbox when window-manager behaviour
// matters, and test windows on connections of their own that record what
// reached them.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <wx/log.h>

#include "core/jobs/job.h"
#include "recorded_messages.h"
#include "xvfb_server.h"

// Xlib's macros (None, Bool, Status) clash with gtest; its types stay out of
// this header.
struct _XDisplay;
union _XEvent;

// Keeps every log record; worker-thread records are flushed first.
class CapturedLog : public wxLog {
public:
    std::vector<std::string> Lines();
    bool Has(const std::string& part);

protected:
    void DoLogRecord(wxLogLevel level, const wxString& msg, const wxLogRecordInfo& info) override;

private:
    std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

// openbox on the test display, stopped by its pid.
class OpenboxProcess {
public:
    explicit OpenboxProcess(const std::string& display);
    ~OpenboxProcess();
    OpenboxProcess(const OpenboxProcess&) = delete;
    OpenboxProcess& operator=(const OpenboxProcess&) = delete;
    // True once openbox announces itself (EWMH check window) on the root.
    bool IsManaging() const { return m_managing; }

private:
    pid_t m_pid = -1;
    bool m_managing = false;
    std::string m_home;
};

struct KeyRecord {
    bool press;
    unsigned long keysym;  // as XLookupString gives it (Shift applied)
};

struct ButtonRecord {
    unsigned int button;
    int x;  // inside the window
    int y;
    unsigned long time;  // server time, ms
};

struct TestWindowOptions {
    std::string title;
    int x = 0;
    int y = 0;
    int width = 200;
    int height = 100;
    std::uint32_t rgb = 0x808080;
    // Kept where it is by any window manager.
    bool overrideRedirect = false;
    bool netWmName = true;            // _NET_WM_NAME in UTF-8
    bool wmName = true;               // WM_NAME (Latin-1 STRING)
    bool acceptsDeleteWindow = true;  // WM_DELETE_WINDOW in WM_PROTOCOLS
};

class TestWindow {
public:
    explicit TestWindow(const TestWindowOptions& options);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    bool IsOpen() const { return m_display != nullptr; }
    unsigned long Id() const { return m_window; }
    // Handles events until `done` holds or `timeoutMs` passed; returns done().
    bool PumpUntil(const std::function<bool()>& done, int timeoutMs = 3000);
    // Handles whatever arrives for `ms`.
    void PumpFor(int ms);
    // Waits until a window manager lists the window in _NET_CLIENT_LIST.
    bool WaitUntilManaged();
    void TakeFocus();

    int deleteRequests = 0;
    std::vector<KeyRecord> keys;
    std::vector<ButtonRecord> buttons;

private:
    void Handle(_XEvent& event);

    _XDisplay* m_display = nullptr;
    unsigned long m_window = 0;
    bool m_mapped = false;
};

// Xvfb (1280 x 720) for the whole suite; each test runs with DISPLAY on it,
// a session type of x11, messages and log lines recorded.
class DisplayJobTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    static void RunJob(std::uint32_t kind, const ParamList& params, std::int32_t jid = 7);
    // Runs the job on a thread of its own, as the scheduler does, while the
    // windows handle their events, as running programs do.
    static void RunJobWhilePumping(std::uint32_t kind, const ParamList& params,
                                   const std::vector<TestWindow*>& windows);
    static const std::string& DisplayName() { return s_server->Display(); }
    std::vector<std::string> Boxes() const { return messages.Texts(RecordedMessage::Kind::Box); }

    static constexpr int kScreenWidth = 1280;
    static constexpr int kScreenHeight = 720;

    RecordedMessages messages;
    CapturedLog log;

private:
    static XvfbServer* s_server;
    wxLog* m_previousLog = nullptr;
};

// Code point of a keysym: Latin-1 keysyms are their own code, the others
// 0x01000000 + code point; 0 for anything else (modifiers, Return).
char32_t CodePointOfKeysym(unsigned long keysym);
// True when some key of the current keyboard map gives `keysym`.
bool KeyboardHasKeysym(unsigned long keysym);
