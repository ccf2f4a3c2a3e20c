#include "diagnostics/ProgramVersion.h"

// The build defines the version for this one file (src/CMakeLists.txt), so a new version
// recompiles only it.
#ifndef BRIMVALE_VERSION
#define BRIMVALE_VERSION "0.0.0"
#endif

namespace bv {

const char* programVersion() { return BRIMVALE_VERSION; }

} // namespace bv
