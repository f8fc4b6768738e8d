#include "desktop/control/control_protocol.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <sstream>

#include "core/cron/cron_local_time.h"

namespace {

// A decimal JID: digits with an optional minus sign, within 32 bits.
bool ParseJid(const std::string& text, std::int32_t& jid)
{
    if (text.empty() || text.size() > 11)
        return false;
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || text[0] == '+' || text[0] == ' ' || value < INT32_MIN || value > INT32_MAX)
        return false;
    jid = static_cast<std::int32_t>(value);
    return true;
}

void AppendTagged(std::string& text, const char* tag, const std::string& body)
{
    std::istringstream lines(body);
    std::string line;
    while (std::getline(lines, line))
        text += std::string(tag) + " " + line + "\n";
}

}  // namespace

std::string FormatRequest(const ControlRequest& request)
{
    switch (request.kind) {
    case ControlRequest::Kind::Status:
        return "status\n";
    case ControlRequest::Kind::Pause:
        return "pause\n";
    case ControlRequest::Kind::Resume:
        return "resume\n";
    case ControlRequest::Kind::Silent:
        return request.on ? "silent on\n" : "silent off\n";
    case ControlRequest::Kind::Run:
        return "run " + std::to_string(request.jid) + "\n";
    case ControlRequest::Kind::Show:
        return "show\n";
    }
    return {};
}

std::optional<ControlRequest> ParseRequest(const std::string& rawLine)
{
    std::string line = rawLine;
    if (!line.empty() && line.back() == '\n')
        line.pop_back();
    ControlRequest request;
    if (line == "status")
        request.kind = ControlRequest::Kind::Status;
    else if (line == "pause")
        request.kind = ControlRequest::Kind::Pause;
    else if (line == "resume")
        request.kind = ControlRequest::Kind::Resume;
    else if (line == "show")
        request.kind = ControlRequest::Kind::Show;
    else if (line == "silent on" || line == "silent off") {
        request.kind = ControlRequest::Kind::Silent;
        request.on = line == "silent on";
    } else if (line.compare(0, 4, "run ") == 0 && ParseJid(line.substr(4), request.jid))
        request.kind = ControlRequest::Kind::Run;
    else
        return std::nullopt;
    return request;
}

std::string FormatAnswer(const ControlAnswer& answer)
{
    std::string text = "exit " + std::to_string(answer.exitCode) + "\n";
    AppendTagged(text, "out", answer.out);
    AppendTagged(text, "err", answer.err);
    return text;
}

std::optional<ControlAnswer> ParseAnswer(const std::string& text)
{
    std::istringstream lines(text);
    std::string line;
    if (!std::getline(lines, line) || line.compare(0, 5, "exit ") != 0)
        return std::nullopt;
    ControlAnswer answer;
    std::int32_t code = 0;
    if (!ParseJid(line.substr(5), code) || code < 0 || code > 255)
        return std::nullopt;
    answer.exitCode = code;
    while (std::getline(lines, line)) {
        if (line.compare(0, 4, "out ") == 0)
            answer.out += line.substr(4) + "\n";
        else if (line.compare(0, 4, "err ") == 0)
            answer.err += line.substr(4) + "\n";
        else
            return std::nullopt;
    }
    return answer;
}

std::string FormatStatus(const InstanceStatus& status)
{
    std::string text;
    text += std::string("state: ") + (status.paused ? "paused" : "running") + "\n";
    text += std::string("silent: ") + (status.silent ? "on" : "off") + "\n";
    text += "jobs: " + std::to_string(status.jobs) + "\n";
    text += "triggers: " + std::to_string(status.triggers) + "\n";
    const std::string failure = "last failure: " + (status.lastFailure.empty() ? "none" : status.lastFailure) + "\n";
    if (!status.hasNext)
        return text + "next: none\n" + failure;
    const std::time_t seconds = static_cast<std::time_t>(status.nextSeconds);
    std::tm local{};
    cron::LocalTm(seconds, local);
    char moment[32];
    std::strftime(moment, sizeof moment, "%Y-%m-%d %H:%M:%S", &local);
    return text + "next: " + moment + " JID " + std::to_string(status.nextJid) + "\n" + failure;
}

std::string UnknownJobText(std::int32_t jid)
{
    return std::string(wxString::Format(_("No job with JID %d."), static_cast<int>(jid)).utf8_str());
}
