#pragma once
#include <QAbstractItemModel>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "foundation/CancellationFlag.h"
#include "foundation/Uuid.h"
#include "space/SpaceHistory.h"
#include "space/StorageSurvey.h"

namespace bv {

struct FeatureContext;
class KeyedListModel;

// The storage survey behind the Overview's bar: the quick breakdown by category, "Top space
// users" and the places managed elsewhere. The measures run off the main thread in two rounds
// (the folders, then the tool files and the coverage places); each round comes back through
// the survey token, so a newer survey voids an older one. Held to once in 900 seconds unless
// forced.
class StorageSurveyModel : public QObject {
    Q_OBJECT
    Q_MOC_INCLUDE("core/qt/KeyedListModel.h")
    QML_ELEMENT
    QML_UNCREATABLE("The storage survey belongs to AppModel.")
    Q_PROPERTY(bool scanning READ scanning NOTIFY scanningChanged)
    // The bar: [{id, name, bytes, bytesText, fraction}], apps, developer, downloads,
    // documents, other, free; empty until the first survey ends.
    Q_PROPERTY(QVariantList segments READ segmentsList NOTIFY changed)
    // "Top space users", at most five, keyed by id: key, name, bytes, bytesText, share (of the
    // largest).
    Q_PROPERTY(bv::KeyedListModel* topFolders READ topFoldersList CONSTANT)
    // "Where the rest of the space is", keyed by id: key, title, bytes (null: unreadable),
    // bytesText, detail, howTo, path.
    Q_PROPERTY(bv::KeyedListModel* coverageItems READ coverageList CONSTANT)
    // While a survey measures: the bytes counted so far as a byte text; empty otherwise.
    Q_PROPERTY(QString bytesText READ bytesText NOTIFY changed)
    // While a survey measures: "Measuring folders…", then "Measuring tool files…".
    Q_PROPERTY(QString status READ status NOTIFY changed)
    // The line under the bar: what its categories are and what "Other used space" holds.
    Q_PROPERTY(QString footnote READ footnote CONSTANT)

public:
    explicit StorageSurveyModel(const FeatureContext& context, QObject* parent = nullptr);
    ~StorageSurveyModel() override;

    // Measures again unless a survey is under way or the last one is under 900 seconds old
    // (then only the bar follows `latest`); `force` always starts over.
    void survey(bool force);
    // Seam: where the survey looks (default: SurveyPlaces::current(), read at each survey).
    void setPlaces(std::function<SurveyPlaces()> places) { places_ = std::move(places); }

    [[nodiscard]] bool scanning() const { return scanning_; }
    [[nodiscard]] const std::vector<StorageSegment>& segments() const { return segments_; }
    [[nodiscard]] const std::vector<StorageSegment>& topFolders() const { return top_; }
    [[nodiscard]] const std::vector<CoverageItem>& coverageItems() const { return coverage_; }
    [[nodiscard]] const std::optional<TimePoint>& lastSurvey() const { return lastSurvey_; }
    [[nodiscard]] const Uuid& token() const { return token_; }
    [[nodiscard]] QVariantList segmentsList() const;
    [[nodiscard]] QAbstractItemModel* topFoldersModel() const;
    [[nodiscard]] QAbstractItemModel* coverageModel() const;
    [[nodiscard]] KeyedListModel* coverageList() const { return coverageList_; }
    [[nodiscard]] KeyedListModel* topFoldersList() const { return topList_; }
    [[nodiscard]] QString bytesText() const { return bytesText_; }
    [[nodiscard]] QString status() const { return status_; }
    [[nodiscard]] static QString footnote();

signals:
    void changed();
    void scanningChanged();
    void statusChanged(const QString& status);

private:
    void finish(StorageSurvey::Sizes sizes, std::vector<CoverageItem> coverage);
    void setResults(std::vector<StorageSegment> segments, std::vector<StorageSegment> top,
                    std::vector<CoverageItem> coverage);
    void setProgressTexts(QString status, QString bytesText);
    void setScanning(bool on);
    void poll();

    const FeatureContext& ctx_;
    bool scanning_ = false;
    Uuid token_ = Uuid::generate();
    std::vector<StorageSegment> segments_;
    std::vector<StorageSegment> top_;
    std::vector<CoverageItem> coverage_;
    std::optional<StorageSurvey::Sizes> sizes_; // the last survey's figures, for a new bar
    std::optional<TimePoint> lastSurvey_;
    std::shared_ptr<SurveyProgress> progress_;
    std::shared_ptr<CancellationFlag> cancel_;
    QTimer poll_;
    QString status_;
    QString bytesText_;
    std::function<SurveyPlaces()> places_;
    KeyedListModel* topList_;
    KeyedListModel* coverageList_;
};

} // namespace bv
