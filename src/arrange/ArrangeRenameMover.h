#pragma once
#include "arrange/ArrangeMover.h"

namespace bv {

// Moves a file with one rename that never replaces anything: the destination folder is
// made when missing, a name already there is refused, and a file on another file system
// stays put (a rename cannot cross file systems; nothing is copied). The History entry
// reads "Moved “name” to Folder" with the pattern's name beneath.
class ArrangeRenameMover final : public ArrangeMover {
public:
    [[nodiscard]] ActionLogEntry move(const SortRule& rule, const FileSample& sample, TimePoint now) const override;
};

} // namespace bv
