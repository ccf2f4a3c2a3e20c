#pragma once
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include "space/LowSpaceAlerts.h"
#include "space/SpaceHistory.h"

namespace bv {

struct FeatureContext;

// Low-space alerts: each usable reading, and each change of the limits, is judged; the latch
// is kept in the settings; the banner's state follows, and one notification goes out per
// crossing.
class LowSpaceModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Low-space alerts belong to AppModel.")
    Q_PROPERTY(QString severity READ severityText NOTIFY changed)
    Q_PROPERTY(bool isLow READ isLow NOTIFY changed)
    Q_PROPERTY(bool showsBanner READ showsBanner NOTIFY changed)
    Q_PROPERTY(bool noticeHidden READ noticeHidden NOTIFY changed)
    Q_PROPERTY(bool bannerFolded READ bannerFolded WRITE setBannerFolded NOTIFY changed)
    Q_PROPERTY(QString bannerText READ bannerText NOTIFY changed)

public:
    explicit LowSpaceModel(const FeatureContext& context, QObject* parent = nullptr);

    // Judges a reading; nothing is judged before `enable` (start-up) or for a failed reading.
    void evaluate(const VolumeSnapshot& snapshot);
    void enable() { enabled_ = true; }

    [[nodiscard]] LowSpaceSeverity severity() const { return severity_; }
    [[nodiscard]] QString severityText() const;
    // Free space is below the limit (any severity but none).
    [[nodiscard]] bool isLow() const { return isLow_; }
    // Low, and either critical or not hidden by the user.
    [[nodiscard]] bool showsBanner() const { return showsBanner_; }
    // Set by "Hide this warning until free space drops further"; cleared by anything but a
    // warning, so the banner comes back at critical or after a recovery.
    [[nodiscard]] bool noticeHidden() const { return noticeHidden_; }
    // The banner shows as one compact line; cleared once free space recovers.
    [[nodiscard]] bool bannerFolded() const { return bannerFolded_; }
    // "Low on space: " + the free byte text + " left"; empty before the first evaluation.
    [[nodiscard]] QString bannerText() const { return bannerText_; }
    Q_INVOKABLE void hideNotice();
    Q_INVOKABLE void foldBanner() { setBannerFolded(true); }
    Q_INVOKABLE void setBannerFolded(bool folded);

signals:
    void changed();

private:
    const FeatureContext& ctx_;
    bool enabled_ = false;
    VolumeSnapshot last_;
    LowSpaceSeverity severity_ = LowSpaceSeverity::none;
    bool isLow_ = false;
    bool showsBanner_ = false;
    bool noticeHidden_ = false;
    bool bannerFolded_ = false;
    QString bannerText_;
};

} // namespace bv
