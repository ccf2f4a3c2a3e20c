#include "diagnostics/UpdateVersion.h"

#include <algorithm>

namespace bv {

namespace {

bool allDigits(std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// One dot-separated part; nine digits at most, so every number fits.
std::optional<std::uint32_t> number(std::string_view s) {
    if (!allDigits(s) || s.size() > 9) return std::nullopt;
    std::uint32_t n = 0;
    for (char c : s) n = n * 10 + static_cast<std::uint32_t>(c - '0');
    return n;
}

std::vector<std::string_view> split(std::string_view text, char sep) {
    std::vector<std::string_view> parts;
    for (std::size_t start = 0;;) {
        const auto end = text.find(sep, start);
        parts.push_back(text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos) return parts;
        start = end + 1;
    }
}

int comparePart(const std::string& a, const std::string& b) {
    const bool an = allDigits(a), bn = allDigits(b);
    if (an && bn) {
        // Numbers by length first (no leading zeros matter), then digit by digit.
        const auto a0 = a.find_first_not_of('0'), b0 = b.find_first_not_of('0');
        const std::string_view at = a0 == std::string::npos ? "" : std::string_view(a).substr(a0);
        const std::string_view bt = b0 == std::string::npos ? "" : std::string_view(b).substr(b0);
        if (at.size() != bt.size()) return at.size() < bt.size() ? -1 : 1;
        return at.compare(bt);
    }
    if (an != bn) return an ? -1 : 1;
    return a.compare(b);
}

} // namespace

std::optional<UpdateVersion> UpdateVersion::parse(std::string_view text) {
    if (!text.empty() && (text.front() == 'v' || text.front() == 'V')) text.remove_prefix(1);
    const auto cut = text.find_first_of("-~");
    const std::string_view core = text.substr(0, cut);
    UpdateVersion version;
    for (auto part : split(core, '.')) {
        const auto n = number(part);
        if (!n) return std::nullopt;
        version.numbers.push_back(*n);
    }
    if (cut != std::string_view::npos) {
        for (auto part : split(text.substr(cut + 1), '.')) {
            const bool fine = !part.empty() && std::all_of(part.begin(), part.end(), [](char c) {
                return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-';
            });
            if (!fine) return std::nullopt;
            version.preRelease.emplace_back(part);
        }
    }
    return version;
}

int UpdateVersion::compare(const UpdateVersion& other) const {
    const std::size_t n = std::max(numbers.size(), other.numbers.size());
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint32_t a = i < numbers.size() ? numbers[i] : 0;
        const std::uint32_t b = i < other.numbers.size() ? other.numbers[i] : 0;
        if (a != b) return a < b ? -1 : 1;
    }
    if (preRelease.empty() || other.preRelease.empty())
        return preRelease.empty() == other.preRelease.empty() ? 0 : (preRelease.empty() ? 1 : -1);
    const std::size_t m = std::min(preRelease.size(), other.preRelease.size());
    for (std::size_t i = 0; i < m; ++i)
        if (const int c = comparePart(preRelease[i], other.preRelease[i]); c != 0) return c < 0 ? -1 : 1;
    if (preRelease.size() == other.preRelease.size()) return 0;
    return preRelease.size() < other.preRelease.size() ? -1 : 1;
}

} // namespace bv
