#pragma once
// What the user asked for on the command line.

#include <cstdint>
#include <string>
#include <vector>

#include "desktop/control/control_protocol.h"

struct CommandLine {
    enum class Mode { Gui, List, CronNext, Describe, Agenda, ImportCrontab, Export, ImportJobs, History, Headless, Control, Help, Version, Error };
    Mode mode = Mode::Gui;
    std::string appDir;                  // --app-dir DIR
    std::vector<std::string> cronArgs;   // everything after --cron-next or --describe
    std::vector<std::string> historyArgs;  // what follows --history (but --app-dir DIR)
    std::string error;                   // for Mode::Error: English, marked for the catalogue
    std::string errorArg;                // what replaces "%s" in `error`
    ControlRequest request;              // for Mode::Control (--status, --pause, ...)
    int agendaDays = 1;                  // --agenda --days N
    std::string importFile;              // --import-crontab FILE; "-" standard input, empty: `crontab -l`
    bool dryRun = false;                 // --import-crontab --dry-run
    std::string transferFile;            // --export FILE, --import FILE
    std::vector<std::int32_t> exportJids;  // --export FILE JID...; empty: all
};

CommandLine ParseCommandLine(int argc, char** argv);
const char* UsageText();
// The --describe line of the usage, its own catalogue entry; shown before
// the line of --status.
const char* DescribeUsageLine();
// The --agenda and --import-crontab lines, shown after the --describe line.
const char* AgendaUsageLines();
// The --history lines, shown before the line of --status as well.
const char* HistoryUsageLine();
