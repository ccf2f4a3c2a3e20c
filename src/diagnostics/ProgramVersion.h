#pragma once

namespace bv {

// The program's version ("0.1.0"), as the build set it.
[[nodiscard]] const char* programVersion();

} // namespace bv
