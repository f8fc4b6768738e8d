#pragma once
// A manual clock, settings, idle time and captured user messages for
// driving triggers through check-and-advance at exact milliseconds.

#include <map>
#include <vector>

#include <gtest/gtest.h>

#include "core/clock.h"
#include "core/idle_time.h"
#include "core/settings_lookup.h"
#include "core/triggers/trigger.h"
#include "core/user_messages.h"
#include "test_support.h"
#include "trigger_builders.h"

class MapSettings : public SettingsLookup {
public:
    std::map<wxString, wxString> values;
    wxString GetSetting(const wxString& name) const override
    {
        auto it = values.find(name);
        return it == values.end() ? wxString() : it->second;
    }
};

class ScriptedIdle : public IdleTimeSource {
public:
    long seconds = 0;
    int queries = 0;
    long IdleSeconds() override
    {
        ++queries;
        return seconds;
    }
};

class CapturedMessages : public UserMessages {
public:
    std::vector<wxString> texts;
    void ShowMessage(const wxString& text, const wxString&) override { texts.push_back(text); }
};

class TriggerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        SetClock(&clock);
        SetSettings(&settings);
        SetIdleTimeSource(&idle);
        SetUserMessages(&messages);
        settings.values["execMissFiredTrigger"] = "0";
    }
    void TearDown() override
    {
        SetClock(nullptr);
        SetSettings(nullptr);
        SetIdleTimeSource(nullptr);
        SetUserMessages(nullptr);
    }

    void At(const wxDateTime& moment, std::int64_t offsetMs = 0) { clock.Set(moment.GetValue().GetValue() + offsetMs); }

    // A trigger of `type` loaded from the texts, at the current manual time.
    std::unique_ptr<Trigger> Make(std::uint32_t type, const wxString& condition,
                                  const wxString& prevFire = "0 0 0 1 1 * 1999",
                                  const wxString& nextFire = "0 0 0 1 1 * 1999",
                                  const wxString& start = "0 0 0 1 1 * 1999", const wxString& end = "59 59 23 31 12 * 2999")
    {
        return LoadedTrigger(1, type, condition, prevFire, nextFire, start, end);
    }

    ManualClock clock;
    MapSettings settings;
    ScriptedIdle idle;
    CapturedMessages messages;
};
