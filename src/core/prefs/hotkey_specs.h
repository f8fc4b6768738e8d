#pragma once
// The five global hot keys as the preferences name them: their preference
// keys, default key characters and failure messages. One table for the
// settings dialog and for registration.

#include <array>

enum class HotKeyId { RestoreMainFrame = 0, PauseMode = 1, Custom1 = 2, Custom2 = 3, Custom3 = 4 };
constexpr int kHotKeyCount = 5;
constexpr int kCustomHotKeyCount = 3;  // the last three of the table

// Modifier bits of the stored codes (as on Windows).
constexpr int kModAlt = 1;
constexpr int kModControl = 2;
constexpr int kModShift = 4;
constexpr int kModWin = 8;

struct HotKeySpec {
    HotKeyId id;
    const char* modifierKey;  // preference with the modifier code
    const char* keyKey;       // preference with the virtual key code
    const char* jidKey;       // preference with the job of a custom key, else null
    const char* failure;      // the message when it cannot be registered
    char defaultKey;          // the default key character
};

const std::array<HotKeySpec, kHotKeyCount>& HotKeySpecs();
