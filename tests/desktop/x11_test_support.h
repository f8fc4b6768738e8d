#pragma once
// Test windows on the launcher's display, each on its own connection,
// recording what reached them.

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "harness.h"

// Xlib's macros (None, Bool, Status) clash with gtest; its types stay out.
struct _XDisplay;
union _XEvent;

// Keysyms with Shift applied; points inside the window; server times in ms.
struct KeyRecord { bool press; unsigned long keysym; };
struct ButtonRecord { unsigned int button; int x, y; unsigned long time; };

struct TestWindowOptions {
    std::string title;
    int x = 0, y = 0, width = 200, height = 100;
    std::uint32_t rgb = 0x808080;
    bool overrideRedirect = false;  // kept where it is by any window manager
    bool netWmName = true;          // _NET_WM_NAME besides WM_NAME
    bool acceptsDeleteWindow = true;
};

class TestWindow {
public:
    explicit TestWindow(const TestWindowOptions& options);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    bool IsOpen() const { return m_display != nullptr; }
    bool PumpUntil(const std::function<bool()>& done, int timeoutMs = 3000);
    void PumpFor(int ms) { PumpUntil([] { return false; }, ms); }
    // Waits until a window manager lists the window in _NET_CLIENT_LIST.
    bool WaitUntilManaged(int timeoutMs = 10000);
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

// On the launcher's display (1280 x 1024) in an x11 session.
class DisplayJobTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();

    ScopedEnv display{"DISPLAY", std::getenv("DISPLAY")};
    ScopedEnv sessionType{"XDG_SESSION_TYPE", "x11"};
    RecordedMessages messages;
    CapturedLog log;
};

// Code point of a keysym (Latin-1, 0x01000000 + code point, EuroSign), else 0.
char32_t CodePointOfKeysym(unsigned long keysym);
// True when some key of the current keyboard map gives `keysym`.
bool KeyboardHasKeysym(unsigned long keysym);
