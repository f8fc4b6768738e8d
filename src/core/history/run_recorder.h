#pragma once
// Where job threads and the engine hand finished runs and not-run decisions.
// Record must not wait for the disk: it may be called by a checker pass or a
// job thread at any time.

#include "core/history/run_record.h"

class RunRecorder {
public:
    virtual ~RunRecorder() = default;
    virtual void Record(RunRecord record) = 0;
};

// Keeps nothing: the session's recorder until a history is installed.
class NoRunRecorder final : public RunRecorder {
public:
    void Record(RunRecord) override {}
};
