#include "gui/dialogs/job_param_page.h"
#include "core/text_number.h"

#include <wx/checkbox.h>
#include <wx/choice.h>
#include <wx/combobox.h>
#include <wx/filepicker.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "desktop/jobs/key_names.h"

namespace {

wxWindow* MakeControl(wxWindow* parent, const JobField& field)
{
    switch (field.kind) {
    case JobFieldKind::LongText:
        return new wxTextCtrl(parent, wxID_ANY, wxString(), wxDefaultPosition, wxSize(320, 60), wxTE_MULTILINE);
    case JobFieldKind::FilePath:
        return new wxFilePickerCtrl(parent, wxID_ANY, wxString(), _("Choose a file"), field.fileFilter,
                                    wxDefaultPosition, wxSize(320, -1), wxFLP_USE_TEXTCTRL | wxFLP_OPEN);
    case JobFieldKind::FolderPath:
        return new wxDirPickerCtrl(parent, wxID_ANY, wxString(), _("Choose a folder"), wxDefaultPosition,
                                   wxSize(320, -1), wxDIRP_USE_TEXTCTRL);
    case JobFieldKind::Number: {
        // A text field, not a spin button: the spin button clamps what was
        // typed without a word; the form refuses a value out of range instead.
        auto* text = new wxTextCtrl(parent, wxID_ANY, wxString(), wxDefaultPosition, wxSize(140, -1));
        text->SetHint(wxString::Format(L"%ld \u2013 %ld", field.minValue, field.maxValue));
        return text;
    }
    case JobFieldKind::YesNo: return new wxCheckBox(parent, wxID_ANY, wxString());
    case JobFieldKind::KeyName: {
        wxArrayString names;
        names.Add(wxString());
        for (const KeyNameEntry& entry : KeyNameTable())
            if (entry.offered)
                names.Add(entry.name);
        // Editable: a name typed by hand is checked on OK.
        return new wxComboBox(parent, wxID_ANY, wxString(), wxDefaultPosition, wxSize(200, -1), names);
    }
    case JobFieldKind::Choice:
        return new wxChoice(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, field.choices);
    default: return new wxTextCtrl(parent, wxID_ANY, wxString(), wxDefaultPosition, wxSize(320, -1));
    }
}

}  // namespace

JobParamPage::JobParamPage(wxWindow* parent, std::uint32_t kind)
    : wxPanel(parent), m_fields(JobFieldsFor(kind))
{
    auto* grid = new wxFlexGridSizer(2, 6, 8);
    grid->AddGrowableCol(1);
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        grid->Add(new wxStaticText(this, wxID_ANY, m_fields[i].label), 0, wxALIGN_CENTER_VERTICAL);
        wxWindow* control = MakeControl(this, m_fields[i]);
        control->SetName(wxString::Format("ID_PARAM_%u_%zu", kind, i));
        m_controls.push_back(control);
        grid->Add(control, 0, wxEXPAND);
    }
    auto* top = new wxBoxSizer(wxVERTICAL);
    if (m_fields.empty())
        top->Add(new wxStaticText(this, wxID_ANY, _("This kind of job has no parameters.")), 0, wxALL, 8);
    top->Add(grid, 0, wxEXPAND | wxALL, 8);
    SetSizer(top);
    SetValues(DefaultJobParams(kind));
}

void JobParamPage::SetValues(const ParamList& params)
{
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const JobField& field = m_fields[i];
        const wxString value = i < params.size() ? params[i] : (field.required ? field.defaultValue : wxString());
        wxWindow* control = m_controls[i];
        switch (field.kind) {
        case JobFieldKind::FilePath: static_cast<wxFilePickerCtrl*>(control)->SetPath(value); break;
        case JobFieldKind::FolderPath: static_cast<wxDirPickerCtrl*>(control)->SetPath(value); break;
        case JobFieldKind::YesNo: static_cast<wxCheckBox*>(control)->SetValue(Trimmed(value) == "1"); break;
        case JobFieldKind::KeyName: static_cast<wxComboBox*>(control)->SetValue(value); break;
        case JobFieldKind::Choice: {
            auto* choice = static_cast<wxChoice*>(control);
            long index = 0;
            int selection = choice->FindString(Trimmed(value));
            if (selection == wxNOT_FOUND && Trimmed(value).ToLong(&index) && index >= 0 &&
                index < static_cast<long>(choice->GetCount()))
                selection = static_cast<int>(index);
            choice->SetSelection(selection == wxNOT_FOUND ? 0 : selection);
            break;
        }
        default: static_cast<wxTextCtrl*>(control)->ChangeValue(value); break;
        }
    }
}

ParamList JobParamPage::GetValues() const
{
    ParamList params;
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        const JobField& field = m_fields[i];
        wxWindow* control = m_controls[i];
        wxString value;
        switch (field.kind) {
        case JobFieldKind::FilePath: value = static_cast<wxFilePickerCtrl*>(control)->GetPath(); break;
        case JobFieldKind::FolderPath: value = static_cast<wxDirPickerCtrl*>(control)->GetPath(); break;
        case JobFieldKind::YesNo: value = static_cast<wxCheckBox*>(control)->GetValue() ? "1" : "0"; break;
        case JobFieldKind::KeyName: value = Trimmed(static_cast<wxComboBox*>(control)->GetValue()); break;
        case JobFieldKind::Choice: {
            const int selection = static_cast<wxChoice*>(control)->GetSelection();
            value = field.storeIndex ? wxString::Format("%d", selection)
                                     : static_cast<wxChoice*>(control)->GetStringSelection();
            break;
        }
        default: value = static_cast<wxTextCtrl*>(control)->GetValue(); break;
        }
        params.push_back(value);
    }
    while (!params.empty() && Trimmed(params.back()).empty())
        params.pop_back();
    return params;
}
