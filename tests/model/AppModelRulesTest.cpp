#include <gtest/gtest.h>

#include <QSignalSpy>

#include <dirent.h>

#include "autopilot/qt/FolderRulesModel.h"
#include "core/qt/Settings.h"
#include "model/AppModel.h"
#include "sort/qt/SortRulesModel.h"
#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"
#include "sort/SortRuleJson.h"
#include "support/TestEnvironment.h"

using namespace bv;

namespace {

std::string dataDir() { return XdgPaths::appDataDir(); }

void resetState() {
    test::removeTree(dataDir());
    test::removeTree(XdgPaths::appConfigDir());
}

const char* kOldRules = R"([{"id":"0F6B2C3A-1111-4222-8333-444455556666","phrase":"delete dmg files after 3 days",
  "action":"trash","extensions":["dmg"],"minimumAgeDays":3,"isEnabled":true,"createdAt":"2026-01-02T03:04:05Z"}])";

} // namespace

class AppModelRulesTest : public ::testing::Test {
protected:
    void SetUp() override { resetState(); }
};

TEST_F(AppModelRulesTest, ConstructionReadsTheRuleFilesAndStartSeedsOnce) {
    {
        AppModel model(true);
        EXPECT_TRUE(model.sortRules()->sortRules().empty());
        model.start();
        ASSERT_EQ(model.sortRules()->sortRules().size(), 1u);
        EXPECT_EQ(model.sortRules()->sortRules()[0].id, defaultSortRuleID());
        EXPECT_TRUE(model.settings()->value().didSeedDefaultRules);
        EXPECT_TRUE(test::exists(dataDir() + "/rules-v2.json"));
        // The seeded rule is one the older file can say, so it is written there too.
        ASSERT_EQ(model.sortRules()->rules().size(), 1u);
        model.sortRules()->setSortRules({}); // the user deletes it
    }
    AppModel again(true);
    again.start();
    EXPECT_TRUE(again.sortRules()->sortRules().empty()) << "a deleted seeded rule stays gone";
}

TEST_F(AppModelRulesTest, UnreadableSortRulesAreRebuiltFromTheOlderFile) {
    test::makeDir(dataDir());
    test::writeFile(dataDir() + "/rules.json", kOldRules);
    test::writeFile(dataDir() + "/rules-v2.json", "{ not json");
    test::writeFile(dataDir() + "/folder-rules.json", "[]");
    AppModel model(true);
    ASSERT_EQ(model.sortRules()->rules().size(), 1u);
    ASSERT_EQ(model.sortRules()->sortRules().size(), 1u);
    EXPECT_EQ(model.sortRules()->sortRules()[0].phrase, "delete dmg files after 3 days");
    int copies = 0;
    if (auto dir = ::opendir(dataDir().c_str())) {
        while (auto* e = ::readdir(dir)) copies += std::string(e->d_name).rfind("rules-v2.corrupt-", 0) == 0;
        ::closedir(dir);
    }
    EXPECT_EQ(copies, 1);
    // The user already trashes dmg files: start adds no second rule.
    model.start();
    EXPECT_EQ(model.sortRules()->sortRules().size(), 1u);
    EXPECT_TRUE(model.folderRules()->folderRules().empty());
}

TEST_F(AppModelRulesTest, EditorDraftFollowsTheTextAndTheChosenLine) {
    AppModel model(false);
    SortRulesModel& rules = *model.sortRules();
    QSignalSpy changed(&rules, &SortRulesModel::draftChanged);
    rules.setDraftPhrase("keep invoices\nmove pdfs to Documents\ntrash dmg files");
    EXPECT_EQ(rules.editorLineCount(), 3);
    EXPECT_EQ(rules.editorLineIndex(), 0);
    EXPECT_FALSE(rules.draftSort());
    EXPECT_FALSE(rules.draftError()) << "a marked word is explanation enough";
    ASSERT_EQ(rules.draftUnrecognized().size(), 1u);

    rules.setEditorLineIndex(2);
    EXPECT_FALSE(rules.draftSort());
    EXPECT_EQ(rules.draftErrorText(), QString::fromUtf8("Delete rules need an age, for example \u201Cafter 3 days\u201D."));

    rules.setEditorLineIndex(1);
    ASSERT_TRUE(rules.draftSort());
    EXPECT_TRUE(rules.draftSort()->needsFolder);
    EXPECT_EQ(rules.draftSort()->rule.name, ".pdf \u00B7 Move to a folder") << "the automatic name is the chip line";
    rules.setDraftDestinationPath("/home/u/Documents");
    EXPECT_FALSE(rules.draftSort()->needsFolder);
    EXPECT_EQ(rules.draftSort()->rule.action, SortAction::moveToFolder("/home/u/Documents"));
    EXPECT_EQ(rules.draftSort()->rule.name, ".pdf \u00B7 Move to Documents");
    EXPECT_EQ(rules.draftSortMap().value("needsFolder").toBool(), false);

    // A name the user typed stays while the text changes.
    rules.setRuleNameIsAutomatic(false);
    SortRule edited = rules.draftSort()->rule;
    edited.name = "My PDFs";
    rules.setLineOverride(1, edited);
    EXPECT_EQ(rules.draftSort()->rule.name, "My PDFs");
    rules.setDraftPhrase("keep invoices\nmove pdfs and videos to Documents");
    EXPECT_TRUE(rules.lineOverrides().empty()) << "a new text drops the per-line edits";
    EXPECT_EQ(rules.editorLineIndex(), 1) << "the chosen line survives while it exists";
    ASSERT_TRUE(rules.draftSort());
    EXPECT_EQ(rules.draftSort()->rule.name, "My PDFs");

    // Fewer lines than the chosen one: back to the first; no lines: everything empty.
    rules.setDraftPhrase("move pdfs");
    EXPECT_EQ(rules.editorLineIndex(), 0);
    rules.setDraftPhrase("  \n ");
    EXPECT_EQ(rules.editorLineCount(), 0);
    EXPECT_FALSE(rules.draftSort());
    EXPECT_FALSE(rules.draftError());
    EXPECT_TRUE(rules.draftUnrecognized().empty());
    const auto before = changed.count();
    rules.setDraftPhrase("  \n ");
    EXPECT_EQ(changed.count(), before) << "the same text changes nothing";
}
