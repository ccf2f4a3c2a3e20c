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
        // The folder is there but this user can't read it (or can't reach it through a folder
        // above): the caller asks for access again rather than treating the folder as gone.
        bool needsAccess = false;
        bool operator==(const Resolved&) const = default;
    };

    // Nothing when the bytes are not an absolute path (empty, relative, holding a NUL) or when
    // nothing exists at that path any more: the folder moved or is missing, and what depends
    // on it turns off. A path that exists but can't be read or reached resolves with
    // `needsAccess` set.
    [[nodiscard]] static std::optional<Resolved> resolve(std::string_view bytes);

    // The bytes for a folder; nothing for a path that isn't absolute.
    [[nodiscard]] static std::optional<std::string> make(std::string_view path);

    // Held for the life of the process on platforms that need it; nothing to do here.
    static bool startAccess(const std::string&) { return true; }
    static void stopAccess(const std::string&) {}
};

} // namespace bv
