#pragma once
#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"

namespace bv {

// The questions the old-project search and Build Watch put to git, asked of the `git` found on PATH,
// started directly (never through a shell) with its error output thrown away.
class GitQuery {
public:
    // Which of `relativePaths` (relative to `repository`, the folder that holds ".git") the
    // repository ignores, as `git -C repository check-ignore --stdin -z` says. Read from the
    // repository's files when IgnoreRules can answer exactly; else git is asked, every path
    // in one process. Nothing when git is not on PATH, could not be started or failed (any
    // exit status other than 0 "some ignored" and 1 "none ignored"): without an answer
    // nothing counts as ignored.
    [[nodiscard]] static std::optional<std::vector<std::string>> ignoredPaths(const std::string& repository,
                                                                              const std::vector<std::string>& relativePaths);

    // The time of the last commit of the repository at `folder`, as `git log -1 --format=%ct`
    // gives it: read straight from the repository when HEAD's commit is a loose object (zlib),
    // else asked of git. Nothing without git, without a commit, or on any failure.
    [[nodiscard]] static std::optional<TimePoint> lastCommit(const std::string& folder);

    // How many git processes this program has started so far (for the benchmark's report).
    [[nodiscard]] static long processesStarted() { return started_.load(); }

    struct Outcome {
        int status = -1;
        std::string output;
    };
    // Runs a program found on PATH with `input` on its standard input; gives its exit status
    // and standard output, or nothing when it could not be started or died of a signal.
    [[nodiscard]] static std::optional<Outcome> run(const std::vector<std::string>& argv, const std::string& input);

private:
    static inline std::atomic<long> started_{0};
};

} // namespace bv
