#include "sort/RuleRunEngine.h"

#include <unordered_map>

#include "clean/DevCacheCatalog.h"
#include "foundation/ByteText.h"
#include "sort/RulePerformer.h"
#include "sort/SortPreview.h"

namespace bv {

RuleRunEngine::RuleRunEngine(std::string downloads, std::string desktop, CalendarContext calendar)
    : downloads_(std::move(downloads)), desktop_(std::move(desktop)), calendar_(std::move(calendar)) {}

std::vector<FileSample> RuleRunEngine::gatherFresh(const std::vector<SortRule>& rules, TimePoint now) const {
    return SortPreview::gather(rules, downloads_, desktop_, now);
}

bool RuleRunEngine::isInsideRoots(const std::string& path) const {
    const std::string p = DevCacheCatalog::standardizedPath(path);
    for (const auto* root : {&downloads_, &desktop_}) {
        if (root->empty()) continue;
        std::string r = DevCacheCatalog::standardizedPath(*root);
        if (r.back() != '/') r += '/'; // so "Downloads2" never passes for "Downloads"
        if (p.size() > r.size() && p.compare(0, r.size(), r) == 0) return true;
    }
    return false;
}

ApplyOutcome RuleRunEngine::apply(const SimulationResult& simulation, const std::set<Uuid>& excluded,
                                  const std::vector<SortRule>& rules, const std::vector<FileSample>& samples,
                                  TimePoint now) const {
    std::unordered_map<std::string, const SortRule*> rulesByID;
    for (const auto& r : rules) rulesByID.emplace(r.id.text(), &r);
    std::unordered_map<std::string, const FileSample*> samplesByPath;
    for (const auto& s : samples) samplesByPath.emplace(s.path, &s);

    ApplyOutcome outcome;
    for (const auto& action : simulation.actions) {
        if (excluded.count(action.id)) continue;
        const std::string& name = action.fileName;
        const auto rule = rulesByID.find(action.ruleID.text());
        if (rule == rulesByID.end()) {
            outcome.errors.push_back(name + " no longer matches a rule, so it was left alone.");
            continue;
        }
        const auto sample = samplesByPath.find(action.sourcePath);
        if (sample == samplesByPath.end() || !rule->second->matches(*sample->second, now)) {
            outcome.errors.push_back(name + " no longer matches the rule, so it was left alone.");
            continue;
        }
        if (!isInsideRoots(action.sourcePath)) {
            outcome.errors.push_back(name + " is outside Downloads and Desktop, so it was left alone.");
            continue;
        }
        if (DevCacheCatalog::isSystemPath(action.sourcePath) || DevCacheCatalog::hasGitComponent(action.sourcePath)) {
            outcome.errors.push_back(name + " is in a protected place, so it was left alone.");
            continue;
        }
        if (rule->second->action.type == SortAction::Type::trash && !rule->second->hasAge()) {
            outcome.errors.push_back(name + " was left alone: the rule has no age, so nothing is deleted.");
            continue;
        }
        try {
            outcome.entries.push_back(RulePerformer::perform(action, *rule->second, now, calendar_));
        } catch (const SortApplyError& e) {
            outcome.errors.push_back(e.what());
        } catch (const std::exception& e) {
            outcome.errors.push_back(name + " was left alone: " + e.what());
        }
    }
    return outcome;
}

std::string runResultSentence(const ApplyOutcome& outcome) {
    const auto count = static_cast<std::int64_t>(outcome.entries.size());
    if (count > 0) {
        std::int64_t bytes = 0;
        for (const auto& e : outcome.entries) bytes += e.bytesReclaimed;
        const std::string moved = "Moved " + std::to_string(count) + " " + fileNoun(count);
        if (bytes > 0) return moved + " (" + byteText(bytes) + ") to the Trash.";
        return moved + ".";
    }
    const auto errors = static_cast<std::int64_t>(outcome.errors.size());
    if (errors > 0)
        return "Nothing was changed. " + std::to_string(errors) + " " + (errors == 1 ? "file was" : "files were") +
               " left alone.";
    return "Nothing needed to change.";
}

} // namespace bv
