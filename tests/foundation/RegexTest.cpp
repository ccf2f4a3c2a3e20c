#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "foundation/PhraseText.h"
#include "foundation/Regex.h"

using namespace bv;

TEST(Regex, TestsCapturesAndReplaces) {
    const Regex days(R"((?:after|over)\s+(\d+)\s+(days?)?)", Regex::Case::insensitive);
    EXPECT_TRUE(days.isValid());
    EXPECT_TRUE(days.test("move AFTER 3 days"));
    EXPECT_EQ(days.firstCaptures("x over 12 y after 3 days"), (std::vector<std::string>{"12", ""}));
    EXPECT_FALSE(days.firstCaptures("nothing"));

    const Regex bad("(unclosed");
    EXPECT_FALSE(bad.isValid());
    EXPECT_FALSE(bad.test("(unclosed"));
    EXPECT_FALSE(bad.firstCaptures("(unclosed"));
    EXPECT_EQ(utf8(bad.replacingAll(utf16("abc"), utf16("x"))), "abc");

    // Positions are UTF-16 units: the emoji before the match counts two.
    const Regex word(R"(\b(\w+)\.txt\b)");
    const auto matches = word.allMatches(utf16("😀 a.txt, bé.txt"));
    ASSERT_EQ(matches.size(), 2u);
    EXPECT_EQ(matches[0].whole, (Regex::Range{3, 5}));
    EXPECT_EQ(matches[1].groups[0], (Regex::Range{10, 2}));
    EXPECT_EQ(word.allGroupTexts(utf16("😀 a.txt, bé.txt"), 1), (std::vector<std::string>{"a", "bé"}));

    const Regex disk(R"(\bdisk\s+images?\b)");
    EXPECT_EQ(utf8(disk.replacingAll(utf16("disk image and disk  images"), utf16(" "))), "  and  ");
    EXPECT_EQ(utf8(disk.replacingFirst(utf16("disk image, disk image"), utf16("$1\\"))), "$1\\, disk image");
    // Empty matches advance instead of looping forever.
    EXPECT_EQ(Regex("x*").allMatches(utf16("ab")).size(), 3u);
}

TEST(PhraseText, SplitsTrimsAndCounts) {
    const auto words = splitWords("\u00A0 move\t“PDFs”\n\n😀x  ");
    ASSERT_EQ(words.size(), 3u);
    EXPECT_EQ(words[0].text, "move");
    EXPECT_EQ(words[0].start, 2);
    EXPECT_EQ(words[1].start, 7);
    EXPECT_EQ(words[1].length, 6);
    EXPECT_EQ(words[2].start, 15);
    EXPECT_EQ(words[2].length, 3);
    EXPECT_EQ(normalizedPhrase("  a \r\n b\u2003c "), "a b c");
    EXPECT_EQ(lowercased("ÄRGER İ I"), "ärger i̇ i");
    EXPECT_EQ(trimmedOf("“*x.y*”,", ",“”*"), "x.y");
    EXPECT_EQ(trimmedOf("***", "*"), "");
    EXPECT_TRUE(isAllNumeric("١٢3"));
    EXPECT_FALSE(isAllNumeric("12a"));
    EXPECT_FALSE(isAllNumeric(""));
    EXPECT_EQ(alphanumericRuns("*.pdf, jpgs/7z"), (std::vector<std::string>{"pdf", "jpgs", "7z"}));
    std::int64_t n = 0;
    EXPECT_TRUE(parseWholeNumber("9223372036854775807", n));
    EXPECT_FALSE(parseWholeNumber("9223372036854775808", n));
    EXPECT_FALSE(parseWholeNumber("1 2", n));
    // Malformed UTF-8 is read as replacement characters, never past the end.
    EXPECT_EQ(splitWords("a\xff\xfe b").size(), 2u);
}

// One expression is shared by the editor (GUI thread) and background runs; each call must
// see only its own text whether or not it got the kept matcher.
TEST(Regex, SharedAcrossThreads) {
    static const Regex number(R"((\d+) days)");
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &wrong] {
            for (int i = 0; i < 2000; ++i) {
                const std::string n = std::to_string(t * 10000 + i);
                const auto groups = number.firstCaptures("after " + n + " days");
                if (!groups || (*groups)[0] != n) ++wrong;
            }
        });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong.load(), 0);
}
