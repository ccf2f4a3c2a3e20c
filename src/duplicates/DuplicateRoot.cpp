#include "duplicates/DuplicateRoot.h"

namespace bv {

DuplicateRoot decodeDuplicateRoot(const Json& json) {
    const JsonReader reader(json);
    DuplicateRoot root;
    const auto id = Uuid::parse(reader.text("id"));
    if (!id) throw DecodeError("a duplicate root's id is not a UUID");
    root.id = *id;
    root.path = reader.text("path");
    root.bookmark = reader.optionalText("bookmark");
    return root;
}

Json encodeDuplicateRoot(const DuplicateRoot& root) {
    Json json = Json::object();
    json["id"] = root.id.text();
    json["path"] = root.path;
    if (root.bookmark) json["bookmark"] = *root.bookmark;
    return json;
}

std::vector<DuplicateRoot> decodeDuplicateRoots(const Json& json) {
    return decodeArray<DuplicateRoot>(json, decodeDuplicateRoot);
}

Json encodeDuplicateRoots(const std::vector<DuplicateRoot>& roots) {
    Json json = Json::array();
    for (const auto& root : roots) json.push_back(encodeDuplicateRoot(root));
    return json;
}

} // namespace bv
