#include "core/DateTextFormatter.h"

#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace bv {

struct DateTextFormatter::Impl {
    std::unique_ptr<icu::SimpleDateFormat> format;
};

DateTextFormatter::DateTextFormatter(const CalendarContext& calendar, const std::string& skeleton)
    : impl_(std::make_unique<Impl>()), calendar_(calendar), skeleton_(skeleton) {
    UErrorCode st = U_ZERO_ERROR;
    const icu::Locale loc(calendar.localeId().c_str());
    std::unique_ptr<icu::DateTimePatternGenerator> gen(icu::DateTimePatternGenerator::createInstance(loc, st));
    if (U_FAILURE(st)) return;
    const icu::UnicodeString pattern = gen->getBestPattern(icu::UnicodeString::fromUTF8(skeleton), st);
    auto fmt = std::make_unique<icu::SimpleDateFormat>(pattern, loc, st);
    if (U_FAILURE(st)) return;
    fmt->adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(calendar.timeZoneId())));
    impl_->format = std::move(fmt);
}

DateTextFormatter::~DateTextFormatter() = default;

std::string DateTextFormatter::format(TimePoint t) const {
    // Without a formatter (an unknown locale) the calendar's own, slower path answers.
    if (!impl_->format) return calendar_.format(t, skeleton_);
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(t.time_since_epoch()).count();
    icu::UnicodeString out;
    impl_->format->format(static_cast<UDate>(ms), out);
    std::string s;
    out.toUTF8String(s);
    return s;
}

} // namespace bv
