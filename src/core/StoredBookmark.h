#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Json.h"

namespace bv {

// A folder the user granted, as kept in "bookmarks.json" and inside feature records:
// `data` is the bookmark's bytes, written as Base64 text, and `path` the folder's path when
// it was granted. On Linux the bookmark bytes are the path itself.
struct StoredBookmark {
    std::string data; // raw bytes
    std::string path;

    bool operator==(const StoredBookmark&) const = default;

    // {"data": "<base64>", "path": "..."}. Both keys are required; `data` must be valid Base64.
    [[nodiscard]] Json toJson() const;
    [[nodiscard]] static StoredBookmark fromJson(const Json& json); // throws DecodeError

    // The standard alphabet with "=" padding, as the shared encoder writes binary data.
    [[nodiscard]] static std::string encodeBase64(std::string_view bytes);
    // Strict: length a multiple of four, only the alphabet, padding only at the end and
    // with zero bits under it. Anything else gives nothing.
    [[nodiscard]] static std::optional<std::string> decodeBase64(std::string_view text);
};

// The whole content of "bookmarks.json": key ("home", "desktop", "downloads") to bookmark.
using StoredBookmarks = std::map<std::string, StoredBookmark>;

[[nodiscard]] Json bookmarksToJson(const StoredBookmarks& bookmarks);
// Throws DecodeError when the value is not an object of bookmarks; one bad entry fails all.
[[nodiscard]] StoredBookmarks bookmarksFromJson(const Json& json);

} // namespace bv
