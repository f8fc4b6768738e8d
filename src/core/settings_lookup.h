#pragma once
// How the core reads a preference (for example execMissFiredTrigger) without
// depending on where preferences are stored. Values are texts; yes/no values
// are "1" and "0".

#include <wx/string.h>

class SettingsLookup {
public:
    virtual ~SettingsLookup() = default;
    virtual wxString GetSetting(const wxString& name) const = 0;
};

// Answers the built-in default of every setting the core reads.
class DefaultSettings final : public SettingsLookup {
public:
    wxString GetSetting(const wxString& name) const override;
};

