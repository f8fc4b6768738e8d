// The trigger and job dialogs in the real event loop: the preview, the messages that keep
// a dialog open, and what OK leaves in the scheduler.

#include <algorithm>

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/button.h>
#include <wx/checklst.h>
#include <wx/choice.h>
#include <wx/datectrl.h>
#include <wx/radiobut.h>
#include <wx/textctrl.h>

#include "core/scheduler.h"
#include "gui/dialogs/job_detail_dlg.h"
#include "gui/dialogs/trigger_dlg.h"
#include "gui_test_support.h"
#include "core/session/session_context.h"

namespace {

// The session the dialogs and previews work in (the system clock).
SessionContext& TestContext()
{
    static SessionContext context;
    return context;
}


using guitest::Find;
using guitest::Fire;

void Tick(wxWindow* dlg, const char* list, unsigned item, bool on)
{
    auto* box = Find<wxCheckListBox>(dlg, list);
    box->Check(item, on);
    Fire(box, wxEVT_CHECKLISTBOX, static_cast<int>(item));
}

void PickKind(wxWindow* dlg, const char* radio)
{
    auto* button = Find<wxRadioButton>(dlg, radio);
    button->SetValue(true);
    Fire(button, wxEVT_RADIOBUTTON, 1);
}

void Choose(wxWindow* dlg, const char* name, int selection)
{
    auto* choice = Find<wxChoice>(dlg, name);
    choice->SetSelection(selection);
    Fire(choice, wxEVT_CHOICE, selection);
}

void PressOk(wxWindow* dlg) { Fire(Find<wxButton>(dlg, "ID_BUTTON_OK")); }

TEST(TriggerDialog, PreviewFollowsThePickersAndBadFormsStayOpen)
{
    TriggerParam param;
    param.tid = 1;
    TriggerDlg dlg(nullptr, TestContext(), param);
    dlg.CallAfter([&dlg] {
        PickKind(&dlg, "ID_RADIOBUTTON_EVERYDAY");
        for (unsigned h = 0; h < 24; ++h)
            Tick(&dlg, "ID_CHECKLISTBOX_HOUR", h, h == 8);
        const wxArrayString lines = wxSplit(dlg.PreviewText(), '\n');
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(), [](const wxString& l) { return l.Contains(" 08:"); }), 5);
        // The sentence under the preview follows as well.
        EXPECT_TRUE(dlg.DescriptionText().StartsWith("Every day at 08:")) << dlg.DescriptionText();
        // No hour ticked: OK refuses and the dialog stays.
        Tick(&dlg, "ID_CHECKLISTBOX_HOUR", 8, false);
        EXPECT_EQ(dlg.DescriptionText(), "");
        wxTEST_DIALOG(PressOk(&dlg), guitest::ExpectMessage("Cron expressions format error", wxOK, true));
        EXPECT_TRUE(dlg.IsModal());

        PickKind(&dlg, "ID_RADIOBUTTON_EVERYWEEK");
        Tick(&dlg, "ID_CHECKLISTBOX_HOUR", 8, true);
        for (unsigned d = 1; d <= 5; ++d)
            Tick(&dlg, "ID_CHECKLISTBOX_WEEK", d, true);
        EXPECT_TRUE(dlg.DescriptionText().StartsWith("Every weekday at 08:")) << dlg.DescriptionText();
        guitest::SaveScreenshot(&dlg, "trigger-every-week");

        // A Special Time already past is saved only when the user says so.
        PickKind(&dlg, "ID_RADIOBUTTON_SEPC_TIME");
        auto* date = Find<wxDatePickerCtrl>(&dlg, "ID_DATEPICKERCTRL_SPEC");
        date->SetValue(wxDateTime(1, wxDateTime::Jan, 2001));
        wxTEST_DIALOG(PressOk(&dlg),
                      guitest::ExpectMessage("This moment has already passed: the trigger would never fire.\n\n"
                                             "Save this trigger anyway?", wxNO).Caption("Cadrelle"));
        EXPECT_TRUE(dlg.IsModal());

        PickKind(&dlg, "ID_RADIOBUTTON_COUNTDOWN");
        Choose(&dlg, "ID_CHOICE8", 5);
        EXPECT_TRUE(dlg.DescriptionText().EndsWith("(a count-down of 5 minutes)")) << dlg.DescriptionText();
        guitest::SaveScreenshot(&dlg, "trigger-count-down");
        PressOk(&dlg);
    });
    ASSERT_EQ(dlg.ShowModal(), wxID_OK);
    EXPECT_EQ(dlg.Result().type, NTriggerTypeCountDown);
    EXPECT_TRUE(dlg.Result().condition.EndsWith(" 0 0 5 0")) << dlg.Result().condition;
}

// Runs `step` once the dialog holding the control `name` is up, then presses its OK.
void WithDialog(const char* name, const std::function<void(wxWindow*)>& step)
{
    wxTheApp->CallAfter([name, step] {
        ASSERT_TRUE(guitest::WaitFor([name] { return guitest::FindByName(name) != nullptr; }));
        wxWindow* dlg = wxGetTopLevelParent(guitest::FindByName(name));
        step(dlg);
        PressOk(dlg);
    });
}

TEST(JobDialog, NewJobWithTriggerIsSavedAndCopied)
{
    Scheduler scheduler(TestContext(), guitest::FreshAppDir());
    WithDialog("ID_CHOICE_JOB_TYPE", [](wxWindow* dlg) {
        Find<wxTextCtrl>(dlg, "ID_TEXTCTRL_DESCRIPTION")->ChangeValue("Wake the NAS");
        EXPECT_FALSE(Find<wxButton>(dlg, "ID_BUTTON_RUN_NOW")->IsEnabled());
        const std::pair<int, const char*> looks[] = {
            {NJobTypeAutoScreenshot, "job-auto-screenshot"}, {NJobTypeSendKey, "job-send-key"},
            {NJobTypeMouseClick, "job-mouse-click"}, {NJobTypeWakeOnLan, ""}};
        for (const auto& look : looks) {
            Choose(dlg, "ID_CHOICE_JOB_TYPE", look.first);
            if (*look.second)
                guitest::SaveScreenshot(dlg, look.second);
        }
        // A port out of range is refused, never clamped; colons are a MAC address's usual notation.
        Find<wxTextCtrl>(dlg, "ID_PARAM_12_0")->ChangeValue("01:23:45:67:89:ab");
        Find<wxTextCtrl>(dlg, "ID_PARAM_12_1")->ChangeValue("99999");
        wxTEST_DIALOG(PressOk(dlg), guitest::ExpectMessage("Port: \"99999\" is not a whole number from 1 to 65535."));
        Find<wxTextCtrl>(dlg, "ID_PARAM_12_1")->ChangeValue("7788");
        Find<wxTextCtrl>(dlg, "ID_TEXTCTRL_ASSOCIATED")->ChangeValue("7");
        wxTEST_DIALOG(PressOk(dlg), guitest::ExpectMessage("Associated JID: there is no job 7.", wxOK, true));
        EXPECT_TRUE(dynamic_cast<wxDialog*>(dlg)->IsModal());
        Find<wxTextCtrl>(dlg, "ID_TEXTCTRL_ASSOCIATED")->ChangeValue("");
        // Add opens the trigger dialog; its default kind is Every Day.
        WithDialog("ID_BUTTON_TEST", [](wxWindow*) {});
        Fire(Find<wxButton>(dlg, "ID_BUTTON_ADD_TRIGGER"));
        guitest::SaveScreenshot(dlg, "job-wake-on-lan");
    });
    std::int32_t jid = -1;
    ASSERT_TRUE(ShowJobDetailDlg(nullptr, scheduler, JobDlgMode::NewJob, 0, &jid, {}));
    std::shared_ptr<Job> job = scheduler.GetJobById(jid);
    ASSERT_TRUE(job);
    EXPECT_EQ(job->GetType(), NJobTypeWakeOnLan);
    EXPECT_EQ(job->GetDescription(), "Wake the NAS");
    EXPECT_EQ(job->GetParamText(), "01:23:45:67:89:ab $ 7788");
    ASSERT_EQ(job->GetTriggerIds().size(), 1u);
    const std::int64_t tid = job->GetTriggerIds()[0];
    ASSERT_TRUE(scheduler.GetTriggerById(tid));
    EXPECT_EQ(scheduler.GetTriggerById(tid)->GetType(), NTriggerTypeEveryDay);
    EXPECT_EQ(scheduler.GetTriggerOwner(tid), job);
    EXPECT_TRUE(scheduler.Changes().IsDataChanged());

    WithDialog("ID_CHOICE_JOB_TYPE", [](wxWindow*) {});
    std::int32_t copyJid = -1;
    ASSERT_TRUE(ShowJobDetailDlg(nullptr, scheduler, JobDlgMode::CopyJob, jid, &copyJid, {}));
    std::shared_ptr<Job> copy = scheduler.GetJobById(copyJid);
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->GetDescription(), "Wake the NAS (Copy)");
    ASSERT_EQ(copy->GetTriggerIds().size(), 1u);
    EXPECT_NE(copy->GetTriggerIds()[0], tid);
    EXPECT_EQ(scheduler.GetTriggerOwner(copy->GetTriggerIds()[0]), copy);

    // Another kind is another class: replaced under the same TID and owner.
    WithDialog("ID_BUTTON_TEST", [](wxWindow* dlg) { PickKind(dlg, "ID_RADIOBUTTON_INTERVAL"); });
    ASSERT_TRUE(ShowTriggerDlgForTrigger(nullptr, scheduler, tid));
    ASSERT_TRUE(scheduler.GetTriggerById(tid));
    EXPECT_EQ(scheduler.GetTriggerById(tid)->GetType(), NTriggerTypeInterval);
    EXPECT_EQ(scheduler.GetTriggerById(tid)->GetCondition(), "0 0/5 * * * ?");
    EXPECT_EQ(scheduler.GetTriggerOwner(tid), job);
    EXPECT_EQ(scheduler.Triggers().size(), 2u);

    // A job edited into another kind keeps its JID and its trigger.
    WithDialog("ID_CHOICE_JOB_TYPE", [](wxWindow* dlg) { Choose(dlg, "ID_CHOICE_JOB_TYPE", NJobTypeLockWorkstation); });
    ASSERT_TRUE(ShowJobDetailDlg(nullptr, scheduler, JobDlgMode::EditJob, jid, &copyJid, {}));
    EXPECT_EQ(copyJid, jid);
    ASSERT_TRUE(scheduler.GetJobById(jid));
    EXPECT_EQ(scheduler.GetJobById(jid)->GetType(), NJobTypeLockWorkstation);
    EXPECT_EQ(scheduler.GetTriggerOwner(tid), scheduler.GetJobById(jid));
    EXPECT_EQ(scheduler.Jobs().size(), 2u);
}

}  // namespace
