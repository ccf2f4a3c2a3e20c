#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// Whether a developer cache row can be cleaned or is only shown for its size. Text values
// are the case names.
enum class DevRowKind { cleanable, reviewOnly };

[[nodiscard]] std::string_view textValue(DevRowKind kind);

// One place the developer cache scan found on this disk. Nothing is selected by a scan.
struct DevScanRow {
    std::string id;           // the recipe's id, or one derived from it ("cache-pip", "node-v20.11.1")
    std::string title;
    std::string path;         // the place as the catalogue found it
    std::string resolvedPath; // links resolved, standardized
    std::string allowRoot;    // the recipe's folder
    std::int64_t bytes = 0;   // allocated size on disk
    std::optional<TimePoint> modified;
    std::string note;
    std::string group;
    DevRowKind kind = DevRowKind::cleanable;
    bool optIn = false;
    bool selectable = false;
    std::optional<std::string> toolCommand;
    std::optional<std::string> blockedReason; // why it can't be chosen
    bool selected = false;

    bool operator==(const DevScanRow&) const = default;

    // Keys equal the field names; absent optionals are left out.
    [[nodiscard]] Json toJson() const;
};

} // namespace bv
