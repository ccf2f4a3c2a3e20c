#pragma once
#include <memory>
#include <string>

#include "foundation/CalendarContext.h"

namespace bv {

// One ICU date formatter for a skeleton ("jmm", "yMMMd") in a calendar's locale and time
// zone, built once and used for many dates: History formats a time for each of up to 500
// entries, and building the pattern for every one of them costs far more than the
// formatting. Not thread-safe; make one per thread.
class DateTextFormatter {
public:
    DateTextFormatter(const CalendarContext& calendar, const std::string& skeleton);
    ~DateTextFormatter();
    DateTextFormatter(const DateTextFormatter&) = delete;
    DateTextFormatter& operator=(const DateTextFormatter&) = delete;

    [[nodiscard]] std::string format(TimePoint t) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
    CalendarContext calendar_;
    std::string skeleton_;
};

} // namespace bv
