#pragma once
// Real X clients for the window, screenshot and input job tests, on the X
// display of the launcher (tests/support/desktop_session.sh): test windows
// on connections of their own that record what reached them.

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "harness.h"

// Xlib's macros (None, Bool, Status) clash with gtest; its types stay out of
// this header.
struct _XDisplay;
union _XEvent;

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

// Each test runs on the launcher's display (1280 x 1024) in a session of
// type x11, with messages and log lines recorded; the display variables are
// put back afterwards.
class DisplayJobTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    // Runs the job on a thread of its own, as the scheduler does, while the
    // windows handle their events, as running programs do.
    static void RunJobWhilePumping(std::uint32_t kind, const ParamList& params,
                                   const std::vector<TestWindow*>& windows);
    std::vector<std::string> Boxes() const { return messages.Boxes(); }

    static constexpr int kScreenWidth = 1280;
    static constexpr int kScreenHeight = 1024;

    ScopedEnv display{"DISPLAY", std::getenv("DISPLAY")};
    ScopedEnv sessionType{"XDG_SESSION_TYPE", "x11"};
    RecordedMessages messages;
    CapturedLog log;
};

// True when a window manager runs on the display (close requests then go
// through it).
bool WindowManagerRuns();

// Code point of a keysym: Latin-1 keysyms are their own code, the others
// 0x01000000 + code point; 0 for anything else (modifiers, Return).
char32_t CodePointOfKeysym(unsigned long keysym);
// True when some key of the current keyboard map gives `keysym`.
bool KeyboardHasKeysym(unsigned long keysym);
