#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sort/CleanupRule.h"

namespace bv {

// Why the older grammar could not read a sentence.
enum class RuleParserError { empty, unrecognized, mixedActions, deleteRequiresAge, invalidAge, missingMatch };
[[nodiscard]] const char* ruleParserErrorMessage(RuleParserError e);

// The older sentence grammar: "put JPEGs in this folder only", "delete dmg files after
// 3 days". Pure; every sentence is also offered to the newer grammar, and the better
// reading wins there.
class RuleParser {
public:
    // The reading, or the first error of the grammar's steps.
    struct Result {
        std::optional<ParsedRule> rule;
        std::optional<RuleParserError> error;
    };
    [[nodiscard]] static Result parse(std::string_view phrase);

    // "JPEG files (.jpg and .jpeg)", ".pdf files", "files ending in .a, .b", "matching
    // files", with the prefix clause when there is a prefix.
    [[nodiscard]] static std::string filesPhrase(const std::vector<std::string>& extensions,
                                                 const std::optional<std::string>& prefix);
    [[nodiscard]] static std::string interpretation(RuleAction action, const std::string& filesPhrase,
                                                    std::optional<std::int64_t> ageDays);
};

} // namespace bv
