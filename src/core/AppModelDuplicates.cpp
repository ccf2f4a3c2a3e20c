// The model's Duplicates section: one DuplicatesModel, made on first use so the roots file
// is read once, from the model's own store.
#include "core/AppModel.h"
#include "duplicates/qt/DuplicatesModel.h"

namespace bv {

DuplicatesModel* AppModel::duplicates() const {
    if (!duplicates_) duplicates_ = new DuplicatesModel(const_cast<AppModel&>(*this));
    return duplicates_;
}

} // namespace bv
