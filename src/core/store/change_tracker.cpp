#include "core/store/change_tracker.h"

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
    const bool isNew = error != m_strLastSaveError;
    m_strLastSaveError = error;
    return isNew;
}
