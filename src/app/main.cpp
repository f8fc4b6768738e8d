// Entry point: the command-line modes run with wxBase only and need no
// display; everything else starts the window.

#include <cstdlib>
#include <iostream>

#include <wx/app.h>
#include <wx/init.h>
#include <wx/log.h>

#include "app/command_line.h"
#include "app/headless_runner.h"
#include "core/app_dir.h"
#include "core/agenda/agenda_command.h"
#include "core/clock.h"
#include "core/cron/cron_next_command.h"
#include "core/describe_command.h"
#include "core/history/history_command.h"
#include "core/i18n/ui_language.h"
#include "core/list_command.h"
#include "desktop/control/control_client.h"
#include "app/import_commands.h"
#include "desktop/platform/display_threads.h"
#include "gui/cadrelle_app.h"

namespace {

// Assertion failures are logged, never shown as dialogs from worker threads.
void LogAssert(const wxString& file, int line, const wxString& func, const wxString& cond, const wxString& msg)
{
    std::cerr << "assertion failed: " << file << ":" << line << " " << func << ": " << cond << " " << msg << "\n";
}

// Runs `body` with wxBase initialised but without any GUI toolkit, in the
// user's language.
template <typename Body>
int RunConsole(int argc, char** argv, Body body)
{
    wxApp::SetInstance(new wxAppConsole);
    wxInitializer init(argc, argv);
    if (!init.IsOk()) {
        std::cerr << "cadrelle: cannot initialise\n";
        return 1;
    }
    SetUpUiLanguage(ExecutableDir());
    return body();
}

// Translated text as UTF-8: the C locale could not convert it.
std::string Tr(const char* english)
{
    return std::string(wxGetTranslation(english).utf8_str());
}

// The usage in the user's language, the --describe line placed before the
// control options.
std::string Usage()
{
    std::string usage = Tr(UsageText());
    const std::size_t status = usage.find("       cadrelle --status");
    usage.insert(status == std::string::npos ? usage.size() : status, Tr(DescribeUsageLine()) + Tr(AgendaUsageLines()) + Tr(HistoryUsageLine()));
    return usage;
}

}  // namespace

int main(int argc, char** argv)
{
    EnableDisplayThreads();
    wxSetAssertHandler(LogAssert);
    const CommandLine cl = ParseCommandLine(argc, argv);
    switch (cl.mode) {
    case CommandLine::Mode::Error:
        return RunConsole(argc, argv, [&] {
            wxString problem = wxGetTranslation(cl.error.c_str());
            problem.Replace("%s", wxString::FromUTF8(cl.errorArg));
            std::cerr << "cadrelle: " << problem.utf8_str() << "\n" << Usage();
            return 2;
        });
    case CommandLine::Mode::Help:
        return RunConsole(argc, argv, [&] {
            std::cout << Usage();
            return 0;
        });
    case CommandLine::Mode::Version:
        std::cout << "Cadrelle " << CADRELLE_VERSION << "\n";
        return 0;
    case CommandLine::Mode::CronNext:
        return RunConsole(argc, argv, [&] {
            return RunCronNextCommand(cl.cronArgs, std::cout, std::cerr, TheSystemClock().NowMs() / 1000);
        });
    case CommandLine::Mode::Describe:
        return RunConsole(argc, argv, [&] { return RunDescribeCommand(cl.cronArgs, std::cout, std::cerr); });
    case CommandLine::Mode::Agenda:
        return RunConsole(argc, argv, [&] {
            return RunAgendaCommand(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()), cl.agendaDays,
                                    TheSystemClock().NowMs(), std::cout, std::cerr);
        });
    case CommandLine::Mode::ImportCrontab:
        return RunConsole(argc, argv, [&] {
            return RunImportCrontabCommand(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()),
                                           cl.importFile, cl.dryRun, std::cin, std::cout, std::cerr);
        });
    case CommandLine::Mode::Export:
        return RunConsole(argc, argv, [&] {
            return RunExportCommand(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()), cl.transferFile,
                                    cl.exportJids, std::cout, std::cerr);
        });
    case CommandLine::Mode::ImportJobs:
        return RunConsole(argc, argv, [&] {
            return RunImportJobsCommand(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()),
                                        cl.transferFile, std::cout, std::cerr);
        });
    case CommandLine::Mode::List:
        return RunConsole(argc, argv, [&] {
            return RunListCommand(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()), std::cout, std::cerr);
        });
    case CommandLine::Mode::History:
        return RunConsole(argc, argv, [&] {
            return RunHistoryCommand(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()), cl.historyArgs,
                                     std::cout, std::cerr);
        });
    case CommandLine::Mode::Headless:
        return RunConsole(argc, argv, [&] {
            return RunHeadless(ChooseAppDir(wxString::FromUTF8(cl.appDir), ExecutableDir()));
        });
    case CommandLine::Mode::Control:
        return RunConsole(argc, argv, [&] { return RunControlClient(cl.request, std::cout, std::cerr); });
    case CommandLine::Mode::Gui:
        break;
    }
    // Window titles, key and mouse input and screen captures go through X11;
    // on a Wayland desktop the window runs on XWayland so that they reach at
    // least the X11 programs, and the jobs say plainly what they cannot do.
    ::setenv("GDK_BACKEND", "x11", 0);
    // The toolkit gets no arguments of ours: it would reject them.
    CadrelleApp::SetAppDirOverride(wxString::FromUTF8(cl.appDir));
    int toolkitArgc = 1;
    char* toolkitArgv[] = {argv[0], nullptr};
    const int status = wxEntry(toolkitArgc, toolkitArgv);
    // A second start hands over to the running instance: not a failure.
    return CadrelleApp::RefusedStartStatus() >= 0 ? CadrelleApp::RefusedStartStatus() : status;
}
