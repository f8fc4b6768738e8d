#pragma once
// The agenda: every run due in a window of time across all enabled jobs, in
// time order, found by the search the triggers fire by (CronNext for the
// recurring kinds, the loaded moment for the one-shot kinds), so the agenda
// and the firings never disagree. No GUI: the Agenda pane and `--agenda`
// share it.

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <wx/string.h>

class Scheduler;

enum AgendaMark : unsigned {
    AgendaMarkPower = 1u << 0,       // Suspend, Hibernate, Shutdown, Reboot
    AgendaMarkSession = 1u << 1,     // Lock Workstation, Log Off
    AgendaMarkPowerClose = 1u << 2,  // another power run lies within 10 minutes
    AgendaMarkRepeated = 1u << 3,    // the wall time occurs twice (autumn change); fires at the first
    AgendaMarkSkipped = 1u << 4      // the wall time does not exist (spring change): no run
};

// Two power runs this close (or closer) are marked.
constexpr std::int64_t kAgendaPowerCloseMs = 10 * 60 * 1000;
// The list stops here (a trigger firing every second would otherwise fill
// memory); Agenda::truncated says so.
constexpr std::size_t kAgendaMaxRuns = 250000;

// What a run belongs to, once per trigger that has runs.
struct AgendaSource {
    std::int32_t jid = -1;
    std::uint32_t jobType = 0;
    wxString jobDescription;
    std::int64_t tid = -1;
    std::uint32_t triggerType = 0;
    wxString condition;
};

struct AgendaRun {
    std::int64_t atMs = 0;       // the firing moment; for a skipped entry, the moment the clock jumps
    std::uint32_t source = 0;    // index into Agenda::sources
    unsigned marks = 0;          // AgendaMark bits
    int skippedWallSec = -1;     // AgendaMarkSkipped: the first wall time (seconds of the day) that is lost
};

struct AgendaOptions {
    std::int64_t fromMs = 0;   // runs strictly after this
    std::int64_t untilMs = 0;  // up to and including this
    // With Start runs count from this session's start: shown by the window,
    // left out by `--agenda`, which is not the running scheduler.
    bool withStart = true;
    std::size_t maxRuns = kAgendaMaxRuns;
};

struct Agenda {
    std::vector<AgendaSource> sources;
    std::vector<AgendaRun> runs;  // by time, then JID, then TID
    bool truncated = false;       // maxRuns was reached before untilMs

    // The trigger's sentence (docs/CRON.md), made once per source when first
    // asked: a pane shows only the rows in view.
    const wxString& Sentence(std::uint32_t source) const;

private:
    mutable std::unordered_map<std::uint32_t, wxString> m_sentences;
};

// The runs of `scheduler` in the window. Reads the lists under the read lock
// and searches after releasing it.
Agenda BuildAgenda(const Scheduler& scheduler, const AgendaOptions& options);

// The window of the next `days` days from `nowMs` (calendar days in local
// time, so a day with a daylight saving change is 23 or 25 hours long).
AgendaOptions AgendaWindow(std::int64_t nowMs, int days);

// The heading of a day: "2026-11-25 Wednesday", the weekday translated.
wxString AgendaDayTitle(std::int64_t ms);

// The marks as short words ("power", "session", "power twice in 10 min",
// "repeated hour", "skipped hour"), translated, joined with ", ".
wxString AgendaMarkText(unsigned marks);
