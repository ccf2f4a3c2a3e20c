#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "sort/SortRule.h"

namespace bv {

// One file or folder of Downloads or Desktop as seen at one moment; what rules match.
struct FileSample {
    std::string path;
    std::string name;
    std::int64_t size = 0;             // bytes; 0 for a folder or when unknown
    std::optional<TimePoint> modified; // content modification
    std::optional<TimePoint> added;    // added to the folder (status change), else modified
    std::optional<std::string> utTypeIdentifier; // never set by gatherSamples
    std::vector<std::string> whereFroms;         // download origin URLs; empty for folders
    SortPlace location = SortPlace::downloads;
    bool isDirectory = false; // a folder ending in ".app" counts as a file
    friend bool operator==(const FileSample&, const FileSample&) = default;
};

// The immediate children of `folder`, skipping hidden names and symbolic links. Unless
// `includeUnsettled`, files still being written are left out: partial-download extensions
// (crdownload, part, partial, download, tmp, opdownload) and files modified less than 60
// seconds before `now`. A folder that can't be listed gives an empty list.
// `readOrigins` false leaves whereFroms empty, for callers whose rules never ask where a
// file came from: reading them costs a call per file.
[[nodiscard]] std::vector<FileSample> gatherSamples(const std::string& folder, SortPlace place, bool includeUnsettled,
                                                    TimePoint now, bool readOrigins = true);

// Where a file was downloaded from: the "user.xdg.origin.url" and "user.xdg.referrer.url"
// extended attributes that browsers, curl and wget write, in that order, those present.
// Any failure (no attributes, no support for them, unreadable file) gives an empty list.
[[nodiscard]] std::vector<std::string> readWhereFroms(const std::string& path);

} // namespace bv
