#include "gui/dialogs/crontab_import_dlg.h"

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dataview.h>
#include <wx/dialog.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

CrontabImportChoice ShowCrontabImportDlg(wxWindow* parent, const wxString& source,
                                         const std::vector<CrontabLine>& lines, bool offerCommentOut)
{
    wxDialog dlg(parent, wxID_ANY, _("Import crontab"), wxDefaultPosition, wxSize(900, 520),
                 wxDEFAULT_DIALOG_STYLE | wxRESIZE_BORDER);
    dlg.SetName("ID_DIALOG_IMPORT_CRONTAB");
    int jobs = 0;
    for (const CrontabLine& line : lines)
        jobs += line.fate == CrontabLine::Fate::Job;

    auto* list = new wxDataViewListCtrl(&dlg, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                        wxDV_ROW_LINES | wxDV_VERT_RULES);
    list->SetName("ID_LISTCTRL_CRONTAB_LINES");
    list->AppendTextColumn(_("Line"), wxDATAVIEW_CELL_INERT, 50);
    list->AppendTextColumn(_("As written"), wxDATAVIEW_CELL_INERT, 300, wxALIGN_LEFT, wxDATAVIEW_COL_RESIZABLE);
    list->AppendTextColumn(_("Becomes"), wxDATAVIEW_CELL_INERT, 500, wxALIGN_LEFT, wxDATAVIEW_COL_RESIZABLE);
    for (const CrontabLine& line : lines) {
        wxString fate = DescribeCrontabLine(line);
        // The line number (or the timer's name) has its own column.
        fate = fate.AfterFirst(':').Trim(false);
        wxVector<wxVariant> row;
        row.push_back(wxVariant(line.source.empty() ? wxString::Format("%d", line.number) : line.source));
        row.push_back(wxVariant(line.text));
        row.push_back(wxVariant(fate));
        list->AppendItem(row);
    }

    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(new wxStaticText(&dlg, wxID_ANY,
                                wxString::Format(_("%s: %zu lines, %d become jobs. Nothing changes until you "
                                                   "choose Import."),
                                                 source, lines.size(), jobs)),
               0, wxALL, 8);
    sizer->Add(list, 1, wxEXPAND | wxLEFT | wxRIGHT, 8);
    wxCheckBox* commentOut = nullptr;
    if (offerCommentOut) {
        commentOut = new wxCheckBox(&dlg, wxID_ANY,
                                    _("Afterwards, comment out the imported lines in my crontab "
                                      "(a copy of it is kept in the application folder)"));
        commentOut->SetName("ID_CHECK_COMMENT_OUT");
        sizer->Add(commentOut, 0, wxALL, 8);
    }
    auto* buttons = new wxStdDialogButtonSizer;
    auto* ok = new wxButton(&dlg, wxID_OK, wxString::Format(wxPLURAL("Import %d job", "Import %d jobs", jobs), jobs));
    ok->Enable(jobs > 0);
    buttons->AddButton(ok);
    buttons->AddButton(new wxButton(&dlg, wxID_CANCEL));
    buttons->Realize();
    sizer->Add(buttons, 0, wxEXPAND | wxALL, 8);
    dlg.SetSizer(sizer);
    dlg.CentreOnParent();

    CrontabImportChoice choice;
    choice.confirmed = dlg.ShowModal() == wxID_OK;
    choice.commentOut = choice.confirmed && commentOut && commentOut->GetValue();
    return choice;
}
