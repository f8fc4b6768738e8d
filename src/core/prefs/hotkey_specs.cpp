#include "core/prefs/hotkey_specs.h"

#include <wx/translation.h>

const std::array<HotKeySpec, kHotKeyCount>& HotKeySpecs()
{
    static const std::array<HotKeySpec, kHotKeyCount> specs = {{
        {HotKeyId::RestoreMainFrame, "hotkeyRestoreMainFrm2", "hotkeyRestoreMainFrm3", nullptr,
         wxTRANSLATE("Register Restore main window HOTKEY failed."), '0'},
        {HotKeyId::PauseMode, "hotkeyPauseMode2", "hotkeyPauseMode3", nullptr,
         wxTRANSLATE("Register Open/Close pause mode HOTKEY failed."), '9'},
        {HotKeyId::Custom1, "hotkeyCust12", "hotkeyCust13", "hotkeyAssociatedJID1",
         wxTRANSLATE("Register Customize HOTKEY 1 failed."), '8'},
        {HotKeyId::Custom2, "hotkeyCust22", "hotkeyCust23", "hotkeyAssociatedJID2",
         wxTRANSLATE("Register Customize HOTKEY 2 failed."), '7'},
        {HotKeyId::Custom3, "hotkeyCust32", "hotkeyCust33", "hotkeyAssociatedJID3",
         wxTRANSLATE("Register Customize HOTKEY 3 failed."), '6'},
    }};
    return specs;
}
