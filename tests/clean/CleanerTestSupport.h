#pragma once
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

// Every name in the home Trash's info/ and files/.
std::vector<std::string> trashInfoNames();
std::vector<std::string> trashFileNames();

} // namespace bv::test
