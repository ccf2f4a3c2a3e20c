#pragma once
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bv {

// The paths a repository's index (its staging area, the file "$GIT_DIR/index") holds, read
// straight from the file. Only what is understood completely is answered: index versions 2,
// 3 and 4 of a SHA-1 repository whose checksum is right, with no extension other than the
// cache tree, resolve-undo and the two offset tables, and no entry marked skip-worktree or
// intent-to-add. Anything else (a split or sparse index, an untracked cache, a corrupt or
// truncated file) gives nothing, so the caller can ask git instead.
class GitIndex {
public:
    // Reads `indexFile`. A file that does not exist is an empty index, as git treats it.
    [[nodiscard]] static std::optional<GitIndex> read(const std::string& indexFile);

    // Parses the bytes of an index file (as `read` does after reading them).
    [[nodiscard]] static std::optional<GitIndex> parse(std::string_view bytes);

    // True when an entry is `path` itself or lies below it (`path` + "/..."): git never calls
    // such a path ignored, whatever the ignore rules say.
    [[nodiscard]] bool holdsOrContains(std::string_view path) const;

    [[nodiscard]] const std::vector<std::string>& paths() const { return paths_; }

private:
    std::vector<std::string> paths_; // sorted byte-wise
};

} // namespace bv
