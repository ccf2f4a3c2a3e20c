#include "space/DiskMapText.h"

#include <cstdio>

#include "foundation/ByteText.h"

namespace bv {
namespace {

void appendNode(std::string& out, const DiskMapNode& node, int depth) {
    char line[64];
    std::snprintf(line, sizeof line, "%10s %12s  ", byteText(node.bytes).c_str(), groupedCount(node.fileCount).c_str());
    out += line;
    out.append(static_cast<std::size_t>(depth) * 2, ' ');
    out += node.name;
    out += '\n';
    for (const auto& c : node.children) appendNode(out, c, depth + 1);
}

} // namespace

std::string groupedCount(std::int64_t n) {
    std::string digits = std::to_string(n < 0 ? -n : n);
    std::string out;
    const std::size_t first = digits.size() % 3 == 0 ? 3 : digits.size() % 3;
    out = digits.substr(0, first);
    for (std::size_t i = first; i < digits.size(); i += 3) out += "," + digits.substr(i, 3);
    return n < 0 ? "-" + out : out;
}

std::string diskMapText(const DiskMap& map) {
    std::string out = map.rootPath + ": " + byteText(map.totalBytes) + " in " + groupedCount(map.fileCount) +
                      (map.fileCount == 1 ? " file" : " files") + "\n";
    if (map.sharedBytes > 0)
        out += byteText(map.sharedBytes) + " more are hard links to files counted once already.\n";
    out += "\n";
    char header[64];
    std::snprintf(header, sizeof header, "%10s %12s  %s\n", "Size", "Files", "Folder");
    out += header;
    appendNode(out, map.root, 0);
    if (map.root.children.empty()) out += "\nNo folder here is large enough to list on its own.\n";
    if (map.truncated) out += "\nThis map is partial. The scan was cancelled before it finished.\n";
    if (map.unreadableCount > 0) out += "\n" + groupedCount(map.unreadableCount) + " could not be read.\n";
    return out;
}

} // namespace bv
