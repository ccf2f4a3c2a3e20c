#pragma once
#include <optional>
#include <string>
#include <vector>

#include "foundation/Json.h"
#include "foundation/Uuid.h"

namespace bv {

// A folder the user asked the duplicate scan to search. The list of them is the file
// "duplicate-roots.json"; the model saves it whole after every add or remove.
struct DuplicateRoot {
    Uuid id;
    std::string path;
    // The stored access grant for the folder, kept as the base64 text it is written as. On
    // this platform access is a plain path lookup, so it is carried through untouched.
    std::optional<std::string> bookmark;

    friend bool operator==(const DuplicateRoot&, const DuplicateRoot&) = default;
};

inline constexpr const char* kDuplicateRootsFileName = "duplicate-roots.json";

// One element: `id` (UUID text, either case) and `path` are required, `bookmark` is
// optional text. Throws DecodeError on anything else.
[[nodiscard]] DuplicateRoot decodeDuplicateRoot(const Json& json);
[[nodiscard]] Json encodeDuplicateRoot(const DuplicateRoot& root);

// The whole file: an array of roots. One bad element fails the whole file (DecodeError),
// which the caller reads as "no file": the list starts empty.
[[nodiscard]] std::vector<DuplicateRoot> decodeDuplicateRoots(const Json& json);
[[nodiscard]] Json encodeDuplicateRoots(const std::vector<DuplicateRoot>& roots);

} // namespace bv
