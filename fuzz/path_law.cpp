// Arbitrary path text against the path law's own promises: the standard form is stable and
// never holds "//", "/./" or "/../" or a trailing slash; whatever a clean test admits lies
// strictly inside home (or, for rules, strictly inside the rule folder), outside every ".git",
// and a folder the law calls safe for a rule is never "/" or home itself.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "clean/DevCacheCatalog.h"

namespace {

using DC = bv::DevCacheCatalog;

bool below(const std::string& path, const std::string& root) {
    return path == root || (path.size() > root.size() && path.compare(0, root.size(), root) == 0 && path[root.size()] == '/');
}

void check(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    // The first line is the path, the second the rule folder; the home folder is fixed.
    const auto cut = input.find('\n');
    const std::string path(input.substr(0, cut));
    const std::string folder(cut == std::string_view::npos ? std::string_view() : input.substr(cut + 1));
    const std::string home = "/home/ada";

    const std::string s = DC::standardizedPath(path);
    check(DC::standardizedPath(s) == s);
    check(s.find("//") == std::string::npos);
    if (s.size() > 1) check(s.back() != '/');
    if (!s.empty() && s.front() == '/') {
        check(s.find("/./") == std::string::npos && s.find("/../") == std::string::npos);
        check(!s.ends_with("/.") && !s.ends_with("/.."));
    }

    if (DC::canCleanCachePath(path, home, {})) {
        check(below(s, home) && s != home);
        check(!DC::hasGitComponent(s));
    }
    if (DC::canCleanRulePath(path, folder, home)) {
        const std::string f = DC::standardizedPath(folder);
        check(below(s, f) && s != f && s != home && !DC::hasGitComponent(s));
        check(!DC::isProtectedPath(s, home));
    }
    if (DC::canCleanOrphanPath(path, home)) check(below(s, home + "/Library") && !DC::hasGitComponent(s));
    if (DC::canCleanDuplicatePath(path, home)) check(s != home && !DC::hasGitComponent(s) && !DC::isSystemPath(s));
    if (!DC::isUnsafeRuleFolder(folder, home)) {
        const std::string f = DC::standardizedPath(folder);
        check(f != "/" && f != home && !below(home, f));
    }
    return 0;
}
