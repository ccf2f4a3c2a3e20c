#pragma once
#include <QString>

#include <optional>
#include <string>
#include <string_view>

namespace bv {

// The one bridge between the plain layers' UTF-8 strings and Qt's.
[[nodiscard]] inline QString q(const std::string& s) { return QString::fromStdString(s); }
[[nodiscard]] inline QString q(std::string_view s) { return QString::fromUtf8(s.data(), static_cast<qsizetype>(s.size())); }
[[nodiscard]] inline QString q(const char* s) { return QString::fromUtf8(s); }
[[nodiscard]] inline QString q(const std::optional<std::string>& s) { return s ? q(*s) : QString(); }

} // namespace bv
