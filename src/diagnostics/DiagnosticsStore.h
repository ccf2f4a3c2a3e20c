#pragma once
#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bv {

// The folder of saved crash and hang reports. Each report is one JSON file named
// "<end date>-<kind label>-<digest>.json": the date in UTC as yyyyMMdd'T'HHmmss.SSS'Z', the
// label as kindLabel gives it ("+" kept), the digest the SHA-256 of the data in lower-case
// hex. The folder itself is the only state: two stores on one folder (the program, a
// collector started after a crash, the terminal) agree without talking to each other.
// Safe to use from any thread; every call does its own I/O.
class DiagnosticsStore {
public:
    static constexpr int kDefaultLimit = 20;

    DiagnosticsStore(std::string directory, int limit = kDefaultLimit);

    // $XDG_STATE_HOME/Brimvale/Diagnostics, read from the environment now.
    [[nodiscard]] static std::string defaultDirectory();

    // "crash", "hang", "cpu", "diskwrite" for each count of at least 1, in that order, joined
    // by "+"; "diagnostic" when all are 0.
    [[nodiscard]] static std::string kindLabel(int crashes, int hangs, int cpuExceptions, int diskWriteExceptions);
    // yyyyMMdd'T'HHmmss.SSS'Z' in UTC.
    [[nodiscard]] static std::string fileDate(std::chrono::system_clock::time_point date);
    // Lower-case hex SHA-256 of the data; empty if the digest could not be computed.
    [[nodiscard]] static std::string digest(std::string_view data);

    enum class SaveResult { saved, repeat, failed };
    // Makes the folder, skips data saved before (a report whose name without ".json" ends in
    // "-" and the same digest), writes the file atomically, then keeps only the newest
    // `limit` reports by name. `savedPath`, when given, receives the report's path (also for
    // a repeat: the existing one).
    SaveResult save(std::string_view data, const std::string& label, std::chrono::system_clock::time_point end,
                    std::string* savedPath = nullptr) const;

    // Full paths of the files ending in ".json", names sorted descending (newest first). An
    // unreadable or missing folder gives an empty list.
    [[nodiscard]] std::vector<std::string> list() const;
    [[nodiscard]] std::size_t count() const { return list().size(); }

    // What a report's name says about it, for listings; nothing for a name not of this form.
    struct NameParts {
        std::string kind;
        std::chrono::system_clock::time_point date;
        std::string digest;
    };
    [[nodiscard]] static std::optional<NameParts> parseName(const std::string& fileName);

    [[nodiscard]] const std::string& directory() const { return directory_; }
    [[nodiscard]] int limit() const { return limit_; }

private:
    std::string directory_;
    int limit_;
};

} // namespace bv
