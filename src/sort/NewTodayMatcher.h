#pragma once
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "autopilot/FolderWatchRule.h"
#include "foundation/Dates.h"
#include "sort/CleanupRule.h"
#include "sort/FileSample.h"
#include "sort/SortRule.h"
#include "space/NewToday.h"

namespace bv {

// What standing rule would already deal with a file on the Overview's "New today" list.
struct NewTodayMatcher {
    // What a folder rule's test needs of the file. Nothing for a link or a missing path.
    struct FileFacts {
        bool isDirectory = false; // false when it can't be read
        std::optional<TimePoint> modified;
    };
    [[nodiscard]] static std::optional<FileFacts> fileFacts(const std::string& path);

    // The row's file as rules see it, read from the disk now: sizes, dates and origin as
    // gatherSamples reads them, the place from the list it is on.
    [[nodiscard]] static FileSample sampleFor(const TrackedFile& file);

    // The first enabled sort rule with a name that matches; failing that, the summary of the
    // first step a preview of all the rules would plan for the file. Nothing when none applies.
    [[nodiscard]] static std::optional<std::string> sortRuleCovering(const FileSample& sample,
                                                                     const std::vector<SortRule>& rules, TimePoint now);
    // The summary of the first step the first older Downloads rule that applies would plan.
    [[nodiscard]] static std::optional<std::string> downloadsRuleCovering(const FileSample& sample,
                                                                          const std::vector<CleanupRule>& rules,
                                                                          TimePoint now);

    // The Autopilot rule's own test of one candidate (its depth below the rule's folder and
    // its facts), supplied by the Autopilot code so the two never disagree.
    using FolderRuleTest = std::function<bool(const FolderWatchRule&, const std::string& path, int depth,
                                              const FileFacts&, TimePoint now)>;
    // The first enabled Autopilot rule whose folder holds the file and whose test says yes;
    // its phrase, or its folder's name when it has none. A link or a missing file has no facts
    // and is matched by no rule.
    [[nodiscard]] static std::optional<std::string> folderRuleCovering(const std::string& path,
                                                                       const std::vector<FolderWatchRule>& rules,
                                                                       const FolderRuleTest& test, TimePoint now);
};

} // namespace bv
