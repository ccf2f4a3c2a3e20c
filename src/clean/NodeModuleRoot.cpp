#include "clean/NodeModuleRoot.h"

#include "foundation/FileIO.h"

namespace bv {

NodeModuleRoot decodeNodeModuleRoot(const Json& json) {
    const JsonReader reader(json);
    NodeModuleRoot root;
    const auto id = Uuid::parse(reader.text("id"));
    if (!id) throw DecodeError("a project parent folder's id is not a UUID");
    root.id = *id;
    root.path = reader.text("path");
    root.bookmark = reader.optionalText("bookmark");
    return root;
}

Json encodeNodeModuleRoot(const NodeModuleRoot& root) {
    Json json = Json::object();
    json["id"] = root.id.text();
    json["path"] = root.path;
    if (root.bookmark) json["bookmark"] = *root.bookmark;
    return json;
}

std::vector<NodeModuleRoot> loadNodeRoots(const std::string& dataFolder) {
    const auto text = readWholeFile(dataFolder + "/" + kNodeRootsFileName);
    if (!text) return {};
    const auto json = parseJson(*text);
    if (!json) return {};
    try {
        return decodeArray<NodeModuleRoot>(*json, decodeNodeModuleRoot);
    } catch (const DecodeError&) {
        return {};
    }
}

bool saveNodeRoots(const std::string& dataFolder, const std::vector<NodeModuleRoot>& roots) {
    if (!makeDirectories(dataFolder)) return false;
    Json json = Json::array();
    for (const auto& root : roots) json.push_back(encodeNodeModuleRoot(root));
    return writeFileAtomically(dataFolder + "/" + kNodeRootsFileName, encodeJson(json));
}

} // namespace bv
