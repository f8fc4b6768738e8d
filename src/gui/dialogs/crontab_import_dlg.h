#pragma once
// The preview of a crontab import: every line with what it becomes or why
// not. Nothing changes until OK; the user may ask for the imported lines of
// their own crontab to be commented out afterwards.

#include <vector>

#include "core/import/crontab_import.h"

class wxWindow;

struct CrontabImportChoice {
    bool confirmed = false;
    bool commentOut = false;  // only offered for the user's own crontab
};

CrontabImportChoice ShowCrontabImportDlg(wxWindow* parent, const wxString& source,
                                         const std::vector<CrontabLine>& lines, bool offerCommentOut);
