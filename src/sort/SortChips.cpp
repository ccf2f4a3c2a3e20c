// The editor's side of the sort grammar: chips, the words it did not use, the automatic
// title, and the JSON form of a line's verdict.
#include <set>

#include "foundation/ByteText.h"
#include "foundation/PhraseText.h"
#include "foundation/Regex.h"
#include "sort/SortRuleJson.h"
#include "sort/SortRuleParser.h"
#include "sort/SortVocabulary.h"

namespace bv {
namespace {

using CT = SortCondition::Type;

std::optional<SortChip> conditionChip(const SortCondition& c) {
    switch (c.type) {
    case CT::kind: return SortChip{"kind-" + c.value, c.value, "square.grid.2x2"};
    case CT::nameStartsWith: return SortChip{"prefix-" + c.value, "Name starts with " + c.value, "textformat"};
    case CT::nameContains: return SortChip{"contains-" + c.value, "Name contains " + c.value, "text.magnifyingglass"};
    case CT::nameEndsWith: return SortChip{"ends-" + c.value, "Name ends with " + c.value, "textformat"};
    case CT::nameEquals: return SortChip{"equals-" + c.value, "Name is " + c.value, "textformat"};
    case CT::olderThanDays:
        return SortChip{"age-" + std::to_string(c.number),
                        "Older than " + std::to_string(c.number) + (c.number == 1 ? " day" : " days"), "clock"};
    case CT::minimumBytes:
        // byteText already writes "0 GB" for nothing at all.
        return SortChip{"size-" + std::to_string(c.number), "Larger than " + byteText(c.number), "arrow.up.bin"};
    case CT::downloadSource: return SortChip{"source-" + c.value, "From " + c.value, "globe"};
    case CT::location:
        return c.place == SortPlace::desktop ? SortChip{"place-desktop", "In Desktop", "folder"}
                                             : SortChip{"place-downloads", "In Downloads", "folder"};
    case CT::fileExtension: return std::nullopt;
    }
    return std::nullopt;
}

const char* actionImage(SortAction::Type t) {
    switch (t) {
    case SortAction::Type::moveToFolder: return "folder";
    case SortAction::Type::rename: return "pencil";
    case SortAction::Type::trash: return "trash";
    case SortAction::Type::archive: return "archivebox";
    }
    return "folder";
}

bool isJpegPair(const std::vector<std::string>& extensions) {
    const std::set<std::string> set(extensions.begin(), extensions.end());
    return set == std::set<std::string>{"jpg", "jpeg"};
}

} // namespace

std::vector<SortChip> SortRuleParser::chips(const SortRule& rule) {
    std::vector<SortChip> out;
    std::vector<std::string> extensions;
    for (const auto& c : rule.conditions)
        if (c.type == CT::fileExtension) extensions.push_back(c.value);
    if (isJpegPair(extensions)) {
        out.push_back({"ext-jpeg", "JPEG", "photo"});
    } else {
        for (const auto& e : extensions) out.push_back({"ext-" + e, "." + e, "doc"});
    }
    for (const auto& c : rule.conditions)
        if (auto chip = conditionChip(c)) out.push_back(std::move(*chip));
    out.push_back({"action", rule.action.displayText(), actionImage(rule.action.type)});
    out.push_back({"schedule", rule.trigger.displayText(), "calendar"});
    return out;
}

SortRule SortRuleParser::removingChip(std::string_view chipID, const SortRule& rule) {
    SortRule out = rule;
    if (chipID == "action") return out;
    if (chipID == "schedule") {
        out.trigger = SortTrigger::whenAdded();
        return out;
    }
    std::vector<SortCondition> kept;
    for (const auto& c : rule.conditions) {
        bool drop = false;
        if (c.type == CT::fileExtension) {
            drop = chipID == "ext-jpeg" ? (c.value == "jpg" || c.value == "jpeg") : chipID == "ext-" + c.value;
        } else if (auto chip = conditionChip(c)) {
            drop = chip->id == chipID;
        }
        if (!drop) kept.push_back(c);
    }
    out.conditions = std::move(kept);
    return out;
}

std::string chipLine(const SortRule& rule) {
    std::string joined;
    for (const auto& chip : SortRuleParser::chips(rule)) {
        if (chip.id == "action" || chip.id == "schedule" || chip.id.rfind("place-", 0) == 0) continue;
        if (!joined.empty()) joined += ", ";
        joined += chip.text;
    }
    std::string line = joined.empty() ? rule.action.displayText() : joined + " \u00B7 " + rule.action.displayText();
    const icu::UnicodeString wide = utf16(line);
    if (wide.countChar32() > 80) {
        const int32_t end = wide.moveIndex32(0, 80);
        line = utf8(wide, 0, end);
    }
    return line;
}

std::vector<PhraseSpan> SortRuleParser::unrecognizedWords(std::string_view line, const SortRule* rule) {
    static const Regex sizeWord{R"(^\d+(?:\.\d+)?(mb|gb|kb)$)"};
    std::set<std::string> ruleWords;
    if (rule) {
        for (const auto& c : rule->conditions) {
            if (c.type == CT::olderThanDays)
                ruleWords.insert(std::to_string(c.number));
            else if (c.isText())
                ruleWords.insert(lowercased(c.value));
        }
        if (rule->action.type == SortAction::Type::rename)
            for (const auto& w : splitWords(lowercased(rule->action.argument))) ruleWords.insert(w.text);
    }
    const auto& known = knownSortWords();
    std::vector<PhraseSpan> out;
    for (const auto& word : splitWords(line)) {
        const std::string cleaned = trimmedOf(lowercased(word.text), ".,;:\"\u201C\u201D'*");
        const bool understood = cleaned.empty() || known.count(cleaned) || ruleWords.count(cleaned) ||
                                isAllNumeric(cleaned) || sizeWord.test(cleaned);
        if (!understood) out.push_back({word.text, word.start, word.length});
    }
    return out;
}

Json toJson(const LineReview& line) {
    Json j = Json::object();
    j["index"] = line.index;
    j["text"] = line.text;
    const PhraseReview& r = line.review;
    if (r.parsed) {
        j["rule"] = toJson(r.parsed->rule);
        Json chips = Json::array();
        for (const auto& chip : r.parsed->chips)
            chips.push_back(Json{{"id", chip.id}, {"text", chip.text}, {"systemImage", chip.systemImage}});
        j["chips"] = std::move(chips);
        j["needsFolder"] = r.parsed->needsFolder;
        j["interpretation"] = r.parsed->interpretation;
    }
    Json words = Json::array();
    for (const auto& w : r.unrecognized) words.push_back(Json{{"text", w.text}, {"start", w.start}, {"length", w.length}});
    j["unrecognized"] = std::move(words);
    if (r.message) j["message"] = *r.message;
    return j;
}

} // namespace bv
