// The command-line control against a real headless instance; the instance lock under simultaneous starts;
// folders, sockets and peers that are not wholly the user's, refused by both ends; idle callers.

#include <csignal>
#include <regex>

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "desktop/control/control_server.h"
#include "e2e_support.h"

constexpr uid_t kNobody = 65534;

// The exit status, then what the program printed (stdout, then stderr).
static std::string Cadrelle(const std::string& home, std::vector<std::string> args, std::vector<std::string> prefix = {},
                            const ChildEnvironment& extra = {})
{
    args.insert(args.begin(), CADRELLE_BINARY);
    args.insert(args.begin(), prefix.begin(), prefix.end());
    const ProcessResult result = RunProcess(args, ProgramEnvironment(home, extra), 20000);
    return std::to_string(result.status) + " " + result.out + result.err;
}

static sockaddr_un Address(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

// A connection to the Unix socket at `path`; -1 when there is none.
static int Connect(const std::string& path)
{
    const sockaddr_un address = Address(path);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return fd;
    if (fd >= 0)
        ::close(fd);
    return -1;
}

static bool BecomeNobody()
{
    return ::geteuid() == kNobody || (::setgroups(0, nullptr) == 0 && ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
}

// Who plays the instance at a socket's place, and at which step it becomes another user.
struct FakeInstance {
    bool bindAsNobody = false;    // the socket file is theirs
    bool socketToNobody = false;  // the file is handed to them after binding
    mode_t mode = 0;              // 0: as bound
    bool listenAsNobody = false;  // the listener (what SO_PEERCRED reports) is theirs
};

// Answers every caller "done" and copies what each sent into `report`, after a "+" once it listens; runs in a child.
static int ServeFake(const std::string& path, const FakeInstance& plan, int report)
{
    const sockaddr_un address = Address(path);
    const int fd = (!plan.bindAsNobody || BecomeNobody()) ? ::socket(AF_UNIX, SOCK_STREAM, 0) : -1;
    if (fd < 0 || ::bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return 2;
    if ((plan.mode && ::chmod(path.c_str(), plan.mode) != 0) ||
        (plan.socketToNobody && ::chown(path.c_str(), kNobody, kNobody) != 0) || (plan.listenAsNobody && !BecomeNobody()))
        return 3;
    if (::listen(fd, 8) != 0 || (report >= 0 && ::write(report, "+", 1) != 1))
        return 4;
    for (;;) {
        const int caller = ::accept(fd, nullptr, nullptr);
        char buffer[256];
        const ssize_t got = ::read(caller, buffer, sizeof buffer);
        if (got > 0 && report >= 0 && ::write(report, buffer, static_cast<std::size_t>(got)) != got)
            return 5;
        (void)!::send(caller, "exit 0\nout done\n", 16, MSG_NOSIGNAL);
        ::close(caller);
    }
}

TEST(CommandLineControl, SteersTheRunningHeadlessInstanceAndNobodyElses)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    WriteFileBytes(dir.File("app/data/data1.xml"),
                   DataFile(Job(0, 0, "Tea", true, 0, "1", "", "Drink tea $ 1") +
                                Job(4, 0, "Off", false, 0, "2", "", "Never $ 1"),
                            IntervalTrigger(1, "0 0 12 * * ?") + IntervalTrigger(2, "0 0 6 * * ?")));
    EXPECT_EQ(Cadrelle(home, {"--status"}), "3 No running Cadrelle instance.\n");

    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()},
                              home + "/out.txt", ProgramEnvironment(home), home + "/err.txt"));
    // Pause mode can change once the triggers are checked (2 s after start).
    ASSERT_TRUE(WaitUntil([&] { return Cadrelle(home, {"--pause"}) == "0 paused\n"; }));
    EXPECT_EQ(Cadrelle(home, {"--status"}).substr(0, 16), "0 state: paused\n");
    EXPECT_EQ(Cadrelle(home, {"--resume"}), "0 running\n");
    EXPECT_EQ(Cadrelle(home, {"--silent", "on"}), "0 ");
    // The disabled job's earlier trigger is not the next firing.
    const std::string status = Cadrelle(home, {"--status"});
    EXPECT_TRUE(std::regex_match(status, std::regex("0 state: running\nsilent: on\njobs: 2\ntriggers: 2\n"
                                                    "next: \\d{4}-\\d\\d-\\d\\d 12:00:00 JID 0\nlast failure: none\n")))
        << status;
    EXPECT_EQ(Cadrelle(home, {"--run", "77"}), "2 No job with JID 77.\n");
    EXPECT_EQ(Cadrelle(home, {"--silent", "off"}), "0 ");
    EXPECT_EQ(Cadrelle(home, {"--run", "0"}), "0 started JID 0\n");
    EXPECT_TRUE(WaitUntil([&] { return LogText(dir.File("app")).find("(important): Drink tea") != std::string::npos; }));
    EXPECT_EQ(Cadrelle(home, {"--show"}).substr(0, 2), "4 ");  // no window to show

    if (::geteuid() == 0) {
        // Even with the folders and the socket opened up, another user is told nothing and changes nothing.
        const std::string socket = home + "/cadrelle/control.sock";
        for (const std::string& path : {dir.Path().utf8_string(), home, home + "/cadrelle"})
            ::chmod(path.c_str(), 0711);
        ::chmod(socket.c_str(), 0666);
        ChildProcess intruder;
        ASSERT_TRUE(intruder.StartCall([&] {
            const int fd = BecomeNobody() ? Connect(socket) : -1;
            char answer[64];
            // Dropped at once: the request may not even be taken.
            return fd < 0 ? 10 : (::send(fd, "pause\n", 6, MSG_NOSIGNAL), ::read(fd, answer, sizeof answer) > 0) ? 12 : 0;
        }));
        EXPECT_EQ(intruder.Stop(0), 0);
        // Its own client does not even try: the folder is not its own.
        EXPECT_EQ(Cadrelle(home, {"--pause"}, {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"}),
                  "4 cadrelle: not using " + home + "/cadrelle: it belongs to user 0, not to you (user 65534)\n"
                  "No running Cadrelle instance in a folder that is only yours; nothing was sent.\n");
        ::chmod(socket.c_str(), 0600);
        EXPECT_EQ(Cadrelle(home, {"--status"}).substr(0, 17), "0 state: running\n");
    }
    // A folder in the data file's place: the final save fails, says so on stderr and ends with status 1.
    ASSERT_TRUE(wxRemoveFile(dir.File("app/data/data1.xml")) && wxMkdir(dir.File("app/data/data1.xml")));
    EXPECT_EQ(program.Stop(SIGTERM), 1);
    EXPECT_NE(ReadFileBytes(home + "/err.txt").find("could not save its jobs and triggers"), std::string::npos)
        << ReadFileBytes(home + "/err.txt");
    EXPECT_EQ(Cadrelle(home, {"--status"}).substr(0, 2), "3 ");
}

TEST(InstanceLock, SimultaneousStartsNeverRunTwo)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string();
    const std::string outs[2] = {home + "/a.txt", home + "/b.txt"};
    for (int pair = 0; pair < 30; ++pair) {
        SCOPED_TRACE(pair);
        ChildProcess programs[2];
        std::string apps[2];
        for (int i = 0; i < 2; ++i) {
            apps[i] = dir.File((i ? "b" : "a") + std::to_string(pair)).utf8_string();
            ASSERT_TRUE(programs[i].Start({CADRELLE_BINARY, "--headless", "--app-dir", apps[i]}, outs[i],
                                          ProgramEnvironment(home)));
        }
        ASSERT_TRUE(WaitUntil([&] { return programs[0].Exited() || programs[1].Exited(); }));
        const int winner = programs[0].Exited() ? 1 : 0;
        EXPECT_NE(ReadFileBytes(outs[1 - winner]).find("Another program instance is already running, aborting."),
                  std::string::npos);
        EXPECT_FALSE(programs[winner].Exited());
        // The winner ends on SIGINT as on SIGTERM, with the end banner.
        EXPECT_EQ(programs[winner].Stop(pair % 2 ? SIGINT : SIGTERM), 0);
        EXPECT_NE(LogText(apps[winner]).find("<<< Cadrelle End <<<"), std::string::npos);
    }
}

TEST(CommandLineControl, NothingIsSentToAChannelThatIsNotWhollyOurs)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "another user is played by root";
    enum class Place { SharedTmp, SharedRuntime, OwnRuntime };
    struct Row {
        const char* what;
        Place place;
        uid_t folderOwner;
        mode_t folderMode;
        FakeInstance fake;
        bool plainFile;  // instead of a listener
        int status;
        const char* said;
        const char* received;  // by the listener
    } rows[] = {
        {"ours in every way: sent", Place::OwnRuntime, 0, 0700, {}, false, 0, "done\n", "pause\n"},
        {"a shared temporary folder where another user made ours first", Place::SharedTmp, kNobody, 0700,
         {true, false, 0, true}, false, 4, "/cadrelle-0: it belongs to user 65534, not to you (user 0)\n", ""},
        {"a shared runtime folder where another user put theirs in place of ours", Place::SharedRuntime, kNobody, 0700,
         {true, false, 0, true}, false, 4, "/cadrelle: it belongs to user 65534, not to you (user 0)\n", ""},
        {"a socket of another user in our folder", Place::OwnRuntime, 0, 0700, {false, true, 0, true}, false, 4,
         "control.sock: it belongs to user 65534, not to you. Nothing was sent.\n", ""},
        {"our socket file with another user listening", Place::OwnRuntime, 0, 0700, {false, false, 0, true}, false, 4,
         "control.sock: the program listening there runs as user 65534, not as you (user 0). Nothing was sent.\n", ""},
        {"a socket others can write to", Place::OwnRuntime, 0, 0700, {false, false, 0666, false}, false, 4,
         "control.sock: other users can write to it. Nothing was sent.\n", ""},
        {"a folder others can write to", Place::OwnRuntime, 0, 0777, {}, false, 4,
         "/cadrelle: other users can write to it (mode 0777)\n", ""},
        {"a plain file in the socket's place", Place::OwnRuntime, 0, 0700, {}, true, 4,
         "control.sock: it is a plain file, not a socket. Nothing was sent.\n", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        TempDir dir;
        ::chmod(dir.Path().utf8_string().c_str(), 0711);  // the other user reaches the shared folders in it
        const std::string home = dir.File("home").utf8_string(), shared = dir.File("shared").utf8_string();
        ASSERT_EQ(::mkdir(shared.c_str(), 0700), 0);
        ::chmod(shared.c_str(), row.place == Place::SharedTmp ? 01777 : row.place == Place::SharedRuntime ? 0777 : 0700);
        ChildEnvironment environment = {{"XDG_RUNTIME_DIR", shared}};
        std::string folder = shared + "/cadrelle";
        if (row.place == Place::SharedTmp) {
            environment = {{"XDG_RUNTIME_DIR", std::nullopt}, {"TMPDIR", shared}};
            folder = shared + "/cadrelle-0";
        }
        ASSERT_EQ(::mkdir(folder.c_str(), 0700), 0);
        ASSERT_EQ(::chmod(folder.c_str(), row.folderMode) | ::chown(folder.c_str(), row.folderOwner, row.folderOwner), 0);
        int report[2];
        ASSERT_EQ(::pipe2(report, O_NONBLOCK), 0);
        ChildProcess fake;
        const std::string socket = folder + "/control.sock";
        if (row.plainFile)
            WriteFileBytes(socket, "not a socket\n");
        else
            ASSERT_TRUE(fake.StartCall([&] { return ServeFake(socket, row.fake, report[1]); }));
        ::close(report[1]);
        char ready = 0;
        ASSERT_TRUE(WaitUntil([&] { return row.plainFile || ::read(report[0], &ready, 1) == 1; }));
        const std::string said = Cadrelle(home, {"--pause"}, {}, environment);
        EXPECT_EQ(said.substr(0, 2), std::to_string(row.status) + " ");
        EXPECT_NE(said.find(row.said), std::string::npos) << said;
        fake.Stop(SIGKILL);
        char received[64] = "";
        EXPECT_GE(::read(report[0], received, sizeof received - 1), 0);
        ::close(report[0]);
        EXPECT_STREQ(received, row.received);
    }
}

TEST(InstanceLock, FoldersNotWhollyOursArePassedOverOrRefused)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "another user is played by root";
    struct Row {
        const char* plant;   // shell commands in $XDG_RUNTIME_DIR (= HOME), where the runtime folder is cadrelle
        bool listener;       // then a program of ours listens at cadrelle/control.sock
        const char* said;    // by the program on stderr
        const char* status;  // what --status prints first; nullptr: the program does not start
        const char* leftAtSocket = nullptr;  // what the socket's place still holds when it has ended
    } rows[] = {
        {"mkdir -m700 elsewhere && ln -s elsewhere cadrelle", false, "/cadrelle: it is a symbolic link", "0 state: running\n"},
        {"echo x >cadrelle", false, "/cadrelle: it is not a folder", "0 state: running\n"},
        {"mkdir -m700 cadrelle && chown 65534 cadrelle", false, "/cadrelle: it belongs to user 65534, not to you (user 0)",
         "0 state: running\n"},
        {"mkdir -m777 cadrelle", false, "/cadrelle: other users can write to it (mode 0777)", "0 state: running\n"},
        {"mkdir -m700 cadrelle && ln -s ../victim cadrelle/instance.lock", false,
         "/cadrelle: its instance.lock is a symbolic link", "0 state: running\n"},
        {"chmod 777 .", false, "warning: XDG_RUNTIME_DIR (", "0 state: running\n"},
        {"mkdir -m700 cadrelle && printf 'keep me' >cadrelle/control.sock", false,
         "/cadrelle/control.sock: it is a plain file, not a socket; it was left as it is", "4 Refusing the control socket ",
         "keep me"},
        {"mkdir -m700 cadrelle", true, "/cadrelle/control.sock: another program is listening on it", "0 done\n"},
        {"echo x >cadrelle && echo x >.cache", false, "no instance lock that can be trusted", nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.plant);
        TempDir dir;
        const std::string home = dir.File("home").utf8_string(), app = dir.File("app").utf8_string();
        const ChildEnvironment environment = ProgramEnvironment(home);
        ASSERT_EQ(RunProcess({"sh", "-c", std::string("cd \"$0\" && ") + row.plant, home}).status, 0);
        ChildProcess fake, program;
        const std::string socket = home + "/cadrelle/control.sock";
        if (row.listener) {
            ASSERT_TRUE(fake.StartCall([&] { return ServeFake(socket, {}, -1); }));
            ASSERT_TRUE(WaitUntil([&] { const int fd = Connect(socket); return fd >= 0 && ::close(fd) == 0; }));
        }
        if (!row.status) {
            const ProcessResult refused = RunProcess({CADRELLE_BINARY, "--headless", "--app-dir", app}, environment, 20000);
            EXPECT_EQ(refused.status, 1);
            EXPECT_NE(refused.err.find(std::string(row.said) + ": no runtime folder"), std::string::npos) << refused.err;
            EXPECT_NE(refused.err.find("not starting."), std::string::npos) << refused.err;
            EXPECT_EQ(LogText(app), "");
            continue;
        }
        ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", app}, home + "/out.txt", environment));
        EXPECT_TRUE(WaitUntil([&] { return ReadFileBytes(home + "/out.txt").find(row.said) != std::string::npos; }))
            << ReadFileBytes(home + "/out.txt");
        std::string status;
        EXPECT_TRUE(WaitUntil([&] { return (status = Cadrelle(home, {"--status"})).rfind(row.status, 0) == 0; })) << status;
        // Wherever the lock went, a second start finds it.
        const std::string second = Cadrelle(home, {"--headless", "--app-dir", dir.File("app2").utf8_string()});
        EXPECT_EQ(second.substr(0, 2), "1 ");
        EXPECT_NE(second.find("Another program instance is already running, aborting."), std::string::npos) << second;
        EXPECT_EQ(program.Stop(SIGTERM), 0);
        if (row.leftAtSocket)
            EXPECT_EQ(ReadFileBytes(socket), row.leftAtSocket);
    }
}

TEST(CommandLineControl, IdleCallersDelayNobody)
{
    TempDir dir;
    const std::string home = dir.File("home").utf8_string(), socket = home + "/cadrelle/control.sock";
    ChildProcess program;
    ASSERT_TRUE(program.Start({CADRELLE_BINARY, "--headless", "--app-dir", dir.File("app").utf8_string()}, "",
                              ProgramEnvironment(home)));
    ASSERT_TRUE(WaitUntil([&] { return Cadrelle(home, {"--status"}).rfind("0 state:", 0) == 0; }));
    // Fifty callers, each a process of its own, connect and send nothing (the first half a line).
    int connected[2];
    ASSERT_EQ(::pipe2(connected, O_NONBLOCK), 0);
    ChildProcess idle[50];
    for (int i = 0; i < 50; ++i) {
        ASSERT_TRUE(idle[i].StartCall([&, i] {
            const int fd = Connect(socket);
            if (fd < 0 || (i == 0 && ::send(fd, "stat", 4, MSG_NOSIGNAL) != 4) || ::write(connected[1], "c", 1) != 1)
                return 1;
            ::pause();
            return 0;
        }));
    }
    std::size_t got = 0;
    ASSERT_TRUE(WaitUntil([&] {
        char flags[50];
        const ssize_t n = ::read(connected[0], flags, sizeof flags);
        return (got += n > 0 ? static_cast<std::size_t>(n) : 0) == sizeof flags;
    }));
    ::close(connected[0]), ::close(connected[1]);
    // A real --status meanwhile gets its answer (a caller at a time, it would wait for every idle one in turn).
    const ProcessResult status = RunProcess({CADRELLE_BINARY, "--status"}, ProgramEnvironment(home), 5000);
    EXPECT_EQ(status.status, 0);
    EXPECT_EQ(status.out.substr(0, 15), "state: running\n") << status.err;
    for (ChildProcess& caller : idle)
        caller.Stop(SIGKILL);

    // One process keeps at most kIdlePerCaller waiting: its oldest are closed, the newer ones still served.
    constexpr std::size_t kOpened = ControlServer::kIdlePerCaller + 2;
    int fds[kOpened];
    for (int& fd : fds)
        ASSERT_GE(fd = Connect(socket), 0);
    auto closedByServer = [](int fd) {
        pollfd pfd{fd, POLLIN, 0};
        char byte;
        return ::poll(&pfd, 1, 0) == 1 && ::recv(fd, &byte, 1, MSG_DONTWAIT) == 0;
    };
    EXPECT_TRUE(WaitUntil([&] { return closedByServer(fds[0]) && closedByServer(fds[1]); }, 1500));
    for (std::size_t i = 2; i < kOpened; ++i) {
        SCOPED_TRACE(i);
        EXPECT_FALSE(closedByServer(fds[i]));
        std::string answer;
        char buffer[256];
        ::send(fds[i], "status\n", 7, MSG_NOSIGNAL);
        for (ssize_t n; (n = ::read(fds[i], buffer, sizeof buffer)) > 0;)
            answer.append(buffer, static_cast<std::size_t>(n));
        EXPECT_EQ(answer.substr(0, 26), "exit 0\nout state: running\n");
    }
    for (int fd : fds)
        ::close(fd);
    EXPECT_EQ(program.Stop(SIGTERM), 0);
}
