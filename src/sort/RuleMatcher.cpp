#include "sort/RuleMatcher.h"

#include <algorithm>
#include <chrono>

#include "foundation/PhraseText.h"
#include "sort/FileSample.h"

namespace bv {
namespace {

using CT = SortCondition::Type;

bool contains(std::string_view haystack, std::string_view needle) { return haystack.find(needle) != std::string_view::npos; }
bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }
bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

bool isOneOf(const std::string& value, std::initializer_list<const char*> list) {
    return std::any_of(list.begin(), list.end(), [&](const char* v) { return value == v; });
}

bool looksLikeScreenshot(const std::string& lowerName) {
    return startsWith(lowerName, "screenshot") || startsWith(lowerName, "screen shot") ||
           startsWith(lowerName, "screen recording");
}

// The host of a URL text ("https://user@host:8080/x" gives "host"), lower case; empty
// when the text has no scheme.
std::string urlHost(const std::string& lowerURL) {
    const auto scheme = lowerURL.find("://");
    if (scheme == std::string::npos) return {};
    std::string rest = lowerURL.substr(scheme + 3);
    rest = rest.substr(0, rest.find_first_of("/?#"));
    if (const auto at = rest.rfind('@'); at != std::string::npos) rest = rest.substr(at + 1);
    if (!rest.empty() && rest.front() == '[') return rest.substr(0, rest.find(']') + 1);
    return rest.substr(0, rest.find(':'));
}

SortCondition folded(SortCondition c) {
    if (c.isText()) c.value = foldedCase(c.value);
    return c;
}

} // namespace

std::string foldedCase(std::string_view text) {
    std::string out(text);
    for (char& ch : out) {
        if (static_cast<unsigned char>(ch) >= 0x80) return lowercased(text);
        if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch - 'A' + 'a');
    }
    return out;
}

SampleNames SampleNames::of(std::string_view fileName) {
    SampleNames n;
    n.name = foldedCase(fileName);
    const auto dot = n.name.rfind('.');
    if (dot == std::string::npos || dot == 0) {
        n.stem = n.name;
    } else {
        n.extension = n.name.substr(dot + 1);
        n.stem = n.name.substr(0, dot);
    }
    return n;
}

bool sampleIsOfKind(const FileSample& sample, const SampleNames& names, const std::string& value) {
    if (sample.utTypeIdentifier) {
        const std::string identifier = foldedCase(*sample.utTypeIdentifier);
        const bool imageAsked = value == "image" || value == "public.image";
        // A disk image is no picture, whatever its identifier says.
        if (!(imageAsked && contains(identifier, "disk-image")) && contains(identifier, value)) return true;
    }
    const std::string& ext = names.extension;
    if (isOneOf(value, {"image", "public.image"}))
        return isOneOf(ext, {"jpg", "jpeg", "png", "gif", "heic", "webp", "tif", "tiff"});
    if (isOneOf(value, {"video", "public.movie"})) return isOneOf(ext, {"mp4", "mov", "m4v", "mkv"});
    if (isOneOf(value, {"pdf", "public.pdf", "com.adobe.pdf"})) return ext == "pdf";
    if (isOneOf(value, {"disk image", "public.disk-image", "installer"})) return isOneOf(ext, {"dmg", "iso", "pkg"});
    if (isOneOf(value, {"archive", "archives"})) return isOneOf(ext, {"zip", "gz", "tar", "tgz", "rar", "7z"});
    if (value == "screenshot") return looksLikeScreenshot(names.name);
    return ext == value;
}

bool RuleMatcher::conditionHolds(const SortCondition& c, const FileSample& sample, const SampleNames& names,
                                 TimePoint now) {
    switch (c.type) {
    case CT::kind: return sampleIsOfKind(sample, names, c.value);
    case CT::fileExtension: return names.extension == c.value;
    case CT::nameStartsWith: return startsWith(names.name, c.value);
    case CT::nameContains: return contains(names.name, c.value);
    case CT::nameEndsWith: return endsWith(names.stem, c.value) || endsWith(names.name, c.value);
    case CT::nameEquals: return names.name == c.value;
    case CT::olderThanDays: {
        const auto date = sample.added ? sample.added : sample.modified;
        if (c.number < 1 || !date) return false;
        return now - *date >= std::chrono::seconds(c.number * 86400);
    }
    case CT::minimumBytes: return c.number <= sample.size;
    case CT::downloadSource:
        for (const auto& from : sample.whereFroms) {
            const std::string lower = foldedCase(from);
            if (contains(lower, c.value)) return true;
            const std::string host = urlHost(lower);
            if (!host.empty() && contains(host, c.value)) return true;
        }
        return false;
    case CT::location: return sample.location == c.place;
    }
    return false;
}

RuleMatcher::RuleMatcher(const SortRule& rule) : rule_(rule) {
    for (const auto& c : rule.conditions) {
        switch (c.type) {
        case CT::fileExtension: extensions_.push_back(foldedCase(c.value)); break;
        case CT::location: places_.push_back(c.place); break;
        case CT::olderThanDays:
        case CT::minimumBytes: gates_.push_back(c); break;
        default: alternatives_.push_back(folded(c)); break;
        }
    }
}

bool RuleMatcher::matches(const FileSample& sample, const SampleNames& names, TimePoint now) const {
    if (!rule_.isEnabled || sample.isDirectory || sample.name.empty() || sample.name.front() == '.') return false;
    if (!places_.empty() && std::find(places_.begin(), places_.end(), sample.location) == places_.end()) return false;
    const bool extensionOK =
        extensions_.empty() || std::find(extensions_.begin(), extensions_.end(), names.extension) != extensions_.end();
    if (gates_.empty() && alternatives_.empty()) return extensionOK;
    const auto holds = [&](const SortCondition& c) { return conditionHolds(c, sample, names, now); };
    if (rule_.match == MatchMode::all)
        return extensionOK && std::all_of(gates_.begin(), gates_.end(), holds) &&
               std::all_of(alternatives_.begin(), alternatives_.end(), holds);
    // "Any" widens the choice of files, never the age or size limits.
    if (!std::all_of(gates_.begin(), gates_.end(), holds)) return false;
    if (!extensions_.empty() && extensionOK) return true;
    if (extensions_.empty() && alternatives_.empty()) return true;
    return std::any_of(alternatives_.begin(), alternatives_.end(), holds);
}

bool RuleMatcher::matches(const FileSample& sample, TimePoint now) const {
    return matches(sample, SampleNames::of(sample.name), now);
}

bool SortCondition::matches(const FileSample& sample, TimePoint now) const {
    return RuleMatcher::conditionHolds(folded(*this), sample, SampleNames::of(sample.name), now);
}

bool SortRule::matches(const FileSample& sample, TimePoint now) const { return RuleMatcher(*this).matches(sample, now); }

std::vector<FileSample> SortRule::matching(const std::vector<FileSample>& samples, TimePoint now) const {
    const RuleMatcher matcher(*this);
    std::vector<FileSample> out;
    for (const auto& s : samples)
        if (matcher.matches(s, now)) out.push_back(s);
    return out;
}

std::optional<std::int64_t> SortRule::firstAgeDays() const {
    for (const auto& c : conditions)
        if (c.type == CT::olderThanDays) return c.number;
    return std::nullopt;
}

bool SortRule::needsDesktop() const {
    return std::any_of(conditions.begin(), conditions.end(),
                       [](const SortCondition& c) { return c.type == CT::location && c.place == SortPlace::desktop; });
}

} // namespace bv
