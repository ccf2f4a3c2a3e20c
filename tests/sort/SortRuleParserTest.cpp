#include <gtest/gtest.h>

#include "foundation/Dates.h"
#include "sort/RuleParser.h"
#include "sort/SortRuleJson.h"
#include "sort/SortRuleParser.h"
#include "sort/SortVocabulary.h"

using namespace bv;
using CT = SortCondition::Type;

namespace {

const TimePoint kNow = *parseIsoDate("2026-11-15T22:16:00Z");

SortRuleParser::Result parse(const std::string& phrase) { return SortRuleParser::parse(phrase, Uuid::generate(), kNow); }

// A compact description of the conditions, so a table row reads like the sentence's meaning.
std::string describe(const std::vector<SortCondition>& conditions) {
    std::string out;
    for (const auto& c : conditions) {
        if (!out.empty()) out += " ";
        out += sortConditionTypeName(c.type);
        out += "=";
        if (c.type == CT::olderThanDays || c.type == CT::minimumBytes)
            out += std::to_string(c.number);
        else if (c.type == CT::location)
            out += sortPlaceName(c.place);
        else
            out += c.value;
    }
    return out;
}

} // namespace

TEST(SortRuleParser, ErrorsTheUserSees) {
    const std::pair<const char*, SortRuleParserError> cases[] = {
        {"", SortRuleParserError::empty},
        {"   \t ", SortRuleParserError::empty},
        {"zip and trash old files", SortRuleParserError::mixedActions},
        {"trash zip files older than 7 days", SortRuleParserError::mixedActions},
        {"trash *.zip files older than 7 days", SortRuleParserError::mixedActions},
        {"rename and move pdfs", SortRuleParserError::mixedActions},
        {"trash dmg files", SortRuleParserError::deleteRequiresAge},
        {"trash dmg files after 0 days", SortRuleParserError::invalidAge},
        {"keep invoices", SortRuleParserError::missingMatch},
        {"hello there", SortRuleParserError::missingMatch},
        {"move stuff on my desktop", SortRuleParserError::missingMatch},
    };
    for (const auto& [phrase, error] : cases) {
        const auto r = parse(phrase);
        EXPECT_FALSE(r.parsed) << phrase;
        ASSERT_TRUE(r.error) << phrase;
        EXPECT_EQ(*r.error, error) << phrase << ": " << sortRuleParserErrorMessage(*r.error);
    }
}

TEST(SortRuleParser, ReadsSentences) {
    struct Case {
        const char* phrase;
        const char* conditions;
        SortAction::Type action;
        const char* trigger;
        MatchMode match = MatchMode::all;
    };
    using A = SortAction::Type;
    const Case cases[] = {
        {"move PDFs older than 2 weeks", "fileExtension=pdf olderThanDays=14 location=downloads", A::moveToFolder,
         "When a file arrives"},
        {"pdf files", "fileExtension=pdf location=downloads", A::moveToFolder, "When a file arrives"},
        {"trash dmg, pkg and iso files older than 7 days",
         "fileExtension=dmg fileExtension=iso fileExtension=pkg olderThanDays=7 location=downloads", A::trash,
         "When a file arrives"},
        {"zip archives older than 30 days", "olderThanDays=30 kind=archive location=downloads", A::archive,
         "When a file arrives"},
        {"move disk images older than 3 days", "olderThanDays=3 kind=disk image location=downloads", A::moveToFolder,
         "When a file arrives"},
        {"move jpg images", "fileExtension=jpeg fileExtension=jpg location=downloads", A::moveToFolder,
         "When a file arrives"},
        // The star pattern gives the extension once; the word "pdf" still gives the kind.
        {"move *.pdf files", "fileExtension=pdf kind=pdf location=downloads", A::moveToFolder, "When a file arrives"},
        {"move pdfs or images", "fileExtension=pdf kind=image location=downloads", A::moveToFolder,
         "When a file arrives", MatchMode::any},
        {"move photos on my desktop", "kind=image location=desktop", A::moveToFolder, "When a file arrives"},
        {"zip screenshots every day and every week", "kind=screenshot location=downloads", A::archive, "Weekly"},
        {"zip screenshots hourly every week daily", "kind=screenshot location=downloads", A::archive, "Hourly"},
        {"move videos when I run it", "kind=video location=downloads", A::moveToFolder, "When you run it"},
        {"move installers daily", "kind=installer location=downloads", A::moveToFolder, "Daily"},
        {"move disk image installers", "kind=installer location=downloads", A::moveToFolder, "When a file arrives"},
        {"move Invoice-* files", "nameStartsWith=Invoice- location=downloads", A::moveToFolder, "When a file arrives"},
        {"move *-Final files", "nameEndsWith=-Final location=downloads", A::moveToFolder, "When a file arrives"},
        {"move files starting with \u201CScan\u201D", "nameStartsWith=Scan location=downloads", A::moveToFolder,
         "When a file arrives"},
        {"move files containing Receipt, weekly", "nameContains=Receipt location=downloads", A::moveToFolder,
         "Weekly"},
        {"move files ending with _v2.", "nameEndsWith=_v2 location=downloads", A::moveToFolder, "When a file arrives"},
        {"move files over 500mb", "minimumBytes=500000000 location=downloads", A::moveToFolder, "When a file arrives"},
        {"move files at least 3 kb", "minimumBytes=3000 location=downloads", A::moveToFolder, "When a file arrives"},
        {"move files with extension .ics", "fileExtension=ics location=downloads", A::moveToFolder,
         "When a file arrives"},
        {"move csv files 10 days old", "fileExtension=csv olderThanDays=10 location=downloads", A::moveToFolder,
         "When a file arrives"},
        {"delete tars at least 2 weeks old", "olderThanDays=14 location=downloads", A::trash, "When a file arrives"},
        {"move Pictures", "kind=image location=downloads", A::moveToFolder, "When a file arrives"},
    };
    for (const auto& c : cases) {
        const auto r = parse(c.phrase);
        ASSERT_TRUE(r.parsed) << c.phrase << ": " << (r.error ? sortRuleParserErrorMessage(*r.error) : "");
        const SortRule& rule = r.parsed->rule;
        EXPECT_EQ(describe(rule.conditions), c.conditions) << c.phrase;
        EXPECT_EQ(rule.action.type, c.action) << c.phrase;
        EXPECT_EQ(rule.trigger.displayText(), c.trigger) << c.phrase;
        EXPECT_EQ(rule.match, c.match) << c.phrase;
        EXPECT_EQ(rule.createdAt, kNow);
        EXPECT_EQ(rule.kind, SortRuleKind::sort);
    }
}

TEST(SortRuleParser, NoVerbIsAMoveThatNeedsAFolder) {
    const auto r = parse("  pdf   files ");
    ASSERT_TRUE(r.parsed);
    EXPECT_TRUE(r.parsed->needsFolder);
    EXPECT_EQ(r.parsed->rule.name, "pdf files");
    EXPECT_EQ(r.parsed->rule.phrase, "pdf files");
    EXPECT_EQ(r.parsed->rule.action, SortAction::moveToFolder(""));
}

TEST(SortRuleParser, RenamePatternNeedsATrailingClause) {
    const std::pair<const char*, const char*> cases[] = {
        {"rename screenshots to {date}-{name} weekly", "{name}"},
        {"rename screenshots to {date}-{name}", "{date}-{name}"},
        {"Rename screenshots as \u201CShot-{Name}", "Shot-{Name}"},
        // A closing quote stands between the pattern and the end of the sentence.
        {"Rename screenshots as \u201CShot-{Name}\u201D", "{name}"},
        {"rename screenshots", "{name}"},
    };
    for (const auto& [phrase, pattern] : cases) {
        const auto r = parse(phrase);
        ASSERT_TRUE(r.parsed) << phrase;
        EXPECT_EQ(r.parsed->rule.action, SortAction::rename(pattern)) << phrase;
        EXPECT_FALSE(r.parsed->needsFolder);
    }
}

TEST(SortRuleParser, OlderGrammarWinsTiesAndItsOwnWords) {
    // "recycle" is a delete word only to the older grammar, so its reading stands.
    auto r = parse("recycle pdfs after 3 days");
    ASSERT_TRUE(r.parsed);
    EXPECT_EQ(r.parsed->rule.action.type, SortAction::Type::trash);
    EXPECT_EQ(r.parsed->interpretation, "Move .pdf files to the Trash after 3 days.");

    // Both grammars read one extension: the older reading and its interpretation stay.
    r = parse("put JPEGs in this folder only");
    ASSERT_TRUE(r.parsed);
    EXPECT_EQ(r.parsed->interpretation, "Put JPEG files (.jpg and .jpeg) only in the folder you choose.");
    EXPECT_EQ(describe(r.parsed->rule.conditions), "fileExtension=jpeg fileExtension=jpg location=downloads");
    EXPECT_EQ(r.parsed->chips.front().id, "ext-jpeg");

    // The newer grammar sees more (a kind), so it wins.
    r = parse("move pdfs and videos");
    ASSERT_TRUE(r.parsed);
    EXPECT_EQ(describe(r.parsed->rule.conditions), "fileExtension=pdf kind=video location=downloads");
    EXPECT_EQ(r.parsed->interpretation, "move pdfs and videos");

    // The older grammar fails on "move the files"; only the newer grammar's error is shown.
    r = parse("move the files");
    ASSERT_TRUE(r.error);
    EXPECT_EQ(*r.error, SortRuleParserError::missingMatch);
}

TEST(SortRuleParser, NewerGrammarAlone) {
    const std::pair<const char*, const char*> cases[] = {
        {"move files larger than 1.5 gb", "minimumBytes=1500000000 location=downloads"},
        {"move files downloaded from GitHub.com.", "downloadSource=github.com location=downloads"},
        {"move files over 99999999999999999999 gb", "minimumBytes=9223372036854775807 location=downloads"},
        {"move files over 3 weeks old", "olderThanDays=21 location=downloads"},
        {"move files 2 weeks old 5 days old", "olderThanDays=14 location=downloads"},
        {"move files after 99999999999999999999 days or pdfs", "fileExtension=pdf location=downloads"},
        // A name value that trims down to nothing still makes its condition.
        {"move files starting with ...", "nameStartsWith= location=downloads"},
        // Lower-casing "İ" makes the text longer; blanking must still find the glob.
        {"move İ-* files", "nameStartsWith=İ- location=downloads"},
        // The value is blanked, so "tar" and "gz" are not read again as extension words.
        {"move files ending with .tar.gz", "nameEndsWith=tar.gz location=downloads"},
    };
    for (const auto& [phrase, conditions] : cases) {
        const auto n = SortRuleParser::parseNewGrammar(phrase, Uuid::generate(), kNow);
        ASSERT_TRUE(n.parsed) << phrase;
        EXPECT_EQ(describe(n.parsed->rule.conditions), conditions) << phrase;
    }
    const auto weeks = SortRuleParser::parseNewGrammar("move pdfs over 0 weeks old after 3 days", Uuid::generate(), kNow);
    EXPECT_EQ(weeks.error, SortRuleParserError::invalidAge);
}

TEST(SortRuleParser, OlderReadingWinsATieEvenWhenItIsOdd) {
    // Both grammars read one condition; on a tie the older reading stays, even where it
    // took the ".5" of a size or the ".com" of a host for an extension.
    const std::pair<const char*, const char*> cases[] = {
        {"move files larger than 1.5 gb", "fileExtension=5 location=downloads"},
        {"move files downloaded from GitHub.com.", "fileExtension=com location=downloads"},
        {"move pdfs over 0 weeks old after 3 days", "fileExtension=pdf olderThanDays=3 location=downloads"},
    };
    for (const auto& [phrase, conditions] : cases) {
        const auto r = parse(phrase);
        ASSERT_TRUE(r.parsed) << phrase;
        EXPECT_EQ(describe(r.parsed->rule.conditions), conditions) << phrase;
    }
    const auto named = SortRuleParser::parseNewGrammar("move files starting with pdf", Uuid::generate(), kNow);
    ASSERT_TRUE(named.parsed);
    EXPECT_EQ(describe(named.parsed->rule.conditions), "nameStartsWith=pdf kind=pdf location=downloads");
}

TEST(RuleParser, OlderGrammar) {
    struct Case {
        const char* phrase;
        std::optional<RuleParserError> error;
        RuleAction action = RuleAction::move;
        std::vector<std::string> extensions = {};
        std::optional<std::string> prefix = std::nullopt;
        std::optional<std::int64_t> age = std::nullopt;
        const char* interpretation = "";
    };
    const Case cases[] = {
        {"put JPEGs in this folder only", std::nullopt, RuleAction::keepInFolder, {"jpeg", "jpg"}, {}, {},
         "Put JPEG files (.jpg and .jpeg) only in the folder you choose."},
        {"delete logs", RuleParserError::deleteRequiresAge},
        {"logs", RuleParserError::unrecognized},
        {"move the files", RuleParserError::missingMatch},
        {"", RuleParserError::empty},
        {"delete and move pdfs", RuleParserError::mixedActions},
        {"remove pdfs after 0 days", RuleParserError::invalidAge},
        {"only pdfs", RuleParserError::unrecognized},
        {"pdfs only in this folder", std::nullopt, RuleAction::keepInFolder, {"pdf"}, {}, {},
         "Put .pdf files only in the folder you choose."},
        {"files named the draft should go here", RuleParserError::missingMatch},
        {"files named the Draft-1 should go here", RuleParserError::missingMatch},
        {"move files named Draft-1", std::nullopt, RuleAction::move, {}, "Draft-1", {},
         "Place files whose names start with \"Draft-1\" in the folder you choose."},
        {"move files starting with IMG_ older than 1 day", std::nullopt, RuleAction::move, {}, "IMG_", 1,
         "Place files whose names start with \"IMG_\" that are at least 1 day old in the folder you choose."},
        {"trash report.pdf and notes.txt 3 days old", std::nullopt, RuleAction::trash, {"pdf", "txt"}, {}, 3,
         "Move files ending in .pdf, .txt to the Trash after 3 days."},
        {"move files with prefix scan. and extension .heic", std::nullopt, RuleAction::move, {"heic"}, "scan", {},
         "Place .heic files whose names start with \"scan\" in the folder you choose."},
        {"move the invoices.pdf only", std::nullopt, RuleAction::keepInFolder, {"pdf"}, {}, {},
         "Put .pdf files only in the folder you choose."},
    };
    for (const auto& c : cases) {
        const auto r = RuleParser::parse(c.phrase);
        if (c.error) {
            EXPECT_FALSE(r.rule) << c.phrase;
            ASSERT_TRUE(r.error) << c.phrase;
            EXPECT_EQ(*r.error, *c.error) << c.phrase;
            continue;
        }
        ASSERT_TRUE(r.rule) << c.phrase << " " << (r.error ? ruleParserErrorMessage(*r.error) : "");
        EXPECT_EQ(r.rule->action, c.action) << c.phrase;
        EXPECT_EQ(r.rule->extensions, c.extensions) << c.phrase;
        EXPECT_EQ(r.rule->namePrefix, c.prefix) << c.phrase;
        EXPECT_EQ(r.rule->minimumAgeDays, c.age) << c.phrase;
        EXPECT_EQ(r.rule->interpretation, c.interpretation) << c.phrase;
        EXPECT_EQ(r.rule->requiresDestination, c.action != RuleAction::trash);
    }
}

TEST(RuleParser, FilesPhrase) {
    EXPECT_EQ(RuleParser::filesPhrase({}, {}), "matching files");
    EXPECT_EQ(RuleParser::filesPhrase({"a", "b"}, "x"), "files ending in .a, .b whose names start with \"x\"");
    EXPECT_EQ(RuleParser::interpretation(RuleAction::trash, ".dmg files", 1), "Move .dmg files to the Trash after 1 day.");
}

TEST(SortRuleParser, UnrecognizedWordsKeepTheirPlaces) {
    // "to Documents": the folder isn't parsed, so it is reported while the rule stands.
    auto review = SortRuleParser::review("move PDFs older than 2 weeks to Documents", Uuid::generate(), kNow);
    ASSERT_TRUE(review.parsed);
    EXPECT_FALSE(review.message);
    ASSERT_EQ(review.unrecognized.size(), 1u);
    EXPECT_EQ(review.unrecognized[0], (PhraseSpan{"Documents", 32, 9}));

    // Offsets count UTF-16 units, as the editor does; words with quotes and stars, numbers
    // and sizes are understood.
    review = SortRuleParser::review("  move “Größe” *.pdf files over 20MB from example.org 3 😀x ", Uuid::generate(), kNow);
    ASSERT_TRUE(review.parsed) << (review.message ? *review.message : "");
    ASSERT_EQ(review.unrecognized.size(), 2u);
    EXPECT_EQ(review.unrecognized[0], (PhraseSpan{"“Größe”", 5, 7}));
    EXPECT_EQ(review.unrecognized[1], (PhraseSpan{"😀x", 54, 3}));

    // A failed line still marks its words, and says why.
    review = SortRuleParser::review("keep invoices", Uuid::generate(), kNow);
    EXPECT_FALSE(review.parsed);
    EXPECT_EQ(review.message, "Say which files, with an extension, a name, or a kind.");
    ASSERT_EQ(review.unrecognized.size(), 1u);
    EXPECT_EQ(review.unrecognized[0].text, "invoices");

    // The rename pattern's words are the rule's own.
    review = SortRuleParser::review("rename screenshots to {Date}", Uuid::generate(), kNow);
    ASSERT_TRUE(review.parsed);
    EXPECT_TRUE(review.unrecognized.empty());

    review = SortRuleParser::review(" \n ", Uuid::generate(), kNow);
    EXPECT_EQ(review.message, "Type a rule to continue.");
    EXPECT_FALSE(review.parsed);
}

TEST(SortRuleParser, KnownWordSetHas158Entries) {
    EXPECT_EQ(extensionVocabularyKeys().size(), 36u);
    // Three keys (zip, pdf, pdfs) are also grammar words; the union is 158 - 3.
    EXPECT_EQ(knownSortWords().size(), 155u);
    for (const char* w : {"disks", "originals", "7z", "tiffs", "i"}) EXPECT_TRUE(knownSortWords().count(w)) << w;
}

TEST(SortRuleParser, ReviewLinesCountsOnlyNonEmptyLines) {
    const auto lines = SortRuleParser::reviewLines("keep invoices\n\n   \n  move pdfs  \r\n", kNow);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].index, 0);
    EXPECT_FALSE(lines[0].review.parsed);
    EXPECT_EQ(lines[1].index, 1);
    EXPECT_EQ(lines[1].text, "move pdfs");
    ASSERT_TRUE(lines[1].review.parsed);
    EXPECT_NE(lines[0].review.parsed, lines[1].review.parsed);
    EXPECT_TRUE(SortRuleParser::reviewLines(" \n\t\n", kNow).empty());
    EXPECT_TRUE(SortRuleParser::reviewLines("", kNow).empty());
}

TEST(SortRuleParser, ChipsAndTheirRemoval) {
    auto r = parse("move jpgs and screenshots from example.com larger than 20 mb older than 1 day daily");
    ASSERT_TRUE(r.parsed);
    std::vector<std::string> ids, texts;
    for (const auto& chip : r.parsed->chips) {
        ids.push_back(chip.id);
        texts.push_back(chip.text);
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"ext-jpeg", "age-1", "size-20000000", "source-example.com",
                                             "kind-screenshot", "place-downloads", "action", "schedule"}));
    EXPECT_EQ(texts, (std::vector<std::string>{"JPEG", "Older than 1 day", "Larger than 20 MB", "From example.com",
                                               "screenshot", "In Downloads", "Move to a folder", "Daily"}));
    const SortRule& rule = r.parsed->rule;
    EXPECT_EQ(chipLine(rule), "JPEG, Older than 1 day, Larger than 20 MB, From example.com, screenshot \u00B7 Move t");

    SortRule less = SortRuleParser::removingChip("ext-jpeg", rule);
    EXPECT_EQ(describe(less.conditions), "olderThanDays=1 minimumBytes=20000000 downloadSource=example.com "
                                         "kind=screenshot location=downloads");
    less = SortRuleParser::removingChip("schedule", less);
    EXPECT_EQ(less.trigger, SortTrigger::whenAdded());
    EXPECT_EQ(SortRuleParser::removingChip("action", less), less);
    EXPECT_EQ(SortRuleParser::removingChip("no-such-chip", less), less);
    less = SortRuleParser::removingChip("place-downloads", less);
    EXPECT_EQ(less.conditions.size(), 4u);

    // Several extensions: one chip each; a size of nothing reads "0 GB".
    SortRule custom = rule;
    custom.conditions = {SortCondition::fileExtension("png"), SortCondition::fileExtension("jpg"),
                         SortCondition::minimumBytes(0), SortCondition::location(SortPlace::desktop)};
    custom.action = SortAction::archive();
    const auto chips = SortRuleParser::chips(custom);
    EXPECT_EQ(chips[0], (SortChip{"ext-png", ".png", "doc"}));
    EXPECT_EQ(chips[1], (SortChip{"ext-jpg", ".jpg", "doc"}));
    EXPECT_EQ(chips[2].text, "Larger than 0 GB");
    EXPECT_EQ(chips[3], (SortChip{"place-desktop", "In Desktop", "folder"}));
    EXPECT_EQ(chips[4], (SortChip{"action", "Zip, keep the original", "archivebox"}));
    EXPECT_EQ(SortRuleParser::removingChip("ext-jpg", custom).conditions.size(), 3u);
}

TEST(SortRuleParser, ChipLineIsCutAt80Characters) {
    SortRule rule;
    rule.action = SortAction::moveToFolder("/home/u/Docs/");
    EXPECT_EQ(chipLine(rule), "Move to Docs");
    rule.conditions = {SortCondition::nameContains(std::string(100, 'x') + "é")};
    const std::string line = chipLine(rule);
    EXPECT_EQ(line, "Name contains " + std::string(66, 'x'));
    rule.conditions = {SortCondition::nameContains(std::string(60, 'a') + "éééééééé")};
    EXPECT_EQ(chipLine(rule), "Name contains " + std::string(60, 'a') + "éééééé");
}

TEST(SortRuleParser, LineReviewJsonCarriesTheStoredRuleForm) {
    const auto lines = SortRuleParser::reviewLines("move pdfs to Documents\nkeep invoices", kNow);
    ASSERT_EQ(lines.size(), 2u);
    const Json first = toJson(lines[0]);
    EXPECT_EQ(first["rule"]["conditions"][0], (Json{{"type", "fileExtension"}, {"value", "pdf"}}));
    EXPECT_EQ(first["rule"]["trigger"], (Json{{"type", "whenAdded"}}));
    EXPECT_EQ(first["unrecognized"][0], (Json{{"text", "Documents"}, {"start", 13}, {"length", 9}}));
    EXPECT_TRUE(first["needsFolder"].get<bool>());
    EXPECT_FALSE(first.contains("message"));
    const Json second = toJson(lines[1]);
    EXPECT_FALSE(second.contains("rule"));
    EXPECT_EQ(second["message"], "Say which files, with an extension, a name, or a kind.");
    EXPECT_EQ(second["index"], 1);
}
