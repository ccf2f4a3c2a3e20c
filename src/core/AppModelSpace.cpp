// The Space Map's part of the model: the feature object that holds the map, its scan, the
// timings and the snapshots, made on first use with this model's store, clock and latest
// reading of the start-up volume.
#include "core/AppModel.h"
#include "platform/XdgPaths.h"

namespace bv {

SpaceMapModel* AppModel::spaceMap() const {
    if (!spaceMap_) {
        auto* self = const_cast<AppModel*>(this);
        SpaceMapModel::Environment env;
        env.live = loadLiveData_;
        env.store = store_;
        env.homePath = XdgPaths::home();
        env.now = [self] { return self->now(); };
        env.startupVolume = [self] {
            const VolumeSnapshot& v = self->latest();
            return SnapshotVolume{v.volumeName, v.totalBytes, v.freeBytes, v.capturedAt};
        };
        spaceMap_ = new SpaceMapModel(std::move(env), self);
    }
    return spaceMap_;
}

} // namespace bv
