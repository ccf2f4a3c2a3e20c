#include "buildwatch/BuildStack.h"

namespace bv {
namespace {

struct StackText {
    BuildStack stack;
    std::string_view raw;
    std::string_view label;
};

constexpr StackText kTexts[] = {
    {BuildStack::rust, "rust", "Rust"},
    {BuildStack::tauri, "tauri", "Tauri"},
    {BuildStack::swiftPackage, "swiftPackage", "Swift package"},
    {BuildStack::xcode, "xcode", "Xcode"},
    {BuildStack::node, "node", "JavaScript"},
    {BuildStack::gradle, "gradle", "Gradle"},
    {BuildStack::flutter, "flutter", "Flutter"},
    {BuildStack::python, "python", "Python"},
};

} // namespace

std::string_view rawValue(BuildStack stack) { return kTexts[static_cast<int>(stack)].raw; }
std::string_view label(BuildStack stack) { return kTexts[static_cast<int>(stack)].label; }

std::optional<BuildStack> buildStackFromRaw(std::string_view raw) {
    for (const auto& t : kTexts)
        if (t.raw == raw) return t.stack;
    return std::nullopt;
}

const std::vector<BuildStack>& allBuildStacks() {
    static const std::vector<BuildStack> all{BuildStack::rust,   BuildStack::tauri,  BuildStack::swiftPackage,
                                             BuildStack::xcode,  BuildStack::node,   BuildStack::gradle,
                                             BuildStack::flutter, BuildStack::python};
    return all;
}

} // namespace bv
