#include "clean/GitQuery.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <zlib.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "clean/IgnoreRules.h"
#include "foundation/FileIO.h"

extern char** environ;

namespace bv {
namespace {

struct Pipe {
    int fd[2] = {-1, -1};
    bool open() { return ::pipe2(fd, O_CLOEXEC) == 0; }
    void close(int i) {
        if (fd[i] >= 0) ::close(fd[i]);
        fd[i] = -1;
    }
    ~Pipe() {
        close(0);
        close(1);
    }
};

// Holds SIGPIPE back on this thread while it writes to a child that may have quit early, so
// the write fails with EPIPE instead of ending the program; a pending one is taken away.
class SigpipeHeld {
public:
    SigpipeHeld() {
        sigemptyset(&set_);
        sigaddset(&set_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &set_, &old_);
    }
    ~SigpipeHeld() {
        const timespec zero{0, 0};
        while (sigtimedwait(&set_, nullptr, &zero) > 0) {
        }
        pthread_sigmask(SIG_SETMASK, &old_, nullptr);
    }
    SigpipeHeld(const SigpipeHeld&) = delete;
    SigpipeHeld& operator=(const SigpipeHeld&) = delete;

private:
    sigset_t set_{}, old_{};
};

std::string trimmed(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) text.pop_back();
    return text;
}

bool isObjectName(const std::string& text) {
    if (text.size() != 40 && text.size() != 64) return false;
    for (const char c : text)
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'))) return false;
    return true;
}

// The commit HEAD names, read from the repository's files: HEAD, a loose ref or packed-refs.
std::optional<std::string> headCommit(const std::string& gitDir) {
    const auto head = readWholeFile(gitDir + "/HEAD");
    if (!head) return std::nullopt;
    const std::string h = trimmed(*head);
    if (isObjectName(h)) return h;
    if (!h.starts_with("ref: refs/")) return std::nullopt;
    const std::string ref = h.substr(5);
    if (ref.find("..") != std::string::npos) return std::nullopt;
    if (const auto loose = readWholeFile(gitDir + "/" + ref)) {
        const std::string sha = trimmed(*loose);
        return isObjectName(sha) ? std::optional<std::string>(sha) : std::nullopt;
    }
    const auto packed = readWholeFile(gitDir + "/packed-refs");
    if (!packed) return std::nullopt;
    std::size_t start = 0;
    while (start < packed->size()) {
        auto end = packed->find('\n', start);
        if (end == std::string::npos) end = packed->size();
        const std::string line = packed->substr(start, end - start);
        const auto space = line.find(' ');
        if (space != std::string::npos && line.substr(space + 1) == ref && isObjectName(line.substr(0, space)))
            return line.substr(0, space);
        start = end + 1;
    }
    return std::nullopt;
}

// The committer time of a commit stored as a loose object; nothing when it is packed or odd.
std::optional<TimePoint> looseCommitTime(const std::string& gitDir, const std::string& sha) {
    const auto compressed = readWholeFile(gitDir + "/objects/" + sha.substr(0, 2) + "/" + sha.substr(2));
    if (!compressed || compressed->size() > (1u << 20)) return std::nullopt;
    std::string text(64 * 1024, '\0');
    z_stream z{};
    if (inflateInit(&z) != Z_OK) return std::nullopt;
    z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed->data()));
    z.avail_in = static_cast<uInt>(compressed->size());
    z.next_out = reinterpret_cast<Bytef*>(text.data());
    z.avail_out = static_cast<uInt>(text.size());
    const int rc = inflate(&z, Z_SYNC_FLUSH); // the header lines come first; a long message may stay unread
    text.resize(z.total_out);
    inflateEnd(&z);
    if ((rc != Z_OK && rc != Z_STREAM_END) || !text.starts_with("commit ")) return std::nullopt;
    std::size_t start = text.find('\0');
    if (start == std::string::npos) return std::nullopt;
    ++start;
    while (start < text.size()) {
        const auto end = text.find('\n', start);
        if (end == std::string::npos || end == start) break; // the message begins after the blank line
        const std::string_view line(text.data() + start, end - start);
        if (line.starts_with("committer ")) {
            // "committer Name <mail> 1700000000 +0000"
            const auto zone = line.rfind(' ');
            const auto stamp = zone == std::string_view::npos ? zone : line.rfind(' ', zone - 1);
            if (stamp == std::string_view::npos) return std::nullopt;
            std::int64_t seconds = 0;
            const auto [ptr, ec] = std::from_chars(line.data() + stamp + 1, line.data() + zone, seconds);
            if (ec != std::errc{} || ptr != line.data() + zone) return std::nullopt;
            return fromEpochSeconds(seconds);
        }
        start = end + 1;
    }
    return std::nullopt;
}

// Whether a program named `git` could be started from PATH (the C library's default search
// path when PATH is unset), as posix_spawnp would look for it.
bool searchPathForGit(std::string_view dirs) {
    std::size_t start = 0;
    for (;;) {
        const auto end = dirs.find(':', start);
        std::string dir(dirs.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (dir.empty()) dir = ".";
        const std::string candidate = dir + "/git";
        struct stat st {};
        if (::stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode) && ::access(candidate.c_str(), X_OK) == 0)
            return true;
        if (end == std::string_view::npos) return false;
        start = end + 1;
    }
}

// The same answer, kept for a few seconds while PATH stays the same: a look for projects asks
// once for each repository it meets, and each search costs a stat for every folder in PATH.
bool gitOnPath() {
    struct Answer {
        std::string dirs;
        bool found;
        std::chrono::steady_clock::time_point at;
    };
    static std::mutex lock;
    static std::optional<Answer> last;
    const char* path = std::getenv("PATH");
    const std::string_view dirs = path ? path : "/bin:/usr/bin";
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard guard(lock);
    if (!last || last->dirs != dirs || now - last->at > std::chrono::seconds(5))
        last = Answer{std::string(dirs), searchPathForGit(dirs), now};
    return last->found;
}

} // namespace

std::optional<GitQuery::Outcome> GitQuery::run(const std::vector<std::string>& argv, const std::string& input) {
    if (argv.empty()) return std::nullopt;
    Pipe in, out;
    if (!in.open() || !out.open()) return std::nullopt;

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in.fd[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out.fd[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<char*> args;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    // Variables that would point git at another repository than the one asked about stay out.
    std::vector<char*> env;
    for (char** e = environ; e && *e; ++e) {
        const std::string_view v(*e);
        if (!v.starts_with("GIT_DIR=") && !v.starts_with("GIT_WORK_TREE=") && !v.starts_with("GIT_INDEX_FILE="))
            env.push_back(*e);
    }
    env.push_back(nullptr);
    pid_t pid = 0;
    const int rc = ::posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), env.data());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return std::nullopt;
    if (argv[0] == "git") ++started_;
    in.close(0);
    out.close(1);

    const SigpipeHeld held;
    // Feed and drain at once: a long list of paths must not block on a full pipe.
    Outcome outcome;
    std::size_t written = 0;
    if (input.empty()) in.close(1);
    char buffer[16384];
    while (out.fd[0] >= 0) {
        pollfd fds[2] = {{out.fd[0], POLLIN, 0}, {in.fd[1], POLLOUT, 0}};
        const int n = ::poll(fds, in.fd[1] >= 0 ? 2 : 1, -1);
        if (n < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (in.fd[1] >= 0 && (fds[1].revents & (POLLOUT | POLLERR | POLLHUP))) {
            const ssize_t w = ::write(in.fd[1], input.data() + written, input.size() - written);
            if (w > 0) written += static_cast<std::size_t>(w);
            if (w < 0 && errno != EINTR && errno != EAGAIN) written = input.size();
            if (written >= input.size()) in.close(1);
        }
        if (fds[0].revents & (POLLIN | POLLHUP | POLLERR)) {
            const ssize_t r = ::read(out.fd[0], buffer, sizeof buffer);
            if (r > 0) outcome.output.append(buffer, static_cast<std::size_t>(r));
            else if (r == 0 || errno != EINTR) out.close(0);
        }
    }
    in.close(1);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) return std::nullopt;
    if (!WIFEXITED(status)) return std::nullopt;
    outcome.status = WEXITSTATUS(status);
    return outcome;
}

std::optional<std::vector<std::string>> GitQuery::ignoredPaths(const std::string& repository,
                                                               const std::vector<std::string>& relativePaths) {
    if (relativePaths.empty()) return std::vector<std::string>{};
    // Without git there is no answer, even where its files could be read.
    if (!gitOnPath()) return std::nullopt;
    // Most repositories' rules are plain enough to read here, for a fraction of a process.
    if (auto known = IgnoreRules::ignoredPaths(repository, relativePaths)) return known;
    std::string input;
    for (const auto& p : relativePaths) input.append(p).push_back('\0');
    const auto outcome = run({"git", "-C", repository, "check-ignore", "--stdin", "-z"}, input);
    if (!outcome || (outcome->status != 0 && outcome->status != 1)) return std::nullopt;
    std::vector<std::string> ignored;
    std::size_t start = 0;
    const std::string& text = outcome->output;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '\0') {
            if (i > start) ignored.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    return ignored;
}

std::optional<TimePoint> GitQuery::lastCommit(const std::string& folder) {
    // Most recent commits are still loose objects: read their time without starting git,
    // which costs far more than the read. Anything else is git's to answer.
    const std::string gitDir = folder + "/.git";
    if (const auto sha = headCommit(gitDir))
        if (const auto t = looseCommitTime(gitDir, *sha)) return t;
    const auto outcome = run({"git", "-C", folder, "log", "-1", "--format=%ct"}, {});
    if (!outcome || outcome->status != 0) return std::nullopt;
    std::int64_t seconds = 0;
    const char* begin = outcome->output.data();
    const char* end = begin + outcome->output.size();
    while (end > begin && (end[-1] == '\n' || end[-1] == '\r')) --end;
    const auto [ptr, ec] = std::from_chars(begin, end, seconds);
    if (ec != std::errc{} || ptr != end || begin == end) return std::nullopt;
    return fromEpochSeconds(seconds);
}

} // namespace bv
