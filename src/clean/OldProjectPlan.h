#pragma once
#include <cstdint>
#include <vector>

#include "clean/CleanupPlan.h"
#include "clean/OldProjectScanner.h"
#include "foundation/Dates.h"

namespace bv {

// Turns old-project hits into cleanup entries and refusals. Pure: no disk, no clock of its own.
class OldProjectPlan {
public:
    enum class Mode {
        selected, // the preview: only hits the user selected
        allOld,   // estimates: every hit old enough to show
    };
    struct Settings {
        std::int64_t untouchedDays = 30; // held to at least 1
        bool permanent = false;          // remove for good instead of moving to the Trash
    };
    // Entries in the order of the hits. A hit that breaks a rule becomes a refusal sentence
    // naming its project instead: not an artefact folder, a link pointing elsewhere, or
    // inside a protected folder.
    [[nodiscard]] static CleanupPlan build(const std::vector<NodeModuleHit>& hits, Mode mode, const Settings& settings,
                                           const std::string& home, TimePoint now);

    static constexpr const char* kGroup = "Old project files";
};

} // namespace bv
