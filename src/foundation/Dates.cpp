#include "foundation/Dates.h"

#include <cstdio>
#include <ctime>

namespace bv {

std::int64_t epochSeconds(TimePoint t) {
    return std::chrono::duration_cast<std::chrono::seconds>(t.time_since_epoch()).count();
}

TimePoint fromEpochSeconds(std::int64_t s) { return TimePoint(std::chrono::seconds(s)); }

std::string isoDateText(TimePoint t) {
    // Floor to the whole second, also before the epoch.
    auto secs = std::chrono::floor<std::chrono::seconds>(t.time_since_epoch()).count();
    std::time_t tt = static_cast<std::time_t>(secs);
    std::tm tm{};
    gmtime_r(&tt, &tm);
    char buf[40];
    std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02dZ", tm.tm_year + 1900, tm.tm_mon + 1,
                  tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec);
    return buf;
}

namespace {

bool digits(std::string_view s, size_t pos, size_t n, int& out) {
    if (pos + n > s.size()) return false;
    int v = 0;
    for (size_t i = pos; i < pos + n; ++i) {
        if (s[i] < '0' || s[i] > '9') return false;
        v = v * 10 + (s[i] - '0');
    }
    out = v;
    return true;
}

std::int64_t daysFromCivil(int y, unsigned m, unsigned d) {
    y -= m <= 2;
    const int era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return static_cast<std::int64_t>(era) * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

} // namespace

std::optional<TimePoint> parseIsoDate(std::string_view s) {
    int y, mo, d, h, mi, se;
    if (s.size() < 20) return std::nullopt;
    if (!digits(s, 0, 4, y) || s[4] != '-' || !digits(s, 5, 2, mo) || s[7] != '-' || !digits(s, 8, 2, d) ||
        s[10] != 'T' || !digits(s, 11, 2, h) || s[13] != ':' || !digits(s, 14, 2, mi) || s[16] != ':' ||
        !digits(s, 17, 2, se))
        return std::nullopt;
    if (mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 || se > 60) return std::nullopt;
    // A time point counts nanoseconds in 64 bits, which reaches from 1677 to 2262; a year
    // outside would wrap into some other date, so it is refused like any malformed date.
    if (y < 1678 || y > 2261) return std::nullopt;
    static constexpr int monthDays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (d > monthDays[mo - 1]) return std::nullopt;
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    if (mo == 2 && d == 29 && !leap) return std::nullopt;
    size_t pos = 19;
    if (pos < s.size() && s[pos] == '.') {
        ++pos;
        const size_t start = pos;
        while (pos < s.size() && s[pos] >= '0' && s[pos] <= '9') ++pos;
        if (pos == start) return std::nullopt;
    }
    std::int64_t offset = 0;
    if (pos < s.size() && s[pos] == 'Z') {
        ++pos;
    } else if (pos < s.size() && (s[pos] == '+' || s[pos] == '-')) {
        int oh, om;
        const int sign = s[pos] == '-' ? -1 : 1;
        if (!digits(s, pos + 1, 2, oh) || pos + 3 >= s.size() || s[pos + 3] != ':' || !digits(s, pos + 4, 2, om))
            return std::nullopt;
        if (oh > 23 || om > 59) return std::nullopt;
        offset = sign * (oh * 3600 + om * 60);
        pos += 6;
    } else {
        return std::nullopt;
    }
    if (pos != s.size()) return std::nullopt;
    const std::int64_t days = daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d));
    const std::int64_t secs = days * 86400 + h * 3600 + mi * 60 + se - offset;
    return fromEpochSeconds(secs);
}

bool sameMoment(TimePoint a, TimePoint b) {
    const auto diff = a > b ? a - b : b - a;
    return diff <= std::chrono::seconds(1);
}

} // namespace bv
