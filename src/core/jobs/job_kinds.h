#pragma once
// The twelve job classes onto which the 24 kinds map. Their actions come from
// the desktop layer (job_actions.h); BlankJob is never made by the factory.

#include "core/jobs/job.h"

#define CADRELLE_JOB_CLASS(ClassName)                          \
    class ClassName : public Job {                             \
    public:                                                    \
        explicit ClassName(std::uint32_t type) : Job(type) {}  \
        void Execute() override;                               \
    };

CADRELLE_JOB_CLASS(ReminderJob)
CADRELLE_JOB_CLASS(OpenJob)
CADRELLE_JOB_CLASS(BackupJob)
CADRELLE_JOB_CLASS(ScreenShotJob)
CADRELLE_JOB_CLASS(RefreshUrlJob)
CADRELLE_JOB_CLASS(CloseAppJob)
CADRELLE_JOB_CLASS(SendUdpJob)
CADRELLE_JOB_CLASS(SendTcpJob)
CADRELLE_JOB_CLASS(WakeOnLanJob)
CADRELLE_JOB_CLASS(KeyMouseSimulatorJob)
CADRELLE_JOB_CLASS(SystemJob)
CADRELLE_JOB_CLASS(BlankJob)

#undef CADRELLE_JOB_CLASS
