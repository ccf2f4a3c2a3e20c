#include "screens/TrayStatus.h"

#include <QCoreApplication>

#include "autopilot/ScheduleDates.h"
#include "autopilot/qt/FolderRulesModel.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/LogStatistics.h"
#include "core/qt/ActivityLog.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/QtText.h"
#include "core/qt/Settings.h"
#include "foundation/ByteText.h"
#include "space/qt/LowSpaceModel.h"
#include "space/qt/SpaceStatus.h"
#include "space/qt/StorageSurveyModel.h"

namespace bv {

TrayStatus::TrayStatus(const FeatureContext& context, SpaceStatus& space, LowSpaceModel& lowSpace,
                       SmartCleanModel& smartClean, StorageSurveyModel& survey, FolderRulesModel& folderRules,
                       QObject* parent)
    : QObject(parent), ctx_(context), space_(space), lowSpace_(lowSpace), smartClean_(smartClean), survey_(survey),
      folderRules_(folderRules) {
    connect(&space_, &SpaceStatus::latestChanged, this, &TrayStatus::recompute);
    connect(&space_, &SpaceStatus::lastRefreshChanged, this, &TrayStatus::recompute);
    connect(&lowSpace_, &LowSpaceModel::changed, this, &TrayStatus::recompute);
    connect(&smartClean_, &SmartCleanModel::rowsChanged, this, &TrayStatus::recompute);
    connect(&smartClean_, &SmartCleanModel::scanningChanged, this, &TrayStatus::recompute);
    connect(&survey_, &StorageSurveyModel::scanningChanged, this, &TrayStatus::recompute);
    connect(&folderRules_, &FolderRulesModel::folderRulesChanged, this, &TrayStatus::recompute);
    connect(&ctx_.log, &ActivityLog::changed, this, &TrayStatus::recompute);
    connect(&ctx_.settings, &Settings::changed, this, &TrayStatus::recompute);
    connect(&ctx_.clock, &AppClock::ticked, this, &TrayStatus::recompute);
    recompute();
}

QString TrayStatus::versionText() { return QStringLiteral("Version ") + QCoreApplication::applicationVersion(); }

void TrayStatus::recompute() {
    const TimePoint now = ctx_.clock.now();
    const VolumeSnapshot& latest = space_.latest();
    const bool measured = latest.totalBytes >= 1;
    const QString freeText = q(byteText(latest.freeBytes)) + QStringLiteral(" free");

    const QString label = measured ? freeText : QStringLiteral("Disk");
    const bool showsLabel = ctx_.settings.value().menuBarShowsFreeSpace;
    const bool labelMoved = label != label_ || showsLabel != showsLabel_;
    label_ = label;
    showsLabel_ = showsLabel;

    QString freeLine = measured ? freeText : QStringLiteral("Looking at your disk");
    QString totalLine = measured ? QStringLiteral("of ") + q(byteText(latest.totalBytes)) : QString();
    QString lowLine = lowSpace_.severity() == LowSpaceSeverity::critical ? lowSpace_.bannerText() : QString();

    const auto& log = ctx_.log.logEntries();
    QString freedToday = q(byteText(bytesFreed(log, ctx_.calendar.startOfDay(now))));

    QString candidates;
    if (survey_.scanning() || smartClean_.scanning()) candidates = QStringLiteral("Scanning…");
    else if (!space_.lastRefresh()) candidates = QStringLiteral("—");
    else candidates = q(byteText(smartClean_.reclaimableBytes()));

    QVariantList rows;
    for (const ActionLogEntry& e : recentEntries(log))
        rows.push_back(QVariantMap{{"title", q(e.title)},
                                   {"subtitle", q(e.subtitle)},
                                   {"bytesText", e.bytesReclaimed > 0 ? q(byteText(e.bytesReclaimed)) : QString()}});
    QString note;
    if (log.empty()) note = QStringLiteral("Nothing recent yet.");
    else if (!ctx_.calendar.isSameDay(log.front().date, now)) note = QStringLiteral("No cleanup yet today.");

    QString next = q(bv::nextAutoCleanText(folderRules_.folderRules(), now, ctx_.calendar));

    const bool moved = labelMoved || freeLine != freeLine_ || totalLine != totalLine_ || lowLine != lowSpaceLine_ ||
                       freedToday != freedToday_ || candidates != candidates_ || rows != recentRows_ ||
                       note != recentNote_ || next != nextAutoClean_;
    freeLine_ = std::move(freeLine);
    totalLine_ = std::move(totalLine);
    lowSpaceLine_ = std::move(lowLine);
    freedToday_ = std::move(freedToday);
    candidates_ = std::move(candidates);
    recentRows_ = std::move(rows);
    recentNote_ = std::move(note);
    nextAutoClean_ = std::move(next);
    if (labelMoved) emit labelChanged();
    if (moved) emit changed();
}

} // namespace bv
