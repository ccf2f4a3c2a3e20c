#pragma once
#include <ftw.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <functional>
#include <string>

#include "support/TestEnvironment.h"

namespace bv::test {

// The reference the scans are checked against: a plain serial walk that never follows a
// link and adds st_blocks x 512 of every non-folder, non-link entry.
inline std::int64_t referenceAllocated(const std::string& root) {
    static thread_local std::int64_t sum;
    sum = 0;
    ::nftw(root.c_str(),
           [](const char*, const struct stat* st, int flag, FTW*) {
               if (flag == FTW_F && !S_ISLNK(st->st_mode)) sum += static_cast<std::int64_t>(st->st_blocks) * 512;
               return 0;
           },
           64, FTW_PHYS);
    return sum;
}

// A varied tree: nested folders, names with spaces and non-Latin letters, empty files,
// a sparse file, a link to a folder and a link to a file (neither counted).
inline void buildMixedTree(const std::string& root, int width = 6, int depth = 4) {
    std::function<void(const std::string&, int)> grow = [&](const std::string& dir, int level) {
        makeDir(dir);
        for (int i = 0; i < width; ++i)
            writeSizedFile(dir + "/file " + std::to_string(i) + " ñ.txt", (level * 7919 + i * 4099) % 20000);
        if (level == depth) return;
        for (int i = 0; i < 3; ++i) grow(dir + "/sub-" + std::to_string(i) + (i == 1 ? " Ωmega" : ""), level + 1);
    };
    grow(root, 0);
    writeFile(root + "/empty", "");
    const std::string sparse = root + "/sparse.img";
    writeFile(sparse, "x");
    ::truncate(sparse.c_str(), 50'000'000);
    ::symlink("/usr", (root + "/link-to-usr").c_str());
    ::symlink((root + "/sparse.img").c_str(), (root + "/link-to-file").c_str());
}

// Runs `body` in a child process as the unprivileged user 65534 and returns its exit code
// (or -1 when the child could not drop privileges: the caller then skips).
inline int runAsNobody(const std::function<int()>& body) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setresgid(65534, 65534, 65534) != 0 ||
            ::setresuid(65534, 65534, 65534) != 0)
            ::_exit(200);
        ::_exit(body());
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) == 200) return -1;
    return WEXITSTATUS(status);
}

} // namespace bv::test
