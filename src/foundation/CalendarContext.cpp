#include "foundation/CalendarContext.h"

#include <cstdlib>

#include <unicode/calendar.h>
#include <unicode/dtfmtsym.h>
#include <unicode/dtptngen.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <unicode/translit.h>
#include <unicode/unistr.h>
#include <unicode/ustring.h>
#include <unicode/uchar.h>

namespace bv {
namespace {

std::unique_ptr<icu::Calendar> makeCalendar(const std::string& locale, const std::string& zone) {
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone* tz = icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone));
    std::unique_ptr<icu::Calendar> cal(icu::Calendar::createInstance(tz, icu::Locale(locale.c_str()), status));
    if (U_FAILURE(status) || !cal) {
        status = U_ZERO_ERROR;
        cal.reset(icu::Calendar::createInstance(icu::TimeZone::getGMT()->clone(), icu::Locale::getUS(), status));
    }
    return cal;
}

UDate toUDate(TimePoint t) {
    return static_cast<UDate>(std::chrono::duration_cast<std::chrono::milliseconds>(t.time_since_epoch()).count());
}

TimePoint fromUDate(UDate d) {
    return TimePoint(std::chrono::duration_cast<Clock::duration>(std::chrono::milliseconds(static_cast<std::int64_t>(d))));
}

std::string localeFromEnvironment() {
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
        const char* v = std::getenv(name);
        if (v && *v) {
            std::string s = v;
            if (auto dot = s.find('.'); dot != std::string::npos) s.resize(dot);
            if (s == "C" || s == "POSIX") return "en_US_POSIX";
            return s;
        }
    }
    return "en_US";
}

std::string zoneFromEnvironment() {
    if (const char* tz = std::getenv("TZ"); tz && *tz) return *tz == ':' ? std::string(tz + 1) : std::string(tz);
    std::unique_ptr<icu::TimeZone> def(icu::TimeZone::detectHostTimeZone());
    std::string id;
    icu::UnicodeString uid;
    def->getID(uid);
    uid.toUTF8String(id);
    return id.empty() ? "UTC" : id;
}

} // namespace

CalendarContext CalendarContext::current() { return {localeFromEnvironment(), zoneFromEnvironment()}; }

CalendarContext::CalendarContext(std::string localeId, std::string timeZoneId)
    : locale_(std::move(localeId)), zone_(std::move(timeZoneId)) {}

CalendarContext::Components CalendarContext::components(TimePoint t) const {
    auto cal = makeCalendar(locale_, zone_);
    UErrorCode st = U_ZERO_ERROR;
    cal->setTime(toUDate(t), st);
    Components c;
    c.year = cal->get(UCAL_EXTENDED_YEAR, st);
    c.month = cal->get(UCAL_MONTH, st) + 1;
    c.day = cal->get(UCAL_DATE, st);
    c.hour = cal->get(UCAL_HOUR_OF_DAY, st);
    c.minute = cal->get(UCAL_MINUTE, st);
    c.second = cal->get(UCAL_SECOND, st);
    c.weekday = cal->get(UCAL_DAY_OF_WEEK, st);
    return c;
}

TimePoint CalendarContext::date(int year, int month, int day, int hour, int minute, int second) const {
    auto cal = makeCalendar(locale_, zone_);
    cal->clear();
    cal->set(year, month - 1, day, hour, minute, second);
    UErrorCode st = U_ZERO_ERROR;
    return fromUDate(cal->getTime(st));
}

TimePoint CalendarContext::startOfDay(TimePoint t) const {
    auto cal = makeCalendar(locale_, zone_);
    UErrorCode st = U_ZERO_ERROR;
    cal->setTime(toUDate(t), st);
    cal->set(UCAL_HOUR_OF_DAY, 0);
    cal->set(UCAL_MINUTE, 0);
    cal->set(UCAL_SECOND, 0);
    cal->set(UCAL_MILLISECOND, 0);
    return fromUDate(cal->getTime(st));
}

TimePoint CalendarContext::addingDays(TimePoint t, int days) const {
    auto cal = makeCalendar(locale_, zone_);
    UErrorCode st = U_ZERO_ERROR;
    cal->setTime(toUDate(t), st);
    cal->add(UCAL_DATE, days, st);
    return fromUDate(cal->getTime(st));
}

TimePoint CalendarContext::addingHours(TimePoint t, int hours) const {
    auto cal = makeCalendar(locale_, zone_);
    UErrorCode st = U_ZERO_ERROR;
    cal->setTime(toUDate(t), st);
    cal->add(UCAL_HOUR_OF_DAY, hours, st);
    return fromUDate(cal->getTime(st));
}

int CalendarContext::daysBetween(TimePoint a, TimePoint b) const {
    auto cal = makeCalendar(locale_, zone_);
    UErrorCode st = U_ZERO_ERROR;
    cal->setTime(toUDate(startOfDay(a)), st);
    return cal->fieldDifference(toUDate(startOfDay(b)), UCAL_DATE, st);
}

bool CalendarContext::isSameDay(TimePoint a, TimePoint b) const { return startOfDay(a) == startOfDay(b); }

int CalendarContext::firstWeekday() const {
    auto cal = makeCalendar(locale_, zone_);
    UErrorCode st = U_ZERO_ERROR;
    return static_cast<int>(cal->getFirstDayOfWeek(st));
}

TimePoint CalendarContext::startOfWeek(TimePoint t) const {
    const TimePoint day = startOfDay(t);
    const int back = (components(day).weekday - firstWeekday() + 7) % 7;
    return addingDays(day, -back);
}

std::vector<std::string> CalendarContext::narrowWeekdaySymbols() const {
    UErrorCode st = U_ZERO_ERROR;
    icu::DateFormatSymbols symbols(icu::Locale(locale_.c_str()), st);
    int32_t count = 0;
    const icu::UnicodeString* names =
        symbols.getWeekdays(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::NARROW);
    std::vector<std::string> out;
    // ICU's array is indexed by UCAL_SUNDAY (1) ... UCAL_SATURDAY (7); index 0 is empty.
    for (int32_t i = 1; i < count && out.size() < 7; ++i) {
        std::string s;
        names[i].toUTF8String(s);
        out.push_back(s);
    }
    return out;
}

std::string CalendarContext::format(TimePoint t, const std::string& skeleton) const {
    UErrorCode st = U_ZERO_ERROR;
    icu::Locale loc(locale_.c_str());
    std::unique_ptr<icu::DateTimePatternGenerator> gen(icu::DateTimePatternGenerator::createInstance(loc, st));
    if (U_FAILURE(st)) return isoDateText(t);
    icu::UnicodeString pattern = gen->getBestPattern(icu::UnicodeString::fromUTF8(skeleton), st);
    icu::SimpleDateFormat fmt(pattern, loc, st);
    if (U_FAILURE(st)) return isoDateText(t);
    fmt.adoptTimeZone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(zone_)));
    icu::UnicodeString out;
    fmt.format(toUDate(t), out);
    std::string s;
    out.toUTF8String(s);
    return s;
}

bool CalendarContext::containsIgnoringCase(const std::string& haystack, const std::string& needle) const {
    if (needle.empty()) return true;
    // Fold case (full folding, so "ß" meets "ss") and then compare code units.
    icu::UnicodeString h = icu::UnicodeString::fromUTF8(haystack);
    icu::UnicodeString n = icu::UnicodeString::fromUTF8(needle);
    h.foldCase(U_FOLD_CASE_DEFAULT);
    n.foldCase(U_FOLD_CASE_DEFAULT);
    return h.indexOf(n) >= 0;
}

} // namespace bv
