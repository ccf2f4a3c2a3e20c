// Smart Clean's developer cache scan and the road from its rows to the preview: the scan
// runs on a pool thread with plain copies, the rows come back to the GUI thread, and a
// finished clean brings a fresh scan.
#include <QFuture>
#include <QtConcurrent/QtConcurrentRun>

#include "core/AppModel.h"
#include "foundation/ByteText.h"
#include "platform/XdgPaths.h"

namespace bv {

void AppModel::installSmartClean() {
    smartClean_ = new SmartCleanModel(*this);
    connect(smartClean_, &SmartCleanModel::rowsChanged, this, [this] {
        updateActivityLog();
        reevaluateCues();
    });
    connect(cleanRun_, &CleanRun::progressChanged, this, &AppModel::afterCleanChanged);
    connect(cleanRun_, &CleanRun::measurementFinished, this, &AppModel::afterCleanChanged);
    // What was cleaned is gone from the disk; the rows must say so too.
    connect(cleanRun_, &CleanRun::runFinished, this, [this] {
        if (loadLiveData_) scanDeveloperCaches();
    });
    // The sheet is the run's; the model's flag follows it when the user closes it.
    connect(cleanRun_, &CleanRun::sheetPresentedChanged, this, [this] {
        if (!cleanRun_->isSheetPresented()) dismissCleanupSheet();
    });
}

void AppModel::setDevProgress(const std::string& text) {
    if (devProgress_ == text) return;
    devProgress_ = text;
    emit devProgressChanged();
}

void AppModel::scanDeveloperCaches() {
    if (!loadLiveData_ || devScanning_) return;
    setDevScanning(true);
    setDevProgress("Scanning developer caches\u2026");
    const std::string home = XdgPaths::home();
    const DevCacheScanner::Options options = devScanOptions_;
    QtConcurrent::run([home, options] { return DevCacheScanner::scan(home, options); })
        .then(this, [this](DevCacheScanner::Result result) {
            smartClean_->setScanResult(std::move(result));
            setDevProgress("");
            setDevScanning(false);
            playCue("ready", 0.5);
            surveyStorage(true);
            reevaluateCues();
        });
}

void AppModel::openCleanupPreview() { smartClean_->reviewAndClean(); }

std::int64_t AppModel::reclaimableTotal() const { return smartClean_ ? smartClean_->reclaimableBytes() : 0; }

QString AppModel::afterCleanLine() const {
    if (cleanRun_->verifying()) return QStringLiteral("Measuring the space that came back\u2026");
    const auto verified = cleanRun_->lastVerifiedFreed();
    if (!verified) return {};
    if (*verified >= 1) return QString::fromStdString(bv::byteText(*verified)) + QStringLiteral(" back on disk, measured");
    return QStringLiteral("Trash holds the space until you empty it");
}

} // namespace bv
