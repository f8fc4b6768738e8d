#include "core/store/change_tracker.h"

#include "core/data/atomic_file.h"

void ChangeTracker::MarkChangedByFiring(const wxDateTime& now)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!IsDataChanged())
        m_dtDataChanged = now;
    m_nChanges.fetch_add(1);
}

wxDateTime ChangeTracker::GetDataChangedTime() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_dtDataChanged;
}

void ChangeTracker::SavedUpTo(std::uint64_t count)
{
    m_nSavedChanges.store(count);
    std::lock_guard<std::mutex> lock(m_mutex);
    m_strLastSaveError.clear();
}

bool ChangeTracker::SaveFailed(const wxString& error, const wxDateTime& now)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_dtDataChanged = now;
    // Each attempt writes through a temporary file of another name: a disk
    // that stays full must not read as a new failure every minute.
    const wxString failure = WithoutTemporaryName(error);
    const bool isNew = failure != m_strLastSaveError;
    m_strLastSaveError = failure;
    return isNew;
}
