#include "support/ShellAndMounts.h"

#include <cstdio>
#include <dirent.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "foundation/FileIO.h"
#include "support/TestEnvironment.h"

namespace bv::test {

std::string shellQuote(const std::string& bytes) {
    std::string out = "'";
    for (const char c : bytes) {
        if (c == '\'') out += "'\\''";
        else out += c;
    }
    return out + "'";
}

CommandResult runCommand(const std::string& command, const std::string& input) {
    const std::string inFile = TestEnvironment::root() + "/cmd-input";
    writeFile(inFile, input);
    CommandResult r;
    FILE* p = ::popen(("(" + command + ") < " + shellQuote(inFile) + " 2>/dev/null").c_str(), "r");
    if (!p) return r;
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) r.output.append(buf, n);
    const int st = ::pclose(p);
    r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return r;
}

bool haveCommand(const std::string& name) { return runCommand("command -v " + name).status == 0; }

LoopFileSystem::LoopFileSystem(const std::string& type, int megabytes) {
    if (::geteuid() != 0) {
        whyNot = "mounting a file system needs root";
        return;
    }
    const std::string dir = TestEnvironment::freshFolder("loopfs-" + type);
    const std::string mnt = dir + "/mnt";
    makeDir(mnt);
    const std::string size = std::to_string(megabytes) + "M";
    if (type == "tmpfs") {
        if (runCommand("mount -t tmpfs -o size=" + size + " tmpfs " + shellQuote(mnt)).status != 0) {
            whyNot = "mounting a tmpfs is not allowed here";
            return;
        }
        mountPoint = mnt;
        return;
    }
    if (!haveCommand("mkfs." + type)) {
        whyNot = "mkfs." + type + " is not installed";
        return;
    }
    image_ = dir + "/image." + type;
    // Whole 4 KiB blocks on ext4: a small image would get 1 KiB ones, whose folder index fills
    // up long before 40,000 long names.
    const std::string quiet = type == "ext4" ? " -q -F -b 4096 " : " -q -f ";
    if (runCommand("truncate -s " + size + " " + shellQuote(image_) + " && mkfs." + type + quiet + shellQuote(image_)).status != 0) {
        whyNot = "mkfs." + type + " failed";
        return;
    }
    if (runCommand("mount -o loop " + shellQuote(image_) + " " + shellQuote(mnt)).status != 0) {
        whyNot = "loop mounting is not allowed here";
        return;
    }
    // A fresh ext4 has lost+found; the tests want a clean top.
    ::rmdir((mnt + "/lost+found").c_str());
    mountPoint = mnt;
}

LoopFileSystem::~LoopFileSystem() {
    if (!mountPoint.empty()) ::umount2(mountPoint.c_str(), MNT_DETACH);
    if (!image_.empty()) ::unlink(image_.c_str());
}

namespace {
void snapshotInto(const std::string& root, const std::string& rel, std::vector<std::string>& out) {
    const std::string here = rel.empty() ? root : root + "/" + rel;
    DIR* d = ::opendir(here.c_str());
    if (!d) return;
    std::vector<std::string> names;
    while (dirent* e = ::readdir(d)) {
        const std::string n = e->d_name;
        if (n != "." && n != "..") names.push_back(n);
    }
    ::closedir(d);
    for (const auto& n : names) {
        const std::string r = rel.empty() ? n : rel + "/" + n;
        struct stat st{};
        ::lstat((root + "/" + r).c_str(), &st);
        if (S_ISDIR(st.st_mode)) {
            out.push_back("d " + r);
            snapshotInto(root, r, out);
        } else if (S_ISLNK(st.st_mode)) {
            char target[4096];
            const ssize_t len = ::readlink((root + "/" + r).c_str(), target, sizeof target);
            out.push_back("l " + r + " -> " + std::string(target, len > 0 ? static_cast<size_t>(len) : 0));
        } else {
            out.push_back("f " + r + " = " + readWholeFile(root + "/" + r).value_or("<unreadable>"));
        }
    }
}
} // namespace

std::vector<std::string> treeSnapshot(const std::string& root) {
    std::vector<std::string> out;
    struct stat st{};
    if (::lstat(root.c_str(), &st) != 0) return out;
    if (!S_ISDIR(st.st_mode)) {
        out.push_back("f = " + readWholeFile(root).value_or("<unreadable>"));
        return out;
    }
    snapshotInto(root, "", out);
    std::sort(out.begin(), out.end());
    return out;
}

} // namespace bv::test
