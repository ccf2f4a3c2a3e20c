#pragma once
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"
#include "sort/CleanupRule.h"
#include "sort/SortRule.h"

namespace bv {

struct FileSample;

// One step of a preview: what a rule would do to one file.
struct PlannedAction {
    Uuid id;
    std::string sourcePath;
    std::string fileName;
    RuleAction action = RuleAction::move; // trash for a trash rule, move for every other
    std::optional<std::string> destinationPath;   // new path of a move; the raw pattern of a rename
    std::optional<std::string> destinationFolder; // the folder of a move
    std::int64_t bytes = 0;
    bool reclaimsSpace = false; // only a trash step
    std::string summary;        // "Move “a.pdf” to Invoices"
    std::string detail;         // "Downloads · 1.2 MB"
    std::string symbolName;     // "arrow.right", "pencil", "archivebox", "trash"
    Uuid ruleID;
    std::optional<std::int64_t> minimumAgeDays;
    friend bool operator==(const PlannedAction&, const PlannedAction&) = default;

    // Keys are the field names; optional ones are written only when present.
    [[nodiscard]] Json toJson() const;
};

// One preview.
struct SimulationResult {
    Uuid id;
    std::string scopeName = "Downloads";
    std::vector<PlannedAction> actions;
    std::vector<std::string> warnings;
    TimePoint createdAt;
    friend bool operator==(const SimulationResult&, const SimulationResult&) = default;

    [[nodiscard]] Json toJson() const;
};

// "Desktop" when the rule names the Desktop as its place, else "Downloads".
[[nodiscard]] std::string placeNameFor(const SortRule& rule);

// The step the rule would take for the sample, with a fresh id.
[[nodiscard]] PlannedAction plannedAction(const FileSample& sample, const SortRule& rule, const std::string& placeName);

// The text under a preview, chosen by the bytes its trash steps would give back.
[[nodiscard]] std::string previewFootnote(const SimulationResult& simulation);

// The question of the confirmation dialog for the ticked steps ("Zip 2 files and leave the
// originals in place?"). `rules` tells which action each step's rule takes.
[[nodiscard]] std::string confirmationQuestion(const SimulationResult& simulation, const std::set<Uuid>& excluded,
                                               const std::vector<SortRule>& rules);

// "file" or "files".
[[nodiscard]] std::string fileNoun(std::int64_t count);

} // namespace bv
