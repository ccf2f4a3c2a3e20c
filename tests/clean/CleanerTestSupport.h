#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "clean/CleanupEntry.h"

namespace bv::test {

// A home folder for cleaner tests: the test run's own temporary HOME, with a fresh folder
// of its own under ~/.cache (a developer cache area) and ~/Downloads for each test.
struct CleanerFixture {
    std::string home;
    std::string cacheDir;     // ~/.cache/<unique>: admitted by the generic cache row
    std::string downloadsDir; // ~/Downloads/<unique>
    std::string outside;      // a folder outside home, the decoy's place
    CleanerFixture();
};

CleanupEntry cacheEntry(const std::string& path, const std::string& title = "Tool cache");
CleanupEntry duplicateEntry(const std::string& path, const std::string& root);

// Every name in a folder but "." and "..", sorted; empty when it can't be read.
std::vector<std::string> namesIn(const std::string& dir);

// Sets a path's modification (and access) time to whole seconds, without following a link.
void setModified(const std::string& path, std::int64_t epochSeconds);

// Every name in the home Trash's info/ and files/.
std::vector<std::string> trashInfoNames();
std::vector<std::string> trashFileNames();

} // namespace bv::test
