#pragma once
#include <optional>
#include <string_view>
#include <vector>

namespace bv {

// A kind of project Build Watch knows. Written to JSON as its raw value ("rust", "tauri",
// "swiftPackage", "xcode", "node", "gradle", "flutter", "python"); the screens show its label.
// The order of the cases is the order stacks are reported in.
enum class BuildStack { rust, tauri, swiftPackage, xcode, node, gradle, flutter, python };

[[nodiscard]] std::string_view rawValue(BuildStack stack);
[[nodiscard]] std::string_view label(BuildStack stack); // "Rust", "Swift package", "JavaScript", ...
// The stack with this raw value (exact case), or nothing.
[[nodiscard]] std::optional<BuildStack> buildStackFromRaw(std::string_view raw);
// Every case, in order.
[[nodiscard]] const std::vector<BuildStack>& allBuildStacks();

} // namespace bv
