#include "buildwatch/BuildWatchService.h"

#include <algorithm>

#include "buildwatch/BuildWatchCatalog.h"
#include "clean/Cleaner.h"
#include "foundation/ByteText.h"
#include "platform/PlatformWording.h"

namespace bv {
namespace {

std::string lastComponent(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string lowercaseWords(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return out;
}

} // namespace

std::string BuildWatchService::unreadableProblem(const std::string& path, const std::string& home) {
    return platformWording("macOS won\u2019t let Brimvale read " + pathForPeople(path, home) +
                           ". This happens when a folder is tied to another app, or when Full Disk Access is off. Turn on "
                           "Brimvale in System Settings \u203a Privacy & Security \u203a Full Disk Access, then try again.");
}

const std::vector<std::int64_t>& BuildWatchService::limitChoices() {
    static const std::vector<std::int64_t> choices{1000000000,  2000000000,  5000000000,
                                                   10000000000, 20000000000, 50000000000};
    return choices;
}

std::int64_t BuildWatchService::stepLimit(std::int64_t current, int direction) {
    const auto& c = limitChoices();
    if (direction > 0) {
        for (const auto v : c)
            if (v > current) return v;
        return std::max(current, c.back());
    }
    for (auto it = c.rbegin(); it != c.rend(); ++it)
        if (*it < current) return *it;
    return std::min(current, c.front());
}

BuildWatchService::DraftStart BuildWatchService::startDraft(const BuildWatchState& state, const std::string& path,
                                                            const std::optional<std::string>& bookmark, bool fromLink,
                                                            bool loginItemEnabled, const std::string& home) {
    DraftStart out;
    for (const auto& w : state.watches)
        if (w.path == path) {
            out.toast = w.name + " is already watched.";
            return out;
        }
    BuildWatchDraft d;
    d.path = path;
    d.bookmark = bookmark;
    d.name = lastComponent(path);
    d.openAtLogin = !loginItemEnabled;
    d.fromLink = fromLink;
    if (BuildWatchCatalog::isBlockedFolder(path, home)) d.problem = kBlockedFolderProblem;
    else out.needsScan = true;
    out.draft = std::move(d);
    return out;
}

void BuildWatchService::applyDraftScan(BuildWatchDraft& draft, const BuildWatchScanner::ProjectScan& scan,
                                       const std::string& home) {
    draft.scan = scan;
    if (scan.blocked) draft.problem = unreadableProblem(draft.path, home);
    else if (scan.stacks.empty()) draft.problem = kNoProjectProblem;
}

bool BuildWatchService::canConfirm(const BuildWatchDraft& d) {
    return d.scan && !d.problem && !d.scan->stacks.empty();
}

std::optional<BuildWatchService::Confirmed> BuildWatchService::confirmDraft(BuildWatchState& state,
                                                                            const BuildWatchDraft& d,
                                                                            bool loginItemEnabled, TimePoint now) {
    if (!canConfirm(d)) return std::nullopt;
    BuildWatch w;
    w.id = Uuid::generate();
    w.path = d.path;
    w.bookmark = d.bookmark;
    w.name = d.name;
    w.stacks = d.scan->stacks;
    w.cadence = d.cadence;
    w.limitBytes = d.limitBytes;
    w.autoClean = d.autoClean;
    w.removesPermanently = d.removesPermanently;
    w.isEnabled = true;
    w.createdAt = now;
    w.nextCheck = now + interval(d.cadence);
    std::int64_t total = 0;
    for (const auto& t : d.scan->targets) total += t.bytes;
    recordSample(w, total, now);

    Confirmed c;
    c.id = w.id;
    c.targets = d.scan->targets;
    c.enableLoginItem = d.openAtLogin && !loginItemEnabled;
    c.toast = d.autoClean ? "Watching " + w.name + ". Its build files (" + byteText(total) + " now) are cleaned " +
                                lowercaseWords(label(d.cadence)) + " once they pass " + byteText(d.limitBytes) + "."
                          : "Watching " + w.name + ". You\u2019ll be told when its build files (" + byteText(total) +
                                " now) pass " + byteText(d.limitBytes) + ".";
    state.watches.push_back(std::move(w));
    std::erase(state.dismissedPaths, d.path);
    return c;
}

void BuildWatchService::setCadence(BuildWatch& w, BuildWatchCadence cadence, TimePoint now) {
    w.cadence = cadence;
    w.nextCheck = now + interval(cadence);
}

void BuildWatchService::setEnabled(BuildWatch& w, bool enabled, TimePoint now) {
    if (enabled && !w.isEnabled) w.nextCheck = now;
    w.isEnabled = enabled;
}

std::optional<std::string> BuildWatchService::stopWatching(BuildWatchState& state, const Uuid& id) {
    const auto it = std::find_if(state.watches.begin(), state.watches.end(), [&](const BuildWatch& w) { return w.id == id; });
    if (it == state.watches.end()) return std::nullopt;
    std::string line = it->name + " is no longer measured or cleaned. Nothing in the project changes.";
    state.watches.erase(it);
    return line;
}

void BuildWatchService::recordSample(BuildWatch& w, std::int64_t bytes, TimePoint date, int cap) {
    w.samples.push_back({date, bytes});
    if (static_cast<int>(w.samples.size()) > cap)
        w.samples.erase(w.samples.begin(), w.samples.begin() + (static_cast<long>(w.samples.size()) - cap));
    w.lastChecked = date;
}

std::optional<std::int64_t> BuildWatchService::growth(const std::vector<BuildWatchSample>& samples, int days, TimePoint now) {
    if (samples.empty()) return std::nullopt;
    const TimePoint from = now - std::chrono::hours(24) * days;
    const auto first = std::find_if(samples.begin(), samples.end(), [&](const BuildWatchSample& s) { return s.date >= from; });
    if (first == samples.end()) return std::nullopt;
    const BuildWatchSample& last = samples.back();
    if (!(first->date < last.date)) return std::nullopt;
    return last.bytes - first->bytes;
}

std::string BuildWatchService::growthText(std::int64_t g) {
    return (g < 0 ? std::string("\u2212") : std::string("+")) + byteText(g < 0 ? -g : g) + " this week";
}

std::vector<Uuid> BuildWatchService::dueWatches(const BuildWatchState& state, TimePoint now) {
    std::vector<Uuid> due;
    for (const auto& w : state.watches)
        if (w.isEnabled && (!w.nextCheck || *w.nextCheck <= now)) due.push_back(w.id);
    return due;
}

bool BuildWatchService::isOverLimit(std::int64_t total, std::int64_t limit, bool diskIsLow) {
    if (total < 1) return false;
    if (diskIsLow && limit > kLowDiskLimit) return total >= kLowDiskLimit;
    return total >= limit;
}

std::vector<std::string> BuildWatchService::blockingTools(const BuildWatch& w, const std::set<std::string>& running) {
    std::vector<std::string> out;
    for (const auto& t : BuildWatchCatalog::toolsForStacks(w.stacks))
        if (running.contains(t)) out.push_back(t);
    return out; // a set's order: sorted
}

std::string BuildWatchService::waitingNote(const std::string& tool) {
    return "Waiting for " + tool + " to finish. Checking again in 30 minutes.";
}

std::optional<BuildWatchNotice> BuildWatchService::alert(BuildWatch& w, std::int64_t total, TimePoint now) {
    if (w.lastAlert && now - *w.lastAlert < kAlertQuiet) {
        const bool grewByHalf = w.lastAlertBytes && *w.lastAlertBytes >= 1 && total >= *w.lastAlertBytes + *w.lastAlertBytes / 2;
        if (!grewByHalf) return std::nullopt;
    }
    w.lastAlert = now;
    w.lastAlertBytes = total;
    return BuildWatchNotice{"Build Watch", w.name + "\u2019s build files are " + byteText(total) + ", over your " +
                                               byteText(w.limitBytes) + " limit. Open Build Watch to clean them."};
}

BuildWatchService::Entries BuildWatchService::buildEntries(const BuildWatch& w, const std::vector<BuildTarget>& targets,
                                                           TimePoint now) {
    Entries out;
    for (const auto& t : targets) {
        if (t.bytes < 1) continue;
        if (t.newestChange && now - *t.newestChange < kRecentChange) {
            out.notes.push_back(w.name + ": " + t.title +
                                " changed in the last few minutes, so a build may be running. It was left alone.");
            continue;
        }
        CleanupEntry e;
        e.id = "build:" + t.path;
        e.title = w.name + ": " + t.title;
        e.path = t.path;
        e.bytes = t.bytes;
        e.note = std::string("Rebuilt by your next build. ") +
                 (w.removesPermanently ? "This removes it for good." : "This moves it to the Trash.");
        e.group = "Build Watch";
        e.disposition = w.removesPermanently ? CleanupDisposition::permanent : CleanupDisposition::trash;
        e.symbolName = w.removesPermanently ? "trash.slash" : "trash";
        e.allowRoot = t.anchorPath;
        e.parentPath = w.path;
        e.origin = CleanupOrigin::buildWatch;
        e.recheck = RecheckCriteria{};
        e.tier = CleanupTier::regenerable;
        out.entries.push_back(std::move(e));
    }
    std::stable_sort(out.entries.begin(), out.entries.end(),
                     [](const CleanupEntry& a, const CleanupEntry& b) { return a.bytes > b.bytes; });
    return out;
}

std::string BuildWatchService::skippedLine(const std::string& name, const std::vector<std::string>& notes) {
    return "Build Watch skipped " + name + ": " + std::to_string(notes.size()) + " " +
           (notes.size() == 1 ? "folder was" : "folders were") + " left alone. " + (notes.empty() ? "" : notes.front());
}

BuildWatchNotice BuildWatchService::freedNotice(std::int64_t freed, const std::vector<std::string>& names) {
    if (names.size() == 1) return {"Build Watch", "Freed " + byteText(freed) + " of build files from " + names.front() + "."};
    return {"Build Watch", "Freed " + byteText(freed) + " of build files from " + std::to_string(names.size()) + " projects."};
}

std::string BuildWatchService::nothingToCleanToast(const std::string& name) {
    return name + " has no build files to clean right now.";
}

void BuildWatchService::creditClean(BuildWatchState& state, std::map<Uuid, std::vector<BuildTarget>>& targets,
                                    const std::vector<CleanupEntry>& entries,
                                    const std::map<std::string, std::int64_t>& freedByPath, TimePoint now) {
    for (auto& w : state.watches) {
        std::int64_t freed = 0;
        std::set<std::string> cleaned;
        for (const auto& e : entries) {
            if (e.origin != CleanupOrigin::buildWatch || e.parentPath != w.path) continue;
            const auto it = freedByPath.find(e.path);
            if (it == freedByPath.end() || it->second < 1) continue;
            freed += it->second;
            cleaned.insert(e.path);
        }
        if (freed < 1) continue;
        w.totalFreed += freed;
        w.lastCleaned = now;
        if (auto t = targets.find(w.id); t != targets.end())
            std::erase_if(t->second, [&](const BuildTarget& bt) { return cleaned.contains(bt.path); });
        const std::int64_t before = w.samples.empty() ? 0 : w.samples.back().bytes;
        recordSample(w, std::max<std::int64_t>(0, before - freed), now);
    }
}

std::vector<BuildSuggestion> BuildWatchService::visibleSuggestions(const BuildWatchState& state,
                                                                   std::vector<BuildSuggestion> found) {
    std::erase_if(found, [&](const BuildSuggestion& s) {
        return std::find(state.dismissedPaths.begin(), state.dismissedPaths.end(), s.path) != state.dismissedPaths.end();
    });
    return found;
}

std::optional<BuildWatchNotice> BuildWatchService::suggestionNotice(BuildWatchState& state,
                                                                    const std::vector<BuildSuggestion>& suggestions,
                                                                    TimePoint now) {
    for (const auto& s : suggestions) {
        if (s.bytes < kSuggestionNotifyBytes) continue;
        const auto told = state.notifiedAt.find(s.path);
        if (told != state.notifiedAt.end() && now - told->second < kSuggestionNotifyQuiet) continue;
        state.notifiedAt[s.path] = now;
        std::string body = s.name + " holds " + byteText(s.bytes) + ", mostly " +
                           (s.targets.empty() ? std::string("build files") : lowercaseWords(s.targets.front().title)) + ".";
        const std::size_t others = suggestions.size() - 1;
        if (others > 0)
            body += " " + std::to_string(others) + " more " + (others == 1 ? "project" : "projects") + " too.";
        body += " Open Build Watch to keep them in check.";
        return BuildWatchNotice{"Build files are piling up", body};
    }
    return std::nullopt;
}

bool BuildWatchService::lookIsDue(const BuildWatchState& state, bool force, TimePoint now) {
    return force || !state.lastSuggestionScan || now - *state.lastSuggestionScan >= kSuggestionRescan;
}

void BuildWatchService::dismiss(BuildWatchState& state, std::vector<BuildSuggestion>& suggestions, const std::string& path) {
    if (std::find(state.dismissedPaths.begin(), state.dismissedPaths.end(), path) == state.dismissedPaths.end())
        state.dismissedPaths.push_back(path);
    std::erase_if(suggestions, [&](const BuildSuggestion& s) { return s.path == path; });
}

} // namespace bv
