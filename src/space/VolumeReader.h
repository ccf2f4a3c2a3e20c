#pragma once
#include <string>

#include "space/SpaceHistory.h"

namespace bv {

// Reads the file system that holds `path` (the home folder): statvfs for the figures (free
// is what an unprivileged user may still write), the mount table or the label for the
// name. A failed read gives a snapshot with totalBytes 0, which the model ignores.
[[nodiscard]] VolumeSnapshot readVolume(const std::string& path, TimePoint now);

} // namespace bv
