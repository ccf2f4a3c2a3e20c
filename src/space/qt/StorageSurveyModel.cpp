#include "space/qt/StorageSurveyModel.h"

#include <QFuture>
#include <QVariantMap>
#include <QtConcurrent/QtConcurrentRun>

#include <algorithm>
#include <chrono>

#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/KeyedListModel.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "foundation/ByteText.h"
#include "platform/PlatformWording.h"

namespace bv {
namespace {

constexpr auto kSurveyInterval = std::chrono::seconds(900);

struct ToolRound {
    StorageSurvey::Sizes sizes;
    std::vector<CoverageItem> coverage;
};

} // namespace

StorageSurveyModel::StorageSurveyModel(const FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context), topList_(new KeyedListModel({"key", "name", "bytes", "bytesText", "share"}, this)),
      coverageList_(new KeyedListModel({"key", "title", "bytes", "bytesText", "detail", "howTo", "path"}, this)) {
    poll_.setInterval(100); // ten readings a second; nothing is signalled per folder
    connect(&poll_, &QTimer::timeout, this, &StorageSurveyModel::poll);
}

StorageSurveyModel::~StorageSurveyModel() {
    if (cancel_) cancel_->cancel();
}

void StorageSurveyModel::setScanning(bool on) {
    if (scanning_ == on) return;
    scanning_ = on;
    emit scanningChanged();
}

void StorageSurveyModel::survey(bool force) {
    if (!ctx_.live) return;
    // A survey already measuring answers a plain request too; only a forced one starts over.
    if (scanning_ && !force) return;
    if (!force && lastSurvey_ && ctx_.clock.now() - *lastSurvey_ < kSurveyInterval && !segments_.empty()) {
        // Too soon to measure again: only the bar follows the fresh volume reading.
        if (sizes_) setResults(StorageSurvey::segments(*sizes_, ctx_.latestVolume()), top_, coverage_);
        return;
    }

    if (cancel_) cancel_->cancel(); // the older survey's measures stop early
    token_ = Uuid::generate();
    const Uuid token = token_;
    cancel_ = std::make_shared<CancellationFlag>();
    progress_ = std::make_shared<SurveyProgress>();
    poll_.start();
    setScanning(true);
    setProgressTexts(QStringLiteral("Measuring folders…"), q(byteText(0)));

    const SurveyPlaces places = places_ ? places_() : SurveyPlaces::current();
    auto progress = progress_;
    auto cancel = cancel_;
    auto work = QtConcurrent::run([places, progress, cancel] {
        return StorageSurvey::measureFolders(places, progress.get(), cancel.get());
    });
    whenDone(work, this, [this, token, places, progress, cancel](StorageSurvey::Sizes sizes) {
        if (token != token_) return; // a newer survey owns the state now
        setProgressTexts(QStringLiteral("Measuring tool files…"), bytesText_);
        auto tools = QtConcurrent::run([places, progress, cancel, sizes = std::move(sizes)]() mutable {
            sizes.developer = StorageSurvey::measureDeveloper(places.home, progress.get(), cancel.get());
            auto coverage = StorageSurvey::measureCoverage(places.coverage, places.home, progress.get(), cancel.get());
            return ToolRound{std::move(sizes), std::move(coverage)};
        });
        whenDone(tools, this, [this, token](ToolRound round) {
            if (token != token_) return;
            finish(std::move(round.sizes), std::move(round.coverage));
        });
    });
}

void StorageSurveyModel::finish(StorageSurvey::Sizes sizes, std::vector<CoverageItem> coverage) {
    poll_.stop();
    lastSurvey_ = ctx_.clock.now();
    auto segments = StorageSurvey::segments(sizes, ctx_.latestVolume());
    auto top = StorageSurvey::topFolders(sizes);
    sizes_ = std::move(sizes);
    setResults(std::move(segments), std::move(top), std::move(coverage));
    setProgressTexts(QString(), QString());
    setScanning(false);
}

void StorageSurveyModel::setResults(std::vector<StorageSegment> segments, std::vector<StorageSegment> top,
                                    std::vector<CoverageItem> coverage) {
    if (segments == segments_ && top == top_ && coverage == coverage_) return;
    segments_ = std::move(segments);
    top_ = std::move(top);
    coverage_ = std::move(coverage);
    // Each row's bar is a share of the largest folder's.
    std::int64_t largest = 0;
    for (const auto& s : top_) largest = std::max(largest, s.bytes);
    std::vector<KeyedListModel::Row> topRows;
    for (const auto& s : top_)
        topRows.push_back({q(s.id),
                           {q(s.id), q(s.name), static_cast<double>(s.bytes), q(byteText(s.bytes)),
                            largest > 0 ? static_cast<double>(s.bytes) / static_cast<double>(largest) : 0.0}});
    topList_->setRows(std::move(topRows));
    std::vector<KeyedListModel::Row> coverageRows;
    for (const auto& c : coverage_)
        coverageRows.push_back({q(c.id),
                                {q(c.id), q(c.title), c.bytes ? QVariant(static_cast<double>(*c.bytes)) : QVariant(),
                                 c.bytes ? q(byteText(*c.bytes)) : QString(), q(c.detail), q(c.howTo), q(c.path)}});
    coverageList_->setRows(std::move(coverageRows));
    emit changed();
}

void StorageSurveyModel::setProgressTexts(QString status, QString bytesText) {
    if (status == status_ && bytesText == bytesText_) return;
    const bool statusMoved = status != status_;
    status_ = std::move(status);
    bytesText_ = std::move(bytesText);
    emit changed();
    if (statusMoved) emit statusChanged(status_);
}

void StorageSurveyModel::poll() {
    if (!scanning_ || !progress_) return;
    setProgressTexts(status_, q(byteText(progress_->value())));
}

QString StorageSurveyModel::footnote() {
    return q(platformWording("Folder categories are estimates. Other used space includes unmeasured files, "
                             "snapshots, and other APFS volumes."));
}

QAbstractItemModel* StorageSurveyModel::topFoldersModel() const { return topList_; }
QAbstractItemModel* StorageSurveyModel::coverageModel() const { return coverageList_; }

QVariantList StorageSurveyModel::segmentsList() const {
    // Fractions of the whole bar. The segments add up to the total unless the known folders
    // were measured above the used space; the bar then shares its width among what it shows.
    double whole = 0;
    for (const auto& s : segments_) whole += static_cast<double>(s.bytes);
    QVariantList out;
    for (const auto& s : segments_) {
        const double bytes = static_cast<double>(s.bytes);
        out.push_back(QVariantMap{{"id", q(s.id)},
                                  {"name", q(s.name)},
                                  {"bytes", bytes},
                                  {"bytesText", q(byteText(s.bytes))},
                                  {"fraction", whole > 0 ? bytes / whole : 0.0}});
    }
    return out;
}

} // namespace bv
