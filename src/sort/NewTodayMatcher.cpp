#include "sort/NewTodayMatcher.h"

#include <sys/stat.h>

#include <algorithm>

#include "clean/DevCacheCatalog.h"
#include "foundation/PhraseText.h"
#include "sort/SortPreview.h"

namespace bv {
namespace {

TimePoint fromTimespec(const struct timespec& ts) {
    return TimePoint(std::chrono::duration_cast<Clock::duration>(std::chrono::seconds(ts.tv_sec) +
                                                                 std::chrono::nanoseconds(ts.tv_nsec)));
}

int componentCount(const std::string& path) {
    return static_cast<int>(std::count(path.begin(), path.end(), '/'));
}

} // namespace

std::optional<NewTodayMatcher::FileFacts> NewTodayMatcher::fileFacts(const std::string& path) {
    struct stat st{};
    if (::lstat(path.c_str(), &st) != 0 || S_ISLNK(st.st_mode)) return std::nullopt;
    return FileFacts{S_ISDIR(st.st_mode), fromTimespec(st.st_mtim)};
}

FileSample NewTodayMatcher::sampleFor(const TrackedFile& file) {
    FileSample s;
    s.path = file.path;
    s.name = file.name;
    s.location = file.location == WatchedLocation::desktop ? SortPlace::desktop : SortPlace::downloads;
    s.added = file.added;
    struct stat st{};
    if (::lstat(file.path.c_str(), &st) == 0) {
        s.modified = fromTimespec(st.st_mtim);
        const bool app = lowercased(file.name).size() > 4 &&
                         lowercased(file.name).compare(file.name.size() - 4, 4, ".app") == 0;
        s.isDirectory = S_ISDIR(st.st_mode) && !app;
        s.size = S_ISDIR(st.st_mode) ? 0 : static_cast<std::int64_t>(st.st_size);
    }
    if (!s.isDirectory) s.whereFroms = readWhereFroms(file.path);
    return s;
}

std::optional<std::string> NewTodayMatcher::sortRuleCovering(const FileSample& sample,
                                                             const std::vector<SortRule>& rules, TimePoint now) {
    for (const auto& rule : rules)
        if (rule.isEnabled && !trimmedWhitespace(rule.name).empty() && rule.matches(sample, now)) return rule.name;
    const auto simulation = SortPreview::simulate(rules, {sample}, now);
    if (simulation.actions.empty()) return std::nullopt;
    return simulation.actions.front().summary;
}

std::optional<std::string> NewTodayMatcher::downloadsRuleCovering(const FileSample& sample,
                                                                  const std::vector<CleanupRule>& rules, TimePoint now) {
    std::vector<SortRule> converted;
    for (const auto& rule : rules)
        if (rule.isEnabled) converted.push_back(sortRuleFromCleanupRule(rule));
    FileSample inDownloads = sample;
    inDownloads.location = SortPlace::downloads; // the older rules know only Downloads
    const auto simulation = SortPreview::simulate(converted, {inDownloads}, now);
    if (simulation.actions.empty()) return std::nullopt;
    return simulation.actions.front().summary;
}

std::optional<std::string> NewTodayMatcher::folderRuleCovering(const std::string& path,
                                                               const std::vector<FolderWatchRule>& rules,
                                                               const FolderRuleTest& test, TimePoint now) {
    const auto facts = fileFacts(path);
    if (!facts || !test) return std::nullopt;
    const std::string file = DevCacheCatalog::standardizedPath(path);
    for (const auto& rule : rules) {
        if (!rule.isEnabled) continue;
        const std::string root = DevCacheCatalog::standardizedPath(rule.parentPath);
        const std::string below = root == "/" ? root : root + "/";
        if (file.size() <= below.size() || file.compare(0, below.size(), below) != 0) continue;
        const int depth = componentCount(file) - componentCount(root == "/" ? std::string() : root);
        if (test(rule, file, depth, *facts, now))
            return rule.phrase.empty() ? lastPathComponent(rule.parentPath) : rule.phrase;
    }
    return std::nullopt;
}

} // namespace bv
