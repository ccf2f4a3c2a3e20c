#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "buildwatch/BuildStack.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// One folder of a project that its next build recreates, named by a catalogue row.
struct BuildTarget {
    std::string path;       // absolute
    std::string anchorPath; // the folder the row matched against: the (nested) project or a DerivedData folder
    std::string title;      // the row's title
    BuildStack stack = BuildStack::rust;
    std::int64_t bytes = 0; // allocated size of everything in it; 0 when not measured
    std::optional<TimePoint> newestChange;

    friend bool operator==(const BuildTarget&, const BuildTarget&) = default;
};

// A project found by the look for projects.
struct BuildSuggestion {
    std::string path;
    std::string name; // last path component
    std::vector<BuildStack> stacks;
    std::int64_t bytes = 0; // the targets' bytes summed
    std::vector<BuildTarget> targets;

    friend bool operator==(const BuildSuggestion&, const BuildSuggestion&) = default;
};

// JSON with the field names as keys; stacks as raw values, dates as ISO 8601, an absent
// newestChange left out. Decoding throws DecodeError on a missing key or unknown stack.
[[nodiscard]] Json encodeBuildTarget(const BuildTarget& target);
[[nodiscard]] BuildTarget decodeBuildTarget(const Json& json);
[[nodiscard]] Json encodeBuildStacks(const std::vector<BuildStack>& stacks);
[[nodiscard]] std::vector<BuildStack> decodeBuildStacks(const Json& json);
[[nodiscard]] Json encodeBuildSuggestion(const BuildSuggestion& suggestion);

} // namespace bv
