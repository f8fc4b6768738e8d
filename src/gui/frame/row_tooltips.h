#pragma once
// Tool tips per row of a list view, which wxDataViewCtrl does not offer: the
// text is asked for when the tip is about to show, for the row under the
// pointer (an empty text shows none).

#include <functional>

#include <wx/dataview.h>
#include <wx/string.h>

using RowToolTipText = std::function<wxString(unsigned row)>;

void SetRowToolTips(wxDataViewCtrl* list, RowToolTipText text);
