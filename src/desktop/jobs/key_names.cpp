#include "desktop/jobs/key_names.h"

namespace {

std::vector<KeyNameEntry> BuildTable()
{
    std::vector<KeyNameEntry> table = {
        {"BACK", InputKey::Back, true},
        {"TAB", InputKey::Tab, true},
        {"RETURN/ENTER", InputKey::Return, true},
        {"SHIFT", InputKey::Shift, true},
        {"CTRL", InputKey::Ctrl, true},
        {"ALT", InputKey::Alt, true},
        {"PAUSE", InputKey::Pause, true},
        {"CAPSLOCK", InputKey::CapsLock, true},
        {"ESCAPE", InputKey::Escape, true},
        {"SPACE", InputKey::Space, true},
        {"PAGEUP", InputKey::PageUp, true},
        {"PAGEDOWN", InputKey::PageDown, true},
        {"END", InputKey::End, true},
        {"HOME", InputKey::Home, true},
        {"LEFT", InputKey::Left, true},
        {"UP", InputKey::Up, true},
        {"RIGHT", InputKey::Right, true},
        {"DOWN", InputKey::Down, true},
        {"PRINT", InputKey::Print, true},
        {"INSERT", InputKey::Insert, true},
        {"DELETE", InputKey::Delete, true},
        {"WIN", InputKey::Win, true},
        {"APPS", InputKey::Menu, true},
        {"NUMLOCK", InputKey::NumLock, true},
        {"SCROLL", InputKey::ScrollLock, true},
        {"MULTIPLY", InputKey::Multiply, true},
        {"ADD", InputKey::Add, true},
        {"SUBTRACT", InputKey::Subtract, true},
        {"DECIMAL", InputKey::Decimal, true},
        {"DIVIDE", InputKey::Divide, true},
    };
    // Names kept as statics: the table hands out plain pointers.
    static const char* const functionKeys[] = {"F1", "F2", "F3", "F4", "F5", "F6",
                                               "F7", "F8", "F9", "F10", "F11", "F12"};
    for (int i = 0; i < 12; ++i)
        table.push_back({functionKeys[i], static_cast<InputKey>(static_cast<int>(InputKey::F1) + i), true});
    static const char* const digits[] = {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
    for (int i = 0; i < 10; ++i)
        table.push_back({digits[i], static_cast<InputKey>(static_cast<int>(InputKey::Digit0) + i), true});
    static const char* const letters[] = {"A", "B", "C", "D", "E", "F", "G", "H", "I", "J", "K", "L", "M",
                                          "N", "O", "P", "Q", "R", "S", "T", "U", "V", "W", "X", "Y", "Z"};
    for (int i = 0; i < 26; ++i)
        table.push_back({letters[i], static_cast<InputKey>(static_cast<int>(InputKey::A) + i), true});
    static const char* const numpad[] = {"NUMPAD0", "NUMPAD1", "NUMPAD2", "NUMPAD3", "NUMPAD4",
                                         "NUMPAD5", "NUMPAD6", "NUMPAD7", "NUMPAD8", "NUMPAD9"};
    for (int i = 0; i < 10; ++i)
        table.push_back({numpad[i], static_cast<InputKey>(static_cast<int>(InputKey::Numpad0) + i), true});
    // Spellings people type by hand in a data file.
    const KeyNameEntry aliases[] = {
        {"RETURN", InputKey::Return, false},    {"ENTER", InputKey::Return, false},
        {"BACKSPACE", InputKey::Back, false},   {"ESC", InputKey::Escape, false},
        {"CONTROL", InputKey::Ctrl, false},     {"MENU", InputKey::Alt, false},
        {"PGUP", InputKey::PageUp, false},      {"PRIOR", InputKey::PageUp, false},
        {"PGDN", InputKey::PageDown, false},    {"NEXT", InputKey::PageDown, false},
        {"DEL", InputKey::Delete, false},       {"INS", InputKey::Insert, false},
        {"CAPITAL", InputKey::CapsLock, false}, {"SNAPSHOT", InputKey::Print, false},
        {"LWIN", InputKey::Win, false},         {"SCROLLLOCK", InputKey::ScrollLock, false},
    };
    table.insert(table.end(), std::begin(aliases), std::end(aliases));
    return table;
}

}  // namespace

const std::vector<KeyNameEntry>& KeyNameTable()
{
    static const std::vector<KeyNameEntry> table = BuildTable();
    return table;
}

std::optional<InputKey> KeyFromName(const wxString& name)
{
    const wxString wanted = wxString(name).Trim(true).Trim(false).Upper();
    for (const KeyNameEntry& entry : KeyNameTable()) {
        if (wanted == entry.name)
            return entry.key;
    }
    return std::nullopt;
}
