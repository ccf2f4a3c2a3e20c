#pragma once
#include <optional>
#include <string>
#include <vector>

namespace bv {

// Whether git ignores folders of a repository, worked out from the repository's own files
// instead of starting git: the ".gitignore" files from the top of the work tree down to each
// folder, "$GIT_DIR/info/exclude", the user's global ignore file and the index.
//
// The answer is exactly what `git check-ignore` prints for the same paths, or nothing at all
// whenever anything lies outside what this reading covers; then git itself must be asked.
// Covered: comment and blank lines, trailing spaces, "!" negation, "/" anchoring, a trailing
// "/" for folders only, "*", "?" and "[...]" bracket sets, deeper files overriding shallower
// ones, then info/exclude, then the global file, and a folder inside an ignored folder being
// ignored. Not covered (so git decides): patterns with "\" or "**", a ".gitignore" that is a
// link or cannot be read, a ".git" that is not a plain folder of this user, nested
// repositories, links on the way, any GIT_* variable that can change the repository or its
// settings, settings that name another excludes file, fold case, include other files, move
// the work tree or make the index sparse, split or monitored, and index entries marked
// skip-worktree or intent-to-add.
class IgnoreRules {
public:
    // The members of `relativePaths` (folders relative to `repository`, the folder holding
    // ".git", separated by "/") that git ignores, in their given order; nothing when the
    // question must go to git. Reads files only, never writes.
    [[nodiscard]] static std::optional<std::vector<std::string>> ignoredPaths(const std::string& repository,
                                                                              const std::vector<std::string>& relativePaths);
};

} // namespace bv
