// `brimvale rules preview [--json]` and `brimvale rules list [--json]`: what previewing
// every saved Auto-Sort rule would show now, and the saved rules with the files each
// matches now. Both only read: the rule files, Downloads and, when a rule names it, the
// Desktop. Nothing is moved, and no file of the program's is written.
#include <cstdio>

#include "cli/CliCommand.h"
#include "core/AppPersistence.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"
#include "sort/RuleSuggestions.h"
#include "sort/SortPreview.h"
#include "sort/SortRuleJson.h"
#include "sort/SortRuleStore.h"

namespace bv::cli {
namespace {

std::vector<SortRule> savedSortRules(TimePoint now) {
    const AppPersistence persistence(XdgPaths::appDataDir());
    std::vector<SortRule> rules;
    for (auto& r : readSortRuleFiles(persistence, now).sortRules)
        if (r.kind == SortRuleKind::sort) rules.push_back(std::move(r));
    return rules;
}

int previewRules(bool json) {
    const TimePoint now = Clock::now();
    const auto rules = savedSortRules(now);
    const auto simulation = SortPreview::preview(rules, XdgPaths::downloads(), XdgPaths::desktop(), now);
    const std::string footnote = previewFootnote(simulation);
    if (json) {
        Json out = simulation.toJson();
        out["footnote"] = footnote;
        std::fputs(encodeJson(out).c_str(), stdout);
    } else {
        for (const auto& a : simulation.actions) std::printf("%s\n  %s\n", a.summary.c_str(), a.detail.c_str());
        for (const auto& w : simulation.warnings) std::printf("warning: %s\n", w.c_str());
        std::printf("%s\n", footnote.c_str());
    }
    std::fflush(stdout);
    return 0;
}

int listRules(bool json) {
    const TimePoint now = Clock::now();
    const auto rules = savedSortRules(now);
    const auto samples = SortPreview::gather(rules, XdgPaths::downloads(), XdgPaths::desktop(), now);
    const auto counts = RuleSuggestions::matchCounts(rules, samples, now);
    Json out = Json::array();
    for (const auto& rule : rules) {
        const std::int64_t count = counts.at(rule.id.text());
        if (json) {
            Json row = Json::object();
            row["rule"] = toJson(rule);
            row["plainSummary"] = rule.plainSummary();
            row["matchCount"] = count;
            out.push_back(std::move(row));
        } else {
            std::printf("%s%s\n  %s\n  %lld match right now\n", rule.name.c_str(), rule.isEnabled ? "" : " (off)",
                        rule.plainSummary().c_str(), static_cast<long long>(count));
        }
    }
    if (json) std::fputs(encodeJson(out).c_str(), stdout);
    else if (rules.empty()) std::printf("No Auto-Sort rules yet.\n");
    std::fflush(stdout);
    return 0;
}

} // namespace

// Called by `brimvale rules` for its "preview" and "list" actions.
int runRulesPreviewOrList(const std::string& action, const std::vector<std::string>& options) {
    const CliCommand& command = *findCommand("rules");
    bool json = false;
    for (const auto& o : options) {
        if (o == "--json") json = true;
        else return usageError(command, "unknown option " + o);
    }
    return action == "preview" ? previewRules(json) : listRules(json);
}

} // namespace bv::cli
