// `brimvale leftovers [--json]`: what apps that are no longer installed left behind in this
// home folder, grouped by owner. Read-only.
#include <cstdio>

#include "clean/AppLeftovers.h"
#include "cli/CliCommand.h"
#include "foundation/ByteText.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"

namespace bv::cli {
namespace {

void printFindings(const std::vector<OrphanFinding>& findings, bool possibly) {
    bool any = false;
    for (const auto& f : findings) {
        if ((f.status == OwnerStatus::unknown) != possibly) continue;
        any = true;
        std::printf("  %-48s %10s\n", f.title.c_str(), byteText(f.totalBytes()).c_str());
        for (const auto& p : f.paths)
            std::printf("    %-20s %s\n", std::string(LeftoverOwners::label(p.location)).c_str(), p.path.c_str());
        for (const auto& e : f.evidence) std::printf("    %s\n", e.c_str());
    }
    if (!any) std::printf("  (none)\n");
}

} // namespace

int runLeftovers(const std::vector<std::string>& args) {
    bool json = false;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else return usageError(*findCommand("leftovers"), "unknown option " + a);
    }
    const auto result = AppLeftovers::scan(XdgPaths::home(), {});
    if (json) {
        Json j = Json::object();
        j["findings"] = Json::array();
        for (const auto& f : result.findings) j["findings"].push_back(encodeOrphanFinding(f));
        const auto recommended = AppLeftovers::recommendedIDs(result.findings);
        j["recommendedIDs"] = std::vector<std::string>(recommended.begin(), recommended.end());
        std::fputs(encodeJson(j).c_str(), stdout);
        return 0;
    }
    std::printf("App leftovers\n");
    printFindings(result.findings, false);
    std::printf("\n%s\n%s\n", AppLeftovers::kPossiblyLeftBehindHeading, AppLeftovers::kPossiblyLeftBehindText);
    printFindings(result.findings, true);
    std::printf("\nNothing was removed.\n");
    return 0;
}

} // namespace bv::cli
