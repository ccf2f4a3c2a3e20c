#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

#include "core/FolderAccess.h"
#include "core/SecurityBookmark.h"
#include "foundation/FileIO.h"
#include "space/SpaceFixtures.h"
#include "support/TestEnvironment.h"

using namespace bv;
using bv::test::makeDir;
using bv::test::writeFile;

namespace {

struct Fixture {
    std::string home = bv::test::TestEnvironment::freshFolder("access-home");
    std::string data = bv::test::TestEnvironment::freshFolder("access-data");
    AppPersistence store{data};
    std::string bookmarksPath() const { return data + "/bookmarks.json"; }
    FolderAccess make() const { return FolderAccess(store, home, home + "/Desktop", home + "/Downloads"); }
};

// Root reads every folder: readability is asked as "nobody" in a child process. Nothing when
// the drop is impossible here.
std::optional<bool> asNobody(const std::function<bool()>& check) {
    const int rc = bv::test::runAsNobody([&] { return check() ? 1 : 0; });
    return rc < 0 ? std::nullopt : std::optional(rc == 1);
}

} // namespace

TEST(StoredBookmark, Base64) {
    const std::pair<std::string, std::string> vectors[] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"}, {"/home/ada/Downloads", "L2hvbWUvYWRhL0Rvd25sb2Fkcw=="},
        {std::string("\0\xff\xfe", 3), "AP/+"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(StoredBookmark::encodeBase64(bytes), text);
        EXPECT_EQ(StoredBookmark::decodeBase64(text), bytes) << text;
    }
    for (const char* bad : {"Zg=", "Zg", "Z===", "Zh==", "Zm9=v", "=Zm9", "Zm9v\n", "Zm 9", "Zm9vYg==Zm9v", "Zm-_"})
        EXPECT_FALSE(StoredBookmark::decodeBase64(bad)) << bad;
}

TEST(StoredBookmark, FileShape) {
    const StoredBookmarks marks{{"downloads", {"/home/ada/Downloads", "/home/ada/Downloads"}}};
    const Json j = bookmarksToJson(marks);
    EXPECT_EQ(j, Json::parse(R"({"downloads": {"data": "L2hvbWUvYWRhL0Rvd25sb2Fkcw==", "path": "/home/ada/Downloads"}})"));
    EXPECT_EQ(bookmarksFromJson(j), marks);
    for (const char* bad : {R"([])", R"({"home": {"path": "/x"}})", R"({"home": {"data": "!!", "path": "/x"}})",
                            R"({"home": {"data": "L3g=", "path": 3}})", R"({"home": "L3g="})"})
        EXPECT_THROW((void)bookmarksFromJson(Json::parse(bad)), std::exception) << bad;
}

TEST(FolderAccess, NoBookmarksFileKeepsTheDefaults) {
    Fixture f;
    makeDir(f.home + "/Desktop");
    FolderAccess access = f.make();
    access.restoreAll();
    EXPECT_EQ(access.desktop(), f.home + "/Desktop");
    EXPECT_EQ(access.downloads(), f.home + "/Downloads");
    EXPECT_TRUE(access.started().empty());
    const auto state = access.accessState();
    EXPECT_EQ(state, (FolderAccessState{true, false, true, f.home + "/Desktop", f.home + "/Downloads", f.home}));
    EXPECT_FALSE(bv::test::exists(f.bookmarksPath())) << "restoring writes nothing";
}

TEST(FolderAccess, RestoresResolvableBookmarksAndLeavesDeadOnesInTheFile) {
    Fixture f;
    const std::string elsewhere = bv::test::TestEnvironment::freshFolder("Ablage Ünterlagen");
    const std::string gone = f.home + "/moved-away";
    const std::string content = bookmarksToJson({{"downloads", {elsewhere, elsewhere}}, {"desktop", {gone, gone}}}).dump();
    writeFile(f.bookmarksPath(), content);

    FolderAccess access = f.make();
    access.restoreAll();
    EXPECT_EQ(access.downloads(), elsewhere);
    EXPECT_EQ(access.desktop(), f.home + "/Desktop") << "a bookmark that no longer resolves leaves the default";
    EXPECT_EQ(access.home(), f.home);
    EXPECT_EQ(access.started(), std::vector<std::string>{elsewhere});
    EXPECT_EQ(readWholeFile(f.bookmarksPath()), content) << "the dead entry stays and nothing is rewritten";
    EXPECT_TRUE(access.accessState().downloadsReadable);
}

TEST(FolderAccess, UndecodableFileIsAnEmptyMap) {
    for (const char* bad : {"{not json", "[1,2]", R"({"home": {"data": "%%%", "path": "/x"}})"}) {
        Fixture f;
        writeFile(f.bookmarksPath(), bad);
        FolderAccess access = f.make();
        EXPECT_TRUE(access.bookmarks().empty()) << bad;
        access.restoreAll();
        EXPECT_EQ(access.home(), f.home);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(f.data), {}), 1) << "no copy of the bad file";
    }
}

TEST(FolderAccess, GrantStoresSavesAndReplaces) {
    Fixture f;
    FolderAccess access = f.make();
    EXPECT_FALSE(access.grant("downloads", std::nullopt)) << "cancelled";
    EXPECT_FALSE(bv::test::exists(f.bookmarksPath())) << "a cancel saves nothing";
    EXPECT_FALSE(access.grant("downloads", std::string("relative/path")));
    EXPECT_FALSE(bv::test::exists(f.bookmarksPath()));

    const std::string chosen = bv::test::TestEnvironment::freshFolder("Téléchargements");
    EXPECT_TRUE(access.grant("downloads", chosen));
    EXPECT_EQ(access.downloads(), chosen);
    EXPECT_EQ(access.started().back(), chosen);
    const auto saved = parseJson(*readWholeFile(f.bookmarksPath()));
    ASSERT_TRUE(saved);
    EXPECT_EQ((*saved)["downloads"]["path"], chosen);
    EXPECT_EQ((*saved)["downloads"]["data"], StoredBookmark::encodeBase64(chosen));

    // A second model reads it back and restores it.
    FolderAccess again = f.make();
    again.restoreAll();
    EXPECT_EQ(again.downloads(), chosen);

    const auto folder = access.chooseFolder(chosen);
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->url, chosen);
    EXPECT_EQ(SecurityBookmark::resolve(folder->bookmark)->url, chosen);
    EXPECT_FALSE(access.chooseFolder(std::nullopt));
}

TEST(FolderAccess, ResolveIsAPathLookup) {
    const std::string dir = bv::test::TestEnvironment::freshFolder("resolve");
    EXPECT_EQ(SecurityBookmark::resolve(dir), (SecurityBookmark::Resolved{dir, std::nullopt}));
    for (const std::string& bad : {std::string(), std::string("relative"), dir + "/missing", dir + std::string("\0x", 2)})
        EXPECT_FALSE(SecurityBookmark::resolve(bad)) << bad;
}

TEST(FolderAccess, IsReadableFolder) {
    const std::string base = bv::test::TestEnvironment::freshFolder("readable");
    makeDir(base + "/dir");
    writeFile(base + "/file.txt", "x");
    std::filesystem::create_directory_symlink(base + "/dir", base + "/link");
    std::filesystem::create_symlink(base + "/nowhere", base + "/dangling");
    const std::pair<std::string, bool> cases[] = {{base + "/dir", true},        {base + "/link", true},
                                                  {base + "/file.txt", false},  {base + "/missing", false},
                                                  {base + "/dangling", false},  {"", false}};
    for (const auto& [path, expected] : cases) EXPECT_EQ(FolderAccess::isReadableFolder(path), expected) << path;
}

TEST(FolderAccess, UnreadableFolderAsAnUnprivilegedUser) {
    const std::string base = bv::test::TestEnvironment::freshFolder("locked");
    // Let "nobody" reach the fixture: the test root itself is private.
    ::chmod(bv::test::TestEnvironment::root().c_str(), 0711);
    ::chmod(base.c_str(), 0755);
    makeDir(base + "/open");
    makeDir(base + "/closed/inner");
    ::chmod((base + "/open").c_str(), 0755);
    ::chmod((base + "/closed").c_str(), 0700);

    const auto open = asNobody([&] { return FolderAccess::isReadableFolder(base + "/open"); });
    const auto closed = asNobody([&] { return FolderAccess::isReadableFolder(base + "/closed"); });
    // A bookmark tells a folder that is gone (rules turn off) from one that needs access
    // (ask again): the locked folder, and one hidden behind it, need access; a missing one is gone.
    const auto bookmarks = asNobody([&] {
        const auto resolved = [](const std::string& p) { return SecurityBookmark::resolve(p); };
        const auto openOne = resolved(base + "/open"), closedOne = resolved(base + "/closed"),
                   behind = resolved(base + "/closed/inner");
        return openOne && !openOne->needsAccess && closedOne && closedOne->needsAccess && behind &&
               behind->needsAccess && !resolved(base + "/gone");
    });
    ::chmod(bv::test::TestEnvironment::root().c_str(), 0700);
    if (!open || !closed || !bookmarks) GTEST_SKIP() << "cannot drop to an unprivileged user here";
    EXPECT_TRUE(*open) << "the control folder must be readable as nobody";
    EXPECT_FALSE(*closed);
    EXPECT_TRUE(*bookmarks);
}
