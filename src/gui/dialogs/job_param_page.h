#pragma once
// One page of the job dialog: the labelled parameter controls of one job
// kind, built from its field list (gui/logic/job_form.h).

#include <cstdint>
#include <vector>

#include <wx/panel.h>

#include "gui/logic/job_form.h"

class JobParamPage : public wxPanel {
public:
    JobParamPage(wxWindow* parent, std::uint32_t kind);

    // Shows stored parameters; missing positions show the field's default.
    void SetValues(const ParamList& params);
    // The parameters as they would be stored (trailing empty ones dropped).
    ParamList GetValues() const;

private:
    std::vector<JobField> m_fields;
    std::vector<wxWindow*> m_controls;
};
