#pragma once
#include <string>

namespace bv {

class DiagnosticsStore;

// The program's crash collector: a handler for the fatal signals (SIGSEGV, SIGBUS, SIGFPE,
// SIGILL, SIGABRT) that leaves a report in the Diagnostics folder, then lets the process die
// of the signal as it would have without it.
//
// How it works, and why. A dying process can trust nothing: the heap, a lock or OpenSSL may
// be what broke. So the handler itself only uses async-signal-safe calls on memory prepared
// by `install`: it formats a small JSON payload by hand into a static buffer (signal, its
// code, the fault address, pid and thread, the time from CLOCK_REALTIME, the version, the
// instruction and stack pointer with the program's load address so the address can be
// looked up in its symbols later; no walk of the stack, which the optimised build does not
// make safe), writes it to a hidden pending file in the folder (open, write, fsync, rename
// through a folder descriptor opened at install), and then starts a collector: a raw clone
// (not fork(), whose fork handlers take malloc's locks, which the dying thread may hold)
// that only calls execve on /proc/self/exe with "diagnostics --collect-pending". The handler
// waits for it for at most a few seconds, then re-raises the signal. The handler runs on an
// alternate stack, so a stack overflow of the main thread is caught too.
//
// The collector (and every start of the program, in case the collector never ran) turns
// each pending payload into a report through DiagnosticsStore: named by the payload's
// time, labelled "crash", deduplicated by the digest of the payload. Collecting the same
// payload twice therefore leaves one report.
class CrashHandler {
public:
    struct Setup {
        std::string directory;       // the Diagnostics folder; made if missing
        std::string version;         // the program's version, written into each payload
        bool startCollector = true;  // false: the pending payload waits for the next start
    };

    // Installs the handlers once per process; later calls change nothing and return the first
    // answer. False when the folder can't be made or opened; then nothing is installed.
    static bool install(const Setup& setup);

    // Turns each pending payload in the store's folder into a report and removes it (a
    // payload that can't be saved, a full disk, stays for the next time). Returns how many
    // payloads were turned into a report or found to be one already.
    static int collectPending(const DiagnosticsStore& store);

    // What the collector is started with after the program's path.
    static constexpr const char* kCollectCommand = "diagnostics";
    static constexpr const char* kCollectOption = "--collect-pending";
};

} // namespace bv
