#include <gtest/gtest.h>

#include <QSignalSpy>

#include <dirent.h>

#include "core/AppModel.h"
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
        EXPECT_TRUE(model.sortRules().empty());
        model.start();
        ASSERT_EQ(model.sortRules().size(), 1u);
        EXPECT_EQ(model.sortRules()[0].id, defaultSortRuleID());
        EXPECT_TRUE(model.settings().didSeedDefaultRules);
        EXPECT_TRUE(test::exists(dataDir() + "/rules-v2.json"));
        // The seeded rule is one the older file can say, so it is written there too.
        ASSERT_EQ(model.rules().size(), 1u);
        model.setSortRules({}); // the user deletes it
    }
    AppModel again(true);
    again.start();
    EXPECT_TRUE(again.sortRules().empty()) << "a deleted seeded rule stays gone";
}

TEST_F(AppModelRulesTest, UnreadableSortRulesAreRebuiltFromTheOlderFile) {
    test::makeDir(dataDir());
    test::writeFile(dataDir() + "/rules.json", kOldRules);
    test::writeFile(dataDir() + "/rules-v2.json", "{ not json");
    test::writeFile(dataDir() + "/folder-rules.json", "[]");
    AppModel model(true);
    ASSERT_EQ(model.rules().size(), 1u);
    ASSERT_EQ(model.sortRules().size(), 1u);
    EXPECT_EQ(model.sortRules()[0].phrase, "delete dmg files after 3 days");
    int copies = 0;
    if (auto dir = ::opendir(dataDir().c_str())) {
        while (auto* e = ::readdir(dir)) copies += std::string(e->d_name).rfind("rules-v2.corrupt-", 0) == 0;
        ::closedir(dir);
    }
    EXPECT_EQ(copies, 1);
    // The user already trashes dmg files: start adds no second rule.
    model.start();
    EXPECT_EQ(model.sortRules().size(), 1u);
    EXPECT_TRUE(model.folderRules().empty());
}

TEST_F(AppModelRulesTest, EditorDraftFollowsTheTextAndTheChosenLine) {
    AppModel model(false);
    QSignalSpy changed(&model, &AppModel::ruleDraftChanged);
    model.setDraftPhrase("keep invoices\nmove pdfs to Documents\ntrash dmg files");
    EXPECT_EQ(model.editorLineCount(), 3);
    EXPECT_EQ(model.editorLineIndex(), 0);
    EXPECT_FALSE(model.draftSort());
    EXPECT_FALSE(model.draftError()) << "a marked word is explanation enough";
    ASSERT_EQ(model.draftUnrecognized().size(), 1u);

    model.setEditorLineIndex(2);
    EXPECT_FALSE(model.draftSort());
    EXPECT_EQ(model.draftErrorText(), QString::fromUtf8("Delete rules need an age, for example \u201Cafter 3 days\u201D."));

    model.setEditorLineIndex(1);
    ASSERT_TRUE(model.draftSort());
    EXPECT_TRUE(model.draftSort()->needsFolder);
    EXPECT_EQ(model.draftSort()->rule.name, ".pdf \u00B7 Move to a folder") << "the automatic name is the chip line";
    model.setDraftDestinationPath("/home/u/Documents");
    EXPECT_FALSE(model.draftSort()->needsFolder);
    EXPECT_EQ(model.draftSort()->rule.action, SortAction::moveToFolder("/home/u/Documents"));
    EXPECT_EQ(model.draftSort()->rule.name, ".pdf \u00B7 Move to Documents");
    EXPECT_EQ(model.draftSortMap().value("needsFolder").toBool(), false);

    // A name the user typed stays while the text changes.
    model.setRuleNameIsAutomatic(false);
    SortRule edited = model.draftSort()->rule;
    edited.name = "My PDFs";
    model.setLineOverride(1, edited);
    EXPECT_EQ(model.draftSort()->rule.name, "My PDFs");
    model.setDraftPhrase("keep invoices\nmove pdfs and videos to Documents");
    EXPECT_TRUE(model.lineOverrides().empty()) << "a new text drops the per-line edits";
    EXPECT_EQ(model.editorLineIndex(), 1) << "the chosen line survives while it exists";
    ASSERT_TRUE(model.draftSort());
    EXPECT_EQ(model.draftSort()->rule.name, "My PDFs");

    // Fewer lines than the chosen one: back to the first; no lines: everything empty.
    model.setDraftPhrase("move pdfs");
    EXPECT_EQ(model.editorLineIndex(), 0);
    model.setDraftPhrase("  \n ");
    EXPECT_EQ(model.editorLineCount(), 0);
    EXPECT_FALSE(model.draftSort());
    EXPECT_FALSE(model.draftError());
    EXPECT_TRUE(model.draftUnrecognized().empty());
    const auto before = changed.count();
    model.setDraftPhrase("  \n ");
    EXPECT_EQ(changed.count(), before) << "the same text changes nothing";
}
