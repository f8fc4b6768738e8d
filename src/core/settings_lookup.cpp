#include "core/settings_lookup.h"

wxString DefaultSettings::GetSetting(const wxString& name) const
{
    if (name == "execMissFiredTrigger")
        return "0";
    if (name == "historyKeepDays")
        return "90";
    if (name == "historyMaxRuns")
        return "200000";
    if (name == "historyNotifyFailures")
        return "1";
    return wxString();
}
