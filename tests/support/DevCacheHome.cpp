#include "support/DevCacheHome.h"

#include <filesystem>
#include <utime.h>

#include "support/TestEnvironment.h"

namespace bv::test {

namespace {
void setModified(const std::string& path, std::time_t when) {
    const utimbuf times{when, when};
    ::utime(path.c_str(), &times);
}
} // namespace

DevCacheHome writeDevCacheHome(const std::string& home) {
    namespace fs = std::filesystem;
    writeSizedFile(home + "/.npm/_cacache/content-v2/sha512/ab/blob", 3'000'000);
    writeSizedFile(home + "/.cache/pip/http/wheel", 2'500'000);
    writeSizedFile(home + "/.gradle/wrapper/dists/gradle-8.4-bin/g.zip", 1'500'000);
    writeSizedFile(home + "/.gradle/wrapper/dists/gradle-8.5-bin/g.zip", 1'500'000);
    setModified(home + "/.gradle/wrapper/dists/gradle-8.4-bin", 1'600'000'000);
    setModified(home + "/.gradle/wrapper/dists/gradle-8.5-bin", 1'700'000'000);
    writeSizedFile(home + "/.cache/thumbs-tool/index", 400'000);
    for (const char* v : {"v18.19.0", "v20.11.1"}) writeSizedFile(home + "/.nvm/versions/node/" + v + "/bin/node", 1'200'000);
    writeFile(home + "/.nvm/alias/default", "20\n");
    writeSizedFile(home + "/.m2/repository/org/lib.jar", 1'200'000);
    DevCacheHome out{home, TestEnvironment::freshFolder("dev-cache-outside")};
    writeSizedFile(out.outside + "/crate.tar", 2'000'000);
    fs::create_directories(home + "/.cargo/registry");
    std::error_code ec;
    fs::create_directory_symlink(out.outside, home + "/.cargo/registry/cache", ec);
    return out;
}

} // namespace bv::test
