#include "desktop/single_instance.h"

#include <wx/defs.h>  // before snglinst.h, which tests a setting from it
#include <wx/snglinst.h>
#include <wx/utils.h>

SingleInstanceGuard::SingleInstanceGuard() : m_checker(std::make_unique<wxSingleInstanceChecker>())
{
    m_bCreated = m_checker->Create("Cadrelle-" + wxGetUserId());
}

SingleInstanceGuard::~SingleInstanceGuard() = default;

bool SingleInstanceGuard::IsAnotherRunning() const
{
    return m_bCreated && m_checker->IsAnotherRunning();
}
