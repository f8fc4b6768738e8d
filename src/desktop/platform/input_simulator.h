#pragma once
// Simulated keys, typing and mouse clicks, as if the user did them: the
// events go to whatever window has the focus or lies under the pointer.

#include <memory>

#include <wx/string.h>

// Keys by what they are, not by a platform's code for them. Letters and
// digits are contiguous so that A + n and Digit0 + n work.
enum class InputKey : int {
    Back, Tab, Return, Escape, Space, Delete, Insert,
    Left, Right, Up, Down, Home, End, PageUp, PageDown,
    Print, Pause, NumLock, CapsLock, ScrollLock, Menu,
    Ctrl, Shift, Alt, Win,
    F1, F2, F3, F4, F5, F6, F7, F8, F9, F10, F11, F12,
    A, B, C, D, E, F, G, H, I, J, K, L, M, N, O, P, Q, R, S, T, U, V, W, X, Y, Z,
    Digit0, Digit1, Digit2, Digit3, Digit4, Digit5, Digit6, Digit7, Digit8, Digit9,
    Numpad0, Numpad1, Numpad2, Numpad3, Numpad4, Numpad5, Numpad6, Numpad7, Numpad8, Numpad9,
    Multiply, Add, Subtract, Decimal, Divide,
};

enum class MouseButton { Left, Right };

class InputSimulator {
public:
    // A simulator on a connection of its own (any thread, one thread at a
    // time), or null with `problem` saying what the session lacks.
    static std::unique_ptr<InputSimulator> Open(wxString& problem);
    virtual ~InputSimulator() = default;

    // False when the keyboard has no such key.
    virtual bool KeyDown(InputKey key) = 0;
    virtual bool KeyUp(InputKey key) = 0;
    // Types the text character by character, with Shift where needed.
    // Characters that no key produces are typed through a spare key that is
    // given the character for that moment. False (after typing what it
    // could) when a character could not be typed at all.
    virtual bool TypeText(const wxString& text) = 0;
    virtual void MoveTo(int x, int y) = 0;
    virtual void ButtonDown(MouseButton button) = 0;
    virtual void ButtonUp(MouseButton button) = 0;
    void Click(MouseButton button)
    {
        ButtonDown(button);
        ButtonUp(button);
    }
    // Two clicks well inside any double-click time.
    void DoubleClick(MouseButton button)
    {
        Click(button);
        Pause(kDoubleClickGapMs);
        Click(button);
    }
    // Lets the events reach the server and the other programs; sleeps.
    virtual void Pause(int milliseconds) = 0;

    static constexpr int kDoubleClickGapMs = 60;
};
