#include "diagnostics/CrashHandler.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "diagnostics/DiagnosticsStore.h"
#include "foundation/FileIO.h"
#include "foundation/Json.h"

extern char** environ;

namespace bv {

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr const char* kPendingPrefix = ".crash-";
constexpr const char* kPendingSuffix = ".pending";

// Everything the handler touches, prepared by install().
int gDirFd = -1;
char gVersion[128];         // already escaped for JSON
std::uintptr_t gProgramBase = 0;
bool gStartCollector = true;
char gPayload[2048];
alignas(16) char gAltStack[64 * 1024];
char gArg0[] = "brimvale";
char gArg1[] = "diagnostics";
char gArg2[] = "--collect-pending";
char* gChildArgv[] = {gArg0, gArg1, gArg2, nullptr};
std::atomic<int> gEntered{0};
static_assert(std::atomic<int>::is_always_lock_free);

// Appends text and numbers into a fixed buffer; what doesn't fit is cut off.
struct Writer {
    char* out;
    std::size_t capacity;
    std::size_t length = 0;

    void put(char c) {
        if (length + 1 < capacity) out[length++] = c;
    }
    void text(const char* s) {
        while (*s) put(*s++);
    }
    void unsignedNumber(std::uint64_t v) {
        char digits[24];
        int n = 0;
        do {
            digits[n++] = static_cast<char>('0' + v % 10);
            v /= 10;
        } while (v);
        while (n) put(digits[--n]);
    }
    void number(std::int64_t v) {
        if (v < 0) {
            put('-');
            unsignedNumber(static_cast<std::uint64_t>(-(v + 1)) + 1);
        } else {
            unsignedNumber(static_cast<std::uint64_t>(v));
        }
    }
    void hex(std::uintptr_t v) {
        text("\"0x");
        char digits[2 * sizeof v];
        int n = 0;
        do {
            digits[n++] = "0123456789abcdef"[v & 0xf];
            v >>= 4;
        } while (v);
        while (n) put(digits[--n]);
        put('"');
    }
    void key(const char* name) {
        text(",\"");
        text(name);
        text("\":");
    }
};

const char* signalName(int sig) {
    switch (sig) {
    case SIGSEGV: return "SIGSEGV";
    case SIGBUS: return "SIGBUS";
    case SIGFPE: return "SIGFPE";
    case SIGILL: return "SIGILL";
    case SIGABRT: return "SIGABRT";
    default: return "unknown";
    }
}

void pointers(void* context, std::uintptr_t& ip, std::uintptr_t& sp) {
    ip = sp = 0;
    if (!context) return;
    [[maybe_unused]] const auto* uc = static_cast<const ucontext_t*>(context);
#if defined(__x86_64__)
    ip = static_cast<std::uintptr_t>(uc->uc_mcontext.gregs[REG_RIP]);
    sp = static_cast<std::uintptr_t>(uc->uc_mcontext.gregs[REG_RSP]);
#elif defined(__aarch64__)
    ip = static_cast<std::uintptr_t>(uc->uc_mcontext.pc);
    sp = static_cast<std::uintptr_t>(uc->uc_mcontext.sp);
#endif
}

std::size_t formatPayload(int sig, const siginfo_t* info, void* context) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    std::uintptr_t ip = 0, sp = 0;
    pointers(context, ip, sp);
    Writer w{gPayload, sizeof gPayload};
    w.text("{\"kind\":\"crash\"");
    w.key("program");
    w.text("\"brimvale\"");
    w.key("version");
    w.text(gVersion);
    w.key("pid");
    w.number(::getpid());
    w.key("thread");
    w.number(static_cast<std::int64_t>(::syscall(SYS_gettid)));
    w.key("signal");
    w.number(sig);
    w.key("signalName");
    w.put('"');
    w.text(signalName(sig));
    w.put('"');
    if (info) {
        w.key("signalCode");
        w.number(info->si_code);
        // Sent by a process (kill, abort's raise): who sent it; else the address at fault.
        if (info->si_code <= 0) {
            w.key("senderPid");
            w.number(info->si_pid);
        } else {
            w.key("faultAddress");
            w.hex(reinterpret_cast<std::uintptr_t>(info->si_addr));
        }
    }
    w.key("instructionPointer");
    w.hex(ip);
    w.key("stackPointer");
    w.hex(sp);
    w.key("programBase");
    w.hex(gProgramBase);
    w.key("timeMs");
    w.number(static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000);
    w.text("}\n");
    return w.length;
}

bool writeAll(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

// ".crash-<pid><suffix>" into `out`.
void pendingName(char* out, std::size_t capacity, const char* suffix) {
    Writer w{out, capacity};
    w.text(kPendingPrefix);
    w.number(::getpid());
    w.text(suffix);
    out[w.length] = '\0';
}

bool writePending(std::size_t length) {
    char partial[64], pending[64];
    pendingName(partial, sizeof partial, ".partial");
    pendingName(pending, sizeof pending, kPendingSuffix);
    const int fd = ::openat(gDirFd, partial, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    bool ok = writeAll(fd, gPayload, length);
    ok = ::fsync(fd) == 0 && ok;
    ::close(fd);
    return ok && ::renameat(gDirFd, partial, gDirFd, pending) == 0;
}

// The collector: a raw clone that runs no fork handlers and only execs.
void runCollector() {
    const long child = ::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0);
    if (child < 0) return;
    if (child == 0) {
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        ::execve("/proc/self/exe", gChildArgv, environ);
        ::_exit(127);
    }
    // Long enough for a collector on a busy machine, short enough that a dying program
    // doesn't seem to hang.
    for (int i = 0; i < 100; ++i) {
        int status = 0;
        const pid_t done = ::waitpid(static_cast<pid_t>(child), &status, WNOHANG);
        if (done != 0) return; // finished, or no longer ours to wait for
        const timespec pause{0, 50 * 1000 * 1000};
        ::nanosleep(&pause, nullptr);
    }
}

void onFatalSignal(int sig, siginfo_t* info, void* context) {
    const int savedErrno = errno;
    if (gEntered.fetch_add(1) == 0) {
        const std::size_t length = formatPayload(sig, info, context);
        if (writePending(length) && gStartCollector) runCollector();
    } else {
        // Another thread is writing the report; give it time to finish before dying too.
        const timespec pause{10, 0};
        ::nanosleep(&pause, nullptr);
    }
    errno = savedErrno;
    // SA_RESETHAND restored the default action; the signal is blocked until we return, and
    // then kills the process, also when it came from kill() and not from a fault.
    ::raise(sig);
}

void escapeVersion(const std::string& version) {
    Writer w{gVersion, sizeof gVersion};
    w.put('"');
    for (const char c : version)
        if (c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20) w.put('?');
        else w.put(c);
    w.put('"');
    gVersion[w.length] = '\0';
}

} // namespace

bool CrashHandler::install(const Setup& setup) {
    static std::once_flag once;
    static bool installed = false;
    std::call_once(once, [&] {
        if (!makeDirectories(setup.directory, 0700)) return;
        gDirFd = ::open(setup.directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (gDirFd < 0) return;
        escapeVersion(setup.version);
        gStartCollector = setup.startCollector;
        Dl_info self{};
        if (::dladdr(reinterpret_cast<void*>(&onFatalSignal), &self) != 0)
            gProgramBase = reinterpret_cast<std::uintptr_t>(self.dli_fbase);
        stack_t stack{};
        stack.ss_sp = gAltStack;
        stack.ss_size = sizeof gAltStack;
        ::sigaltstack(&stack, nullptr);
        struct sigaction action {};
        action.sa_sigaction = onFatalSignal;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_RESETHAND;
        sigemptyset(&action.sa_mask);
        for (const int sig : kSignals) sigaddset(&action.sa_mask, sig);
        for (const int sig : kSignals) ::sigaction(sig, &action, nullptr);
        installed = true;
    });
    return installed;
}

int CrashHandler::collectPending(const DiagnosticsStore& store) {
    DIR* dir = ::opendir(store.directory().c_str());
    if (!dir) return 0;
    std::vector<std::string> pending;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string name = entry->d_name;
        const std::size_t prefix = std::strlen(kPendingPrefix), suffix = std::strlen(kPendingSuffix);
        if (name.size() > prefix + suffix && name.compare(0, prefix, kPendingPrefix) == 0 &&
            name.compare(name.size() - suffix, suffix, kPendingSuffix) == 0)
            pending.push_back(store.directory() + "/" + name);
    }
    ::closedir(dir);
    int collected = 0;
    for (const auto& path : pending) {
        const auto data = readWholeFile(path);
        if (!data) continue;
        // The payload's own time names the report, so every collector names it alike; a
        // payload without one (it never is, short of someone editing it) takes the file's.
        auto end = std::chrono::system_clock::now();
        struct stat st {};
        if (::stat(path.c_str(), &st) == 0) end = std::chrono::system_clock::from_time_t(st.st_mtime);
        if (const auto json = parseJson(*data); json && json->is_object()) {
            const auto it = json->find("timeMs");
            if (it != json->end() && it->is_number_integer())
                end = std::chrono::system_clock::time_point(std::chrono::milliseconds(it->get<std::int64_t>()));
        }
        const auto result = store.save(*data, DiagnosticsStore::kindLabel(1, 0, 0, 0), end);
        if (result == DiagnosticsStore::SaveResult::failed) continue;
        ::unlink(path.c_str());
        ++collected;
    }
    return collected;
}

} // namespace bv
