#pragma once
#include <string>

namespace bv::test {

// A home with the developer caches a working programmer has: three that come back by
// themselves and are large enough to be recommended (npm, pip, an older build tool), and
// what must stay (the newest build tool, a small cache, opt-in runtimes and libraries, a
// cache folder that is a link to `outside`).
struct DevCacheHome {
    std::string home;
    std::string outside;                     // the link's target, which nothing may touch
    static constexpr long long kRecommendedBytes = 7'000'000; // what the three large caches hold
};

[[nodiscard]] DevCacheHome writeDevCacheHome(const std::string& home);

} // namespace bv::test
