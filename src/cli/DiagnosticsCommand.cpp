// `brimvale diagnostics [--json]`: the saved crash and hang reports, newest first. It only
// reads, except that a crash payload the program left pending is first turned into its
// report, inside the Diagnostics folder, as the program's next start would. The crash
// handler starts this command with --collect-pending to do only that.
#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "cli/CliCommand.h"
#include "diagnostics/CrashHandler.h"
#include "diagnostics/DiagnosticsStore.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv::cli {

int runDiagnostics(const std::vector<std::string>& args) {
    bool json = false;
    bool collectOnly = false;
    for (const auto& a : args) {
        if (a == "--json") json = true;
        else if (a == CrashHandler::kCollectOption) collectOnly = true;
        else return usageError(*findCommand("diagnostics"), "unknown option " + a);
    }
    const DiagnosticsStore store(DiagnosticsStore::defaultDirectory());
    (void)CrashHandler::collectPending(store);
    if (collectOnly) return 0;

    Json reports = Json::array();
    for (const auto& path : store.list()) {
        const std::string name = path.substr(path.rfind('/') + 1);
        const auto parts = DiagnosticsStore::parseName(name);
        struct stat st {};
        const long long bytes = ::stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_size) : 0;
        reports.push_back({{"name", name},
                           {"kind", parts ? parts->kind : std::string()},
                           {"date", parts ? isoDateText(parts->date) : std::string()},
                           {"bytes", bytes}});
    }
    if (json) {
        Json out = Json::object();
        out["directory"] = store.directory();
        out["reports"] = std::move(reports);
        std::fputs(encodeJson(out).c_str(), stdout);
        return 0;
    }
    std::printf("Reports are kept in %s\n", store.directory().c_str());
    if (reports.empty()) {
        std::printf("No reports saved.\n");
        return 0;
    }
    for (const auto& r : reports)
        std::printf("%-20s  %-16s  %8lld bytes  %s\n", r["date"].get<std::string>().c_str(),
                    r["kind"].get<std::string>().c_str(), r["bytes"].get<long long>(), r["name"].get<std::string>().c_str());
    std::printf("\nNothing is sent from here. Use Help \u203a Send Diagnostics\u2026 in the window to mail them.\n");
    return 0;
}

} // namespace bv::cli
