#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "clean/CleanupKinds.h"
#include "clean/RecheckCriteria.h"

namespace bv {

// One thing a plan may remove, carrying everything the cleaner needs to check it once more
// against the disk right before touching it. Compared by content. Never written to disk.
struct CleanupEntry {
    std::string id;     // unique within a plan; the preview's unchecked set holds these
    std::string title;  // bold in the preview; named by log titles and failure lines
    std::string path;   // absolute path that is removed (links already followed where the origin says)
    std::int64_t bytes = 0; // allocated size on disk when the plan was built
    std::string note;
    std::string group;  // heading the preview lists it under
    CleanupDisposition disposition = CleanupDisposition::trash;
    std::string symbolName; // "trash", "trash.slash", "terminal", "app.dashed" or "doc.on.doc"
    // The folder the entry must lie in (path and resolved path both), at plan and apply
    // time. Empty means the entry's own path: see effectiveAllowRoot().
    std::string allowRoot;
    std::optional<std::string> parentPath; // project folder or rule folder; absent otherwise
    CleanupOrigin origin = CleanupOrigin::devCache;
    std::optional<RecheckCriteria> recheck; // absent: only the path rules apply
    std::vector<std::string> ownerBundleIDs; // app leftovers: who owns the data
    std::vector<std::string> ownerNames;
    std::optional<std::int64_t> logicalBytes; // app leftovers with sparse files only
    CleanupTier tier = CleanupTier::regenerable;

    bool operator==(const CleanupEntry&) const = default;

    // The root the entry is governed by: `allowRoot`, or the path itself when that is empty,
    // so an empty root never means "no bound".
    [[nodiscard]] const std::string& effectiveAllowRoot() const { return allowRoot.empty() ? path : allowRoot; }
};

} // namespace bv
