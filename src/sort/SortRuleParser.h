#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Dates.h"
#include "foundation/Json.h"
#include "foundation/Uuid.h"
#include "sort/SortRule.h"

namespace bv {

// One word of a sentence that no part of the rule accounts for. Offsets are UTF-16 units
// from the start of the (trimmed) line, the unit the editor counts characters in.
struct PhraseSpan {
    std::string text; // as typed
    std::int32_t start = 0;
    std::int32_t length = 0;
    friend bool operator==(const PhraseSpan&, const PhraseSpan&) = default;
};

// One tag under the sentence; clicking it drops that part of the rule.
struct SortChip {
    std::string id;
    std::string text;
    std::string systemImage; // a symbol name
    friend bool operator==(const SortChip&, const SortChip&) = default;
};

// One reading of a sentence.
struct ParsedSort {
    SortRule rule;
    std::vector<SortChip> chips;
    bool needsFolder = false; // a move whose folder the user still has to pick
    std::string interpretation;
    friend bool operator==(const ParsedSort&, const ParsedSort&) = default;
};

// The verdict on one line: either `parsed` or `message`, never both.
struct PhraseReview {
    std::optional<ParsedSort> parsed;
    std::vector<PhraseSpan> unrecognized;
    std::optional<std::string> message;
    friend bool operator==(const PhraseReview&, const PhraseReview&) = default;
};

struct LineReview {
    int index = 0;    // place among the non-empty lines, from 0
    std::string text; // the line, trimmed
    PhraseReview review;
    friend bool operator==(const LineReview&, const LineReview&) = default;
};

enum class SortRuleParserError { empty, unrecognized, mixedActions, deleteRequiresAge, invalidAge, missingMatch };
[[nodiscard]] const char* sortRuleParserErrorMessage(SortRuleParserError e);

// Reads Auto-Sort sentences ("move PDFs older than 2 weeks to Documents"). Each sentence
// is offered to the older grammar and to the newer one; the better reading wins. Pure and
// fast enough to run on every keystroke; the expressions and word sets are built once.
class SortRuleParser {
public:
    struct Result {
        std::optional<ParsedSort> parsed;
        std::optional<SortRuleParserError> error; // set exactly when parsed is empty
    };

    // `id` and `now` become the rule's id and createdAt.
    [[nodiscard]] static Result parse(std::string_view phrase, Uuid id, TimePoint now);
    // The newer grammar alone.
    [[nodiscard]] static Result parseNewGrammar(std::string_view phrase, Uuid id, TimePoint now);

    [[nodiscard]] static PhraseReview review(std::string_view line, Uuid id, TimePoint now);
    // Each non-empty line of the text box, each with a fresh UUID.
    [[nodiscard]] static std::vector<LineReview> reviewLines(std::string_view text, TimePoint now);

    // The words of `line` that neither the grammar nor `rule` accounts for.
    [[nodiscard]] static std::vector<PhraseSpan> unrecognizedWords(std::string_view line, const SortRule* rule);

    [[nodiscard]] static std::vector<SortChip> chips(const SortRule& rule);
    // The rule without the part that chip stands for; "action" changes nothing and
    // "schedule" sets the trigger back to when a file arrives.
    [[nodiscard]] static SortRule removingChip(std::string_view chipID, const SortRule& rule);
};

// The short automatic title of a rule: its condition chips, then " · " and the action,
// at most 80 characters.
[[nodiscard]] std::string chipLine(const SortRule& rule);

// The editor's verdict as JSON, the rule in the form "rules-v2.json" stores it.
[[nodiscard]] Json toJson(const LineReview& line);

} // namespace bv
