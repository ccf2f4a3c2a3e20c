#pragma once
#include <optional>
#include <string>

#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

// Finds the program's data folder and reads and writes whole JSON files in it. A plain
// value: the model and the folder access each hold a copy. With no directory (a model
// built without live data) every read gives nothing and every write does nothing.
class AppPersistence {
public:
    AppPersistence() = default; // no directory
    // $XDG_DATA_HOME/Brimvale, else the temporary folder's "Brimvale"; made when missing,
    // a failure to make it is swallowed (later writes then fail one by one).
    [[nodiscard]] static AppPersistence live();
    explicit AppPersistence(std::string directory);

    [[nodiscard]] const std::optional<std::string>& directory() const { return directory_; }
    [[nodiscard]] std::string pathOf(const std::string& fileName) const;

    // Encodes with the shared encoder and writes atomically. Silent on failure by design:
    // the in-memory state stays and is written again at its next change.
    void saveJson(const std::string& fileName, const Json& value) const;
    // Absent file, unreadable bytes and text that is not JSON all give nothing.
    [[nodiscard]] std::optional<Json> loadJson(const std::string& fileName) const;

    // Loads and decodes with a record decoder (which throws DecodeError, or any JSON
    // exception, on bad content); any failure gives nothing.
    template <class Decode>
    [[nodiscard]] auto load(const std::string& fileName, Decode decode) const
        -> std::optional<decltype(decode(std::declval<const Json&>()))> {
        auto json = loadJson(fileName);
        if (!json) return std::nullopt;
        try {
            return decode(*json);
        } catch (const std::exception&) {
            return std::nullopt;
        }
    }

    [[nodiscard]] bool exists(const std::string& fileName) const;

    // Copies (never moves) an unreadable file to "<name>.corrupt-<ISO date with - for :>.json"
    // beside it, e.g. rules-v2.corrupt-2026-11-15T22-16-00Z.json. Failures are swallowed.
    void preserveCorruptCopy(const std::string& fileName, TimePoint now) const;
    [[nodiscard]] static std::string corruptCopyName(const std::string& fileName, TimePoint now);

private:
    std::optional<std::string> directory_;
};

} // namespace bv
