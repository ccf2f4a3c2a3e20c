#include "space/DiskMap.h"

namespace bv {
namespace {

Json nodeJson(const DiskMapNode& node) {
    Json j = Json::object();
    j["path"] = node.path;
    j["name"] = node.name;
    j["bytes"] = node.bytes;
    j["fileCount"] = node.fileCount;
    j["sharedBytes"] = node.sharedBytes;
    Json children = Json::array();
    for (const auto& c : node.children) children.push_back(nodeJson(c));
    j["children"] = std::move(children);
    return j;
}

} // namespace

Json diskMapJson(const DiskMap& map) {
    Json j = Json::object();
    j["rootPath"] = map.rootPath;
    j["totalBytes"] = map.totalBytes;
    j["fileCount"] = map.fileCount;
    j["sharedBytes"] = map.sharedBytes;
    j["unreadableCount"] = map.unreadableCount;
    putDate(j, "scannedAt", map.scannedAt);
    j["truncated"] = map.truncated;
    j["root"] = nodeJson(map.root);
    return j;
}

} // namespace bv
