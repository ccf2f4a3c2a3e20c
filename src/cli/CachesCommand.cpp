// `brimvale caches [--json]`: the developer cache rows of this home folder, read-only.
#include <cstdio>

#include "clean/DevCacheScanner.h"
#include "clean/SmartCleanLayout.h"
#include "cli/CliCommand.h"
#include "foundation/ByteText.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"

namespace bv::cli {
namespace {

void printRows(const char* heading, const std::vector<DevScanRow>& rows) {
    std::printf("%s\n", heading);
    if (rows.empty()) std::printf("  (none)\n");
    for (const auto& r : rows) {
        const char* state = r.kind == DevRowKind::reviewOnly       ? "shown only"
                            : SmartCleanLayout::isRecommended(r) ? "recommended"
                            : r.selectable                       ? "selectable"
                                                                 : "stays";
        std::printf("  %-16s %-42s %10s  %s\n", r.group.c_str(), r.title.c_str(), byteText(r.bytes).c_str(), state);
        std::printf("  %-16s %s\n", "", r.path.c_str());
        if (r.blockedReason && r.kind != DevRowKind::reviewOnly)
            std::printf("  %-16s %s\n", "", r.blockedReason->c_str());
    }
}

} // namespace

int runCaches(const std::vector<std::string>& args) {
    bool json = false;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else return usageError(*findCommand("caches"), "unknown option " + a);
    }
    const std::string home = XdgPaths::home();
    const auto result = DevCacheScanner::scan(home);

    std::int64_t recommended = 0;
    for (const auto& r : result.rows)
        if (SmartCleanLayout::isRecommended(r)) recommended += r.bytes;

    if (json) {
        Json j = Json::object();
        j["home"] = home;
        j["rows"] = Json::array();
        for (const auto& r : result.rows) j["rows"].push_back(r.toJson());
        j["reviewRows"] = Json::array();
        for (const auto& r : result.reviewRows) j["reviewRows"].push_back(r.toJson());
        j["recommendedBytes"] = recommended;
        std::fputs(encodeJson(j).c_str(), stdout);
        return 0;
    }
    printRows("Developer caches", result.rows);
    std::printf("\n");
    printRows("Shown for size only", result.reviewRows);
    std::printf("\nSelect recommended would free %s. Nothing was removed.\n", byteText(recommended).c_str());
    return 0;
}

} // namespace bv::cli
