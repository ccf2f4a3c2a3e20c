#include "core/FolderAccess.h"

#include <cerrno>
#include <dirent.h>
#include <sys/stat.h>

#include "core/SecurityBookmark.h"
#include "platform/XdgPaths.h"

namespace bv {

FolderAccess::FolderAccess(AppPersistence store)
    : FolderAccess(std::move(store), XdgPaths::home(), XdgPaths::desktop(), XdgPaths::downloads()) {}

FolderAccess::FolderAccess(AppPersistence store, std::string home, std::string desktop, std::string downloads)
    : store_(std::move(store)), home_(std::move(home)), desktop_(std::move(desktop)), downloads_(std::move(downloads)) {
    bookmarks_ = store_.load(kBookmarksFile, bookmarksFromJson).value_or(StoredBookmarks{});
}

void FolderAccess::save() const { store_.saveJson(kBookmarksFile, bookmarksToJson(bookmarks_)); }

std::string* FolderAccess::location(const std::string& key) {
    if (key == kHomeKey) return &home_;
    if (key == kDesktopKey) return &desktop_;
    if (key == kDownloadsKey) return &downloads_;
    return nullptr;
}

void FolderAccess::restoreAll() {
    for (const char* key : {kHomeKey, kDesktopKey, kDownloadsKey}) {
        std::string* place = location(key);
        if (auto url = restore(key, *place)) *place = std::move(*url);
    }
}

std::optional<std::string> FolderAccess::restore(const std::string& key, const std::string& /*fallback*/) {
    const auto found = bookmarks_.find(key);
    if (found == bookmarks_.end()) return std::nullopt;
    auto resolved = SecurityBookmark::resolve(found->second.data);
    if (!resolved) return std::nullopt;
    if (SecurityBookmark::startAccess(resolved->url)) started_.push_back(resolved->url);
    if (resolved->refreshed && *resolved->refreshed != found->second.data) {
        found->second = StoredBookmark{*resolved->refreshed, resolved->url};
        save();
    }
    return resolved->url;
}

bool FolderAccess::grant(const std::string& key, const std::optional<std::string>& chosenFolder) {
    if (!chosenFolder) return false;
    auto bytes = SecurityBookmark::make(*chosenFolder);
    if (!bytes) return false;
    bookmarks_[key] = StoredBookmark{std::move(*bytes), *chosenFolder};
    save();
    if (SecurityBookmark::startAccess(*chosenFolder)) started_.push_back(*chosenFolder);
    if (std::string* place = location(key)) *place = *chosenFolder;
    return true;
}

std::optional<FolderAccess::ChosenFolder> FolderAccess::chooseFolder(const std::optional<std::string>& chosenFolder) {
    if (!chosenFolder) return std::nullopt;
    auto bytes = SecurityBookmark::make(*chosenFolder);
    if (!bytes) return std::nullopt;
    if (SecurityBookmark::startAccess(*chosenFolder)) started_.push_back(*chosenFolder);
    return ChosenFolder{*chosenFolder, std::move(*bytes)};
}

FolderAccessState FolderAccess::accessState() const {
    return FolderAccessState{isReadableFolder(desktop_), isReadableFolder(downloads_), isReadableFolder(home_),
                             desktop_, downloads_, home_};
}

bool FolderAccess::isReadableFolder(const std::string& path) {
    if (path.empty()) return false;
    struct stat st{};
    if (::stat(path.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)) return false;
    DIR* dir = ::opendir(path.c_str());
    if (!dir) return false;
    errno = 0;
    (void)::readdir(dir); // "." at least; an error here means the listing failed
    const bool ok = errno == 0;
    ::closedir(dir);
    return ok;
}

} // namespace bv
