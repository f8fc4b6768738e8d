// The preferences file is the user's alone (POSIX: the file store's umask).
// On Windows the preferences are to live in the registry (wxRegConfig),
// whose per-user branch is the user's by its own access rules.

#include <gtest/gtest.h>
#include <wx/fileconf.h>

#include "core/clock.h"
#include "core/prefs/preference.h"
#include "test_support.h"

TEST(PreferenceFile, SavingWritesAFileReadableByTheUserAlone)
{
    TempDir dir;
    const wxString path = dir.File("Cadrelle.conf");
    wxFileConfig config("Cadrelle", "Vantrel", path, wxEmptyString, wxCONFIG_USE_LOCAL_FILE);
    config.SetUmask(0077);
    ManualClock clock;
    clock.Set(1700000000000);
    Preference prefs(&config, clock);
    prefs.SaveSettingParam();
    EXPECT_TRUE(IsPrivateFile(path));
}
