#include "sort/RuleSuggestions.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>

#include "foundation/ByteText.h"
#include "sort/RuleMatcher.h"

namespace bv {
namespace {

using Samples = std::vector<FileSample>;

bool isOneOf(const std::string& v, std::initializer_list<const char*> list) {
    return std::any_of(list.begin(), list.end(), [&](const char* x) { return v == x; });
}

bool startsWith(const std::string& text, const std::string& prefix) { return text.compare(0, prefix.size(), prefix) == 0; }

std::string plural(std::int64_t n, const std::string& one, const std::string& many) {
    return std::to_string(n) + (n == 1 ? one : many);
}

bool olderThan(const FileSample& s, TimePoint now, std::int64_t seconds) {
    const auto date = s.added ? s.added : s.modified;
    return date && now - *date >= std::chrono::seconds(seconds);
}

// The same rule id for a detector on every refresh, so an unchanged list compares equal.
Uuid suggestionRuleID(int order) {
    char text[40];
    std::snprintf(text, sizeof text, "5B0E5A17-0000-4000-8000-%012X", order);
    return *Uuid::parse(text);
}

SortRule draftRule(int order, const std::string& phrase, std::vector<SortCondition> conditions, SortAction action,
                   MatchMode match = MatchMode::all, SortTrigger trigger = SortTrigger::whenAdded()) {
    SortRule r;
    r.id = suggestionRuleID(order);
    r.name = phrase;
    r.phrase = phrase;
    r.match = match;
    r.conditions = std::move(conditions);
    r.conditions.push_back(SortCondition::location(SortPlace::downloads));
    r.action = std::move(action);
    r.trigger = trigger;
    return r;
}

RuleSuggestion make(std::string id, std::string title, std::string evidence, SortRule rule, const Samples& found) {
    RuleSuggestion s{std::move(id), std::move(title), std::move(evidence), std::move(rule), 0, 0};
    s.fileCount = static_cast<std::int64_t>(found.size());
    for (const auto& f : found) s.bytes += f.size;
    return s;
}

template <class Keep>
Samples filesWhere(const Samples& samples, Keep keep) {
    Samples out;
    for (const auto& s : samples)
        if (!s.isDirectory && keep(s, SampleNames::of(s.name))) out.push_back(s);
    return out;
}

std::optional<RuleSuggestion> oldInstallers(const Samples& samples, TimePoint now) {
    const auto found = filesWhere(samples, [&](const FileSample& s, const SampleNames& n) {
        return isOneOf(n.extension, {"dmg", "iso", "pkg"}) && olderThan(s, now, 259200);
    });
    if (found.empty()) return std::nullopt;
    const std::string phrase = "Trash disk images and installers older than 3 days";
    auto rule = draftRule(1, phrase,
                          {SortCondition::fileExtension("dmg"), SortCondition::fileExtension("iso"),
                           SortCondition::fileExtension("pkg"), SortCondition::olderThanDays(3)},
                          SortAction::trash());
    auto s = make("old-installers", "Old installers and disk images", "", std::move(rule), found);
    s.evidence = plural(s.fileCount, " disk image", " disk images") + ", " + byteText(s.bytes) + ", older than 3 days";
    return s;
}

std::optional<RuleSuggestion> screenshots(const Samples& samples, TimePoint) {
    const auto found = filesWhere(samples, [](const FileSample& s, const SampleNames& n) {
        return sampleIsOfKind(s, n, "screenshot");
    });
    if (found.empty()) return std::nullopt;
    auto rule = draftRule(2, "Move screenshots into a folder", {SortCondition::kindIs("screenshot")},
                          SortAction::moveToFolder({}));
    auto s = make("screenshots", "Screenshots", "", std::move(rule), found);
    s.evidence = plural(s.fileCount, " screenshot", " screenshots");
    return s;
}

// "a.tar.gz" and "a.zip" are both extracted into "a".
std::string extractedFolderName(const std::string& name) {
    std::string stem = name.substr(0, name.rfind('.'));
    if (stem.size() > 4 && foldedCase(stem.substr(stem.size() - 4)) == ".tar") stem.resize(stem.size() - 4);
    return stem;
}

std::optional<RuleSuggestion> extractedArchives(const Samples& samples, TimePoint now) {
    std::set<std::pair<SortPlace, std::string>> folders;
    for (const auto& s : samples)
        if (s.isDirectory) folders.insert({s.location, s.name});
    const auto found = filesWhere(samples, [&](const FileSample& s, const SampleNames& n) {
        return isOneOf(n.extension, {"zip", "gz", "tar", "tgz", "rar", "7z"}) && olderThan(s, now, 86400) &&
               folders.count({s.location, extractedFolderName(s.name)});
    });
    if (found.empty()) return std::nullopt;
    // The rule names these archives: a rule for every old archive would take unextracted ones too.
    std::vector<SortCondition> conditions{SortCondition::olderThanDays(1)};
    for (const auto& f : found) conditions.push_back(SortCondition::nameEquals(f.name));
    auto rule = draftRule(3, "Trash archives older than a day that already have a folder with the same name",
                          std::move(conditions), SortAction::trash(), MatchMode::any, SortTrigger::manual());
    auto s = make("extracted-archives", "Archives already extracted", "", std::move(rule), found);
    s.evidence = plural(s.fileCount, " archive already extracted", " archives already extracted");
    return s;
}

std::optional<RuleSuggestion> duplicates(const Samples& samples, TimePoint now) {
    std::map<std::pair<std::string, std::int64_t>, int> copies;
    for (const auto& s : samples)
        if (!s.isDirectory && olderThan(s, now, 86400)) ++copies[{s.name, s.size}];
    const auto found = filesWhere(samples, [&](const FileSample& s, const SampleNames&) {
        return olderThan(s, now, 86400) && copies[{s.name, s.size}] > 1;
    });
    if (found.empty()) return std::nullopt;
    std::vector<SortCondition> conditions{SortCondition::olderThanDays(1)};
    std::set<std::string> names;
    for (const auto& f : found)
        if (names.insert(f.name).second) conditions.push_back(SortCondition::nameEquals(f.name));
    // Run by hand only: the preview lists every copy, and the user unticks the one to keep.
    auto rule = draftRule(4, "Files older than a day that share a name and size", std::move(conditions),
                          SortAction::trash(), MatchMode::any, SortTrigger::manual());
    auto s = make("duplicates", "Duplicates", "", std::move(rule), found);
    s.evidence = std::to_string(s.fileCount) + " copies, " + byteText(s.bytes) +
                 ". The preview lists every copy so you can leave one.";
    return s;
}

std::optional<RuleSuggestion> largeVideos(const Samples& samples, TimePoint) {
    const auto found = filesWhere(samples, [](const FileSample& s, const SampleNames& n) {
        return isOneOf(n.extension, {"mp4", "mov", "m4v", "mkv"}) && s.size >= 500000000;
    });
    if (found.empty()) return std::nullopt;
    auto rule = draftRule(5, "Move videos larger than 500 MB",
                          {SortCondition::kindIs("video"), SortCondition::minimumBytes(500000000)},
                          SortAction::moveToFolder({}));
    auto s = make("large-videos", "Large videos", "", std::move(rule), found);
    s.evidence = plural(s.fileCount, " video", " videos");
    return s;
}

SuggestionDetector invoicePDFs(int order, std::string id, std::string word, std::string title) {
    return {id, [=](const Samples& samples, TimePoint) -> std::optional<RuleSuggestion> {
                const auto found = filesWhere(samples, [&](const FileSample&, const SampleNames& n) {
                    return n.extension == "pdf" && n.name.find(word) != std::string::npos;
                });
                if (found.empty()) return std::nullopt;
                auto rule = draftRule(order, "Move " + word + " PDFs into a folder",
                                      {SortCondition::fileExtension("pdf"), SortCondition::nameContains(word)},
                                      SortAction::moveToFolder({}));
                auto s = make(id, title, "", std::move(rule), found);
                s.evidence = plural(s.fileCount, " PDF", " PDFs");
                return s;
            }};
}

// The prefix a name gives, or empty: the part before the first "_", "-" or blank, at least
// four characters and no word that every camera or browser uses.
std::string namePrefix(const std::string& name) {
    const auto cut = name.find_first_of("_- ");
    if (cut == std::string::npos || cut < 4) return {};
    const std::string prefix = foldedCase(name.substr(0, cut));
    if (isOneOf(prefix, {"img", "dsc", "screenshot", "screen", "download", "file", "copy", "image"})) return {};
    return prefix;
}

std::optional<RuleSuggestion> commonPrefix(const Samples& samples, TimePoint) {
    std::string best;
    Samples bestFiles;
    std::int64_t bestBytes = 0;
    std::set<std::string> seen;
    for (const auto& s : samples) {
        if (s.isDirectory) continue;
        const std::string prefix = namePrefix(s.name);
        if (prefix.empty() || !seen.insert(prefix).second) continue;
        const auto group = filesWhere(samples, [&](const FileSample&, const SampleNames& n) { return startsWith(n.name, prefix); });
        if (group.size() < 3) continue;
        std::int64_t bytes = 0;
        for (const auto& f : group) bytes += f.size;
        if (group.size() > bestFiles.size() || (group.size() == bestFiles.size() && bytes > bestBytes)) {
            best = prefix;
            bestFiles = group;
            bestBytes = bytes;
        }
    }
    if (best.empty()) return std::nullopt;
    auto rule = draftRule(8, "Move files starting with " + best, {SortCondition::nameStartsWith(best)},
                          SortAction::moveToFolder({}));
    auto s = make("common-prefix", "Same name prefix", "", std::move(rule), bestFiles);
    s.evidence = std::to_string(s.fileCount) + " files starting with \u201C" + best + "\u201D, " + byteText(s.bytes);
    return s;
}

std::string hostOf(const std::string& url) {
    const auto scheme = url.find("://");
    if (scheme == std::string::npos) return {};
    std::string rest = url.substr(scheme + 3);
    rest = rest.substr(0, rest.find_first_of("/?#"));
    if (const auto at = rest.rfind('@'); at != std::string::npos) rest = rest.substr(at + 1);
    return foldedCase(rest.substr(0, rest.find(':')));
}

std::optional<RuleSuggestion> sameSite(const Samples& samples, TimePoint) {
    std::vector<std::string> order;
    std::map<std::string, Samples> groups;
    for (const auto& s : samples) {
        if (s.isDirectory || s.whereFroms.empty()) continue;
        const std::string host = hostOf(s.whereFroms.front());
        if (host.empty()) continue;
        if (!groups.count(host)) order.push_back(host);
        groups[host].push_back(s);
    }
    std::string best;
    for (const auto& host : order)
        if (best.empty() || groups[host].size() > groups[best].size()) best = host;
    if (best.empty()) return std::nullopt;
    auto rule = draftRule(9, "Move files from " + best, {SortCondition::downloadSource(best)}, SortAction::moveToFolder({}));
    auto s = make("same-site", "Same download site", "", std::move(rule), groups[best]);
    s.evidence = plural(s.fileCount, " file from ", " files from ") + best;
    return s;
}

} // namespace

const std::vector<SuggestionDetector>& RuleSuggestions::detectors() {
    static const std::vector<SuggestionDetector> list{
        {"old-installers", oldInstallers},
        {"screenshots", screenshots},
        {"extracted-archives", extractedArchives},
        {"duplicates", duplicates},
        {"large-videos", largeVideos},
        invoicePDFs(6, "invoices", "invoice", "Invoices"),
        invoicePDFs(7, "receipts", "receipt", "Receipts"),
        {"common-prefix", commonPrefix},
        {"same-site", sameSite},
    };
    return list;
}

std::vector<RuleSuggestion> RuleSuggestions::refresh(const std::vector<FileSample>& samples, TimePoint now,
                                                     const std::vector<std::string>& dismissed) {
    std::vector<RuleSuggestion> out;
    for (const auto& detector : detectors()) {
        if (std::find(dismissed.begin(), dismissed.end(), detector.id) != dismissed.end()) continue;
        auto found = detector.detect(samples, now);
        if (!found || found->fileCount < 1 || found->bytes < 0) continue;
        const RuleMatcher matcher(found->rule);
        const bool matchesSome =
            std::any_of(samples.begin(), samples.end(), [&](const FileSample& s) { return matcher.matches(s, now); });
        if (matchesSome) out.push_back(std::move(*found));
    }
    return out;
}

std::vector<std::string> RuleSuggestions::dismissing(std::vector<std::string> dismissed, const std::string& id) {
    if (std::find(dismissed.begin(), dismissed.end(), id) == dismissed.end()) dismissed.push_back(id);
    return dismissed;
}

std::map<std::string, std::int64_t> RuleSuggestions::matchCounts(const std::vector<SortRule>& rules,
                                                                 const std::vector<FileSample>& samples, TimePoint now) {
    std::vector<SampleNames> names;
    names.reserve(samples.size());
    for (const auto& s : samples) names.push_back(SampleNames::of(s.name));
    std::map<std::string, std::int64_t> counts;
    for (const auto& rule : rules) {
        const RuleMatcher matcher(rule);
        std::int64_t n = 0;
        for (size_t i = 0; i < samples.size(); ++i) n += !samples[i].isDirectory && matcher.matches(samples[i], names[i], now);
        counts[rule.id.text()] = n;
    }
    return counts;
}

} // namespace bv
