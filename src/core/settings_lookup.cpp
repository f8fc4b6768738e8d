#include "core/settings_lookup.h"

wxString DefaultSettings::GetSetting(const wxString& name) const
{
    if (name == "execMissFiredTrigger")
        return "0";
    return wxString();
}
