#include "CleanerTestSupport.h"

#include <dirent.h>
#include <sys/time.h>

#include <algorithm>

#include "platform/XdgPaths.h"
#include "support/TestEnvironment.h"

namespace bv::test {
namespace {
int counter = 0;

} // namespace

std::vector<std::string> namesIn(const std::string& dir) {
    std::vector<std::string> out;
    if (DIR* d = ::opendir(dir.c_str())) {
        while (dirent* e = ::readdir(d)) {
            const std::string n = e->d_name;
            if (n != "." && n != "..") out.push_back(n);
        }
        ::closedir(d);
    }
    std::sort(out.begin(), out.end());
    return out;
}

void setModified(const std::string& path, std::int64_t epochSeconds) {
    const struct timeval tv[2] = {{static_cast<time_t>(epochSeconds), 0}, {static_cast<time_t>(epochSeconds), 0}};
    ::lutimes(path.c_str(), tv);
}

CleanerFixture::CleanerFixture() {
    home = XdgPaths::home();
    const std::string tag = "case" + std::to_string(++counter);
    cacheDir = home + "/.cache/" + tag;
    downloadsDir = home + "/Downloads/" + tag;
    makeDir(cacheDir);
    makeDir(downloadsDir);
    outside = TestEnvironment::freshFolder("outside");
}

CleanupEntry cacheEntry(const std::string& path, const std::string& title) {
    CleanupEntry e;
    e.id = "generic-cache";
    e.title = title;
    e.path = path;
    e.bytes = 4096;
    e.note = "Comes back on its own.";
    e.group = "Other";
    e.symbolName = "trash";
    e.allowRoot = XdgPaths::home() + "/.cache";
    e.origin = CleanupOrigin::devCache;
    return e;
}

CleanupEntry duplicateEntry(const std::string& path, const std::string& root) {
    CleanupEntry e;
    e.id = "duplicate|" + path;
    e.title = "copy of photo.jpg";
    e.path = path;
    e.bytes = 1000;
    e.note = "An identical copy.";
    e.group = "Duplicates";
    e.symbolName = "doc.on.doc";
    e.allowRoot = root;
    e.origin = CleanupOrigin::duplicate;
    e.tier = CleanupTier::userData;
    return e;
}

std::vector<std::string> trashInfoNames() { return namesIn(XdgPaths::dataHome() + "/Trash/info"); }
std::vector<std::string> trashFileNames() { return namesIn(XdgPaths::dataHome() + "/Trash/files"); }

} // namespace bv::test
