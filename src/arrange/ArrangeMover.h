#pragma once
#include <string>

#include "core/ActionLogEntry.h"
#include "foundation/Dates.h"
#include "sort/FileSample.h"
#include "sort/SortRule.h"

namespace bv {

// Carries out one move of an arrange pattern: the file of `sample` into the folder of the
// rule's moveToFolder action, never over an existing file. Returns the History entry of the
// move; throws ArrangeLeftAlone, whose text names the file and says why, when it could not
// move. Called off the main thread.
class ArrangeMover {
public:
    virtual ~ArrangeMover() = default;
    [[nodiscard]] virtual ActionLogEntry move(const SortRule& rule, const FileSample& sample, TimePoint now) const = 0;
};

// A file that stayed where it was; what() is the finished sentence.
class ArrangeLeftAlone : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace bv
