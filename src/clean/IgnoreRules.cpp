#include "clean/IgnoreRules.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <string_view>

#include "clean/GitIndex.h"
#include "foundation/FileIO.h"

extern char** environ;

namespace bv {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr off_t kLargestIgnoreFile = off_t{4} << 20;

// One line of an ignore file, taken apart.
struct Pattern {
    std::string body;         // without "!", a leading "/" or a trailing "/"
    bool negative = false;    // "!": a match keeps the path
    bool wholePath = false;   // held a "/" before its end: matched against the path below the file's folder
};

// The patterns of one file and the folder they apply to ("" for the top, else "a/b/").
struct PatternList {
    std::string base;
    std::vector<Pattern> patterns;
};

// The index of the "]" that closes the set opened at `open`, or npos. A "]" right after the
// opener (or after its "!" or "^") is a member, not the end.
std::size_t setEnd(std::string_view s, std::size_t open) {
    std::size_t j = open + 1;
    if (j < s.size() && (s[j] == '!' || s[j] == '^')) ++j;
    if (j < s.size() && s[j] == ']') ++j;
    while (j < s.size() && s[j] != ']') ++j;
    return j < s.size() ? j : npos;
}

// Sets are read here only in their plain form: no "/" inside, no "[:class:]" or other
// bracket forms, and always closed.
bool setsUnderstood(std::string_view s) {
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '[') continue;
        const std::size_t end = setEnd(s, i);
        if (end == npos) return false;
        const std::string_view inside = s.substr(i + 1, end - i - 1);
        if (inside.find('/') != npos || inside.find('[') != npos) return false;
        i = end;
    }
    return true;
}

// Whether the set opened at `open` holds `c`; `next` is set past its "]". Members are single
// bytes and ranges "a-z"; a "-" first or last stands for itself.
bool setHolds(std::string_view p, std::size_t open, unsigned char c, std::size_t& next) {
    const std::size_t end = setEnd(p, open);
    std::size_t j = open + 1;
    const bool negated = p[j] == '!' || p[j] == '^';
    if (negated) ++j;
    bool held = false;
    while (j < end) {
        const auto lo = static_cast<unsigned char>(p[j]);
        if (j + 2 < end && p[j + 1] == '-') {
            const auto hi = static_cast<unsigned char>(p[j + 2]);
            held = held || (lo <= c && c <= hi);
            j += 3;
        } else {
            held = held || lo == c;
            ++j;
        }
    }
    next = end + 1;
    return held != negated;
}

// A "/"-free part of a pattern against a "/"-free part of a path: "*" any run, "?" any one
// byte, "[...]" one byte of the set. Backtracks to the last "*" only, which is enough when
// nothing but "*" can match a varying length.
bool partMatches(std::string_view p, std::string_view t) {
    std::size_t pi = 0, ti = 0, starP = npos, starT = 0;
    while (ti < t.size()) {
        if (pi < p.size() && p[pi] == '*') {
            starP = ++pi;
            starT = ti;
            continue;
        }
        std::size_t next = pi + 1;
        bool ok = false;
        if (pi < p.size()) {
            if (p[pi] == '?') ok = true;
            else if (p[pi] == '[') ok = setHolds(p, pi, static_cast<unsigned char>(t[ti]), next);
            else ok = p[pi] == t[ti];
        }
        if (ok) {
            pi = next;
            ++ti;
            continue;
        }
        if (starP == npos) return false;
        pi = starP;
        ti = ++starT;
    }
    while (pi < p.size() && p[pi] == '*') ++pi;
    return pi == p.size();
}

// No wildcard matches "/", so each "/"-separated part matches its counterpart on its own.
bool pathMatches(std::string_view pattern, std::string_view path) {
    for (;;) {
        const auto ps = pattern.find('/');
        const auto ts = path.find('/');
        if (!partMatches(pattern.substr(0, ps), path.substr(0, ts))) return false;
        if (ps == npos || ts == npos) return ps == ts;
        pattern.remove_prefix(ps + 1);
        path.remove_prefix(ts + 1);
    }
}

enum class Line { skip, pattern, unsure };

Line parseLine(std::string_view line, Pattern& out) {
    for (const char c : line)
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f || c == '\\') return Line::unsure;
    if (line.empty() || line.front() == '#') return Line::skip;
    while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
    if (line.empty()) return Line::skip; // spaces alone never match anything
    out = {};
    if (line.front() == '!') {
        out.negative = true;
        line.remove_prefix(1);
    }
    if (!line.empty() && line.back() == '/') line.remove_suffix(1); // every path asked about is a folder
    out.wholePath = line.find('/') != npos;
    if (!line.empty() && line.front() == '/') line.remove_prefix(1);
    if (line.empty() || line.back() == '/' || line.find("//") != npos || line.find("**") != npos || !setsUnderstood(line))
        return Line::unsure;
    out.body = std::string(line);
    return Line::pattern;
}

std::optional<std::string> readSmallFile(const std::string& path, bool followLinks) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | (followLinks ? 0 : O_NOFOLLOW));
    if (fd < 0) return std::nullopt;
    struct stat st {};
    std::string text;
    bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size <= kLargestIgnoreFile;
    char buffer[16384];
    while (ok) {
        const ssize_t r = ::read(fd, buffer, sizeof buffer);
        if (r > 0) text.append(buffer, static_cast<std::size_t>(r));
        else if (r == 0) break;
        else if (errno != EINTR) ok = false;
        if (text.size() > static_cast<std::size_t>(kLargestIgnoreFile)) ok = false;
    }
    ::close(fd);
    return ok ? std::optional<std::string>(std::move(text)) : std::nullopt;
}

bool absent(const std::string& path, bool followLinks) {
    struct stat st {};
    const int rc = followLinks ? ::stat(path.c_str(), &st) : ::lstat(path.c_str(), &st);
    return rc != 0 && (errno == ENOENT || errno == ENOTDIR);
}

// An ignore file's patterns; an empty list when there is no such file, nothing when it is
// there but odd (a link where links are not read, unreadable, or holding unread forms).
std::optional<PatternList> loadList(const std::string& file, std::string base, bool followLinks) {
    PatternList list{std::move(base), {}};
    if (absent(file, followLinks)) return list;
    const auto text = readSmallFile(file, followLinks);
    if (!text) return std::nullopt;
    std::string_view rest = *text;
    if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
    while (!rest.empty()) {
        const auto end = rest.find('\n');
        Pattern p;
        const Line kind = parseLine(rest.substr(0, end), p);
        if (kind == Line::unsure) return std::nullopt;
        if (kind == Line::pattern) list.patterns.push_back(std::move(p));
        rest.remove_prefix(end == npos ? rest.size() : end + 1);
    }
    return list;
}

// No variable may point git elsewhere or change its settings or the way it reads paths;
// only those that touch nothing here are let through.
bool environmentAllows() {
    static constexpr std::string_view kHarmless[] = {
        "GIT_PAGER=",         "GIT_EDITOR=",         "GIT_SEQUENCE_EDITOR=", "GIT_ASKPASS=",
        "GIT_SSH=",           "GIT_SSH_COMMAND=",    "GIT_TERMINAL_PROMPT=", "GIT_AUTHOR_NAME=",
        "GIT_AUTHOR_EMAIL=",  "GIT_AUTHOR_DATE=",    "GIT_COMMITTER_NAME=",  "GIT_COMMITTER_EMAIL=",
        "GIT_COMMITTER_DATE=", "GIT_MERGE_AUTOEDIT=", "GIT_PROXY_COMMAND=",   "GIT_SSL_",
        "GIT_HTTP_"}; // the last two: network settings only
    for (char** e = environ; e && *e; ++e) {
        const std::string_view entry(*e);
        if (!entry.starts_with("GIT_")) continue;
        bool harmless = false;
        for (const auto h : kHarmless) harmless = harmless || entry.starts_with(h);
        if (!harmless) return false;
    }
    return true;
}

std::string lowercased(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

// A settings file git reads: fine when absent, or when it says nothing that changes which
// files are read or how paths compare. Read loosely: a word anywhere, even in a comment or a
// value, is enough to leave the question to git.
bool configAllows(const std::string& file) {
    if (absent(file, true)) return true;
    const auto text = readWholeFile(file);
    if (!text) return false;
    const std::string lower = lowercased(*text);
    for (const char* word : {"excludesfile", "ignorecase", "include", "worktree", "sparse", "splitindex",
                             "untrackedcache", "fsmonitor", "extensions", "precomposeunicode", "attributes"})
        if (lower.find(word) != std::string::npos) return false;
    std::size_t start = 0;
    while (start < lower.size()) {
        auto end = lower.find('\n', start);
        if (end == std::string::npos) end = lower.size();
        std::string line;
        for (std::size_t i = start; i < end; ++i)
            if (lower[i] != ' ' && lower[i] != '\t' && lower[i] != '\r') line.push_back(lower[i]);
        start = end + 1;
        if (line.find("bare") != std::string::npos && line != "bare=false") return false;
        if (line.find("repositoryformatversion") != std::string::npos && line != "repositoryformatversion=0" &&
            line != "repositoryformatversion=1")
            return false;
    }
    return true;
}

bool isPlainFolderOf(const std::string& path, uid_t owner) {
    struct stat st {};
    return ::lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && st.st_uid == owner;
}

// ".git" must be a plain folder git takes for a repository at once, owned by this user (git
// refuses others' repositories unless told otherwise), and not a linked work tree's.
bool repositoryAllows(const std::string& repository, const std::string& gitDir) {
    const uid_t me = ::geteuid();
    if (me == 0 && std::getenv("SUDO_UID")) return false; // git then judges ownership by the caller
    struct stat st {};
    if (::stat(repository.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != me) return false;
    if (!isPlainFolderOf(gitDir, me) || !isPlainFolderOf(gitDir + "/objects", me) || !isPlainFolderOf(gitDir + "/refs", me))
        return false;
    if (!absent(gitDir + "/commondir", false)) return false;
    const auto head = readSmallFile(gitDir + "/HEAD", false);
    if (!head) return false;
    if (head->starts_with("ref: refs/")) return true;
    std::size_t hex = 0;
    while (hex < head->size() && std::isxdigit(static_cast<unsigned char>((*head)[hex]))) ++hex;
    return hex == 40 && (head->size() == 40 || (*head)[40] == '\n');
}

// Paths the reading takes: plain relative folder paths that git would not read as patterns.
bool pathUnderstood(std::string_view rel) {
    if (rel.empty() || rel.front() == ':' || rel.find_first_of("*?[]\\") != npos) return false;
    std::size_t from = 0;
    for (;;) {
        const auto slash = rel.find('/', from);
        const std::string_view part = rel.substr(from, slash == npos ? npos : slash - from);
        if (part.empty() || part == "." || part == ".." || part == ".git") return false;
        if (slash == npos) return true;
        from = slash + 1;
    }
}

// The rules of one repository, the per-folder files read once each as paths reach them.
class Reader {
public:
    Reader(std::string repository, std::vector<PatternList> tail, GitIndex index)
        : repository_(std::move(repository)), tail_(std::move(tail)), index_(std::move(index)) {}

    // Whether git ignores `rel`; nothing when git must say.
    std::optional<bool> ignored(const std::string& rel) {
        if (!pathUnderstood(rel)) return std::nullopt;
        const bool tracked = index_.holdsOrContains(rel);
        std::vector<const PatternList*> chain; // shallowest first
        if (const PatternList* top = folderList("")) chain.push_back(top);
        else return std::nullopt;
        bool parentIgnored = false;
        std::size_t from = 0;
        for (;;) {
            const auto slash = rel.find('/', from);
            const std::string path = rel.substr(0, slash);
            const std::string full = repository_ + "/" + path;
            // A link on the way makes git refuse the path; a ".git" inside is another repository.
            struct stat st {};
            if (::lstat(full.c_str(), &st) != 0 || !S_ISDIR(st.st_mode) || !absent(full + "/.git", false))
                return std::nullopt;
            if (!parentIgnored) {
                const int v = verdict(chain, path, std::string_view(rel).substr(from, slash == npos ? npos : slash - from));
                if (slash == npos) return !tracked && v > 0;
                if (v > 0) parentIgnored = true; // nothing below an ignored folder can be kept
                else if (const PatternList* here = folderList(path + "/")) chain.push_back(here);
                else return std::nullopt;
            } else if (slash == npos) {
                return !tracked;
            }
            from = slash + 1;
        }
    }

private:
    // +1 ignored, -1 kept by a "!" pattern, 0 no pattern matched. The deepest file speaks
    // first, each file's last matching line wins, then info/exclude, then the global file.
    int verdict(const std::vector<const PatternList*>& chain, std::string_view path, std::string_view name) const {
        const auto judge = [&](const PatternList& list) {
            for (auto p = list.patterns.rbegin(); p != list.patterns.rend(); ++p) {
                const bool hit = p->wholePath ? pathMatches(p->body, path.substr(list.base.size())) : partMatches(p->body, name);
                if (hit) return p->negative ? -1 : 1;
            }
            return 0;
        };
        for (auto l = chain.rbegin(); l != chain.rend(); ++l)
            if (const int v = judge(**l)) return v;
        for (const auto& list : tail_)
            if (const int v = judge(list)) return v;
        return 0;
    }

    // The ".gitignore" of folder `dir` ("" or "a/b/"); nothing when it cannot be read plainly.
    const PatternList* folderList(const std::string& dir) {
        auto it = lists_.find(dir);
        if (it == lists_.end()) it = lists_.emplace(dir, loadList(repository_ + "/" + dir + ".gitignore", dir, false)).first;
        return it->second ? &*it->second : nullptr;
    }

    std::string repository_;
    std::vector<PatternList> tail_; // info/exclude, then the global file
    GitIndex index_;
    std::map<std::string, std::optional<PatternList>> lists_;
};

} // namespace

std::optional<std::vector<std::string>> IgnoreRules::ignoredPaths(const std::string& repositoryIn,
                                                                  const std::vector<std::string>& relativePaths) {
    if (!environmentAllows()) return std::nullopt;
    const std::string repository = repositoryIn == "/" ? std::string() : repositoryIn;
    const std::string gitDir = repository + "/.git";
    if (!repositoryAllows(repositoryIn, gitDir)) return std::nullopt;
    const char* home = std::getenv("HOME");
    if (!home || !*home) return std::nullopt;
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const std::string userDir = xdg && *xdg ? std::string(xdg) + "/git" : std::string(home) + "/.config/git";
    for (const std::string& file : {std::string("/etc/gitconfig"), std::string(home) + "/.gitconfig", userDir + "/config",
                                    gitDir + "/config"})
        if (!configAllows(file)) return std::nullopt;
    auto info = loadList(gitDir + "/info/exclude", "", true);
    auto global = loadList(userDir + "/ignore", "", true);
    auto index = GitIndex::read(gitDir + "/index");
    if (!info || !global || !index) return std::nullopt;
    std::vector<PatternList> tail;
    tail.push_back(std::move(*info));
    tail.push_back(std::move(*global));
    Reader reader(repository, std::move(tail), std::move(*index));
    std::vector<std::string> ignored;
    for (const auto& rel : relativePaths) {
        const auto answer = reader.ignored(rel);
        if (!answer) return std::nullopt; // git answers for all or none, so it takes the whole list
        if (*answer) ignored.push_back(rel);
    }
    return ignored;
}

} // namespace bv
