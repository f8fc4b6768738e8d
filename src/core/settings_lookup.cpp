#include "core/settings_lookup.h"

#include <atomic>

wxString DefaultSettings::GetSetting(const wxString& name) const
{
    if (name == "execMissFiredTrigger")
        return "0";
    return wxString();
}

namespace {
DefaultSettings g_defaults;
std::atomic<const SettingsLookup*> g_settings{&g_defaults};
}  // namespace

const SettingsLookup& GetSettings()
{
    return *g_settings.load(std::memory_order_acquire);
}

void SetSettings(const SettingsLookup* settings)
{
    g_settings.store(settings ? settings : &g_defaults, std::memory_order_release);
}

bool IsMissFiredRefireOn()
{
    static const wxString name = "execMissFiredTrigger";
    return GetSettings().GetSetting(name) == "1";
}
