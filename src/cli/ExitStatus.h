#pragma once

namespace bv::cli {

// The exit statuses every terminal command keeps, so scripts can rely on them. `help` and the
// manual page both print this list.
struct ExitStatus {
    int code;
    const char* meaning;
};

inline constexpr ExitStatus kExitStatuses[] = {
    {0, "success: the command did what was asked"},
    {1, "failure: the work could not be done (a folder that cannot be read, for example); the reason is on standard error"},
    {2, "bad usage: an unknown command or option, or words missing; the usage is printed on standard error"},
};

} // namespace bv::cli
