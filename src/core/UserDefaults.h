#pragma once
#include <optional>
#include <string>

#include "foundation/Json.h"

namespace bv {

// The small per-user key-value store ($XDG_CONFIG_HOME/Brimvale/defaults.json). It holds
// two keys: "spaceMapTimings.v1" and "sidebarSelection". Each call reads or rewrites the
// whole file; failures are silent like every other state write.
class UserDefaults {
public:
    UserDefaults(); // the live store
    explicit UserDefaults(std::string filePath);

    [[nodiscard]] std::optional<Json> value(const std::string& key) const;
    [[nodiscard]] std::optional<std::string> text(const std::string& key) const;
    void setValue(const std::string& key, const Json& value) const;
    void remove(const std::string& key) const;

    [[nodiscard]] const std::string& filePath() const { return path_; }

private:
    [[nodiscard]] Json readAll() const;
    std::string path_;
};

} // namespace bv
