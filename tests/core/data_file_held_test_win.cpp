// Windows: a save while another program holds the data file open without
// sharing deletion (a virus scanner, an indexer) waits for it briefly
// instead of failing at once.

#include <chrono>
#include <thread>

#include <windows.h>

#include <gtest/gtest.h>
#include <wx/dir.h>

#include "core/data/atomic_file.h"
#include "test_support.h"

TEST(AtomicFileWindows, ReplaceWaitsForAShortHoldOnTheTarget)
{
    TempDir dir;
    const wxString path = dir.File("data1.xml");
    ASSERT_TRUE(WriteFileAtomically(path, "old", nullptr));
    const HANDLE held = ::CreateFileW(path.wc_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    std::thread release([held] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        ::CloseHandle(held);
    });
    wxString error;
    const bool saved = WriteFileAtomically(path, "new", &error);
    release.join();
    EXPECT_TRUE(saved) << error;
    EXPECT_EQ(ReadFileBytes(path), "new");
}

TEST(AtomicFileWindows, AHoldThatLastsFailsTheSaveAndKeepsTheOldFile)
{
    TempDir dir;
    const wxString path = dir.File("data1.xml");
    ASSERT_TRUE(WriteFileAtomically(path, "old", nullptr));
    const HANDLE held = ::CreateFileW(path.wc_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    wxString error;
    EXPECT_FALSE(WriteFileAtomically(path, "new", &error));
    ::CloseHandle(held);
    EXPECT_TRUE(error.StartsWith("cannot replace")) << error;
    EXPECT_EQ(ReadFileBytes(path), "old");
    wxArrayString temporaries;
    EXPECT_EQ(wxDir::GetAllFiles(dir.Path(), &temporaries, "*.tmp*", wxDIR_FILES), 0u);
}
