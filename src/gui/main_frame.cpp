#include "gui/main_frame.h"

#include <algorithm>
#include <climits>
#include <cstdio>

#include <unistd.h>

#include <wx/aboutdlg.h>
#include <wx/artprov.h>
#include <wx/aui/auibar.h>
#include <wx/display.h>
#include <wx/log.h>
#include <wx/menu.h>
#include <wx/modalhook.h>
#include <wx/msgdlg.h>
#include <wx/panel.h>
#include <wx/srchctrl.h>
#include <wx/sizer.h>
#include <wx/statusbr.h>
#include <wx/stopwatch.h>
#include <wx/time.h>
#include <wx/treelist.h>

#include "core/core_log.h"
#include "core/log/weekday_log.h"
#include "core/prefs/preference.h"
#include "core/scheduler.h"
#include "core/user_messages.h"
#include "desktop/session/app_session.h"
#include "desktop/session/session_end.h"
#include "gui/dialogs/auth_dlg.h"
#include "gui/dialogs/job_detail_dlg.h"
#include "gui/dialogs/language_dlg.h"
#include "gui/dialogs/setting_dlg.h"
#include "gui/dialogs/trigger_dlg.h"
#include "gui/frame/agenda_pane.h"
#include "gui/frame/frame_icons.h"
#include "gui/frame/frame_shared.h"
#include "gui/frame/row_tooltips.h"
#include "gui/shell/desktop_shell.h"

namespace {

// Counts the modal dialogs and message boxes open: a signal that arrives
// while one runs its own loop cannot destroy the window under it.
class ModalCounter final : public wxModalDialogHook {
public:
    int Open() const { return m_nOpen; }

protected:
    int Enter(wxDialog*) override
    {
        ++m_nOpen;
        return wxID_NONE;
    }
    void Exit(wxDialog*) override { --m_nOpen; }

private:
    int m_nOpen = 0;
};

ModalCounter g_modals;

// A job or trigger list over `model`, its columns as wide as last saved.
wxDataViewCtrl* NewList(wxWindow* parent, const char* name, wxDataViewModel* model,
                        const std::vector<ListColumn>& columns, const Preference& prefs)
{
    auto* list = new wxDataViewCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                    wxDV_SINGLE | wxDV_ROW_LINES | wxDV_HORIZ_RULES | wxDV_VERT_RULES);
    list->SetName(name);
    list->AssociateModel(model);
    for (std::size_t i = 0; i < columns.size(); ++i)
        list->AppendTextColumn(wxGetTranslation(columns[i].header), static_cast<unsigned>(i), wxDATAVIEW_CELL_INERT,
                               static_cast<int>(frame::PrefNumber(prefs, columns[i].widthKey)),
                               wxALIGN_LEFT, wxDATAVIEW_COL_RESIZABLE);
    return list;
}

void SaveColumnWidths(const wxDataViewCtrl& list, const std::vector<ListColumn>& columns, Preference& prefs)
{
    for (unsigned i = 0; i < list.GetColumnCount() && i < columns.size(); ++i)
        prefs.SetValue(columns[i].widthKey, wxString::Format("%d", list.GetColumn(i)->GetWidth()));
}

class CategoryData final : public wxClientData {
public:
    explicit CategoryData(const wxString& key) : m_key(key) {}
    const wxString& Key() const { return m_key; }

private:
    wxString m_key;
};

}  // namespace

using namespace frame;

CadrelleFrame::CadrelleFrame(const wxString& appDir)
    : wxFrame(nullptr, wxID_ANY, kCaption), m_pSession(std::make_unique<AppSession>(appDir)),
      m_timerSession(this, ID_TIMER_SESSION)
{
    m_pSession->Start(*this, &m_userMessages);
    // What the data file held but did not load as written, in a message box.
    const wxString loadNote = m_pSession->LoadReport().Describe();
    if (!loadNote.empty())
        m_userMessages.ShowMessage(loadNote, kCaption);
    m_strStartTime = wxDateTime::Now().Format("%Y-%m-%d %H:%M:%S");
    m_nSortCol = static_cast<int>(PrefNumber(Prefs(), "colSortIndex"));
    m_nSortDir = PrefNumber(Prefs(), "colSortDir");

    SetIcons(AppIcons(appDir));
    {
        // The stored place and size, fitted to the display it falls on (the
        // first one when none): never larger than the screen or off it.
        const Preference::Geometry stored{PrefNumber(Prefs(), "mainFrmX"), PrefNumber(Prefs(), "mainFrmY"),
                                          PrefNumber(Prefs(), "mainFrmW"), PrefNumber(Prefs(), "mainFrmH")};
        auto toInt = [](long v) { return static_cast<int>(std::max<long>(INT_MIN / 2, std::min<long>(v, INT_MAX / 2))); };
        const int display = wxDisplay::GetFromPoint(wxPoint(toInt(stored.x), toInt(stored.y)));
        const wxRect area = wxDisplay(display == wxNOT_FOUND ? 0u : static_cast<unsigned>(display)).GetClientArea();
        wxString note;
        const Preference::Geometry fitted =
            Preference::FitToScreen(stored, {area.x, area.y, area.width, area.height}, note);
        if (!note.empty())
            wxLogMessage("%d ### Window geometry from the preferences: %s", LogMs(), note);
        SetSize(static_cast<int>(fitted.x), static_cast<int>(fitted.y), static_cast<int>(fitted.width),
                static_cast<int>(fitted.height));
    }
    m_mgr.SetManagedWindow(this);
    BuildMenus();
    BuildToolBar();

    auto* categoryPanel = new wxPanel(this, wxID_ANY);
    categoryPanel->SetName("ID_PANEL_CATEGORY");
    BuildCategoryTree(categoryPanel);
    auto* jobPanel = new wxPanel(this, wxID_ANY);
    jobPanel->SetName("ID_PANEL2");
    BuildJobList(jobPanel);
    auto* triggerPanel = new wxPanel(this, wxID_ANY);
    triggerPanel->SetName("ID_PANEL_TRIGGER");
    BuildTriggerList(triggerPanel);

    m_mgr.AddPane(m_pToolBar, wxAuiPaneInfo().Name("PaneName0").ToolbarPane().Top().Gripper(false).Resizable());
    m_mgr.AddPane(categoryPanel, wxAuiPaneInfo().Name("Type").Caption(_("Job Type")).Left().BestSize(220, -1)
                                     .CloseButton(false).MinSize(120, 100));
    m_mgr.AddPane(jobPanel, wxAuiPaneInfo().Name("JobList").Caption(_("Job List")).Center().CloseButton(false));
    m_mgr.AddPane(triggerPanel, wxAuiPaneInfo().Name("TriggerList").Caption(_("Trigger List")).Bottom()
                                    .BestSize(-1, 200).MinSize(-1, 100).CloseButton(false));
    BuildAgendaPane();
    m_mgr.Update();

    wxStatusBar* statusBar = CreateStatusBar(3);
    statusBar->SetName("ID_STATUSBAR1");
    const int widths[] = {250, 110, -1};
    statusBar->SetStatusWidths(3, widths);

    m_pShell = std::make_unique<DesktopShell>(*this);
    RefreshViews();

    Bind(wxEVT_CLOSE_WINDOW, &CadrelleFrame::OnClose, this);
    Bind(wxEVT_ICONIZE, &CadrelleFrame::OnIconize, this);
    Bind(wxEVT_CHAR_HOOK, &CadrelleFrame::OnCharHook, this);
    Bind(wxEVT_TIMER, &CadrelleFrame::OnSessionTick, this, ID_TIMER_SESSION);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiNewJobClick, this, ID_TBI_NEWJOB);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiNewJobClick, this, ID_MNU_NEWJOB);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiEditJobClick, this, ID_TBI_EDITJOB);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiEnableJobClick, this, ID_TBI_ENABLEJOB);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiDelJobClick, this, ID_TBI_DELJOB);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiTestExecClick, this, ID_TBI_TESTEXEC);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiResetTriggerClick, this, ID_TBI_RESETTRIGGER);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiBlockClick, this, ID_TBI_BLOCK);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiPauseClick, this, ID_TBI_PAUSE);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiSettingClick, this, ID_TBI_SETTING);
    Bind(wxEVT_MENU, &CadrelleFrame::OnAbout, this, ID_TBI_ABOUT);
    Bind(wxEVT_MENU, &CadrelleFrame::OnPpmCopyJobClick, this, ID_PPM_COPYJOB);
    Bind(wxEVT_MENU, &CadrelleFrame::OnPpmEnableAllClick, this, ID_PPM_ENABLEALL);
    Bind(wxEVT_MENU, &CadrelleFrame::OnPpmDisableAllClick, this, ID_PPM_DISABLEALL);
    Bind(wxEVT_MENU, &CadrelleFrame::OnChooseLanguage, this, ID_MNU_LANGUAGE);
    Bind(wxEVT_MENU, &CadrelleFrame::OnQuit, this, wxID_EXIT);
    Bind(wxEVT_MENU, &CadrelleFrame::OnAbout, this, wxID_ABOUT);
    Bind(wxEVT_MENU, &CadrelleFrame::Onm_pTbiSettingClick, this, wxID_PREFERENCES);
    Bind(wxEVT_MENU, [this](wxCommandEvent&) { m_pFilter->SetFocus(); }, ID_FIND_JOB);
    Bind(wxEVT_MENU, [this](wxCommandEvent& event) { ShowAgenda(event.IsChecked()); }, ID_MNU_AGENDA);
    Bind(wxEVT_MENU, &CadrelleFrame::OnImportCrontab, this, ID_MNU_IMPORT_CRONTAB);
    Bind(wxEVT_MENU, &CadrelleFrame::OnImportJobs, this, ID_MNU_IMPORT_JOBS);
    Bind(wxEVT_MENU, &CadrelleFrame::OnExportJobs, this, ID_MNU_EXPORT_JOBS);
    // Closing the pane by its button unticks the menu item.
    m_mgr.Bind(wxEVT_AUI_PANE_CLOSE, [this](wxAuiManagerEvent& event) {
        if (event.GetPane()->name == "Agenda" && GetMenuBar())
            GetMenuBar()->Check(ID_MNU_AGENDA, false);
        event.Skip();
    });

    // Keys that work wherever the focus is; Enter and Delete belong to the
    // job list (OnCharHook).
    wxAcceleratorEntry keys[] = {wxAcceleratorEntry(wxACCEL_NORMAL, WXK_F5, ID_TBI_TESTEXEC),
                                 wxAcceleratorEntry(wxACCEL_CTRL, 'F', ID_FIND_JOB),
                                 wxAcceleratorEntry(wxACCEL_CTRL, 'N', ID_TBI_NEWJOB)};
    SetAcceleratorTable(wxAcceleratorTable(3, keys));

    // A signal or the end of the desktop session closes the window for good
    // on the main thread; a lost display still saves before the end.
    g_modals.Register();
    WatchStopSignals([this](int signal) {
        wxLogMessage("%d *** CadrelleFrame::OnStopSignal - %d", LogMs(), signal);
        if (g_modals.Open() > 0) {
            // A dialog's loop is running: saved and ended without unwinding
            // the windows, as when the display is lost.
            m_pSession->EmergencyStop();
            std::fflush(nullptr);
            ::_exit(0);
        }
        CloseForGood();
    });
    WatchDisplayLoss([this] { m_pSession->EmergencyStop(); });

    m_timerSession.Start(AppSession::kTickMs);
}

CadrelleFrame::~CadrelleFrame()
{
    Hide();
    WatchStopSignals(nullptr);
    WatchDisplayLoss(nullptr);
    g_modals.Unregister();
    m_timerSession.Stop();
    m_pPopupMenu.reset();
    if (m_pShell)
        m_pShell->RemoveTrayIcon();
    // Saving, then the hot keys released, then the end banner.
    m_pSession->Stop([this] { m_pShell.reset(); });
    m_mgr.UnInit();
}

// --- building ---------------------------------------------------------------

void CadrelleFrame::BuildMenus()
{
    auto* file = new wxMenu;
    file->Append(ID_MNU_NEWJOB, _("&New Job...\tAlt-N"));
    file->AppendSeparator();
    file->Append(ID_MNU_IMPORT_CRONTAB, _("Import &crontab..."), _("Make jobs of the lines of a crontab"));
    file->Append(ID_MNU_IMPORT_JOBS, _("&Import jobs..."), _("Add the jobs of an exported file under new ids"));
    file->Append(ID_MNU_EXPORT_JOBS, _("&Export jobs..."), _("Write the jobs the list shows to a file"));
    file->AppendSeparator();
    file->Append(wxID_EXIT, _("E&xit\tAlt-F4"), _("Exit the application"));
    auto* setting = new wxMenu;
    setting->Append(wxID_PREFERENCES, _("&Setting...\tAlt-S"), _("Setting the application"));
    setting->Append(ID_MNU_LANGUAGE, _("&Choose Language...\tAlt-C"), _("Choose the application language"));
    auto* help = new wxMenu;
    help->Append(wxID_ABOUT, _("&About...\tF1"), _("Show info about this application"));
    auto* bar = new wxMenuBar;
    auto* view = new wxMenu;
    view->AppendCheckItem(ID_MNU_AGENDA, _("&Agenda\tCtrl-G"), _("Every run of the next day, week or month"));
    bar->Append(file, _("&File"));
    bar->Append(view, _("&View"));
    bar->Append(setting, _("&Setting"));
    bar->Append(help, _("Help"));
    SetMenuBar(bar);

    m_pPopupMenu = std::make_unique<wxMenu>();
    m_pPopupMenu->Append(ID_TBI_EDITJOB, _("&Edit..."));
    m_pPopupMenu->Append(ID_TBI_ENABLEJOB, _("Enable/Di&sable"));
    m_pPopupMenu->Append(ID_TBI_TESTEXEC, _("E&xecute"));
    m_pPopupMenu->Append(ID_PPM_COPYJOB, _("&Copy..."));
    m_pPopupMenu->Append(ID_TBI_DELJOB, _("&Delete..."));
    m_pPopupMenu->AppendSeparator();
    m_pPopupMenu->Append(ID_PPM_ENABLEALL, _("Ena&ble All..."));
    m_pPopupMenu->Append(ID_PPM_DISABLEALL, _("Disable &All..."));
}

void CadrelleFrame::BuildToolBar()
{
    const wxString& dir = m_pSession->AppDir();
    m_pToolBar = new wxAuiToolBar(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                  wxAUI_TB_DEFAULT_STYLE | wxAUI_TB_TEXT | wxAUI_TB_HORZ_LAYOUT);
    m_pToolBar->SetName("ID_AUITOOLBAR1");
    m_pToolBar->SetToolTextOrientation(wxAUI_TBTOOL_TEXT_BOTTOM);
    struct Tool {
        int id;
        const char* label;
        const char* tip;
        const char* theme;
        const char* own;
        wxItemKind kind;
    };
    const Tool tools[] = {
        {ID_TBI_NEWJOB, wxTRANSLATE("New Job"), wxTRANSLATE("New Job"), "document-new", "tool-new", wxITEM_NORMAL},
        {ID_TBI_EDITJOB, wxTRANSLATE("Edit"), wxTRANSLATE("Edit Job"), "document-properties", "tool-edit",
         wxITEM_NORMAL},
        {ID_TBI_ENABLEJOB, wxTRANSLATE("Enable/Disable"), wxTRANSLATE("Enable/Disable Job"), "", "tool-enable",
         wxITEM_NORMAL},
        {ID_TBI_DELJOB, wxTRANSLATE("Delete"), wxTRANSLATE("Delete Job"), "edit-delete", "tool-delete", wxITEM_NORMAL},
        {ID_TBI_TESTEXEC, wxTRANSLATE("Execute"), wxTRANSLATE("Execute Job"), "system-run", "tool-run", wxITEM_NORMAL},
        {ID_TBI_RESETTRIGGER, wxTRANSLATE("Reset WithStart Triggers"), wxTRANSLATE("Reset WithStart Triggers"), "",
         "tool-reset", wxITEM_NORMAL},
        {ID_TBI_BLOCK, wxTRANSLATE("Silent Mode"), wxTRANSLATE("Change to Silent Mode"), "audio-volume-muted",
         "tool-silent", wxITEM_CHECK},
        {ID_TBI_PAUSE, wxTRANSLATE("Pause Mode"), wxTRANSLATE("Change to Pause Mode"), "media-playback-pause",
         "tool-pause", wxITEM_CHECK},
        {ID_TBI_SETTING, wxTRANSLATE("Setting"), wxTRANSLATE("Setting"), "preferences-system", "tool-setting",
         wxITEM_NORMAL},
        {ID_TBI_ABOUT, wxTRANSLATE("About"), wxTRANSLATE("About"), "help-about", "tool-about", wxITEM_NORMAL},
    };
    for (const Tool& tool : tools)
        m_pToolBar->AddTool(tool.id, wxGetTranslation(tool.label), ToolIcon(dir, tool.theme, tool.own),
                            wxGetTranslation(tool.tip), tool.kind);
    m_pToolBar->Realize();
}

void CadrelleFrame::BuildCategoryTree(wxWindow* parent)
{
    m_pTcCategory = new wxDataViewTreeCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                           wxDV_NO_HEADER | wxDV_SINGLE);
    m_pTcCategory->SetName("ID_TREECTRL_CATEGORY");
    auto add = [this](const wxDataViewItem& parentItem, const wxString& text, const wxString& key,
                      Category category, bool container) {
        const wxDataViewItem item = container ? m_pTcCategory->AppendContainer(parentItem, text)
                                              : m_pTcCategory->AppendItem(parentItem, text);
        m_pTcCategory->SetItemData(item, new CategoryData(key));
        m_categories.emplace_back(item, category);
        return item;
    };
    Category all;
    const wxDataViewItem root = add(wxDataViewItem(), _("All Jobs"), "ALL", all, true);
    Category group;
    group.grouping = true;
    group.kind = Category::Kind::Status;
    const wxDataViewItem byStatus = add(root, _("By Job Status"), "ByJobStatus", group, true);
    add(byStatus, _("Enable"), "ByJobStatus", Category{Category::Kind::Status, 1, false}, false);
    add(byStatus, _("Disable"), "ByJobStatus", Category{Category::Kind::Status, 0, false}, false);
    group.kind = Category::Kind::JobType;
    const wxDataViewItem byJob = add(root, _("By Job Type"), "ByJobType", group, true);
    for (std::uint32_t type = 0; type < NJobTypeCount; ++type)
        add(byJob, JobTypeName(type), "ByJobType", Category{Category::Kind::JobType, type, false}, false);
    group.kind = Category::Kind::TriggerType;
    const wxDataViewItem byTrigger = add(root, _("By Trigger Type"), "ByTriggerType", group, true);
    for (std::uint32_t type = 0; type < NTriggerTypeCount; ++type)
        add(byTrigger, wxGetTranslation(TriggerTypeName(type)), "ByTriggerType", Category{Category::Kind::TriggerType, type, false},
            false);
    m_pTcCategory->Expand(root);
    m_pTcCategory->Expand(byStatus);
    m_pTcCategory->Select(root);
    m_pTcCategory->Bind(wxEVT_DATAVIEW_SELECTION_CHANGED, &CadrelleFrame::Onm_pTcCategorySelectionChanged, this);
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(m_pTcCategory, 1, wxEXPAND);
    parent->SetSizer(sizer);
}

void CadrelleFrame::BuildJobList(wxWindow* parent)
{
    m_pFilter = new wxSearchCtrl(parent, wxID_ANY);
    m_pFilter->SetName("ID_SEARCH_JOBS");
    m_pFilter->SetDescriptiveText(_("Filter by description, parameters or JID (Ctrl+F)"));
    m_pFilter->ShowCancelButton(true);
    m_pFilter->Bind(wxEVT_TEXT, [this](wxCommandEvent&) { SetFilterText(m_pFilter->GetValue()); });
    m_pFilter->Bind(wxEVT_SEARCH_CANCEL, [this](wxCommandEvent&) { m_pFilter->Clear(); });

    m_jobModel = new JobListModel;
    m_pLcJob = NewList(parent, "ID_LISTCTRL_JOBS", m_jobModel.get(), JobColumns(), Prefs());
    m_pLcJob->Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, &CadrelleFrame::Onm_pLcJobItemActivated, this);
    m_pLcJob->Bind(wxEVT_DATAVIEW_ITEM_CONTEXT_MENU, &CadrelleFrame::Onm_pLcJobItemRClick, this);
    m_pLcJob->Bind(wxEVT_DATAVIEW_COLUMN_HEADER_CLICK, &CadrelleFrame::Onm_pLcJobColumnClick, this);
    m_pLcJob->Bind(wxEVT_DATAVIEW_SELECTION_CHANGED, &CadrelleFrame::Onm_pLcJobSelectionChanged, this);

    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(m_pFilter, 0, wxEXPAND | wxALL, 2);
    sizer->Add(m_pLcJob, 1, wxEXPAND);
    parent->SetSizer(sizer);
}

void CadrelleFrame::BuildTriggerList(wxWindow* parent)
{
    m_triggerModel = new TriggerListModel(m_pSession->GetScheduler());
    m_pLcTrigger = NewList(parent, "ID_LISTCTRL_TRIGGERS", m_triggerModel.get(), TriggerColumns(), Prefs());
    m_pLcTrigger->Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, &CadrelleFrame::Onm_pLcTriggerItemActivated, this);
    // The Condition column says it in words; the tip shows it as written.
    SetRowToolTips(m_pLcTrigger, [model = m_triggerModel.get()](unsigned row) { return model->ConditionAt(row); });
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(m_pLcTrigger, 1, wxEXPAND);
    parent->SetSizer(sizer);
}

// --- views ------------------------------------------------------------------

void CadrelleFrame::RefreshViews()
{
    m_bViewsDirty = false;
    std::size_t triggers = 0;
    {
        auto lock = m_pSession->GetScheduler().ReadLock();
        triggers = m_pSession->GetScheduler().Triggers().size();
    }
    if (triggers != m_triggerModel->GetCount())
        m_triggerModel->Reset(static_cast<unsigned>(triggers));
    // Only the visible rows are painted again.
    m_pLcTrigger->Refresh();
    ApplyOrder(BuildJobRows(m_pSession->GetScheduler()));
    UpdateStatusBar();
    if (m_pAgenda && IsAgendaShown())
        m_pAgenda->RefreshIfStale();
}

void CadrelleFrame::ApplyOrder(std::optional<std::vector<JobRow>> rows)
{
    const std::int32_t selected = SelectedJid();
    std::vector<std::size_t> order = VisibleJobOrder(rows ? *rows : m_jobModel->AllRows(), m_category, m_strFilter,
                                                     m_nSortCol, m_nSortDir);
    const bool sameCount = rows ? m_jobModel->SetRows(std::move(*rows), std::move(order))
                                : m_jobModel->SetOrder(std::move(order));
    ShowSortIndicator();  // a model reset takes the arrow away
    // Same number of rows, other contents: only the visible rows are painted again.
    if (sameCount)
        m_pLcJob->Refresh();
    if (selected >= 0)
        SelectJob(selected);
}

void CadrelleFrame::SortByColumn(int column)
{
    const wxStopWatch watch;
    NextSortState(column, m_nSortCol, m_nSortDir);
    Prefs().SetValue("colSortIndex", wxString::Format("%d", m_nSortCol));
    Prefs().SetValue("colSortDir", wxString::Format("%ld", m_nSortDir));
    ApplyOrder();
    wxLogMessage("%d ### Job list sorted by column %d (%ld) in %ld ms", LogMs(), m_nSortCol, m_nSortDir,
                 watch.Time());
}

void CadrelleFrame::ShowSortIndicator()
{
    // The arrow only: the rows are ordered by VisibleJobOrder; the control
    // never sorts a virtual model itself.
    for (unsigned i = 0; i < m_pLcJob->GetColumnCount(); ++i) {
        wxDataViewColumn* column = m_pLcJob->GetColumn(i);
        const bool sorted = m_nSortDir == kSortAscending || m_nSortDir == kSortDescending;  // else file order
        if (sorted && static_cast<int>(column->GetModelColumn()) == m_nSortCol)
            column->SetSortOrder(m_nSortDir == kSortAscending);
        else if (column->IsSortKey())
            column->UnsetAsSortKey();
    }
}

void CadrelleFrame::SelectCategory(int index)
{
    if (index < 0 || index >= static_cast<int>(m_categories.size()))
        return;
    m_nCurrTcIdx = index;
    m_category = m_categories[static_cast<std::size_t>(index)].second;
    wxLogMessage("%d ### CadrelleFrame::Onm_pTcCategorySelectionChanged - m_nCurrTcIdx: %d", LogMs(), index);
    if (m_pTcCategory->GetSelection() != m_categories[static_cast<std::size_t>(index)].first)
        m_pTcCategory->Select(m_categories[static_cast<std::size_t>(index)].first);
    ApplyOrder();
}

void CadrelleFrame::SetFilterText(const wxString& text)
{
    if (m_pFilter->GetValue() != text)
        m_pFilter->ChangeValue(text);
    m_strFilter = text;
    ApplyOrder();
}

bool CadrelleFrame::SelectJob(std::int32_t jid)
{
    const int row = m_jobModel->RowOf(jid);
    if (row < 0)
        return false;
    const wxDataViewItem item = m_jobModel->GetItem(static_cast<unsigned>(row));
    m_pLcJob->Select(item);
    m_pLcJob->EnsureVisible(item);
    return true;
}

const JobRow* CadrelleFrame::SelectedRow() const
{
    if (!m_pLcJob || !m_pLcJob->HasSelection())
        return nullptr;
    return m_jobModel->RowAt(m_jobModel->GetRow(m_pLcJob->GetSelection()));
}

std::int32_t CadrelleFrame::SelectedJid() const
{
    const JobRow* row = SelectedRow();
    return row ? row->jid : -1;
}

std::int32_t CadrelleFrame::RequireSelectedJid()
{
    const std::int32_t jid = SelectedJid();
    if (jid < 0)
        Tell(this, _("Please select a job."));
    return jid;
}

void CadrelleFrame::UpdateStatusBar()
{
    if (!GetStatusBar())
        return;
    Scheduler& scheduler = m_pSession->GetScheduler();
    SchedulerEngine& engine = m_pSession->GetEngine();
    Counters counters;
    std::vector<std::int64_t> tids;
    {
        auto lock = scheduler.ReadLock();
        counters.jobs = scheduler.Jobs().size();
        for (const auto& job : scheduler.Jobs())
            counters.enabledJobs += job->IsEnabled() ? 1 : 0;
        scheduler.CountTriggers(counters.triggers, counters.activeTriggers);
        tids.reserve(scheduler.Triggers().size());
        for (const auto& trigger : scheduler.Triggers())
            tids.push_back(trigger->GetTid());
    }
    ShareTriggers(tids, engine.ThreadCount(), counters);
    counters.lastPass = engine.CheckTriggerCount();
    const wxString state = engine.IsPaused() || m_bPendingPause ? _("Pause")
                           : engine.IsSilentMode()              ? _("Silent Mode")
                                                                : _("Running");
    const wxString counterText = CountersText(counters);
    SetStatusText(_("Start running:") + " " + m_strStartTime, 0);
    SetStatusText(state, 1);
    SetStatusText(counterText, 2);
    const wxString all = state + " " + counterText;
    if (all != m_strLastStatus) {
        m_strLastStatus = all;
        wxLogMessage("%d ### CadrelleFrame::updateStatusbar -> %s", LogMs(), all);
    }
}

void CadrelleFrame::SaveLayout()
{
    Preference& prefs = Prefs();
    if (!IsIconized() && !IsMaximized()) {
        const wxRect r = GetRect();
        prefs.SetValue("mainFrmX", wxString::Format("%d", r.x));
        prefs.SetValue("mainFrmY", wxString::Format("%d", r.y));
        prefs.SetValue("mainFrmW", wxString::Format("%d", r.width));
        prefs.SetValue("mainFrmH", wxString::Format("%d", r.height));
    }
    SaveColumnWidths(*m_pLcJob, JobColumns(), Prefs());
    SaveColumnWidths(*m_pLcTrigger, TriggerColumns(), Prefs());
}

// --- window life ------------------------------------------------------------

void CadrelleFrame::RestoreMainFrame(bool atStart)
{
    wxLogMessage("%d *** CadrelleFrame::OnHotKeyRestoreMainFrame", LogMs());
    if (m_bPromptOpen) {
        if (wxWindow* prompt = OpenPrompt())
            prompt->Raise();
        return;
    }
    const bool unlocked = IsShown() && !IsIconized();
    if (PrefIsOn(Prefs(), "usePassword") && !unlocked) {
        Hide();
        m_bPromptOpen = true;
        const bool ok = AskUnlockPassword(this, Prefs());
        m_bPromptOpen = false;
        if (!ok) {
            // A stray Escape must not end every scheduled job; only the
            // start-up prompt's "Exit" ends the program.
            if (atStart)
                CloseForGood();
            return;
        }
    }
    Show();
    Iconize(false);
    Raise();
}

wxWindow* CadrelleFrame::OpenPrompt() const
{
    if (!m_bPromptOpen)
        return nullptr;
    return wxWindow::FindWindowByName("AuthDlg", const_cast<CadrelleFrame*>(this));
}

void CadrelleFrame::TrayExit()
{
    wxLogMessage("%d *** CadrelleFrame::TrayExit", LogMs());
    if (m_bPromptOpen) {
        if (wxWindow* prompt = OpenPrompt())
            prompt->Raise();
        return;
    }
    if (PrefIsOn(Prefs(), "usePassword")) {
        m_bPromptOpen = true;
        const bool ok = AskUnlockPassword(this, Prefs());
        m_bPromptOpen = false;
        if (!ok)
            return;
    }
    if (PrefIsOn(Prefs(), "hideMainFrmClickCloseBtn"))
        CloseForGood();
    else
        Close();
}

void CadrelleFrame::CloseForGood()
{
    m_bForceClose = true;
    Close(true);
}

void CadrelleFrame::OnQuit(wxCommandEvent&)
{
    wxLogMessage("%d *** CadrelleFrame::OnQuit", LogMs());
    Close();
}

void CadrelleFrame::OnClose(wxCloseEvent& event)
{
    wxLogMessage("%d *** ->> CadrelleFrame::OnClose", LogMs());
    SaveLayout();
    if (PrefIsOn(Prefs(), "hideTrayIcon"))
        m_pShell->RemoveTrayIcon();
    if (!m_bForceClose && event.CanVeto() && PrefIsOn(Prefs(), "hideMainFrmClickCloseBtn")) {
        if (m_pShell->CanHideWindow()) {
            Hide();
        } else {
            // Without a tray the user could not get a hidden window back.
            if (!m_bToldWhyNotHidden) {
                m_bToldWhyNotHidden = true;
                wxLogMessage("%d ### No tray in this session: the window is minimised instead of hidden", LogMs());
            }
            Iconize(true);
        }
        wxLogMessage("%d *** <<- CadrelleFrame::OnClose", LogMs());
        event.Veto();
        return;
    }
    wxLogMessage("%d *** <<- CadrelleFrame::OnClose", LogMs());
    Destroy();
}

void CadrelleFrame::OnIconize(wxIconizeEvent& event)
{
    wxLogMessage("%d *** CadrelleFrame::OnIconize", LogMs());
    if (m_pShell)
        m_pShell->OnIconize(event.IsIconized());
    event.Skip();
}

// --- timers and workers -----------------------------------------------------

void CadrelleFrame::OnSessionTick(wxTimerEvent&)
{
    // The same tick as a headless run's loop: the checkers' start, the
    // delayed save, the log.
    const AppSession::TickResult tick = m_pSession->Tick();
    if (tick.checkingStarted && m_bPendingPause) {
        m_bPendingPause = false;
        m_pSession->GetEngine().TogglePause();
    }
    if (tick.checkingStarted) {
        RefreshViews();
        return;
    }
    // Firings change next times and statuses: at most one repaint a second.
    if (!tick.housekeepingRan)
        return;
    if (m_bViewsDirty) {
        RefreshViews();
    } else {
        UpdateStatusBar();
        if (m_pAgenda && IsAgendaShown())
            m_pAgenda->RefreshIfStale();
    }
}

void CadrelleFrame::WakeMainThread()
{
    // Any thread; queued to the main thread, never run on the caller's.
    CallAfter([this] {
        if (m_pSession->IsRunning())
            m_pSession->GetEngine().ProcessRequests();
    });
}

void CadrelleFrame::JobStarted(const Job&)
{
    m_bViewsDirty = true;
}

void CadrelleFrame::AdvanceNotice(const Job& job)
{
    if (m_pShell)
        m_pShell->ShowAdvanceNotice(job.GetId());
}

Preference& CadrelleFrame::Prefs()
{
    return m_pSession->Prefs();
}

Scheduler& CadrelleFrame::GetScheduler()
{
    return m_pSession->GetScheduler();
}

SchedulerEngine& CadrelleFrame::GetEngine()
{
    return m_pSession->GetEngine();
}

// --- list events ------------------------------------------------------------

void CadrelleFrame::Onm_pTcCategorySelectionChanged(wxDataViewEvent& event)
{
    for (std::size_t i = 0; i < m_categories.size(); ++i)
        if (m_categories[i].first == event.GetItem() && static_cast<int>(i) != m_nCurrTcIdx) {
            SelectCategory(static_cast<int>(i));
            return;
        }
}

void CadrelleFrame::Onm_pLcJobItemActivated(wxDataViewEvent& event)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pLcJobItemActivated", LogMs());
    wxCommandEvent edit(wxEVT_MENU, ID_TBI_EDITJOB);
    Onm_pTbiEditJobClick(edit);
    event.Skip(false);
}

void CadrelleFrame::Onm_pLcJobItemRClick(wxDataViewEvent& event)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pLcJobItemRClick", LogMs());
    if (event.GetItem().IsOk())
        m_pLcJob->Select(event.GetItem());
    PopupMenu(m_pPopupMenu.get());
}

void CadrelleFrame::Onm_pLcJobColumnClick(wxDataViewEvent& event)
{
    wxLogMessage("%d *** CadrelleFrame::Onm_pLcJobColumnClick", LogMs());
    if (event.GetDataViewColumn())
        SortByColumn(static_cast<int>(event.GetDataViewColumn()->GetModelColumn()));
}

void CadrelleFrame::Onm_pLcJobSelectionChanged(wxDataViewEvent&)
{
    // The trigger list follows: the selected job's first trigger is shown.
    const JobRow* row = SelectedRow();
    if (!row || row->firstTid < 0)
        return;
    const int triggerRow = m_triggerModel->RowOf(row->firstTid);
    if (triggerRow < 0)
        return;
    const wxDataViewItem item = m_triggerModel->GetItem(static_cast<unsigned>(triggerRow));
    m_pLcTrigger->Select(item);
    m_pLcTrigger->EnsureVisible(item);
}

void CadrelleFrame::OnCharHook(wxKeyEvent& event)
{
    wxWindow* focus = FindFocus();
    const bool inJobList = focus && (focus == m_pLcJob || focus->GetParent() == m_pLcJob);
    if (inJobList && event.GetKeyCode() == WXK_DELETE && event.GetModifiers() == wxMOD_NONE) {
        wxCommandEvent del(wxEVT_MENU, ID_TBI_DELJOB);
        Onm_pTbiDelJobClick(del);
        return;
    }
    // Alt+S is what the Setting menu's item says; GTK would give it to the
    // menu's own access key first and open the menu instead.
    if (event.GetKeyCode() == 'S' && event.GetModifiers() == wxMOD_ALT) {
        wxCommandEvent setting(wxEVT_MENU, wxID_PREFERENCES);
        Onm_pTbiSettingClick(setting);
        return;
    }
    // Escape in the filter field empties it: every job is listed again.
    const bool inFilter = focus && (focus == m_pFilter || focus->GetParent() == m_pFilter);
    if (inFilter && event.GetKeyCode() == WXK_ESCAPE && !m_pFilter->GetValue().empty()) {
        m_pFilter->Clear();
        return;
    }
    event.Skip();
}
