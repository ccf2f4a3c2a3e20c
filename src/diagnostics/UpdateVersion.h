#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bv {

// A release's version number as update feeds and the program write it: dotted decimal
// numbers ("1.10.0"), an optional leading "v", and an optional pre-release part after "-"
// or "~" ("2.0.0-beta.2"). Missing numbers count as zero (1.2 == 1.2.0); a pre-release comes
// before its release (2.0.0-rc.1 < 2.0.0); pre-release parts compare dot by dot, numbers as
// numbers and below words ("beta.2" < "beta.10" < "rc.1").
struct UpdateVersion {
    std::vector<std::uint32_t> numbers;
    std::vector<std::string> preRelease; // empty for a release

    // Nothing for text that is not such a version (empty, "1..2", "1.x", a number over 9 digits).
    [[nodiscard]] static std::optional<UpdateVersion> parse(std::string_view text);
    // Negative, zero or positive as this version is older than, the same as or newer than `other`.
    [[nodiscard]] int compare(const UpdateVersion& other) const;
};

} // namespace bv
