#pragma once
// Whether the jobs and triggers changed since the data file was last
// written, when the first unsaved change came, and why the last save failed.
// Edits and firings count a change; a save records the count it wrote, so a
// change made while a save writes is never taken as saved.

#include <atomic>
#include <cstdint>
#include <mutex>

#include <wx/datetime.h>
#include <wx/string.h>

class ChangeTracker {
public:
    bool IsDataChanged() const { return m_nChanges.load() != m_nSavedChanges.load(); }
    // An edit (any thread).
    void MarkChanged() { m_nChanges.fetch_add(1); }
    // A firing (checker threads): also remembers when the flag went up, for
    // the delayed save.
    void MarkChangedByFiring(const wxDateTime& now);
    wxDateTime GetDataChangedTime() const;

    // The count a save is about to write; pass it to SavedUpTo once written.
    std::uint64_t ChangeCount() const { return m_nChanges.load(); }
    void SavedUpTo(std::uint64_t count);
    // Takes every change as saved (nothing to write).
    void ClearChanged() { m_nSavedChanges.store(m_nChanges.load()); }
    // A save failed: the flag stays up and the next attempt comes a full
    // delay after `now`. True when `error` differs from the last failure's
    // (the temporary file's name aside).
    bool SaveFailed(const wxString& error, const wxDateTime& now);

private:
    std::atomic<std::uint64_t> m_nChanges{0};
    std::atomic<std::uint64_t> m_nSavedChanges{0};
    mutable std::mutex m_mutex;  // guards the two below
    wxDateTime m_dtDataChanged;
    wxString m_strLastSaveError;
};
