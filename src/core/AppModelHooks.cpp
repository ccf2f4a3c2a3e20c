// Steps of start-up, the tick and the settings that belong to features with files of their
// own. Each feature moves its hook's body into its own AppModel<Feature>.cpp when it lands;
// what is left here does nothing yet, on purpose.
#include "core/AppModel.h"

namespace bv {


// Auto-Arrange: bring the live watcher in line with the rules.
void AppModel::alignArrangeWatcher() {}

// Cues and sounds.
void AppModel::playCue(const char*, double) {}
void AppModel::reevaluateCues() {}

// The tick's due checks after the refresh: Autopilot, Auto-Sort, Auto-Arrange, Build Watch
// and the build suggestion scan, in that order, each guarded by its own in-flight flag.
void AppModel::dueChecksOnTick() {}

} // namespace bv
