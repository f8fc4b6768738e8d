// The checkers check only what is due (CheckerIndex); the full pass checks
// everything. Over random triggers of every kind and random clocks (steady,
// short and long steps, forward and backward jumps, both daylight-saving
// changes) with edits, pauses and setting changes in between, both must
// give the same firings, notices, statuses and times.

#include <algorithm>
#include <random>
#include <string>
#include <tuple>

#include "core/engine/checker_index.h"
#include "core/engine/trigger_checker.h"
#include "core/scheduler.h"
#include "trigger_fixture.h"

namespace {

struct Recorder : TriggerCheckSink {
    std::vector<std::tuple<std::int32_t, char, std::int64_t>> events;  // JID, 'r' run / 'n' notice, moment
    bool RunJob(const std::shared_ptr<Job>& job, const RunCause& cause) override
    {
        events.emplace_back(job->GetId(), 'r', cause.dueMs);
        return true;
    }
    void AdvanceNotice(const std::shared_ptr<Job>& job) override { events.emplace_back(job->GetId(), 'n', 0); }
};

const char* const kCron[] = {"* * * * * ?",    "*/10 * * * * ?", "0 * * * * ?",     "30 */2 * * * ?",
                             "0 0/5 * * * ?",  "0 0 * * * ?",    "0 30 2 * * ?",    "15 59 1 * * ?",
                             "0 0 3 ? * SUN",  "0 0 12 1 * ?",   "0 0 0 1 1 ?",     "7 7 7 7 7 ?",
                             "0 61 * * * ?",   "0 0 0 30 2 ?",   "*/3 * 2-3 * * ?", "0 */7 * * * ?"};

std::string Moment(const wxDateTime& dt)
{
    return std::string(dt.Format("%S %M %H %d %m * %Y").utf8_str());
}

std::string Duration(std::mt19937& rng)
{
    auto pick = [&](int hi) { return std::to_string(std::uniform_int_distribution<int>(0, hi)(rng)); };
    return "0 0 " + pick(3) + " " + pick(59);
}

}  // namespace

using CheckerIndexTest = TriggerTest;

TEST_F(CheckerIndexTest, DueOnlyChecksAgreeWithTheFullPass)
{
    std::mt19937 rng(20261124);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    const wxDateTime starts[] = {Local(2026, 11, 23, 10, 0, 0), Local(2026, 3, 29, 1, 55, 0),
                                 Local(2026, 10, 25, 1, 55, 0), Local(2026, 12, 31, 23, 57, 0)};
    constexpr std::size_t kShares = 4;
    int firings = 0, notices = 0;
    for (int round = 0; round < 80; ++round) {
        SCOPED_TRACE(round);
        const wxDateTime start = starts[round % 4];
        At(start, pick(0, 999));
        context.SetStartTime(clock.Now());
        settings.values["execMissFiredTrigger"] = pick(0, 1) ? "1" : "0";
        Scheduler full(context), due(context);
        for (std::int64_t tid = 0; tid < 24; ++tid) {
            TriggerParam p;
            p.tid = tid;
            p.type = static_cast<std::uint32_t>(pick(0, NTriggerTypeCount - 1));
            const wxDateTime near = start + wxTimeSpan::Seconds(pick(-30, 150));
            switch (p.type) {
            case NTriggerTypeSpecTime: p.condition = Moment(near); break;
            case NTriggerTypeCountDown: {
                wxString c = Moment(near);
                c.Replace(" * ", " ");
                p.condition = c + " " + Duration(rng);
                break;
            }
            case NTriggerTypeWithStart: p.condition = Duration(rng) + " - -"; break;
            case NTriggerTypeIdleTimeout: p.condition = pick(0, 1) ? "3 - - - - -" : "- 1 - - - -"; break;
            default: p.condition = kCron[pick(0, 15)]; break;
            }
            // Some never fired, some fired, some with a missed firing on record.
            p.prevFire = pick(0, 2) ? "0 0 0 1 1 * 1999" : Moment(start - wxTimeSpan::Minutes(pick(1, 90)));
            p.nextFire = pick(0, 2) ? "0 0 0 1 1 * 1999" : Moment(start - wxTimeSpan::Minutes(pick(0, 30)));
            // Periods that begin and end within the first minutes.
            p.start = pick(0, 2) ? "0 0 0 1 1 * 1999" : Moment(start + wxTimeSpan::Seconds(pick(-5, 20)));
            p.end = pick(0, 2) ? "59 59 23 31 12 * 2999" : Moment(start + wxTimeSpan::Seconds(pick(25, 600)));
            const std::uint32_t jobKind = pick(0, 1) ? NJobTypeShutdown : NJobTypeReminder;
            const bool enabled = pick(0, 5) != 0;
            for (Scheduler* s : {&full, &due}) {
                auto trigger = CreateTrigger(p.type, context);
                trigger->Load(p);
                s->AddTrigger(std::move(trigger));
                s->AddJob(TestJob(static_cast<std::int32_t>(tid), jobKind, {tid}, {}, 0, enabled));
            }
        }
        std::vector<CheckerIndex> shares;
        auto freshShares = [&] {
            shares.clear();
            for (std::size_t i = 0; i < kShares; ++i)
                shares.emplace_back(kShares, i);
        };
        freshShares();
        for (int step = 0; step < 300; ++step) {
            const int r = pick(0, 199);
            if (r < 130)
                clock.Advance(50);
            else if (r < 160)
                clock.Advance(pick(1, 40000));
            else if (r < 172)
                clock.Advance(static_cast<std::int64_t>(pick(1, 48)) * 3600000);
            else if (r < 184)
                clock.Advance(-static_cast<std::int64_t>(pick(1, 7200000)));
            else if (r < 188)
                freshShares();  // a pause and a resume: a fresh set of checkers
            else if (r < 192) {
                settings.values["execMissFiredTrigger"] = pick(0, 1) ? "1" : "0";
            } else if (r < 196) {
                const std::int32_t jid = pick(0, 23);
                const bool enable = pick(0, 1) != 0;
                for (Scheduler* s : {&full, &due})
                    s->SetJobEnable(s->GetJobById(jid).get(), enable);
            } else {
                const std::int64_t tid = pick(0, 23);
                for (Scheduler* s : {&full, &due}) {
                    Trigger* trigger = s->GetTriggerById(tid);
                    TriggerParam p;
                    trigger->MakeParam(p);
                    if (IsCronDrivenType(p.type))
                        p.condition = kCron[(tid + step) % 16];
                    s->ApplyTriggerEdit(tid, p);
                }
            }
            idle.seconds = pick(0, 9) < 3 ? pick(0, 70) : idle.seconds + 1;
            Recorder a, b;
            for (std::size_t i = 0; i < kShares; ++i) {
                CheckTriggerShare(full, kShares, i, a);
                shares[i].Pass(due, b);
            }
            // The same moment's events, whatever their order within a pass.
            std::sort(a.events.begin(), a.events.end());
            std::sort(b.events.begin(), b.events.end());
            ASSERT_EQ(a.events, b.events) << "step " << step << " at " << clock.Now().FormatISOCombined();
            for (std::size_t i = 0; i < full.Triggers().size(); ++i) {
                const Trigger& x = *full.Triggers()[i];
                const Trigger& y = *due.Triggers()[i];
                SCOPED_TRACE(testing::Message() << "step " << step << ", TID " << x.GetTid() << ", kind "
                                                << x.GetType() << ", " << x.GetCondition());
                ASSERT_EQ(x.GetStatus(), y.GetStatus());
                ASSERT_EQ(x.IsFinished(), y.IsFinished());
                ASSERT_EQ(x.IsNoticeGiven(), y.IsNoticeGiven());
                ASSERT_EQ(x.GetPrevFire().IsValid() ? x.GetPrevFire().GetValue() : -1,
                          y.GetPrevFire().IsValid() ? y.GetPrevFire().GetValue() : -1);
                ASSERT_EQ(x.GetNextFire().IsValid() ? x.GetNextFire().GetValue() : -1,
                          y.GetNextFire().IsValid() ? y.GetNextFire().GetValue() : -1);
            }
            for (const auto& event : a.events)
                (std::get<1>(event) == 'r' ? firings : notices) += 1;
        }
    }
    // The sequences must exercise firing and the notice, not only rest.
    EXPECT_GT(firings, 300);
    EXPECT_GT(notices, 30);
}
