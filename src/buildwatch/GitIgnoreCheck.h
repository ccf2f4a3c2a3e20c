#pragma once
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace bv {

// Asks git, found on PATH and started without a shell, which of many paths of one work tree
// it ignores: one `git -C <tree> check-ignore -z --stdin` for all of them, so a repository
// holding many projects costs one process, not one per folder. A path git tracks (or holds
// tracked files below) is not ignored, exactly as `check-ignore -q <path>` answers it.
class GitIgnoreCheck {
public:
    // The ignored ones among `paths` (absolute, inside `workTree`), as given. Nothing when git
    // could not be started, was killed, or failed (status above 1): no answer, no target.
    [[nodiscard]] static std::optional<std::set<std::string>> ignoredPaths(const std::string& workTree,
                                                                           const std::vector<std::string>& paths);

    // The nearest folder at or above `folder` holding an entry named ".git" (file or folder),
    // or nothing.
    [[nodiscard]] static std::optional<std::string> workTreeOf(const std::string& folder);

    // How many git processes this program has started, for the benchmark's report.
    [[nodiscard]] static std::int64_t processesStarted();
};

} // namespace bv
