#include "buildwatch/BuildTarget.h"

namespace bv {

Json encodeBuildStacks(const std::vector<BuildStack>& stacks) {
    Json a = Json::array();
    for (const BuildStack s : stacks) a.push_back(std::string(rawValue(s)));
    return a;
}

std::vector<BuildStack> decodeBuildStacks(const Json& json) {
    return decodeArray<BuildStack>(json, [](const Json& v) {
        const auto s = buildStackFromRaw(textFromJson(v));
        if (!s) throw DecodeError("unknown build stack");
        return *s;
    });
}

Json encodeBuildTarget(const BuildTarget& t) {
    Json j = Json::object();
    j["path"] = t.path;
    j["anchorPath"] = t.anchorPath;
    j["title"] = t.title;
    j["stack"] = std::string(rawValue(t.stack));
    j["bytes"] = t.bytes;
    putDate(j, "newestChange", t.newestChange);
    return j;
}

BuildTarget decodeBuildTarget(const Json& json) {
    const JsonReader r(json);
    BuildTarget t;
    t.path = r.text("path");
    t.anchorPath = r.text("anchorPath");
    t.title = r.text("title");
    const auto stack = buildStackFromRaw(r.text("stack"));
    if (!stack) throw DecodeError("unknown build stack");
    t.stack = *stack;
    t.bytes = r.integer("bytes");
    t.newestChange = r.optionalDate("newestChange");
    return t;
}

Json encodeBuildSuggestion(const BuildSuggestion& s) {
    Json j = Json::object();
    j["path"] = s.path;
    j["name"] = s.name;
    j["stacks"] = encodeBuildStacks(s.stacks);
    j["bytes"] = s.bytes;
    j["targets"] = Json::array();
    for (const auto& t : s.targets) j["targets"].push_back(encodeBuildTarget(t));
    return j;
}

} // namespace bv
