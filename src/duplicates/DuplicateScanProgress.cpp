#include "duplicates/DuplicateScanProgress.h"

namespace bv {

std::string duplicateProgressText(const DuplicateScanCounters& counters) {
    if (counters.hashed < 1) return std::to_string(counters.files) + " files checked";
    return "Confirming matches… " + std::to_string(counters.hashed) + " hashed";
}

} // namespace bv
