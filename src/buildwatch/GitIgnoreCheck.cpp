#include "buildwatch/GitIgnoreCheck.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>


extern char** environ;

namespace bv {
namespace {

std::atomic<std::int64_t> gStarted{0};

// The environment without the variables that would point git at another repository.
std::vector<char*> childEnvironment() {
    std::vector<char*> env;
    for (char** e = environ; e && *e; ++e) {
        const std::string_view v(*e);
        if (v.starts_with("GIT_DIR=") || v.starts_with("GIT_WORK_TREE=") || v.starts_with("GIT_INDEX_FILE=") ||
            v.starts_with("GIT_CEILING_DIRECTORIES="))
            continue;
        env.push_back(*e);
    }
    env.push_back(nullptr);
    return env;
}

struct Pipe {
    int fd[2] = {-1, -1};
    bool open() { return ::pipe2(fd, O_CLOEXEC) == 0; }
    // A socket pair instead, so writing after the reader has gone fails without SIGPIPE.
    bool openSocket() { return ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, fd) == 0; }
    void close(int i) {
        if (fd[i] >= 0) ::close(fd[i]);
        fd[i] = -1;
    }
    ~Pipe() {
        close(0);
        close(1);
    }
};

} // namespace

std::int64_t GitIgnoreCheck::processesStarted() { return gStarted.load(); }

std::optional<std::string> GitIgnoreCheck::workTreeOf(const std::string& folder) {
    std::string dir = folder;
    while (!dir.empty()) {
        struct stat st {};
        const std::string probe = (dir == "/" ? std::string() : dir) + "/.git";
        if (::lstat(probe.c_str(), &st) == 0) return dir;
        if (dir == "/") break;
        const auto slash = dir.rfind('/');
        if (slash == std::string::npos) break;
        dir = slash == 0 ? "/" : dir.substr(0, slash);
    }
    return std::nullopt;
}

std::optional<std::set<std::string>> GitIgnoreCheck::ignoredPaths(const std::string& workTree,
                                                                  const std::vector<std::string>& paths) {
    std::set<std::string> ignored;
    if (paths.empty()) return ignored;

    Pipe in, out, err;
    if (!in.openSocket() || !out.open() || !err.open()) return std::nullopt;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.fd[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out.fd[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err.fd[1], 2);
    std::vector<std::string> args{"git", "-C", workTree, "check-ignore", "-z", "--stdin"};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    auto env = childEnvironment();
    pid_t pid = 0;
    const int rc = ::posix_spawnp(&pid, "git", &actions, nullptr, argv.data(), env.data());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return std::nullopt;
    gStarted.fetch_add(1);
    in.close(0);
    out.close(1);
    err.close(1);

    std::string input;
    for (const auto& p : paths) {
        input += p;
        input.push_back('\0');
    }
    // Feed the paths while reading the answers, so neither side waits on a full pipe.
    ::fcntl(in.fd[1], F_SETFL, O_NONBLOCK);
    std::size_t written = 0;
    std::string output;
    bool outOpen = true, errOpen = true;
    char buf[65536];
    while (outOpen || errOpen || in.fd[1] >= 0) {
        pollfd fds[3];
        nfds_t n = 0;
        int outAt = -1, errAt = -1, inAt = -1;
        if (outOpen) fds[outAt = static_cast<int>(n++)] = {out.fd[0], POLLIN, 0};
        if (errOpen) fds[errAt = static_cast<int>(n++)] = {err.fd[0], POLLIN, 0};
        if (in.fd[1] >= 0) fds[inAt = static_cast<int>(n++)] = {in.fd[1], POLLOUT, 0};
        if (::poll(fds, n, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (inAt >= 0 && fds[inAt].revents) {
            if (fds[inAt].revents & (POLLERR | POLLHUP)) {
                in.close(1);
            } else {
                const ssize_t w = ::send(in.fd[1], input.data() + written, input.size() - written, MSG_NOSIGNAL);
                if (w > 0) written += static_cast<std::size_t>(w);
                else if (w < 0 && errno != EAGAIN && errno != EINTR) in.close(1);
                if (written == input.size()) in.close(1);
            }
        }
        const auto drain = [&](int at, int fd, bool& open, std::string* sink) {
            if (at < 0 || !fds[at].revents) return;
            const ssize_t r = ::read(fd, buf, sizeof buf);
            if (r > 0) {
                if (sink) sink->append(buf, static_cast<std::size_t>(r));
            } else if (r == 0 || (errno != EINTR && errno != EAGAIN)) {
                open = false;
            }
        };
        drain(outAt, out.fd[0], outOpen, &output);
        drain(errAt, err.fd[0], errOpen, nullptr);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) return std::nullopt;
    std::size_t start = 0;
    while (start < output.size()) {
        const auto end = output.find('\0', start);
        if (end == std::string::npos) break;
        if (end > start) ignored.insert(output.substr(start, end - start));
        start = end + 1;
    }
    return ignored;
}

} // namespace bv
