// Low-space alerts on the model: each usable reading (and each change to the limits) is
// evaluated, the latch is kept in the settings, and the banner's state follows.
#include <algorithm>

#include "core/AppModel.h"
#include "foundation/ByteText.h"

namespace bv {

void AppModel::evaluateLowSpace(const VolumeSnapshot& snapshot, TimePoint now) {
    // Nothing is judged before start-up, and never against a failed reading.
    if (!didStart_ || snapshot.totalBytes < 1) return;
    const LowSpaceStatus status = bv::evaluateLowSpace(snapshot.freeBytes, snapshot.totalBytes, settings_, now);

    bool settingsDirty = false;
    if (settings_.lowSpaceArmed != status.armed) {
        settings_.lowSpaceArmed = status.armed;
        settingsDirty = true;
    }
    if (settings_.lowSpaceLastAlert != status.lastAlert) {
        settings_.lowSpaceLastAlert = status.lastAlert;
        settingsDirty = true;
    }

    bool changed = false;
    auto store = [&changed](auto& field, auto value) {
        if (field == value) return;
        field = value;
        changed = true;
    };
    // A hidden warning stays hidden only while it stays a warning.
    if (status.severity != LowSpaceSeverity::warning) store(lowSpaceNoticeHidden_, false);
    if (status.severity == LowSpaceSeverity::none) store(lowSpaceBannerFolded_, false);
    store(lowSpaceSeverity_, status.severity);
    store(lowSpaceIsLow_, status.severity != LowSpaceSeverity::none);
    store(lowSpaceShowsBanner_,
          status.showBanner && (status.severity == LowSpaceSeverity::critical || !lowSpaceNoticeHidden_));
    // A reading can claim more free space than the disk holds; the texts never do.
    const std::string freeText = bv::byteText(std::min(snapshot.freeBytes, snapshot.totalBytes));
    store(lowSpaceBannerText_, QString::fromStdString("Low on space: " + freeText + " left"));
    if (changed) emit lowSpaceChanged();

    if (status.shouldNotify) {
        postLowSpaceAlert("Only " + freeText + " left on " + snapshot.volumeName);
        // The tenth of the sound cues, at the alert's own volume.
        if (settings_.playSounds) playCue("toggle", 0.308);
    }
    if (settingsDirty) {
        saveSettings();
        emit settingsChanged();
    }
}

QString AppModel::lowSpaceSeverityText() const { return QString::fromLatin1(lowSpaceSeverityName(lowSpaceSeverity_)); }

// Hidden until free space drops further: a critical banner stays up regardless.
void AppModel::hideLowSpaceNotice() {
    const bool shows = lowSpaceIsLow_ && lowSpaceSeverity_ == LowSpaceSeverity::critical;
    if (lowSpaceNoticeHidden_ && lowSpaceShowsBanner_ == shows) return;
    lowSpaceNoticeHidden_ = true;
    lowSpaceShowsBanner_ = shows;
    emit lowSpaceChanged();
}

void AppModel::setLowSpaceBannerFolded(bool folded) {
    if (lowSpaceBannerFolded_ == folded) return;
    lowSpaceBannerFolded_ = folded;
    emit lowSpaceChanged();
}

} // namespace bv
