#pragma once
// The requests `cadrelle --status/--pause/...` send to the running instance
// and the answers it gives: one request line, then an answer of tagged lines.
// Pure text handling, no sockets.

#include <cstdint>
#include <optional>
#include <string>

struct ControlRequest {
    enum class Kind { Status, Pause, Resume, Silent, Run, Show };
    Kind kind = Kind::Status;
    bool on = false;        // Silent
    std::int32_t jid = 0;   // Run

    bool operator==(const ControlRequest& other) const
    {
        return kind == other.kind && on == other.on && jid == other.jid;
    }
};

// What the client prints and the status it exits with.
struct ControlAnswer {
    int exitCode = 0;
    std::string out;  // for standard output, lines ending in '\n'
    std::string err;  // for standard error
};

// What `--status` reports.
struct InstanceStatus {
    bool paused = false;
    bool silent = false;
    std::size_t jobs = 0;
    std::size_t triggers = 0;
    bool hasNext = false;
    std::int64_t nextSeconds = 0;  // seconds since the epoch, shown in local time
    std::int32_t nextJid = 0;
    std::string lastFailure;  // the run history's last failed run in one line ("none")
};

// Exit statuses of the client.
constexpr int kControlExitUnknownJob = 2;
constexpr int kControlExitNoInstance = 3;
constexpr int kControlExitFailed = 4;

std::string FormatRequest(const ControlRequest& request);
// Nothing for a line that is not a request (the server answers it as such).
std::optional<ControlRequest> ParseRequest(const std::string& line);

std::string FormatAnswer(const ControlAnswer& answer);
// Nothing for a malformed or empty answer.
std::optional<ControlAnswer> ParseAnswer(const std::string& text);

std::string FormatStatus(const InstanceStatus& status);

// The text of a refused --run.
std::string UnknownJobText(std::int32_t jid);
