#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// Turns bookmark bytes back into a folder and makes new ones. Linux has no scoped grants:
// a bookmark is the folder's path, resolving is a path lookup, and starting or stopping
// access does nothing. The interface stays so callers read the same everywhere.
struct SecurityBookmark {
    struct Resolved {
        std::string url;                      // the folder's path
        std::optional<std::string> refreshed; // new bytes when the old ones were stale; never on Linux
        bool operator==(const Resolved&) const = default;
    };

    // Nothing when the bytes are not an absolute path (empty, relative, holding a NUL) or when
    // nothing exists at that path any more: the bookmark no longer resolves. A path that
    // exists but can't be read still resolves; readability is a separate question.
    [[nodiscard]] static std::optional<Resolved> resolve(std::string_view bytes);

    // The bytes for a folder; nothing for a path that isn't absolute.
    [[nodiscard]] static std::optional<std::string> make(std::string_view path);

    // Held for the life of the process on platforms that need it; nothing to do here.
    static bool startAccess(const std::string&) { return true; }
    static void stopAccess(const std::string&) {}
};

} // namespace bv
