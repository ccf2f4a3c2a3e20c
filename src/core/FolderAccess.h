#pragma once
#include <optional>
#include <string>
#include <vector>

#include "core/AppPersistence.h"
#include "core/FolderAccessState.h"
#include "core/StoredBookmark.h"

namespace bv {

// The three standing locations (home, Desktop, Downloads), the folders the user granted
// for them in "bookmarks.json", and which of them can be read now. Owned by the model and
// used on its thread only. Never opens a dialog: the screen runs the folder chooser and
// hands its answer to grant() or chooseFolder(); an empty answer means the user cancelled.
// Every failure is a plain false or nothing; callers word the message.
class FolderAccess {
public:
    static constexpr const char* kBookmarksFile = "bookmarks.json";
    static constexpr const char* kHomeKey = "home";
    static constexpr const char* kDesktopKey = "desktop";
    static constexpr const char* kDownloadsKey = "downloads";

    // What the screen shows around the chooser.
    static constexpr const char* kAllowPrompt = "Allow";
    static constexpr const char* kChoosePrompt = "Choose";
    static constexpr const char* kDownloadsMessage = "Choose your Downloads folder.";
    static constexpr const char* kAllowDownloadsButton = "Allow Downloads";
    static constexpr const char* kAllowDownloadsExplanation = "Allow Downloads to see what this rule would touch.";

    // A folder a feature keeps in its own record, with the bookmark bytes to store beside it.
    struct ChosenFolder {
        std::string url;
        std::string bookmark;
        bool operator==(const ChosenFolder&) const = default;
    };

    // Reads "bookmarks.json" (absent or undecodable: no bookmarks, and nothing is kept of the
    // bad file) and starts from the user's home, Desktop and Downloads folders.
    explicit FolderAccess(AppPersistence store);
    // The same with the three defaults given, for a model built on other folders.
    FolderAccess(AppPersistence store, std::string home, std::string desktop, std::string downloads);

    // Restores home, desktop and downloads, in that order, each from its bookmark; a location
    // whose bookmark is absent or no longer resolves keeps its default.
    void restoreAll();
    // The folder stored under `key`, with its grant started; nothing when there is no entry
    // or it doesn't resolve (the entry then stays in the file). A refreshed bookmark replaces
    // the stored one and the file is saved. `fallback` is where a chooser would open; unused
    // when resolving needs no user.
    std::optional<std::string> restore(const std::string& key, const std::string& fallback);

    // Stores the folder the chooser returned under `key`, saves the file, holds the grant and
    // makes it the standing location for a standing key. False, with nothing changed and
    // nothing saved, when the user cancelled (no folder) or no bookmark could be made.
    bool grant(const std::string& key, const std::optional<std::string>& chosenFolder);

    // A folder for a feature's own record: the chooser's answer with its bookmark bytes, its
    // grant held. Nothing when cancelled or no bookmark could be made.
    std::optional<ChosenFolder> chooseFolder(const std::optional<std::string>& chosenFolder);

    // Readability of the three locations and their paths.
    [[nodiscard]] FolderAccessState accessState() const;
    // True if the path exists, is a directory (after links) and listing it succeeds.
    [[nodiscard]] static bool isReadableFolder(const std::string& path);

    [[nodiscard]] const std::string& home() const { return home_; }
    [[nodiscard]] const std::string& desktop() const { return desktop_; }
    [[nodiscard]] const std::string& downloads() const { return downloads_; }
    [[nodiscard]] const StoredBookmarks& bookmarks() const { return bookmarks_; }
    [[nodiscard]] const std::vector<std::string>& started() const { return started_; }

private:
    void save() const;
    std::string* location(const std::string& key);

    AppPersistence store_;
    StoredBookmarks bookmarks_;
    std::vector<std::string> started_; // every grant held; released only when the process ends
    std::string home_;
    std::string desktop_;
    std::string downloads_;
};

} // namespace bv
