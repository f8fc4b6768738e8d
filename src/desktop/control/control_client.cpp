#include "desktop/control/control_client.h"
#include "core/text_number.h"

#include <cerrno>
#include <cstring>
#include <ostream>

#include <sys/socket.h>
#include <unistd.h>

#include "desktop/control/control_socket.h"

namespace {

// The instance answers at once unless a modal dialog holds its window.
constexpr std::chrono::milliseconds kAnswerLimit{60000};

int Exchange(const ControlRequest& request, ControlAnswer& answer, std::string& problem)
{
    sockaddr_un address;
    if (!ControlSocketAddress(address)) {
        // No instance can listen at a path that long.
        problem = Utf8(_("No running Cadrelle instance."));
        return kControlExitNoInstance;
    }
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        problem = Utf8(wxString::Format(_("cannot create a socket: %s"), std::strerror(errno)));
        return kControlExitFailed;
    }
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        const int error = errno;
        ::close(fd);
        if (error == ENOENT || error == ECONNREFUSED || error == ENOTDIR) {
            problem = Utf8(_("No running Cadrelle instance."));
            return kControlExitNoInstance;
        }
        problem = Utf8(wxString::Format(_("cannot reach the running Cadrelle instance at %s: %s"),
                                        wxString::FromUTF8(address.sun_path), std::strerror(error)));
        return kControlExitFailed;
    }
    const std::string line = FormatRequest(request);
    ::send(fd, line.data(), line.size(), MSG_NOSIGNAL);
    ::shutdown(fd, SHUT_WR);
    // The answer ends when the instance closes the connection; whatever came
    // before a time-out is judged as it is.
    std::string text;
    ReadWithin(fd, text, kAnswerLimit, [](const std::string&) { return false; });
    ::close(fd);
    const std::optional<ControlAnswer> parsed = ParseAnswer(text);
    if (!parsed) {
        problem = Utf8(_("the running Cadrelle instance gave no answer"));
        return kControlExitFailed;
    }
    answer = *parsed;
    return answer.exitCode;
}

}  // namespace

int RunControlClient(const ControlRequest& request, std::ostream& out, std::ostream& err)
{
    ControlAnswer answer;
    std::string problem;
    const int status = Exchange(request, answer, problem);
    if (!problem.empty()) {
        err << problem << "\n";
        return status;
    }
    out << answer.out;
    err << answer.err;
    return status;
}

bool SendControlRequestQuietly(const ControlRequest& request)
{
    ControlAnswer answer;
    std::string problem;
    return Exchange(request, answer, problem) == 0;
}
