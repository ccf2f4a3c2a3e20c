// The storage survey's part of the model: the quick breakdown behind the Overview's bar, the
// "Top space users" list and the places managed elsewhere. The measures run off the main
// thread in two rounds (the folders, then the tool files and the coverage places); each
// round comes back through the survey token, so a newer survey voids an older one.
#include <QFuture>
#include <QTimer>
#include <QtConcurrent/QtConcurrentRun>

#include <chrono>
#include <utility>

#include "core/AppModel.h"
#include "foundation/ByteText.h"

namespace bv {
namespace {

QString q(const std::string& s) { return QString::fromStdString(s); }

constexpr auto kSurveyInterval = std::chrono::seconds(900);

struct ToolRound {
    StorageSurvey::Sizes sizes;
    std::vector<CoverageItem> coverage;
};

} // namespace

void AppModel::surveyStorage(bool force) {
    if (!loadLiveData_) return;
    // A survey already measuring answers a plain request too; only a forced one starts over.
    if (surveyRunning_ && !force) return;
    if (!force && lastStorageSurvey_ && now_() - *lastStorageSurvey_ < kSurveyInterval && !storageSegments_.empty()) {
        // Too soon to measure again: only the bar follows the fresh volume reading.
        if (surveySizes_) setSurveyResults(StorageSurvey::segments(*surveySizes_, latest_), topFolders_, coverageItems_);
        setStorageScanning(false);
        return;
    }

    if (surveyCancel_) surveyCancel_->cancel(); // the older survey's measures stop early
    storageSurveyToken_ = Uuid::generate();
    const Uuid token = storageSurveyToken_;
    surveyRunning_ = true;
    surveyCancel_ = std::make_shared<CancellationFlag>();
    surveyProgress_ = std::make_shared<SurveyProgress>();
    if (!surveyPoll_) {
        surveyPoll_ = new QTimer(this);
        surveyPoll_->setInterval(100); // ten readings a second; nothing is signalled per folder
        connect(surveyPoll_, &QTimer::timeout, this, &AppModel::pollSurveyProgress);
    }
    surveyPoll_->start();
    setStorageScanning(true);
    setSurveyProgressTexts(QStringLiteral("Measuring folders…"), q(bv::byteText(0)));

    const SurveyPlaces places = surveyPlaces_ ? surveyPlaces_() : SurveyPlaces::current();
    auto progress = surveyProgress_;
    auto cancel = surveyCancel_;
    QtConcurrent::run([places, progress, cancel] {
        return StorageSurvey::measureFolders(places, progress.get(), cancel.get());
    }).then(this, [this, token, places, progress, cancel](StorageSurvey::Sizes sizes) {
        if (token != storageSurveyToken_) return; // a newer survey owns the state now
        setSurveyProgressTexts(QStringLiteral("Measuring tool files…"), surveyBytesText_);
        QtConcurrent::run([places, progress, cancel, sizes = std::move(sizes)]() mutable {
            sizes.developer = StorageSurvey::measureDeveloper(places.home, progress.get(), cancel.get());
            auto coverage = StorageSurvey::measureCoverage(places.coverage, places.home, progress.get(), cancel.get());
            return ToolRound{std::move(sizes), std::move(coverage)};
        }).then(this, [this, token](ToolRound round) {
            if (token != storageSurveyToken_) return;
            finishSurvey(std::move(round.sizes), std::move(round.coverage));
        });
    });
}

void AppModel::finishSurvey(StorageSurvey::Sizes sizes, std::vector<CoverageItem> coverage) {
    surveyRunning_ = false;
    if (surveyPoll_) surveyPoll_->stop();
    lastStorageSurvey_ = now_();
    auto segments = StorageSurvey::segments(sizes, latest_);
    auto top = StorageSurvey::topFolders(sizes);
    surveySizes_ = std::move(sizes);
    setSurveyResults(std::move(segments), std::move(top), std::move(coverage));
    setSurveyProgressTexts(QString(), QString());
    setStorageScanning(false);
}

void AppModel::setSurveyResults(std::vector<StorageSegment> segments, std::vector<StorageSegment> top,
                                std::vector<CoverageItem> coverage) {
    if (segments == storageSegments_ && top == topFolders_ && coverage == coverageItems_) return;
    storageSegments_ = std::move(segments);
    topFolders_ = std::move(top);
    coverageItems_ = std::move(coverage);
    emit storageSurveyChanged();
}

void AppModel::setSurveyProgressTexts(QString status, QString bytesText) {
    if (status == surveyStatus_ && bytesText == surveyBytesText_) return;
    surveyStatus_ = std::move(status);
    surveyBytesText_ = std::move(bytesText);
    // The survey's steps are also the Smart Clean progress line once the cache scan is done.
    if (!devScanning_) setDevProgress(surveyStatus_.toStdString());
    emit storageSurveyChanged();
}

void AppModel::pollSurveyProgress() {
    if (!surveyRunning_ || !surveyProgress_) return;
    setSurveyProgressTexts(surveyStatus_, q(bv::byteText(surveyProgress_->value())));
}

// ---- what the screens read ------------------------------------------------------------------

QVariantList AppModel::storageSegmentsList() const {
    // Fractions of the whole bar. The segments add up to the total unless the known folders
    // were measured above the used space; the bar then shares its width among what it shows.
    double whole = 0;
    for (const auto& s : storageSegments_) whole += static_cast<double>(s.bytes);
    QVariantList out;
    for (const auto& s : storageSegments_) {
        const double bytes = static_cast<double>(s.bytes);
        out.push_back(QVariantMap{{"id", q(s.id)},
                                  {"name", q(s.name)},
                                  {"bytes", bytes},
                                  {"bytesText", q(bv::byteText(s.bytes))},
                                  {"fraction", whole > 0 ? bytes / whole : 0.0}});
    }
    return out;
}

QVariantList AppModel::topFoldersList() const {
    QVariantList out;
    for (const auto& s : topFolders_)
        out.push_back(QVariantMap{{"id", q(s.id)},
                                  {"name", q(s.name)},
                                  {"bytes", static_cast<double>(s.bytes)},
                                  {"bytesText", q(bv::byteText(s.bytes))}});
    return out;
}

QVariantList AppModel::coverageItemsList() const {
    QVariantList out;
    for (const auto& c : coverageItems_)
        out.push_back(QVariantMap{{"id", q(c.id)},
                                  {"title", q(c.title)},
                                  {"bytes", c.bytes ? QVariant(static_cast<double>(*c.bytes)) : QVariant::fromValue(nullptr)},
                                  {"bytesText", c.bytes ? q(bv::byteText(*c.bytes)) : QString()},
                                  {"detail", q(c.detail)},
                                  {"howTo", q(c.howTo)},
                                  {"path", c.path ? q(*c.path) : QString()}});
    return out;
}

} // namespace bv
