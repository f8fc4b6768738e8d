// Main-thread edits, quick pause/resume pairs and shutdown while 16 checker
// threads and many job threads run. Run it in the ThreadSanitizer and
// AddressSanitizer builds: the point is that they stay silent.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "trigger_builders.h"

#include "core/engine/scheduler_engine.h"
#include "core/jobs/job_actions.h"
#include "core/session/session_context.h"

TEST(EngineStress, EditsWhileCheckersAndJobsRun)
{
    std::atomic<int> executed{0};
    auto context = std::make_shared<SessionContext>();
    for (std::uint32_t kind = 0; kind < NJobTypeCount; ++kind)
        context->Actions().Set(kind, [&](const Job& job, SessionContext&) {
            executed.fetch_add(1);
            // Touch what a real action reads.
            volatile std::size_t length = job.GetSummary().length();
            (void)length;
        });

    Scheduler scheduler(*context);
    std::int64_t nextTid = 0;
    // A job with an every-second trigger of its own; short chains that end:
    // jobs 0..8 lead to 9, 10..18 to 19, ...
    auto addJob = [&](std::int32_t jid, std::uint32_t kind) {
        const std::int64_t tid = nextTid++;
        scheduler.AddTrigger(EverySecondTrigger(*context, tid));
        scheduler.AddJob(TestJob(jid, kind, {tid}, jid % 10 != 9 ? IdList{jid + 1} : IdList{}, 0, true, "",
                                 {"first", "second"}));
    };
    for (std::int32_t jid = 0; jid < 150; ++jid)
        addJob(jid, static_cast<std::uint32_t>(jid % NJobTypeCount));

    struct : EngineHost {
        void WakeMainThread() override {}
    } host;
    SchedulerEngine engine(scheduler, context, host);
    engine.StartChecking();

    // A pause and a resume within 50 ms once hung in the join; a watchdog
    // ends the program rather than letting the test wait for ever.
    std::atomic<bool> done{false};
    std::thread watchdog([&done] {
        for (int i = 0; i < 600 && !done; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        if (!done) {
            std::fprintf(stderr, "the engine hung\n");
            std::abort();
        }
    });
    std::mt19937 rng(7);
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(3000);
    int edits = 0, pairs = 0, toggledRight = 0;
    while (std::chrono::steady_clock::now() < end || pairs < 200) {
        engine.ProcessRequests();
        const auto& jobs = scheduler.Jobs();
        Job* job = jobs[rng() % jobs.size()].get();
        switch (rng() % 7) {
        case 0: scheduler.SetJobEnable(job, !job->IsEnabled()); break;
        case 1: {
            // A dialog's edit: in place, under the edit lock.
            auto lock = scheduler.EditLock();
            JobParam p;
            job->GetParam(p);
            p.description = wxString::Format("edited %d", edits);
            p.params.push_back("more");
            job->SetParam(p);
        } break;
        case 2: {
            // A trigger dialog's edit.
            TriggerParam p;
            const Trigger& trigger = *scheduler.Triggers()[rng() % scheduler.Triggers().size()];
            trigger.MakeParam(p);
            p.condition = rng() % 2 ? "*/2 * * * * ?" : "* * * * * ?";
            scheduler.ApplyTriggerEdit(p.tid, p);
        } break;
        case 3: {
            // Replace a job and its trigger: delete, then add anew.
            const std::int32_t jid = job->GetId();
            scheduler.DeleteJob(job);
            addJob(jid, NJobTypeSendUdpMsg);
        } break;
        case 4: {
            // A hot key or `--run`: looked up exactly, started at once.
            Scheduler::JobPtr target;
            {
                auto lock = scheduler.ReadLock();
                target = scheduler.GetJobById(static_cast<std::int32_t>(rng() % 160));
            }
            if (target)
                engine.RunJob(target);
        } break;
        case 5:
            // Two quick presses of the pause key.
            ++pairs;
            toggledRight += engine.TogglePause();
            std::this_thread::sleep_for(std::chrono::microseconds(rng() % 3000));
            toggledRight += !engine.TogglePause();
            break;
        default: {
            scheduler.Changes().MarkChanged();
            std::size_t total = 0, active = 0;
            auto lock = scheduler.ReadLock();
            scheduler.CountTriggers(total, active);
        } break;
        }
        ++edits;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    // Exactly one set of checkers is left, it still fires, and pausing ends it.
    EXPECT_EQ(engine.RunningCheckerCount(), 16u);
    const int before = executed.load();
    for (int i = 0; i < 300 && executed.load() == before; ++i) {
        engine.ProcessRequests();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_GT(executed.load(), before);
    EXPECT_TRUE(engine.TogglePause());
    EXPECT_EQ(engine.RunningCheckerCount(), 0u);
    engine.Shutdown();
    done = true;
    watchdog.join();
    EXPECT_TRUE(engine.WaitForJobThreads(10000));
    EXPECT_GT(edits, 500);
    EXPECT_EQ(toggledRight, 2 * pairs);
}
