// Child processes and the environment on Windows: CreateProcessW with the
// standard handles redirected and an environment block of our own.

#include "harness.h"

#include <cstdlib>
#include <ctime>
#include <cwctype>
#include <map>

#include <windows.h>

#include <wx/string.h>

namespace {

// Wine hands the TZ it was started with (an IANA name) to its programs; the
// C runtime would read it as a POSIX rule with United States change dates.
// Without it the runtime follows the system's zone, which Wine derives from
// that same TZ. Before any other static object is made: test files keep
// local moments in constants.
struct SystemZone {
    SystemZone()
    {
        ::_putenv_s("TZ", "");
        ::_tzset();
    }
} g_systemZone __attribute__((init_priority(101)));

std::wstring Wide(const std::string& utf8)
{
    return std::wstring(wxString::FromUTF8(utf8).wc_str());
}

// One argument quoted so that CommandLineToArgvW (and the C runtime) read it
// back unchanged.
void AppendQuoted(std::wstring& line, const std::wstring& arg)
{
    if (!line.empty())
        line += L' ';
    if (!arg.empty() && arg.find_first_of(L" \t\n\v\"") == std::wstring::npos) {
        line += arg;
        return;
    }
    line += L'"';
    for (auto it = arg.begin();; ++it) {
        std::size_t backslashes = 0;
        while (it != arg.end() && *it == L'\\')
            ++it, ++backslashes;
        if (it == arg.end()) {
            line.append(backslashes * 2, L'\\');
            break;
        }
        if (*it == L'"')
            line.append(backslashes * 2 + 1, L'\\');
        else
            line.append(backslashes, L'\\');
        line += *it;
    }
    line += L'"';
}

struct NoCase {
    bool operator()(const std::wstring& a, const std::wstring& b) const
    {
        return ::CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(), static_cast<int>(b.size()),
                                      TRUE) == CSTR_LESS_THAN;
    }
};

// Ours with `environment` on top, sorted as Windows wants it.
std::wstring EnvironmentBlock(const ChildEnvironment& environment)
{
    std::map<std::wstring, std::wstring, NoCase> variables;
    if (wchar_t* block = ::GetEnvironmentStringsW()) {
        for (const wchar_t* entry = block; *entry; entry += std::wcslen(entry) + 1) {
            const std::wstring text = entry;
            const std::size_t eq = text.find(L'=', 1);  // "=C:=C:\..." entries start with '='
            if (eq != std::wstring::npos)
                variables[text.substr(0, eq)] = text.substr(eq + 1);
        }
        ::FreeEnvironmentStringsW(block);
    }
    for (const auto& [name, value] : environment) {
        if (value)
            variables[Wide(name)] = Wide(*value);
        else
            variables.erase(Wide(name));
    }
    std::wstring result;
    for (const auto& [name, value] : variables)
        result += name + L"=" + value + L'\0';
    result += L'\0';
    return result;
}

HANDLE OpenOutput(const std::string& path)
{
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    return ::CreateFileW(path.empty() ? L"NUL" : Wide(path).c_str(), GENERIC_WRITE,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherit, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

void SetEnvVar(const char* name, const char* value)
{
    // The C runtime's copy (getenv) and the process's block (children) both.
    ::_putenv_s(name, value ? value : "");
    ::SetEnvironmentVariableW(Wide(name).c_str(), value ? Wide(value).c_str() : nullptr);
}

ChildProcess::~ChildProcess() { Stop(kSignalKill, 2000); }

bool ChildProcess::Start(const std::vector<std::string>& argv, const std::string& outPath,
                         const ChildEnvironment& environment, const std::string& errPath)
{
    std::wstring line;
    for (const std::string& arg : argv)
        AppendQuoted(line, Wide(arg));
    const HANDLE out = OpenOutput(outPath);
    const HANDLE err = errPath.empty() ? out : OpenOutput(errPath);
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    const HANDLE in = ::CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in;
    startup.hStdOutput = out;
    startup.hStdError = err;
    std::wstring block = EnvironmentBlock(environment);
    PROCESS_INFORMATION process{};
    const BOOL started = ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE,
                                          CREATE_UNICODE_ENVIRONMENT | CREATE_NO_WINDOW, block.data(), nullptr,
                                          &startup, &process);
    for (HANDLE h : {in, out, err == out ? INVALID_HANDLE_VALUE : err})
        if (h != INVALID_HANDLE_VALUE)
            ::CloseHandle(h);
    if (!started)
        return false;
    ::CloseHandle(process.hThread);
    m_process = process.hProcess;
    m_pid = static_cast<pid_t>(process.dwProcessId);
    return true;
}

int ChildProcess::Stop(int signal, int limitMs)
{
    if (!m_process)
        return -1;
    const HANDLE process = static_cast<HANDLE>(m_process);
    const bool terminated = signal != 0 && ::TerminateProcess(process, 1);
    const bool ended = ::WaitForSingleObject(process, static_cast<DWORD>(limitMs)) == WAIT_OBJECT_0;
    if (!ended) {
        ::TerminateProcess(process, 1);
        ::WaitForSingleObject(process, INFINITE);
    }
    DWORD code = 0;
    const bool known = ::GetExitCodeProcess(process, &code);
    ::CloseHandle(process);
    m_process = nullptr;
    m_pid = -1;
    return ended && !terminated && known ? static_cast<int>(code) : -1;
}

bool ChildProcess::Exited()
{
    if (m_process && ::WaitForSingleObject(static_cast<HANDLE>(m_process), 0) == WAIT_OBJECT_0) {
        ::CloseHandle(static_cast<HANDLE>(m_process));
        m_process = nullptr;
        m_pid = -1;
    }
    return !m_process;
}
