#include "space/qt/LowSpaceModel.h"

#include <algorithm>

#include "core/qt/AppClock.h"
#include "core/qt/CueBus.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "foundation/ByteText.h"

namespace bv {

LowSpaceModel::LowSpaceModel(const FeatureContext& context, QObject* parent) : QObject(parent), ctx_(context) {
    connect(&ctx_.settings, &Settings::lowSpaceLimitsChanged, this, [this] { evaluate(last_); });
}

void LowSpaceModel::evaluate(const VolumeSnapshot& snapshot) {
    if (!enabled_ || snapshot.totalBytes < 1) return;
    last_ = snapshot;
    const LowSpaceStatus status =
        bv::evaluateLowSpace(snapshot.freeBytes, snapshot.totalBytes, ctx_.settings.value(), ctx_.clock.now());
    ctx_.settings.update([&status](BrimvaleSettings& s) {
        s.lowSpaceArmed = status.armed;
        s.lowSpaceLastAlert = status.lastAlert;
    });

    bool dirty = false;
    auto store = [&dirty](auto& field, auto value) {
        if (field == value) return;
        field = value;
        dirty = true;
    };
    // A hidden warning stays hidden only while it stays a warning.
    if (status.severity != LowSpaceSeverity::warning) store(noticeHidden_, false);
    if (status.severity == LowSpaceSeverity::none) store(bannerFolded_, false);
    store(severity_, status.severity);
    store(isLow_, status.severity != LowSpaceSeverity::none);
    store(showsBanner_, status.showBanner && (status.severity == LowSpaceSeverity::critical || !noticeHidden_));
    // A reading can claim more free space than the disk holds; the texts never do.
    const std::string freeText = byteText(std::min(snapshot.freeBytes, snapshot.totalBytes));
    store(bannerText_, q("Low on space: " + freeText + " left"));
    if (dirty) emit changed();

    if (status.shouldNotify) {
        if (ctx_.live) ctx_.notifications.postLowSpaceAlert(q("Only " + freeText + " left on " + snapshot.volumeName));
        // The low-space cue: a fresh look for space, at the alert's own volume.
        if (ctx_.settings.value().playSounds) ctx_.cues.play("scan", 0.308);
    }
}

QString LowSpaceModel::severityText() const { return QString::fromLatin1(lowSpaceSeverityName(severity_)); }

// Hidden until free space drops further: a critical banner stays up regardless.
void LowSpaceModel::hideNotice() {
    const bool shows = isLow_ && severity_ == LowSpaceSeverity::critical;
    if (noticeHidden_ && showsBanner_ == shows) return;
    noticeHidden_ = true;
    showsBanner_ = shows;
    emit changed();
}

void LowSpaceModel::setBannerFolded(bool folded) {
    if (bannerFolded_ == folded) return;
    bannerFolded_ = folded;
    emit changed();
}

} // namespace bv
