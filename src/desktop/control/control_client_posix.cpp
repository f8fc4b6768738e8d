#include "desktop/control/control_client.h"

#include "core/text_number.h"

#include <cerrno>
#include <cstring>
#include <ostream>
#include <vector>

#include <sys/socket.h>
#include <unistd.h>

#include "desktop/control/control_socket.h"
#include "desktop/control/runtime_dir.h"

namespace {

// The instance answers at once unless a modal dialog holds its window.
constexpr std::chrono::milliseconds kAnswerLimit{60000};

std::string Refusal(const std::string& path, const std::string& reason)
{
    return Utf8(wxString::Format(_("Refusing the control socket %s: %s. Nothing was sent."), wxString::FromUTF8(path),
                                 wxString::FromUTF8(reason)));
}

// Connects to the socket at `path` and makes sure this user's own program
// listens there before anything is sent. -1 when nobody listens (a socket
// left behind); otherwise the descriptor, or -2 with `problem` set.
int ConnectToOwnInstance(const std::string& path, std::string& problem)
{
    sockaddr_un address;
    if (!ControlSocketAddress(path, address))
        return -1;  // no instance can listen at a path that long
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        problem = Utf8(wxString::Format(_("cannot create a socket: %s"), std::strerror(errno)));
        return -2;
    }
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        const int error = errno;
        ::close(fd);
        if (error == ENOENT || error == ECONNREFUSED || error == ENOTDIR)
            return -1;
        problem = Utf8(wxString::Format(_("cannot reach the running Cadrelle instance at %s: %s"),
                                        wxString::FromUTF8(path), std::strerror(error)));
        return -2;
    }
    // The files can look right while another user's program holds the
    // other end (it bound first, or got the folder renamed): the kernel's
    // record of the listener is what counts.
    uid_t uid = 0;
    pid_t pid = 0;
    if (!PeerIds(fd, uid, pid) || uid != ::getuid()) {
        ::close(fd);
        problem = Refusal(path, "the program listening there runs as user " + std::to_string(uid) +
                                    ", not as you (user " + std::to_string(::getuid()) + ")");
        return -2;
    }
    return fd;
}

int Exchange(const ControlRequest& request, ControlAnswer& answer, std::string& problem,
             std::vector<std::string>& notes)
{
    // The same folders, passed over for the same reasons, as the instance
    // itself: a folder or socket that is not wholly ours is never used.
    for (const std::string& dir : RuntimeDirCandidates()) {
        bool exists = false;
        const std::string dirProblem = RuntimeDirProblem(dir, &exists);
        if (!dirProblem.empty()) {
            notes.push_back("not using " + dir + ": " + dirProblem);
            continue;
        }
        const std::string path = ControlSocketPath(dir);
        const std::string socketProblem = ControlSocketProblem(path, &exists);
        if (!exists)
            continue;
        if (!socketProblem.empty()) {
            problem = Refusal(path, socketProblem);
            return kControlExitFailed;
        }
        const int fd = ConnectToOwnInstance(path, problem);
        if (fd == -1)
            continue;
        if (fd < 0)
            return kControlExitFailed;
        const std::string line = FormatRequest(request);
        ::send(fd, line.data(), line.size(), MSG_NOSIGNAL);
        ::shutdown(fd, SHUT_WR);
        // The answer ends when the instance closes the connection; whatever
        // came before a time-out is judged as it is.
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
    if (!notes.empty()) {
        problem = Utf8(_("No running Cadrelle instance in a folder that is only yours; nothing was sent."));
        return kControlExitFailed;
    }
    problem = Utf8(_("No running Cadrelle instance."));
    return kControlExitNoInstance;
}

}  // namespace

int RunControlClient(const ControlRequest& request, std::ostream& out, std::ostream& err)
{
    ControlAnswer answer;
    std::string problem;
    std::vector<std::string> notes;
    const int status = Exchange(request, answer, problem, notes);
    for (const std::string& note : notes)
        err << "cadrelle: " << note << "\n";
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
    std::vector<std::string> notes;
    return Exchange(request, answer, problem, notes) == 0;
}
