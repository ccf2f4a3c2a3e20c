#pragma once
#include <optional>
#include <string>
#include <vector>

#include "foundation/Json.h"
#include "foundation/Uuid.h"

namespace bv {

// A parent folder the user named for the old-project search ("Projects" and the like). The
// list of them is the file "node-roots.json" in the program's data folder; it is saved whole
// after every add or remove.
struct NodeModuleRoot {
    Uuid id;
    std::string path;
    // The stored access grant as its base64 text; on this platform carried through untouched.
    std::optional<std::string> bookmark;

    friend bool operator==(const NodeModuleRoot&, const NodeModuleRoot&) = default;
};

inline constexpr const char* kNodeRootsFileName = "node-roots.json";

// One element: `id` (UUID text, either case) and `path` required, `bookmark` optional text.
// Throws DecodeError on anything else.
[[nodiscard]] NodeModuleRoot decodeNodeModuleRoot(const Json& json);
[[nodiscard]] Json encodeNodeModuleRoot(const NodeModuleRoot& root);

// The whole file is an array of roots. A missing, unreadable or undecodable file reads as no
// roots (one bad element fails the file). Saving writes atomically; false when it failed.
[[nodiscard]] std::vector<NodeModuleRoot> loadNodeRoots(const std::string& dataFolder);
[[nodiscard]] bool saveNodeRoots(const std::string& dataFolder, const std::vector<NodeModuleRoot>& roots);

} // namespace bv
