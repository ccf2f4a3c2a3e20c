#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"
#include "guidance/FirstRunItem.h"

namespace bv {

// The first run's own small clean: not a cleanup plan, but held to the same law. For each
// ticked item in order the path must lie below its allowed folder (links resolved too),
// must not be a system path, and a developer cache must pass the catalogue's test; then it
// goes to the Trash. A refused or failed item never stops the others. Blocking: meant for
// a background task.
class FirstRunClean {
public:
    static constexpr const char* kTrigger = "first-run"; // the manifest's trigger word

    struct Result {
        std::vector<ActionLogEntry> logs;  // one per item that went, in order
        std::vector<std::string> failures; // "Couldn’t move “<title>” to the Trash"
        std::int64_t freed = 0;            // the bytes of the items that went
        std::optional<std::string> manifestPath;
    };

    // Runs over `items` (the ticked ones) under `home`, writing the manifest into
    // `manifestFolder` when anything went or failed.
    [[nodiscard]] static Result run(const std::vector<FirstRunItem>& items, const std::string& home,
                                    const std::string& manifestFolder, const std::string& appVersion, TimePoint now);

    // Whether the path law lets this item go; exposed for the tests.
    [[nodiscard]] static bool passesLaw(const FirstRunItem& item, const std::string& home);

    [[nodiscard]] static std::string failureLine(const std::string& title);
};

} // namespace bv
