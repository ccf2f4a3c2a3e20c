#pragma once
#include <dirent.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <vector>

namespace bv {

// Calls `visit(name, type)` for each entry of the folder open on `fd`, "." and ".." left out,
// `type` as the listing gives it (DT_UNKNOWN where the file system does not say); a visit that
// answers false ends the listing. With `shortReadEnds` the folder's file system is one that
// fills a listing buffer until the folder ends, so a read that leaves room over was the last
// and the empty read that would only confirm it is skipped. A read that fails part way keeps
// what came before. Answers false when a visit ended it.
template <typename Visit>
bool forEachEntry(int fd, bool shortReadEnds, Visit&& visit) {
    thread_local std::vector<char> buffer(32 * 1024);
    for (;;) {
        const ssize_t n = ::getdents64(fd, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return true;
        for (ssize_t pos = 0; pos < n;) {
            const auto* de = reinterpret_cast<const dirent64*>(buffer.data() + pos);
            pos += de->d_reclen;
            const char* name = de->d_name;
            if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
            if (!visit(name, de->d_type)) return false;
        }
        if (shortReadEnds && static_cast<std::size_t>(n) + 2048 < buffer.size()) return true;
    }
}

} // namespace bv
