#include "core/SecurityBookmark.h"

#include <cerrno>
#include <sys/stat.h>
#include <unistd.h>

namespace bv {

std::optional<std::string> SecurityBookmark::make(std::string_view path) {
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos) return std::nullopt;
    return std::string(path);
}

std::optional<SecurityBookmark::Resolved> SecurityBookmark::resolve(std::string_view bytes) {
    auto path = make(bytes);
    if (!path) return std::nullopt;
    struct stat st{};
    if (::lstat(path->c_str(), &st) != 0) {
        // A folder above that can't be searched hides whether the path is there: ask, don't drop.
        if (errno == EACCES) return Resolved{std::move(*path), std::nullopt, true};
        return std::nullopt;
    }
    const int wanted = S_ISDIR(st.st_mode) ? R_OK | X_OK : R_OK;
    const bool needsAccess = !S_ISLNK(st.st_mode) && ::access(path->c_str(), wanted) != 0;
    return Resolved{std::move(*path), std::nullopt, needsAccess};
}

} // namespace bv
