#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "sort/SortRule.h"

namespace bv {

// A name pattern in one short word: the start of a name ("vk-", "vk-*"), its end before
// the extension ("-sk", "*-sk", "_draft"), or an extension ("*.pdf"). Read the same way by
// Auto-Arrange and by the star words of a sort sentence.
struct NamePattern {
    enum class Type { prefix, suffix, fileExtension };
    Type type = Type::prefix;
    std::string value; // an extension is lower case, without its point

    // Nothing for empty text, text with white space inside, a star in the middle, more
    // than one star, or an extension that isn't letters and numbers ("*.a-b").
    [[nodiscard]] static std::optional<NamePattern> parse(std::string_view text);

    // nameStartsWith, nameEndsWith or fileExtension with the value.
    [[nodiscard]] SortCondition condition() const;

    friend bool operator==(const NamePattern&, const NamePattern&) = default;
};

} // namespace bv
