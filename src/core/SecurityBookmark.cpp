#include "core/SecurityBookmark.h"

#include <sys/stat.h>

namespace bv {

std::optional<std::string> SecurityBookmark::make(std::string_view path) {
    if (path.empty() || path.front() != '/' || path.find('\0') != std::string_view::npos) return std::nullopt;
    return std::string(path);
}

std::optional<SecurityBookmark::Resolved> SecurityBookmark::resolve(std::string_view bytes) {
    auto path = make(bytes);
    if (!path) return std::nullopt;
    struct stat st{};
    if (::lstat(path->c_str(), &st) != 0) return std::nullopt;
    return Resolved{std::move(*path), std::nullopt};
}

} // namespace bv
