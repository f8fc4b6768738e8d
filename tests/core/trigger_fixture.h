#pragma once
// A session context on a manual clock, with settings and idle time, for
// driving triggers through check-and-advance at exact milliseconds.

#include <map>

#include <gtest/gtest.h>

#include "core/clock.h"
#include "core/idle_time.h"
#include "core/session/session_context.h"
#include "core/settings_lookup.h"
#include "core/triggers/trigger.h"
#include "test_support.h"
#include "trigger_builders.h"

class MapSettings : public SettingsLookup {
public:
    std::map<wxString, wxString> values;
    wxString GetSetting(const wxString& name) const override { return values.count(name) ? values.at(name) : ""; }
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

class TriggerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        context.SetSettings(&settings);
        context.SetIdleTimeSource(&idle);
        settings.values["execMissFiredTrigger"] = "0";
    }

    void At(const wxDateTime& moment, std::int64_t offsetMs = 0) { clock.Set(moment.GetValue().GetValue() + offsetMs); }

    // A trigger of `type` loaded from the texts (condition, then the times
    // of LoadedTrigger), at the current manual time.
    template <typename... Texts>
    std::unique_ptr<Trigger> Make(std::uint32_t type, const Texts&... texts)
    {
        return LoadedTrigger(context, 1, type, texts...);
    }

    ManualClock clock;
    MapSettings settings;
    ScriptedIdle idle;
    SessionContext context{clock};
};
