#pragma once
#include <string>

namespace bv {

// Icons are kept as symbol names in records (a log entry's symbolName, a clean-up row's).
// The screens draw them from the desktop's icon theme through this one table; a name it
// does not know gets a neutral icon rather than none.
[[nodiscard]] std::string freedesktopIconName(const std::string& symbolName);

} // namespace bv
