#include "duplicates/DuplicateGroup.h"

namespace bv {

Json encodeDuplicateGroup(const DuplicateGroup& group) {
    Json json = Json::object();
    json["id"] = group.id;
    json["fileSize"] = group.fileSize;
    json["reclaimableBytes"] = group.reclaimableBytes;
    Json files = Json::array();
    for (const auto& file : group.files) {
        Json f = Json::object();
        f["path"] = file.path;
        f["bytes"] = file.bytes;
        putDate(f, "modified", file.modified);
        f["sharesStorage"] = file.sharesStorage;
        files.push_back(std::move(f));
    }
    json["files"] = std::move(files);
    return json;
}

Json encodeDuplicateGroups(const std::vector<DuplicateGroup>& groups) {
    Json json = Json::array();
    for (const auto& group : groups) json.push_back(encodeDuplicateGroup(group));
    return json;
}

} // namespace bv
