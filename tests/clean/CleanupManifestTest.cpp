#include <gtest/gtest.h>

#include "CleanerTestSupport.h"
#include "clean/CleanupManifest.h"
#include "clean/CleanupNotice.h"
#include "foundation/FileIO.h"
#include "clean/DevCacheCatalog.h"
#include "platform/PlatformWording.h"
#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

using namespace bv;
using namespace bv::test;

namespace {

ActionLogEntry logEntry(const std::string& path, std::int64_t bytes, const std::string& symbol,
                        std::optional<std::string> destination = std::nullopt) {
    ActionLogEntry e;
    e.id = Uuid::generate();
    e.date = fromEpochSeconds(1795000000);
    e.title = "Trashed " + path;
    e.symbolName = symbol;
    e.bytesReclaimed = bytes;
    e.sourcePath = path;
    e.destinationPath = std::move(destination);
    return e;
}

} // namespace

TEST(CleanupManifest, LineActionsFollowTheIcon) {
    EXPECT_EQ(CleanupManifest::Line::fromLog(logEntry("/a", 1, "trash.slash")).action, "deleted");
    EXPECT_EQ(CleanupManifest::Line::fromLog(logEntry("/a", 1, "trash.slash", "/b")).action, "deleted");
    EXPECT_EQ(CleanupManifest::Line::fromLog(logEntry("/a", 1, "folder", "/b")).action, "moved");
    EXPECT_EQ(CleanupManifest::Line::fromLog(logEntry("/a", 1, "trash")).action, "trashed");
    EXPECT_EQ(CleanupManifest::Line::fromLog(logEntry("/a", 1, "terminal")).action, "trashed") << "that is how it is";
    EXPECT_EQ(CleanupManifest::versionText("", ""), "dev");
    EXPECT_EQ(CleanupManifest::versionText("1.4", "1.4"), "1.4");
    EXPECT_EQ(CleanupManifest::versionText("1.4", "212"), "1.4 (212)");
}

TEST(CleanupManifest, WritesOneFilePerRunAndNothingForAnEmptyRun) {
    const std::string logs = XdgPaths::logsDir();
    const TimePoint now = fromEpochSeconds(1795000000);
    EXPECT_EQ(CleanupManifest::write("clean", {}, {}, now, logs, "dev"), std::nullopt);
    EXPECT_TRUE(namesIn(logs).empty());

    const auto path = CleanupManifest::write(
        "clean", {logEntry("/home/u/.cache/a b", 1500, "trash"), logEntry("/home/u/old", 20, "trash.slash")},
        {"Couldn’t clean X. It is already gone.", "Not started (stopped): Y"}, now, logs, "0.1.0");
    ASSERT_TRUE(path);
    EXPECT_EQ(*path, logs + "/cleanup-2026-11-18T11-06-40Z.json");
    const auto json = parseJson(readWholeFile(*path).value_or(""));
    ASSERT_TRUE(json);
    EXPECT_EQ((*json)["writtenAt"], "2026-11-18T11:06:40Z");
    EXPECT_EQ((*json)["appVersion"], "0.1.0");
    EXPECT_EQ((*json)["trigger"], "clean");
    EXPECT_EQ((*json)["totalBytes"], 1520);
    EXPECT_EQ((*json)["errors"][1], "Not started (stopped): Y");
    EXPECT_EQ((*json)["lines"][0], Json::parse(R"({"path":"/home/u/.cache/a b","bytes":1500,"action":"trashed"})"));
    EXPECT_EQ((*json)["lines"][1]["action"], "deleted");
    EXPECT_FALSE((*json)["lines"][0].contains("destination"));

    // Errors alone still make a file; a second run in the same second replaces the first.
    const auto again = CleanupManifest::write("autopilot", {}, {"Couldn’t clean Z. That path is protected."}, now, logs, "dev");
    EXPECT_EQ(again, path);
    EXPECT_EQ(namesIn(logs).size(), 1u);
    EXPECT_EQ((*parseJson(readWholeFile(*path).value_or("")))["trigger"], "autopilot");

    // A folder that can't be made: quietly nothing.
    writeFile(TestEnvironment::root() + "/not-a-folder", "x");
    EXPECT_EQ(CleanupManifest::write("clean", {logEntry("/a", 1, "trash")}, {}, now, TestEnvironment::root() + "/not-a-folder/Logs", "dev"),
              std::nullopt);
}

TEST(CleanupNotice, StoppedNoticeWording) {
    const struct {
        CleanupRunCounts run;
        std::optional<std::string> message;
    } rows[] = {
        {{3, 3'000'000, 2, 1, 3}, "3 items (3 MB) were already cleaned. 2 items were left exactly as they were. 1 item couldn’t be cleaned."},
        {{1, 512, 1, 0, 1}, "1 item (512 bytes) was already cleaned. 1 item was left exactly as it was."},
        {{0, 0, 5, 0, 0}, "Nothing was removed. 5 items were left exactly as they were."},
        {{0, 0, 3, 2, 0}, "Nothing was removed. 3 items were left exactly as they were. 2 items couldn’t be cleaned."},
        {{4, 100, 0, 1, 4}, std::nullopt},
    };
    for (const auto& row : rows) {
        const auto n = stoppedNotice(row.run);
        ASSERT_EQ(n.has_value(), row.message.has_value());
        if (n) {
            EXPECT_EQ(n->title, "Cleaning stopped");
            EXPECT_EQ(n->message, *row.message);
        }
    }
}

TEST(CleanupNotice, FirstTrashNoticeOnceAndInThisDesktopsWords) {
    const auto one = firstTrashNotice({1, 10, 0, 0, 1}, false);
    ASSERT_TRUE(one);
    EXPECT_EQ(one->title, "It’s in the Trash");
    EXPECT_EQ(one->message,
              "Brimvale moved that item to the Trash. To undo, open the Trash in your file manager and choose Restore. "
              "A list of every item cleaned is saved as a JSON file in ~/.local/state/Brimvale/Logs. The space comes "
              "back when you empty the Trash.");
    const auto many = firstTrashNotice({4, 10, 0, 0, 3}, false);
    ASSERT_TRUE(many);
    EXPECT_EQ(many->title, "They’re in the Trash");
    EXPECT_EQ(many->message.rfind("Brimvale moved those 3 items to the Trash.", 0), 0u);
    EXPECT_FALSE(firstTrashNotice({1, 10, 0, 0, 1}, true)) << "already explained";
    EXPECT_FALSE(firstTrashNotice({1, 10, 1, 0, 1}, false)) << "a stopped run says that instead";
    EXPECT_FALSE(firstTrashNotice({1, 10, 0, 0, 0}, false)) << "only npm or permanent items";

    // The wording table only changes what it lists.
    EXPECT_EQ(platformWording("Drag it to the Dock."), "Drag it to your file manager.");
    EXPECT_EQ(platformWording("Nothing to change here."), "Nothing to change here.");
    EXPECT_TRUE(platformWording(DevCacheCatalog::kUnsafeRuleFolderPicked)
                    .ends_with("Music, and app data such as ~/.local and ~/.config can\u2019t be cleaned automatically."));
    EXPECT_EQ(noSafeMoveWording("NAS"), "The drive \u201cNAS\u201d can\u2019t move items safely, so nothing was moved.");
}

TEST(CleanupNotice, DeferredNoticeWaitsForTheSheet) {
    CleanupNoticeSlots slots;
    slots.post({"Cleaning stopped", "x"}, true);
    EXPECT_FALSE(slots.current);
    ASSERT_TRUE(slots.deferred);
    EXPECT_TRUE(slots.sheetClosed());
    EXPECT_EQ(slots.current->title, "Cleaning stopped");
    EXPECT_FALSE(slots.deferred);
    EXPECT_FALSE(slots.sheetClosed());
    slots.post({"It’s in the Trash", "y"}, false);
    EXPECT_EQ(slots.current->title, "It’s in the Trash");
}
