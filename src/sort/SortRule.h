#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/CleanSchedule.h"
#include "foundation/Dates.h"
#include "foundation/Uuid.h"

namespace bv {

class CalendarContext;
struct FileSample;

// How a rule's conditions combine.
enum class MatchMode { all, any };
// The two folders Auto-Sort looks at.
enum class SortPlace { downloads, desktop };
// A rule written as a sentence (sort) or a name pattern of Auto-Arrange (arrange).
enum class SortRuleKind { sort, arrange };

[[nodiscard]] const char* matchModeName(MatchMode m);   // "all", "any"
[[nodiscard]] const char* sortPlaceName(SortPlace p);   // "downloads", "desktop"
[[nodiscard]] const char* sortRuleKindName(SortRuleKind k);

// When a rule runs: on a schedule, only when the user runs it, or as files arrive.
struct SortTrigger {
    enum class Type { schedule, manual, whenAdded };
    Type type = Type::manual;
    CleanSchedule schedule = CleanSchedule::off; // meaningful only for Type::schedule

    [[nodiscard]] static SortTrigger scheduled(CleanSchedule s) { return {Type::schedule, s}; }
    [[nodiscard]] static SortTrigger manual() { return {Type::manual, CleanSchedule::off}; }
    [[nodiscard]] static SortTrigger whenAdded() { return {Type::whenAdded, CleanSchedule::off}; }

    // "Off", "Hourly", "Daily", "Weekly", "When you run it", "When a file arrives".
    [[nodiscard]] std::string displayText() const;
    friend bool operator==(const SortTrigger&, const SortTrigger&) = default;
};

// What happens to a matching file. `argument` is the folder of a move (empty until the
// user picks one) or the pattern of a rename; empty for the other two.
struct SortAction {
    enum class Type { moveToFolder, rename, trash, archive };
    Type type = Type::trash;
    std::string argument;

    [[nodiscard]] static SortAction moveToFolder(std::string path) { return {Type::moveToFolder, std::move(path)}; }
    [[nodiscard]] static SortAction rename(std::string pattern) { return {Type::rename, std::move(pattern)}; }
    [[nodiscard]] static SortAction trash() { return {Type::trash, {}}; }
    [[nodiscard]] static SortAction archive() { return {Type::archive, {}}; }

    // The chip and list text: "Move to a folder", "Move to Invoices", "Rename to {date}",
    // "Move to Trash", "Zip, keep the original".
    [[nodiscard]] std::string displayText() const;
    friend bool operator==(const SortAction&, const SortAction&) = default;
};

// One test a file must pass. Exactly one payload field is meaningful, chosen by `type`:
// `value` for the text cases, `number` for olderThanDays and minimumBytes, `place` for
// location. The factories leave the others at their defaults so equality is plain.
struct SortCondition {
    enum class Type {
        kind, fileExtension, nameStartsWith, nameContains, nameEndsWith, nameEquals,
        olderThanDays, minimumBytes, downloadSource, location
    };
    Type type = Type::kind;
    std::string value;
    std::int64_t number = 0;
    SortPlace place = SortPlace::downloads;

    [[nodiscard]] static SortCondition text(Type t, std::string v) { return {t, std::move(v), 0, SortPlace::downloads}; }
    [[nodiscard]] static SortCondition kindIs(std::string v) { return text(Type::kind, std::move(v)); }
    [[nodiscard]] static SortCondition fileExtension(std::string v) { return text(Type::fileExtension, std::move(v)); }
    [[nodiscard]] static SortCondition nameStartsWith(std::string v) { return text(Type::nameStartsWith, std::move(v)); }
    [[nodiscard]] static SortCondition nameContains(std::string v) { return text(Type::nameContains, std::move(v)); }
    [[nodiscard]] static SortCondition nameEndsWith(std::string v) { return text(Type::nameEndsWith, std::move(v)); }
    [[nodiscard]] static SortCondition nameEquals(std::string v) { return text(Type::nameEquals, std::move(v)); }
    [[nodiscard]] static SortCondition downloadSource(std::string v) { return text(Type::downloadSource, std::move(v)); }
    [[nodiscard]] static SortCondition olderThanDays(std::int64_t d) { return {Type::olderThanDays, {}, d, SortPlace::downloads}; }
    [[nodiscard]] static SortCondition minimumBytes(std::int64_t b) { return {Type::minimumBytes, {}, b, SortPlace::downloads}; }
    [[nodiscard]] static SortCondition location(SortPlace p) { return {Type::location, {}, 0, p}; }

    [[nodiscard]] bool isText() const { return type != Type::olderThanDays && type != Type::minimumBytes && type != Type::location; }
    // Whether the file passes this one test at `now` (text compared ignoring case). For
    // many samples, RuleMatcher does the same work once per rule and once per name.
    [[nodiscard]] bool matches(const FileSample& sample, TimePoint now) const;
    friend bool operator==(const SortCondition&, const SortCondition&) = default;
};

// The JSON `type` of a condition: the case name ("fileExtension", "olderThanDays", ...).
[[nodiscard]] const char* sortConditionTypeName(SortCondition::Type t);

// The last file an Auto-Arrange pattern moved.
struct ArrangeMove {
    std::string fileName;
    TimePoint date;
    friend bool operator==(const ArrangeMove&, const ArrangeMove&) = default;
};

// One Auto-Sort or Auto-Arrange rule, as stored in "rules-v2.json".
struct SortRule {
    Uuid id;
    std::string name;   // a parsed rule has its normalized sentence here
    std::string phrase; // the sentence it was parsed from
    MatchMode match = MatchMode::all;
    std::vector<SortCondition> conditions;
    SortAction action = SortAction::trash();
    SortTrigger trigger = SortTrigger::manual();
    bool isEnabled = true;
    TimePoint createdAt;
    std::optional<TimePoint> nextRun;
    SortRuleKind kind = SortRuleKind::sort;
    std::optional<TimePoint> liveSince;  // arrange rules leave files older than this alone
    std::int64_t arrangedCount = 0;
    std::optional<ArrangeMove> lastArranged;

    friend bool operator==(const SortRule&, const SortRule&) = default;

    // Why the rule can't be saved yet, the first reason that applies; nothing when it can.
    [[nodiscard]] std::optional<std::string> validationMessage() const;
    // Some olderThanDays condition of at least 1.
    [[nodiscard]] bool hasAge() const;
    // The last component of a move's folder; nothing for other actions or an empty folder.
    [[nodiscard]] std::optional<std::string> destinationName() const;
    // "All of · Move to Invoices · When a file arrives", for the rule list.
    [[nodiscard]] std::string plainSummary() const;

    // Whether the rule applies to the file at `now`: never for a disabled rule, a folder or
    // a hidden name; extensions are alternatives; with `any`, age and size still gate.
    [[nodiscard]] bool matches(const FileSample& sample, TimePoint now) const;
    // The samples the rule matches, in their order.
    [[nodiscard]] std::vector<FileSample> matching(const std::vector<FileSample>& samples, TimePoint now) const;
    // The first olderThanDays value, whatever it is.
    [[nodiscard]] std::optional<std::int64_t> firstAgeDays() const;
    // Some location condition names the Desktop, so the Desktop has to be gathered too.
    [[nodiscard]] bool needsDesktop() const;
};

// The fixed identity of the seeded rule, the same on every machine.
[[nodiscard]] Uuid defaultSortRuleID();
// "Old installers and disk images": trash dmg, pkg and iso files older than 7 days in
// Downloads, daily, first run one calendar day after `now`.
[[nodiscard]] SortRule defaultSortRule(TimePoint now, const CalendarContext& calendar);

// The last path component, ignoring trailing slashes ("/a/b/" gives "b", "/" gives "/").
[[nodiscard]] std::string lastPathComponent(const std::string& path);

} // namespace bv
