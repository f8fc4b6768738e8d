// GTK's own tool tips of a tree view: its "query-tooltip" signal names the
// row under the pointer.

#include "gui/frame/row_tooltips.h"

#include <gtk/gtk.h>

namespace {

gboolean OnQueryTooltip(GtkWidget* widget, gint x, gint y, gboolean keyboard, GtkTooltip* tooltip, gpointer data)
{
    GtkTreeView* view = GTK_TREE_VIEW(widget);
    GtkTreeModel* model = nullptr;
    GtkTreePath* path = nullptr;
    GtkTreeIter iter;
    if (!gtk_tree_view_get_tooltip_context(view, &x, &y, keyboard, &model, &path, &iter))
        return FALSE;
    gint depth = 0;
    const gint* indices = gtk_tree_path_get_indices_with_depth(path, &depth);
    wxString text;
    if (indices && depth == 1 && indices[0] >= 0)
        text = (*static_cast<RowToolTipText*>(data))(static_cast<unsigned>(indices[0]));
    if (!text.empty()) {
        gtk_tooltip_set_text(tooltip, text.utf8_str());
        gtk_tree_view_set_tooltip_row(view, tooltip, path);
    }
    gtk_tree_path_free(path);
    return text.empty() ? FALSE : TRUE;
}

void FreeText(gpointer data, GClosure*)
{
    delete static_cast<RowToolTipText*>(data);
}

}  // namespace

void SetRowToolTips(wxDataViewCtrl* list, RowToolTipText text)
{
    GtkWidget* view = list->GtkGetTreeView();
    gtk_widget_set_has_tooltip(view, TRUE);
    g_signal_connect_data(view, "query-tooltip", G_CALLBACK(OnQueryTooltip), new RowToolTipText(std::move(text)),
                          FreeText, GConnectFlags(0));
}
