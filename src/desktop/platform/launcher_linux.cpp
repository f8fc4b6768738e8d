// Launching on Linux. URLs, files and folders go to the default application
// through GIO (g_app_info_*): it reads the same mimeapps.list and .desktop
// files as the desktop does, tells us plainly when a type has no application
// (xdg-open would only exit non-zero with a text on stderr), and its spawn
// without G_SPAWN_DO_NOT_REAP_CHILD goes through an intermediate child, so the
// application is re-parented and never left as a zombie of ours.
// Terminals and scripts are started by our own double fork with an argument
// list; the only text that reaches a shell is the user's own command line.

#include "desktop/platform/launcher.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <X11/Xlib.h>
#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

wxString FromSystem(const std::string& text)
{
    wxString converted(text.c_str(), wxConvLibc);
    return converted.empty() && !text.empty() ? wxString::FromUTF8(text.c_str()) : converted;
}

std::string ToSystem(const wxString& text)
{
    const wxCharBuffer buffer = text.mb_str(wxConvFile);
    if (buffer.data() && (buffer.length() > 0 || text.empty()))
        return std::string(buffer.data(), buffer.length());
    return text.utf8_string();
}

std::string EnvText(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string BaseName(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool IsExecutableFile(const std::string& path)
{
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

// The absolute path of a program, searched in PATH like execvp does, but
// before the fork: execvp may allocate, which a child of a threaded process
// must not do.
std::string FindProgram(const std::string& name)
{
    if (name.empty())
        return {};
    if (name.find('/') != std::string::npos)
        return IsExecutableFile(name) ? name : std::string();
    std::string path = EnvText("PATH");
    if (path.empty())
        path = "/usr/local/bin:/usr/bin:/bin";
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = path.find(':', start);
        if (end == std::string::npos)
            end = path.size();
        const std::string dir = end > start ? path.substr(start, end - start) : ".";
        const std::string candidate = dir + "/" + name;
        if (IsExecutableFile(candidate))
            return candidate;
        start = end + 1;
    }
    return {};
}

std::string RealBaseName(const std::string& path)
{
    char* real = ::realpath(path.c_str(), nullptr);
    if (!real)
        return BaseName(path);
    std::string base = BaseName(real);
    std::free(real);
    return base;
}

void CloseFrom(int first, int last)
{
    if (first > last)
        return;
#ifdef SYS_close_range
    if (::syscall(SYS_close_range, static_cast<unsigned>(first), static_cast<unsigned>(last), 0U) == 0)
        return;
#endif
    for (int fd = first; fd <= last; ++fd)
        ::close(fd);
}

// Starts argv[0] (an absolute path) in `workDir`, fully detached: a new
// session, standard input from /dev/null, no inherited descriptors beyond the
// standard three, default signal handling. The intermediate child is reaped
// here; the program itself belongs to init. Returns 0 or the errno of the
// failed step (exec failures included, reported back through a pipe).
int SpawnDetached(const std::vector<std::string>& args, const std::string& workDir)
{
    std::vector<char*> argv;
    for (const std::string& arg : args)
        argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    long maxFdLong = ::sysconf(_SC_OPEN_MAX);
    const int maxFd = maxFdLong > 0 && maxFdLong < 65536 ? static_cast<int>(maxFdLong) - 1 : 65535;

    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0)
        return errno;
    const pid_t child = ::fork();
    if (child < 0) {
        const int error = errno;
        ::close(report[0]);
        ::close(report[1]);
        return error;
    }
    if (child == 0) {
        // Only async-signal-safe calls from here on.
        ::close(report[0]);
        ::setsid();
        const pid_t grandchild = ::fork();
        if (grandchild != 0) {
            if (grandchild < 0) {
                const int error = errno;
                (void)!::write(report[1], &error, sizeof error);
            }
            ::_exit(0);
        }
        sigset_t none;
        sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        for (int sig = 1; sig < NSIG; ++sig)
            ::signal(sig, SIG_DFL);
        const int devNull = ::open("/dev/null", O_RDONLY);
        if (devNull >= 0 && devNull != STDIN_FILENO) {
            ::dup2(devNull, STDIN_FILENO);
            ::close(devNull);
        }
        int error = 0;
        if (!workDir.empty() && ::chdir(workDir.c_str()) != 0)
            error = errno;
        if (error == 0) {
            CloseFrom(3, report[1] - 1);
            CloseFrom(report[1] + 1, maxFd);
            ::execv(argv[0], argv.data());
            error = errno;
        }
        (void)!::write(report[1], &error, sizeof error);
        ::_exit(127);
    }
    ::close(report[1]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    int error = 0;
    ssize_t got = 0;
    do {
        got = ::read(report[0], &error, sizeof error);
    } while (got < 0 && errno == EINTR);
    ::close(report[0]);
    return got == static_cast<ssize_t>(sizeof error) ? error : 0;
}

LaunchOutcome Lacks(const wxString& reason)
{
    LaunchOutcome outcome;
    outcome.sessionLacks = true;
    outcome.reason = reason;
    return outcome;
}

LaunchOutcome WrongTarget(const wxString& reason)
{
    LaunchOutcome outcome;
    outcome.reason = reason;
    return outcome;
}

// A graphical launch needs a display the program can reach: a Wayland socket
// named in the environment, or an X server that accepts a connection.
bool HasDisplay(wxString& reason)
{
    if (!EnvText("WAYLAND_DISPLAY").empty())
        return true;
    const std::string display = EnvText("DISPLAY");
    if (display.empty()) {
        reason = "no graphical display: DISPLAY is not set";
        return false;
    }
    Display* connection = XOpenDisplay(display.c_str());
    if (!connection) {
        reason = wxString::Format("no graphical display: cannot connect to the X display \"%s\"", FromSystem(display));
        return false;
    }
    XCloseDisplay(connection);
    return true;
}

wxString TakeError(GError* error)
{
    wxString text = error && error->message ? wxString::FromUTF8(error->message) : wxString("unknown error");
    if (error)
        g_error_free(error);
    return text;
}

LaunchOutcome LaunchApp(GAppInfo* app, const char* uri)
{
    LaunchOutcome outcome;
    outcome.started = wxString::FromUTF8(g_app_info_get_name(app));
    GList* uris = g_list_append(nullptr, const_cast<char*>(uri));
    GError* error = nullptr;
    outcome.ok = g_app_info_launch_uris(app, uris, nullptr, &error);
    g_list_free(uris);
    if (!outcome.ok) {
        // The application configured for the type did not start: the session
        // is misconfigured, not the target.
        outcome.sessionLacks = true;
        outcome.reason = wxString::Format("the application \"%s\" could not be started: %s", outcome.started,
                                          TakeError(error));
    }
    g_object_unref(app);
    return outcome;
}

LaunchOutcome OpenLocalPath(const std::string& path)
{
    GFile* file = g_file_new_for_path(path.c_str());
    GError* error = nullptr;
    GFileInfo* info =
        g_file_query_info(file, G_FILE_ATTRIBUTE_STANDARD_CONTENT_TYPE, G_FILE_QUERY_INFO_NONE, nullptr, &error);
    if (!info) {
        g_object_unref(file);
        return WrongTarget(TakeError(error));
    }
    const std::string type = g_file_info_get_content_type(info) ? g_file_info_get_content_type(info) : "";
    g_object_unref(info);
    GAppInfo* app = type.empty() ? nullptr : g_app_info_get_default_for_type(type.c_str(), FALSE);
    if (!app) {
        g_object_unref(file);
        return Lacks(wxString::Format("no application is set to open files of type \"%s\"", wxString::FromUTF8(type)));
    }
    char* uri = g_file_get_uri(file);
    LaunchOutcome outcome = LaunchApp(app, uri);
    g_free(uri);
    g_object_unref(file);
    return outcome;
}

// How a terminal takes the program it should run, and how it is asked to
// start iconified (empty: it cannot be).
struct TerminalKind {
    const char* name;
    const char* runFlag;
    const char* minimizeFlag;
};

const std::array<TerminalKind, 13> kTerminals{{
    {"gnome-terminal", "--", ""},
    {"konsole", "-e", ""},
    {"xfce4-terminal", "-x", "--minimize"},
    {"mate-terminal", "-x", ""},
    {"terminator", "-x", ""},
    {"alacritty", "-e", ""},
    {"kitty", "", ""},
    {"foot", "", ""},
    {"urxvt", "-e", "-iconic"},
    {"st", "-e", ""},
    {"xterm", "-e", "-iconic"},
    {"uxterm", "-e", "-iconic"},
    {"lxterm", "-e", "-iconic"},
}};

const TerminalKind* KnownTerminal(const std::string& baseName)
{
    for (const TerminalKind& kind : kTerminals) {
        if (baseName == kind.name)
            return &kind;
    }
    return nullptr;
}

struct TerminalChoice {
    std::string program;            // absolute path
    std::vector<std::string> extra; // arguments from $TERMINAL
    std::string runFlag;
    std::string minimizeFlag;
    std::string name;
};

std::vector<std::string> SplitBlanks(const std::string& text)
{
    std::vector<std::string> words;
    std::string word;
    for (char c : text) {
        if (c == ' ' || c == '\t') {
            if (!word.empty())
                words.push_back(word);
            word.clear();
        } else {
            word += c;
        }
    }
    if (!word.empty())
        words.push_back(word);
    return words;
}

// $TERMINAL (a program name, optionally with arguments), then the Debian
// alternative x-terminal-emulator, then the terminals we know. A wrapper's
// real name (x-terminal-emulator -> xterm) decides how it is asked to start
// minimised; programs we do not know take "-e", as x-terminal-emulator must.
bool ChooseTerminal(TerminalChoice& choice)
{
    std::vector<std::pair<std::vector<std::string>, const TerminalKind*>> candidates;
    const std::vector<std::string> fromEnv = SplitBlanks(EnvText("TERMINAL"));
    if (!fromEnv.empty())
        candidates.emplace_back(fromEnv, nullptr);
    candidates.push_back({{"x-terminal-emulator"}, nullptr});
    for (const TerminalKind& kind : kTerminals)
        candidates.push_back({{kind.name}, &kind});
    for (const auto& candidate : candidates) {
        const std::string program = FindProgram(candidate.first.front());
        if (program.empty())
            continue;
        const TerminalKind* kind = candidate.second;
        if (!kind)
            kind = KnownTerminal(BaseName(candidate.first.front()));
        if (!kind)
            kind = KnownTerminal(RealBaseName(program));
        choice.program = program;
        choice.extra.assign(candidate.first.begin() + 1, candidate.first.end());
        choice.name = BaseName(candidate.first.front());
        // x-terminal-emulator takes "-e" whatever it points to.
        const bool alternative = choice.name == "x-terminal-emulator";
        choice.runFlag = kind && !alternative ? kind->runFlag : "-e";
        choice.minimizeFlag = kind ? kind->minimizeFlag : "";
        return true;
    }
    return false;
}

// Runs the command ($1) in the user's shell, as a terminal would, then waits
// for Enter so that the window stays open. A child shell, so a syntax error in
// the command does not close the window before the user has read it.
const char kStayOpenScript[] = "\"${SHELL:-/bin/sh}\" -c \"$1\"\n"
                               "printf '\\n%s' '[Press Enter to close this window]'\n"
                               "read -r _\n";

struct Interpreter {
    const char* extension;
    const char* program;
};

const std::array<Interpreter, 16> kInterpreters{{
    {".sh", "sh"},
    {".bash", "bash"},
    {".zsh", "zsh"},
    {".ksh", "ksh"},
    {".csh", "csh"},
    {".fish", "fish"},
    {".py", "python3"},
    {".pl", "perl"},
    {".rb", "ruby"},
    {".php", "php"},
    {".js", "node"},
    {".lua", "lua"},
    {".tcl", "tclsh"},
    {".awk", "awk -f"},
    {".ps1", "pwsh -File"},
    {".r", "Rscript"},
}};

std::string LowerExtension(const std::string& path)
{
    const std::string base = BaseName(path);
    const std::size_t dot = base.rfind('.');
    if (dot == std::string::npos || dot == 0)
        return {};
    std::string extension = base.substr(dot);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

struct ScriptStart {
    std::vector<std::string> argv;
    LaunchOutcome failure;
};

// The first line of a "#!" script: the interpreter and at most one argument
// (the rest of the line, as the kernel reads it).
bool ReadShebang(const std::string& path, std::string& interpreter, std::string& argument, bool& hasCarriageReturn,
                 bool& isElf)
{
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    char buffer[512];
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    ::close(fd);
    if (got <= 0)
        return false;
    const std::string head(buffer, static_cast<std::size_t>(got));
    isElf = head.compare(0, 4, "\x7f" "ELF") == 0;
    if (head.compare(0, 2, "#!") != 0)
        return false;
    std::string line = head.substr(2, head.find('\n') == std::string::npos ? std::string::npos : head.find('\n') - 2);
    hasCarriageReturn = !line.empty() && line.back() == '\r';
    if (hasCarriageReturn)
        line.pop_back();
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos)
        return false;
    const std::size_t end = line.find_first_of(" \t", start);
    interpreter = line.substr(start, end == std::string::npos ? std::string::npos : end - start);
    if (end != std::string::npos) {
        const std::size_t argStart = line.find_first_not_of(" \t", end);
        const std::size_t argEnd = line.find_last_not_of(" \t");
        if (argStart != std::string::npos)
            argument = line.substr(argStart, argEnd - argStart + 1);
    }
    return true;
}

ScriptStart PlanScript(const std::string& path)
{
    ScriptStart plan;
    const wxString shown = FromSystem(path);
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        plan.failure = WrongTarget(wxString::Format("the script \"%s\" cannot be read: %s", shown,
                                                    FromSystem(std::strerror(errno))));
        return plan;
    }
    if (!S_ISREG(st.st_mode)) {
        plan.failure = WrongTarget(wxString::Format("\"%s\" is not a file", shown));
        return plan;
    }
    std::string interpreter;
    std::string argument;
    bool carriageReturn = false;
    bool isElf = false;
    const bool shebang = ReadShebang(path, interpreter, argument, carriageReturn, isElf);
    const bool executable = ::access(path.c_str(), X_OK) == 0;
    if (shebang) {
        const std::string interpreterPath = FindProgram(interpreter);
        if (interpreterPath.empty()) {
            plan.failure = Lacks(wxString::Format("the interpreter \"%s\" named in the #! line of \"%s\" is not installed",
                                                  FromSystem(interpreter), shown));
            return plan;
        }
        // "#!/usr/bin/env prog": the program is looked up here too, so that a
        // missing one is reported instead of dying unseen in the child.
        if (BaseName(interpreterPath) == "env") {
            std::vector<std::string> words = SplitBlanks(argument);
            if (!words.empty() && words.front() == "-S")
                words.erase(words.begin());
            if (!words.empty() && words.front().find('=') == std::string::npos && FindProgram(words.front()).empty()) {
                plan.failure = Lacks(wxString::Format("the interpreter \"%s\" named in the #! line of \"%s\" is not installed",
                                                      FromSystem(words.front()), shown));
                return plan;
            }
        }
        // A DOS line end would make the kernel look for "sh\r".
        if (executable && !carriageReturn) {
            plan.argv = {path};
        } else {
            plan.argv = {interpreterPath};
            if (!argument.empty())
                plan.argv.push_back(argument);
            plan.argv.push_back(path);
        }
        return plan;
    }
    if (isElf && executable) {
        plan.argv = {path};
        return plan;
    }
    const std::string extension = LowerExtension(path);
    if (extension == ".bat" || extension == ".cmd" || extension == ".vbs") {
        plan.failure = Lacks(wxString::Format("\"%s\" is a Windows script (%s); it cannot run on Linux", shown,
                                              FromSystem(extension)));
        return plan;
    }
    for (const Interpreter& known : kInterpreters) {
        if (extension != known.extension)
            continue;
        std::vector<std::string> words = SplitBlanks(known.program);
        const std::string program = FindProgram(words.front());
        if (program.empty()) {
            plan.failure = Lacks(wxString::Format("the interpreter \"%s\" for %s files is not installed",
                                                  FromSystem(words.front()), FromSystem(extension)));
            return plan;
        }
        words.front() = program;
        plan.argv = words;
        plan.argv.push_back(path);
        return plan;
    }
    plan.failure = Lacks(wxString::Format("no interpreter is known for \"%s\": it has no #! line and its extension "
                                          "\"%s\" is not one of those the scheduler knows",
                                          shown, FromSystem(extension)));
    return plan;
}

std::string AbsolutePath(const std::string& path)
{
    if (!path.empty() && path.front() == '/')
        return path;
    char* cwd = ::getcwd(nullptr, 0);
    std::string absolute = cwd ? std::string(cwd) + "/" + path : path;
    std::free(cwd);
    return absolute;
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos || slash == 0 ? std::string("/") : path.substr(0, slash);
}

}  // namespace

LaunchOutcome OpenUriWithDefault(const wxString& uri)
{
    wxString reason;
    if (!HasDisplay(reason))
        return Lacks(reason);
    const std::string text = uri.utf8_string();
    char* scheme = g_uri_parse_scheme(text.c_str());
    if (!scheme)
        return WrongTarget(wxString::Format("\"%s\" is not a URL", uri));
    const std::string schemeText = scheme;
    g_free(scheme);
    if (g_ascii_strcasecmp(schemeText.c_str(), "file") == 0) {
        char* path = g_filename_from_uri(text.c_str(), nullptr, nullptr);
        if (!path)
            return WrongTarget(wxString::Format("\"%s\" is not a valid file URL", uri));
        const std::string local = path;
        g_free(path);
        return OpenLocalPath(local);
    }
    GAppInfo* app = g_app_info_get_default_for_uri_scheme(schemeText.c_str());
    if (!app)
        return Lacks(wxString::Format("no default application is set for \"%s\" links", wxString::FromUTF8(schemeText)));
    return LaunchApp(app, text.c_str());
}

LaunchOutcome OpenPathWithDefault(const wxString& path)
{
    wxString reason;
    if (!HasDisplay(reason))
        return Lacks(reason);
    return OpenLocalPath(AbsolutePath(ToSystem(path)));
}

LaunchOutcome RunCommandInTerminal(const wxString& command, bool minimized)
{
    wxString reason;
    if (!HasDisplay(reason))
        return Lacks(reason);
    TerminalChoice terminal;
    if (!ChooseTerminal(terminal))
        return Lacks("no terminal emulator was found: set TERMINAL, or install one (for example xterm)");
    LaunchOutcome outcome;
    outcome.started = FromSystem(terminal.name);
    std::vector<std::string> argv{terminal.program};
    argv.insert(argv.end(), terminal.extra.begin(), terminal.extra.end());
    if (minimized) {
        if (terminal.minimizeFlag.empty())
            outcome.note = wxString::Format("%s cannot be asked to start minimised", outcome.started);
        else
            argv.push_back(terminal.minimizeFlag);
    }
    if (!terminal.runFlag.empty())
        argv.push_back(terminal.runFlag);
    argv.insert(argv.end(), {"/bin/sh", "-c", kStayOpenScript, "sh", command.utf8_string()});
    const std::string home = EnvText("HOME");
    const int error = SpawnDetached(argv, home.empty() ? "/" : home);
    outcome.ok = error == 0;
    if (!outcome.ok) {
        outcome.sessionLacks = true;
        outcome.reason = wxString::Format("the terminal \"%s\" could not be started: %s", FromSystem(terminal.program),
                                          FromSystem(std::strerror(error)));
    }
    return outcome;
}

LaunchOutcome RunScriptFile(const wxString& path)
{
    const std::string file = AbsolutePath(ToSystem(path));
    ScriptStart plan = PlanScript(file);
    if (plan.argv.empty())
        return plan.failure;
    LaunchOutcome outcome;
    outcome.started = FromSystem(BaseName(plan.argv.front()));
    // The script's own folder, so that its relative paths mean what its
    // author meant.
    const int error = SpawnDetached(plan.argv, FolderOf(file));
    outcome.ok = error == 0;
    if (!outcome.ok)
        outcome.reason = wxString::Format("\"%s\" could not be started: %s", FromSystem(plan.argv.front()),
                                          FromSystem(std::strerror(error)));
    return outcome;
}
