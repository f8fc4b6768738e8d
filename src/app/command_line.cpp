#include "app/command_line.h"

CommandLine ParseCommandLine(int argc, char** argv)
{
    CommandLine cl;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--app-dir") {
            if (i + 1 >= argc) {
                cl.mode = CommandLine::Mode::Error;
                cl.error = "--app-dir needs a folder";
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
        } else if (arg == "--help" || arg == "-h") {
            cl.mode = CommandLine::Mode::Help;
        } else if (arg == "--version") {
            cl.mode = CommandLine::Mode::Version;
        } else {
            cl.mode = CommandLine::Mode::Error;
            cl.error = "unknown option: " + arg;
            return cl;
        }
    }
    return cl;
}

const char* UsageText()
{
    return "Usage: cadrelle [--app-dir DIR]            start the scheduler window\n"
           "       cadrelle --headless [--app-dir DIR] run the scheduler without a window (until SIGINT/SIGTERM)\n"
           "       cadrelle --list [--app-dir DIR]     print the jobs and triggers of the data file\n"
           "       cadrelle --cron-next \"EXPR\" [--count N] [--from \"YYYY-MM-DD HH:MM:SS\"]\n"
           "                                           print the next moments of a cron expression\n"
           "       cadrelle --help | --version\n"
           "\n"
           "The application folder (data/ and the log files) is the program's own folder when\n"
           "it is writable, otherwise $XDG_DATA_HOME/Cadrelle; --app-dir overrides both.\n";
}
