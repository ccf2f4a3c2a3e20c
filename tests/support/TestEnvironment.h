#pragma once
#include <string>

namespace bv::test {

// Every test binary runs inside a temporary home: HOME and the XDG folders point into a
// fresh folder made before the first test, so no test can touch the real home, Trash or
// settings, and the session bus points nowhere, so no test reaches the desktop's services.
// The time zone and locale are pinned so calendar answers are the same anywhere.
struct TestEnvironment {
    static void install();                     // called once by the test main
    [[nodiscard]] static const std::string& root();   // the temporary folder
    [[nodiscard]] static std::string freshFolder(const std::string& name); // new empty folder under root
};

// Small helpers for building fixture trees.
void writeFile(const std::string& path, const std::string& content);
void writeSizedFile(const std::string& path, long long bytes, char fill = 'x');
void makeDir(const std::string& path);
void removeTree(const std::string& path);
[[nodiscard]] bool exists(const std::string& path);

} // namespace bv::test
