#include "support/TestEnvironment.h"

#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <ftw.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/FileIO.h"

namespace bv::test {
namespace {
std::string g_root;
int counter = 0;
}

void TestEnvironment::install() {
    char tmpl[] = "/tmp/brimvale-test-XXXXXX";
    const char* made = ::mkdtemp(tmpl);
    if (!made) throw std::runtime_error("cannot make a temporary folder");
    g_root = made;
    const std::string home = g_root + "/home";
    makeDirectories(home + "/.config");
    makeDirectories(home + "/.local/share");
    makeDirectories(home + "/.local/state");
    makeDirectories(home + "/.cache");
    makeDirectories(g_root + "/runtime", 0700);
    ::setenv("HOME", home.c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", (home + "/.config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (home + "/.local/share").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (home + "/.local/state").c_str(), 1);
    ::setenv("XDG_CACHE_HOME", (home + "/.cache").c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", (g_root + "/runtime").c_str(), 1);
    // No test may post to the desktop's notification server: the session bus points nowhere
    // (tests that need a bus start a private one with dbus-run-session).
    ::setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + g_root + "/runtime/no-session-bus").c_str(), 1);
    ::setenv("TZ", "Europe/Berlin", 1);
    ::setenv("LANG", "en_US.UTF-8", 1);
    ::unsetenv("LC_ALL");
    ::unsetenv("LC_TIME");
    ::tzset();
}

const std::string& TestEnvironment::root() { return g_root; }

std::string TestEnvironment::freshFolder(const std::string& name) {
    const std::string path = g_root + "/" + name + "-" + std::to_string(++counter);
    makeDirectories(path);
    return path;
}

void writeFile(const std::string& path, const std::string& content) {
    const auto slash = path.rfind('/');
    if (slash != std::string::npos && slash > 0) makeDirectories(path.substr(0, slash));
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) throw std::runtime_error("cannot write " + path);
    size_t off = 0;
    while (off < content.size()) {
        const ssize_t n = ::write(fd, content.data() + off, content.size() - off);
        if (n <= 0) break;
        off += static_cast<size_t>(n);
    }
    ::close(fd);
}

void writeSizedFile(const std::string& path, long long bytes, char fill) {
    writeFile(path, std::string(static_cast<size_t>(bytes), fill));
}

void makeDir(const std::string& path) { makeDirectories(path); }

void removeTree(const std::string& path) {
    ::nftw(path.c_str(), [](const char* p, const struct stat*, int, FTW*) { return ::remove(p); }, 32,
           FTW_DEPTH | FTW_PHYS);
}

bool exists(const std::string& path) {
    struct stat st{};
    return ::lstat(path.c_str(), &st) == 0;
}

} // namespace bv::test
