#include "buildwatch/BuildWatchRun.h"

#include <sys/stat.h>

#include "buildwatch/BuildWatchCleanerChecks.h"

namespace bv {
namespace {

bool isFolder(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

} // namespace

ActionLogEntry BuildWatchRun::skippedLog(const BuildWatch& w, const std::string& title, TimePoint now,
                                         const std::string& home) {
    ActionLogEntry e;
    e.id = Uuid::generate();
    e.date = now;
    e.title = title;
    e.subtitle = pathForPeople(w.path, home);
    e.symbolName = "hand.raised";
    e.sourcePath = w.path;
    return e;
}

BuildWatchRun::Result BuildWatchRun::run(BuildWatchState& state, const Environment& env) {
    using Service = BuildWatchService;
    Result result;
    const auto due = Service::dueWatches(state, env.now);
    if (due.empty()) return result;
    const auto running = env.runningTools ? env.runningTools() : std::set<std::string>{};
    const auto scan = env.scan ? env.scan : [&](const std::string& path) {
        return BuildWatchScanner::scanProject(path, env.home, std::nullopt, true);
    };
    const auto clean = env.clean ? env.clean : [&](const std::vector<CleanupEntry>& entries) {
        Cleaner::Environment ce;
        ce.originChecks = std::make_shared<BuildWatchCleanerChecks>(ce.originChecks);
        return Cleaner(ce).applyList(entries, env.home);
    };
    std::vector<std::string> freedNames;

    for (const Uuid& id : due) {
        BuildWatch* w = state.find(id);
        if (!w) continue;
        w->nextCheck = env.now + interval(w->cadence);
        if (!isFolder(w->path)) {
            w->isEnabled = false;
            w->lastNote = Service::kFolderGoneNote;
            result.logs.push_back(skippedLog(
                *w, "Build Watch skipped " + w->name + ": its folder moved or is missing. The watch is paused.", env.now,
                env.home));
            continue;
        }
        const auto scanned = scan(w->path);
        result.targets[id] = scanned.targets;
        if (scanned.blocked) {
            w->lastNote = Service::unreadableProblem(w->path, env.home);
            continue;
        }
        std::int64_t total = 0;
        for (const auto& t : scanned.targets) total += t.bytes;
        Service::recordSample(*w, total, env.now);
        w->lastNote.reset();
        if (!Service::isOverLimit(total, w->limitBytes, env.diskIsLow)) continue;
        if (!w->autoClean) {
            if (auto notice = Service::alert(*w, total, env.now)) result.notices.push_back(*notice);
            continue;
        }
        if (const auto tools = Service::blockingTools(*w, running); !tools.empty()) {
            w->nextCheck = env.now + Service::kBuildWaitRetry;
            w->lastNote = Service::waitingNote(tools.front());
            continue;
        }
        auto built = Service::buildEntries(*w, scanned.targets, env.now);
        std::vector<std::string> notes = built.notes;
        if (!built.entries.empty()) {
            const auto cleaned = clean(built.entries);
            result.cleanerRan = true;
            result.cleanedEntries.insert(result.cleanedEntries.end(), built.entries.begin(), built.entries.end());
            result.failures.insert(result.failures.end(), cleaned.failures.begin(), cleaned.failures.end());
            notes.insert(notes.end(), cleaned.failures.begin(), cleaned.failures.end());
            std::int64_t freed = 0;
            std::set<std::string> gone;
            for (const auto& log : cleaned.logs) {
                freed += log.bytesReclaimed;
                gone.insert(log.sourcePath);
                result.logs.push_back(log);
            }
            if (freed >= 1) {
                w->totalFreed += freed;
                w->lastCleaned = env.now;
                Service::recordSample(*w, std::max<std::int64_t>(0, total - freed), env.now);
                result.freedBytes += freed;
                freedNames.push_back(w->name);
                std::erase_if(result.targets[id], [&](const BuildTarget& t) { return gone.contains(t.path); });
            }
        }
        if (!notes.empty()) {
            w->lastNote = notes.front();
            result.logs.push_back(skippedLog(*w, Service::skippedLine(w->name, notes), env.now, env.home));
        }
    }
    if (result.freedBytes >= 1) result.notices.push_back(Service::freedNotice(result.freedBytes, freedNames));
    return result;
}

} // namespace bv
