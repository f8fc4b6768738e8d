#include "app/command_line.h"

#include <cstdint>
#include <cstdlib>

#include "core/agenda/agenda_command.h"

CommandLine ParseCommandLine(int argc, char** argv)
{
    CommandLine cl;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--app-dir") {
            if (i + 1 >= argc) {
                cl.mode = CommandLine::Mode::Error;
                cl.error = wxTRANSLATE("--app-dir needs a folder");
                return cl;
            }
            cl.appDir = argv[++i];
        } else if (arg == "--headless") {
            cl.mode = CommandLine::Mode::Headless;
        } else if (arg == "--list") {
            cl.mode = CommandLine::Mode::List;
        } else if (arg == "--cron-next") {
            // The cron command takes the rest of the line as its own.
            cl.mode = CommandLine::Mode::CronNext;
            cl.cronArgs.assign(argv + i + 1, argv + argc);
            return cl;
        } else if (arg == "--history") {
            // Its own options follow; --app-dir may still come among them.
            cl.mode = CommandLine::Mode::History;
            for (++i; i < argc; ++i) {
                if (std::string(argv[i]) == "--app-dir" && i + 1 < argc)
                    cl.appDir = argv[++i];
                else
                    cl.historyArgs.push_back(argv[i]);
            }
            return cl;
        } else if (arg == "--describe") {
            cl.mode = CommandLine::Mode::Describe;
            cl.cronArgs.assign(argv + i + 1, argv + argc);
            return cl;
        } else if (arg == "--agenda") {
            cl.mode = CommandLine::Mode::Agenda;
        } else if (arg == "--days" && cl.mode == CommandLine::Mode::Agenda) {
            // No clamping: a number out of range is refused.
            const std::string value = i + 1 < argc ? argv[++i] : "";
            char* end = nullptr;
            const long days = value.empty() ? 0 : std::strtol(value.c_str(), &end, 10);
            if (value.empty() || *end != '\0' || days < 1 || days > kAgendaMaxDays) {
                cl.mode = CommandLine::Mode::Error;
                cl.error = wxTRANSLATE("--days needs a number of days from 1 to 366, not \"%s\"");
                cl.errorArg = value;
                return cl;
            }
            cl.agendaDays = static_cast<int>(days);
        } else if (arg == "--import-crontab") {
            cl.mode = CommandLine::Mode::ImportCrontab;
            if (i + 1 < argc && (argv[i + 1][0] != '-' || std::string(argv[i + 1]) == "-"))
                cl.importFile = argv[++i];
        } else if (arg == "--dry-run" && cl.mode == CommandLine::Mode::ImportCrontab) {
            cl.dryRun = true;
        } else if (arg == "--export" || arg == "--import") {
            if (i + 1 >= argc) {
                cl.mode = CommandLine::Mode::Error;
                cl.error = wxTRANSLATE("%s needs a file");
                cl.errorArg = arg;
                return cl;
            }
            cl.mode = arg == "--export" ? CommandLine::Mode::Export : CommandLine::Mode::ImportJobs;
            cl.transferFile = argv[++i];
            // --export takes the JIDs that follow.
            while (arg == "--export" && i + 1 < argc && argv[i + 1][0] != '-') {
                const std::string value = argv[++i];
                char* end = nullptr;
                const long jid = std::strtol(value.c_str(), &end, 10);
                if (value.empty() || *end != '\0' || jid < 0 || jid > INT32_MAX) {
                    cl.mode = CommandLine::Mode::Error;
                    cl.error = wxTRANSLATE("not a job id (JID): %s");
                    cl.errorArg = value;
                    return cl;
                }
                cl.exportJids.push_back(static_cast<std::int32_t>(jid));
            }
        } else if (arg == "--status" || arg == "--pause" || arg == "--resume" || arg == "--show") {
            cl.mode = CommandLine::Mode::Control;
            cl.request.kind = arg == "--status"  ? ControlRequest::Kind::Status
                              : arg == "--pause" ? ControlRequest::Kind::Pause
                              : arg == "--resume" ? ControlRequest::Kind::Resume
                                                  : ControlRequest::Kind::Show;
        } else if (arg == "--silent" || arg == "--run") {
            const std::string value = i + 1 < argc ? argv[i + 1] : "";
            const std::optional<ControlRequest> request =
                ParseRequest(arg.substr(2) + " " + value);
            if (!request) {
                cl.mode = CommandLine::Mode::Error;
                cl.error = arg == "--silent" ? wxTRANSLATE("--silent needs on or off") : wxTRANSLATE("--run needs a job id (JID)");
                return cl;
            }
            ++i;
            cl.mode = CommandLine::Mode::Control;
            cl.request = *request;
        } else if (arg == "--help" || arg == "-h") {
            cl.mode = CommandLine::Mode::Help;
        } else if (arg == "--version") {
            cl.mode = CommandLine::Mode::Version;
        } else {
            cl.mode = CommandLine::Mode::Error;
            cl.error = wxTRANSLATE("unknown option: %s");
            cl.errorArg = arg;
            return cl;
        }
    }
    return cl;
}

const char* UsageText()
{
    // Translated where it is printed; keep the manual page (cadrelle.1) in step.
    return wxTRANSLATE("Usage: cadrelle [--app-dir DIR]            start the scheduler window\n"
           "       cadrelle --headless [--app-dir DIR] run the scheduler without a window (until SIGINT/SIGTERM)\n"
           "       cadrelle --list [--app-dir DIR]     print the jobs and triggers of the data file\n"
           "       cadrelle --cron-next \"EXPR\" [--count N] [--from \"YYYY-MM-DD HH:MM:SS\"]\n"
           "                                           print the next moments of a cron expression\n"
           "       cadrelle --status                   print the running instance's state, counts and next firing\n"
           "       cadrelle --pause | --resume         switch the running instance's pause mode\n"
           "       cadrelle --silent on|off            switch its silent mode\n"
           "       cadrelle --run JID                  run job JID now, as the Execute command does\n"
           "       cadrelle --show                     bring the running instance's window to the front\n"
           "       cadrelle --help | --version\n"
           "\n"
           "The application folder (data/ and the log files) is the program's own folder when\n"
           "it is writable, otherwise $XDG_DATA_HOME/Cadrelle; --app-dir overrides both.\n"
           "The control options talk to this user's running instance (window or headless)\n"
           "over a socket in $XDG_RUNTIME_DIR/cadrelle; with none running they exit with 3.\n");
}

const char* HistoryUsageLine()
{
    return wxTRANSLATE("       cadrelle --history [--job JID] [--failed] [--since \"YYYY-MM-DD HH:MM:SS\"] [--limit N]\n"
                       "                                           print the newest runs (100 unless --limit says)\n");
}

const char* DescribeUsageLine()
{
    return wxTRANSLATE("       cadrelle --describe \"EXPR\"          say in words when a cron expression fires\n");
}

const char* AgendaUsageLines()
{
    return wxTRANSLATE("       cadrelle --agenda [--days N]        print the runs of the next N days (default 1), by day\n"
                       "       cadrelle --import-crontab [FILE|-] [--dry-run]\n"
                       "                                           make jobs of a crontab (default: crontab -l)\n"
                       "       cadrelle --export FILE [JID...]     write jobs (default: all) with their triggers to FILE\n"
                       "       cadrelle --import FILE              add the jobs of an exported FILE under new ids\n");
}
