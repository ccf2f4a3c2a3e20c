#include "buildwatch/GitIgnoreCheck.h"

#include <sys/stat.h>

#include "clean/GitQuery.h"

namespace bv {

std::int64_t GitIgnoreCheck::processesStarted() {
    return GitQuery::processesStarted();
}

std::optional<std::string> GitIgnoreCheck::workTreeOf(const std::string& folder) {
    std::string dir = folder;
    while (!dir.empty()) {
        struct stat st {};
        const std::string probe = (dir == "/" ? std::string() : dir) + "/.git";
        if (::lstat(probe.c_str(), &st) == 0)
            return dir;
        if (dir == "/")
            break;
        const auto slash = dir.rfind('/');
        if (slash == std::string::npos)
            break;
        dir = slash == 0 ? "/" : dir.substr(0, slash);
    }
    return std::nullopt;
}

// The old-project search asks git the same question: one shared way to ask it, with paths
// relative to the work tree and the answers mapped back to the paths given.
std::optional<std::set<std::string>> GitIgnoreCheck::ignoredPaths(const std::string& workTree,
                                                                  const std::vector<std::string>& paths) {
    std::set<std::string> ignored;
    if (paths.empty())
        return ignored;
    const std::string prefix = workTree == "/" ? "/" : workTree + "/";
    std::vector<std::string> relative;
    relative.reserve(paths.size());
    for (const auto& p : paths)
        relative.push_back(p.starts_with(prefix) ? p.substr(prefix.size()) : p);
    const auto answer = GitQuery::ignoredPaths(workTree, relative);
    if (!answer)
        return std::nullopt;
    for (const auto& r : *answer)
        ignored.insert(r.starts_with('/') ? r : prefix + r);
    return ignored;
}

} // namespace bv
