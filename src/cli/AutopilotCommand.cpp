// `brimvale autopilot preview [--json] [--scope children|recursive] FOLDER SENTENCE`: what a
// folder rule would hand the cleaner right now (path, size, note of each item) and what it
// would leave alone, without moving anything. `brimvale autopilot list [--json]`: the saved
// folder rules with their next run and the bound of their confirmed preview.
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "autopilot/FolderRuleDraft.h"
#include "autopilot/FolderRuleParser.h"
#include "autopilot/FolderRuleRunner.h"
#include "autopilot/FolderRuleSaving.h"
#include "clean/DevCacheCatalog.h"
#include "cli/CliCommand.h"
#include "foundation/ByteText.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"

namespace bv::cli {
namespace {

std::string absoluteFolder(const std::string& folder) {
    if (!folder.empty() && folder.front() == '/') return DevCacheCatalog::standardizedPath(folder);
    char cwd[PATH_MAX];
    if (!::getcwd(cwd, sizeof cwd)) return folder;
    return DevCacheCatalog::standardizedPath(std::string(cwd) + "/" + folder);
}

int preview(const CliCommand& command, const std::vector<std::string>& args) {
    bool json = false, optionsDone = false;
    std::optional<FolderScope> scope;
    std::vector<std::string> words;
    for (size_t i = 1; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (!optionsDone && a == "--") optionsDone = true;
        else if (!optionsDone && a == "--json") json = true;
        else if (!optionsDone && a == "--scope") {
            if (i + 1 >= args.size() || !(scope = folderScopeFromName(args[i + 1])))
                return usageError(command, "--scope takes children or recursive");
            ++i;
        } else if (!optionsDone && a.size() > 2 && a.rfind("--", 0) == 0) return usageError(command, "unknown option " + a);
        else words.push_back(a);
    }
    if (words.size() != 2) return usageError(command, "give a folder and one sentence");

    const std::string home = XdgPaths::home();
    FolderRuleDraft draft = FolderRuleDraft::fresh();
    draft.phrase = words[1];
    draft.parentPath = absoluteFolder(words[0]);
    const auto parsed = FolderRuleParser::parse(draft.phrase);
    if (!parsed) {
        std::fprintf(stderr, "%s\n", kFolderRuleUnrecognized);
        return 1;
    }
    draft.apply(*parsed);
    if (scope) draft.scope = *scope;
    if (auto problem = directPreviewCheckMessage(draft, home)) {
        std::fprintf(stderr, "%s\n", problem->c_str());
        return 1;
    }
    const FolderWatchRule rule = FolderRuleSaving::ruleFromDraft(draft, Clock::now());
    const auto plan = FolderRuleRunner::plan(rule, Clock::now(), home);
    if (!plan) {
        std::fprintf(stderr, "%s can't be read, or is missing.\n", rule.parentPath.c_str());
        return 1;
    }

    std::int64_t total = 0;
    for (const auto& e : plan->entries) total += e.bytes;
    if (json) {
        Json out = Json::object();
        out["parentPath"] = rule.parentPath;
        out["interpretation"] = parsed->interpretation;
        out["scope"] = folderScopeName(rule.scope);
        Json entries = Json::array();
        for (const auto& e : plan->entries) {
            Json j = Json::object();
            j["path"] = e.path;
            j["bytes"] = e.bytes;
            j["note"] = e.note;
            entries.push_back(std::move(j));
        }
        out["entries"] = std::move(entries);
        out["refusals"] = plan->refusals;
        out["confirmedCount"] = static_cast<std::int64_t>(plan->entries.size());
        out["confirmedBytes"] = total;
        std::fputs(encodeJson(out).c_str(), stdout);
    } else {
        std::printf("%s\n%s in %s (%s)\n\n", parsed->interpretation.c_str(), folderScopeTitle(rule.scope),
                    rule.parentPath.c_str(), rule.disposition == CleanupDisposition::trash ? "Trash" : "Permanent");
        for (const auto& e : plan->entries) std::printf("%10s  %s\n", byteText(e.bytes).c_str(), e.path.c_str());
        if (plan->entries.empty()) std::printf("Nothing matched.\n");
        else std::printf("\n%zu %s, %s. %s\n", plan->entries.size(), plan->entries.size() == 1 ? "item" : "items",
                         byteText(total).c_str(), plan->entries.front().note.c_str());
        for (const auto& r : plan->refusals) std::printf("Left alone: %s\n", r.c_str());
    }
    std::fflush(stdout);
    return 0;
}

int list(const CliCommand& command, const std::vector<std::string>& args) {
    bool json = false;
    for (size_t i = 1; i < args.size(); ++i) {
        if (args[i] == "--json") json = true;
        else return usageError(command, "unknown word " + args[i]);
    }
    const auto rules = loadFolderRules(AppPersistence::live());
    if (json) {
        std::fputs(encodeJson(folderRulesToJson(rules)).c_str(), stdout);
        std::fflush(stdout);
        return 0;
    }
    if (rules.empty()) std::printf("No Autopilot rules yet.\n");
    for (const auto& r : rules) {
        std::printf("%s%s\n  %s\n", folderRuleName(r).c_str(), r.isEnabled ? "" : " (off)", r.parentPath.c_str());
        std::string facts;
        for (const auto& line : r.detailLines()) facts += (facts.empty() ? "" : " · ") + line;
        std::printf("  %s\n", facts.c_str());
        if (r.schedule == CleanSchedule::off) std::printf("  Runs when you press Run now\n");
        else if (r.nextRun) std::printf("  Next run: %s\n", isoDateText(*r.nextRun).c_str());
        if (r.confirmedCount && r.confirmedBytes)
            std::printf("  Bounded by preview: %lld %s, %s\n", static_cast<long long>(*r.confirmedCount),
                        *r.confirmedCount == 1 ? "item" : "items", byteText(*r.confirmedBytes).c_str());
    }
    std::fflush(stdout);
    return 0;
}

} // namespace

int runAutopilot(const std::vector<std::string>& args) {
    const CliCommand& command = *findCommand("autopilot");
    if (!args.empty() && args.front() == "preview") return preview(command, args);
    if (!args.empty() && args.front() == "list") return list(command, args);
    return usageError(command, args.empty() ? "" : "unknown action " + args.front());
}

} // namespace bv::cli
