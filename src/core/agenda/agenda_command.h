#pragma once
// `cadrelle --agenda [--days N]`: the runs of the next N days (default 1) as
// a table grouped by day, computed as the Agenda pane computes them. Needs no
// display and changes no file.

#include <cstdint>
#include <ostream>

#include <wx/string.h>

// The largest N; a longer agenda is refused, not shortened.
constexpr int kAgendaMaxDays = 366;

int RunAgendaCommand(const wxString& appDir, int days, std::int64_t nowMs, std::ostream& out, std::ostream& err);

// The agenda as the command prints it (also what its tests compare).
struct Agenda;
void PrintAgenda(const Agenda& agenda, std::int64_t fromMs, std::int64_t untilMs, std::ostream& out);
