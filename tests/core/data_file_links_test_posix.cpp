// Saving through links (POSIX): a data file that is a symbolic link stays
// one, and temporaries planted as links are neither followed nor trusted.
// The Windows save does not follow links (src/core/data/atomic_file_win.cpp).

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/data/scheduler_data.h"
#include "golden_content.h"
#include "test_support.h"

TEST(DataFileSave, PlantedTemporariesAndLinksAreNeitherFollowedNorTrusted)
{
    TempDir dir, elsewhere;
    const wxString target = elsewhere.File("real-data1.xml"), victim = elsewhere.File("victim");
    WriteFileBytes(victim, "untouched");
    Scheduler s(HarnessContext(), dir.Path());
    ASSERT_TRUE(wxFileName::Mkdir(dir.File("data")));
    // data1.xml is a link the user made; the temporary names are links planted.
    ASSERT_EQ(::symlink(target.fn_str(), s.Paths().working.fn_str()), 0);
    ASSERT_EQ(::symlink(victim.fn_str(), (s.Paths().working + ".tmp").fn_str()), 0);
    ASSERT_EQ(::symlink(victim.fn_str(), (target + ".tmp-AAAAAA").fn_str()), 0);
    FillGoldenContent(s);
    const mode_t old = ::umask(0);
    ASSERT_EQ(SaveSchedulerData(s, true), DataSaveResult::Saved);
    ::umask(old);
    EXPECT_EQ(ReadFileBytes(target), Golden());
    EXPECT_TRUE(IsPrivateFile(target));
    EXPECT_TRUE(wxFileName(s.Paths().working).Exists(wxFILE_EXISTS_SYMLINK | wxFILE_EXISTS_NO_FOLLOW));
    EXPECT_EQ(ReadFileBytes(victim), "untouched");
    wxArrayString temporaries;
    for (const wxString& folder : {dir.File("data"), elsewhere.Path()})
        EXPECT_EQ(wxDir::GetAllFiles(folder, &temporaries, "*.tmp*", wxDIR_FILES), 0u) << folder;
}
