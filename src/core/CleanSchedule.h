#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// How often an Autopilot rule runs. JSON holds the case name; people read the title.
enum class CleanSchedule { off, hourly, daily, weekly };

[[nodiscard]] std::string_view cleanScheduleName(CleanSchedule s);   // "off", "hourly", ...
[[nodiscard]] std::string_view cleanScheduleTitle(CleanSchedule s);  // "Off", "Hourly", ...
[[nodiscard]] std::optional<CleanSchedule> cleanScheduleFromName(std::string_view name);

} // namespace bv
