#include <gtest/gtest.h>

#include "arrange/NamePattern.h"

using namespace bv;
using T = NamePattern::Type;

TEST(NamePattern, Parses) {
    const std::pair<const char*, std::optional<NamePattern>> cases[] = {
        {"vk-", NamePattern{T::prefix, "vk-"}},
        {"vk-*", NamePattern{T::prefix, "vk-"}},
        {"-sk", NamePattern{T::suffix, "-sk"}},
        {"*-sk", NamePattern{T::suffix, "-sk"}},
        {"_draft", NamePattern{T::suffix, "_draft"}},
        {"draft", NamePattern{T::prefix, "draft"}},
        {"*.PDF", NamePattern{T::fileExtension, "pdf"}},
        {"*.tar.gz", NamePattern{T::suffix, ".tar.gz"}},
        {"*.", NamePattern{T::suffix, "."}},
        {"*.é1", NamePattern{T::fileExtension, "é1"}},
        {"*draft", NamePattern{T::suffix, "draft"}},
        {"  \u201Cvk-\u201D \n", NamePattern{T::prefix, "vk-"}},
        {"'*.mp3'", NamePattern{T::fileExtension, "mp3"}},
        {"*.a-b", std::nullopt},
        {"*.a b", std::nullopt},
        {"a*b", std::nullopt},
        {"*a*", std::nullopt},
        {"**", std::nullopt},
        {"*", std::nullopt},
        {"two words", std::nullopt},
        {"", std::nullopt},
        {" \"\" ", std::nullopt},
        {"a\u00A0b", std::nullopt},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(NamePattern::parse(text), expected) << text;
}

TEST(NamePattern, BecomesTheMatchingCondition) {
    EXPECT_EQ(NamePattern::parse("vk-*")->condition(), SortCondition::nameStartsWith("vk-"));
    EXPECT_EQ(NamePattern::parse("*-sk")->condition(), SortCondition::nameEndsWith("-sk"));
    EXPECT_EQ(NamePattern::parse("*.Zip")->condition(), SortCondition::fileExtension("zip"));
}
