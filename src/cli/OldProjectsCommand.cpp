// `brimvale old-projects [--json] [--days N] PARENT...`: rebuildable folders in projects not
// opened for a while, proven by a manifest and ignored by git. Read-only.
#include <charconv>
#include <cstdio>

#include "clean/OldProjectScanner.h"
#include "cli/CliCommand.h"
#include "foundation/ByteText.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"

namespace bv::cli {

int runOldProjects(const std::vector<std::string>& args) {
    const CliCommand& me = *findCommand("old-projects");
    bool json = false;
    std::int64_t days = 30;
    std::vector<std::string> roots;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "--json") {
            json = true;
        } else if (args[i] == "--days") {
            if (++i >= args.size()) return usageError(me, "--days needs a number");
            const auto& t = args[i];
            const auto [ptr, ec] = std::from_chars(t.data(), t.data() + t.size(), days);
            if (ec != std::errc{} || ptr != t.data() + t.size()) return usageError(me, "--days needs a number");
        } else if (args[i].starts_with("--")) {
            return usageError(me, "unknown option " + args[i]);
        } else {
            roots.push_back(args[i]);
        }
    }
    if (roots.empty()) return usageError(me, "name at least one parent folder");

    const auto now = Clock::now();
    const auto result = OldProjectScanner::scan(roots, XdgPaths::home(), {});
    std::vector<const NodeModuleHit*> old;
    std::int64_t total = 0;
    for (const auto& h : result.hits)
        if (OldProjectScanner::isOld(h, days, now)) old.push_back(&h), total += h.bytes;

    if (json) {
        Json j = Json::object();
        j["nodeModulesUntouchedDays"] = std::max<std::int64_t>(1, days);
        j["nodeHits"] = Json::array();
        for (const auto& h : result.hits) j["nodeHits"].push_back(encodeNodeModuleHit(h));
        j["oldHits"] = Json::array();
        for (const auto* h : old) j["oldHits"].push_back(h->path);
        j["unreachableRoots"] = result.unreachableRoots;
        std::fputs(encodeJson(j).c_str(), stdout);
        return 0;
    }
    for (const auto& r : result.unreachableRoots) std::printf("Skipped (can't be reached): %s\n", r.c_str());
    const long long shown = std::max<std::int64_t>(1, days);
    std::printf("Old project files (untouched for at least %lld %s)\n", shown, shown == 1 ? "day" : "days");
    if (old.empty()) std::printf("  (none)\n");
    for (const auto* h : old) {
        const auto age = OldProjectScanner::ageDays(h->lastTouched, now);
        std::printf("  %-28s %-14s %10s  %lld days\n", h->projectName.c_str(), h->artifact.c_str(), byteText(h->bytes).c_str(),
                    static_cast<long long>(age.value_or(0)));
        std::printf("  %-28s %s\n", "", h->path.c_str());
    }
    std::printf("\n%zu of %zu proven folders are old, %s in all. Nothing was removed.\n", old.size(), result.hits.size(),
                byteText(total).c_str());
    return 0;
}

} // namespace bv::cli
