#pragma once
#include <QAbstractItemModel>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "clean/AppLeftovers.h"
#include "clean/CleanupPlan.h"
#include "clean/NodeModuleRoot.h"
#include "clean/OldProjectScanner.h"

namespace bv {

struct FeatureContext;
class KeyedListModel;

// What Smart Clean finds beside the caches: rebuildable folders in projects left alone for a
// while, under the parent folders the user names, and what apps that are gone left behind.
// Both scans run on the pool with plain copies; nothing is ever selected by a scan. "Select
// recommended" adds every leftover whose app is gone; a leftover that may still be in use
// (`unknown`) is only ever ticked by hand.
class SmartCleanFinds : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Smart Clean's finds belong to Smart Clean.")
    // Rows: key (the path), title, projectName, artifact, path, bytes, sizeText, note, selected.
    Q_PROPERTY(QAbstractItemModel* projectHits READ projectHits CONSTANT)
    // Rows: key (the id), title, ownerName, status, bytes, sizeText, evidence, places, selected.
    Q_PROPERTY(QAbstractItemModel* goneLeftovers READ goneLeftovers CONSTANT)
    Q_PROPERTY(QAbstractItemModel* possibleLeftovers READ possibleLeftovers CONSTANT)
    Q_PROPERTY(QStringList roots READ rootsForQml NOTIFY rootsChanged)
    Q_PROPERTY(bool projectsScanning READ projectsScanning NOTIFY scanningChanged)
    Q_PROPERTY(bool leftoversScanning READ leftoversScanning NOTIFY scanningChanged)
    Q_PROPERTY(bool permanent READ permanent NOTIFY permanentChanged)
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectionChanged)
    Q_PROPERTY(double selectedBytes READ selectedBytesForQml NOTIFY selectionChanged)
    // The screen's own words.
    Q_PROPERTY(QString explanation READ explanation CONSTANT)
    Q_PROPERTY(QString pickerPrompt READ pickerPrompt CONSTANT)
    Q_PROPERTY(QString holdText READ holdText CONSTANT)
    Q_PROPERTY(QString permanentOnText READ permanentOnText CONSTANT)
    Q_PROPERTY(QString possiblyHeading READ possiblyHeading CONSTANT)
    Q_PROPERTY(QString possiblyText READ possiblyText CONSTANT)

public:
    explicit SmartCleanFinds(const FeatureContext& context, QObject* parent = nullptr);

    // The leftovers scan; `done` runs on the GUI thread once its findings are in.
    void scanLeftovers(std::function<void()> done);
    // The old project files scan over the saved parent folders.
    Q_INVOKABLE void scanProjects();
    // A parent folder from the picker: kept, saved and searched at once. A folder already
    // in the list is not added twice.
    Q_INVOKABLE void addRoot(const QString& path);
    Q_INVOKABLE void removeRoot(const QString& path);
    Q_INVOKABLE void setHitSelected(const QString& path, bool selected);
    Q_INVOKABLE void setFindingSelected(const QString& id, bool selected);
    // Turning permanent delete on is confirmed by a hold on the screen; off is one click.
    Q_INVOKABLE void setPermanent(bool on);

    // Ticks every leftover whose app is gone. True when anything changed.
    bool selectRecommended();
    // The selected hits and findings as entries and refusals, to go beside the caches' plan.
    [[nodiscard]] CleanupPlan plan() const;
    // Seams for tests: the leftovers scan's places and clock.
    void setLeftoverOptions(AppLeftovers::Options options) { leftoverOptions_ = std::move(options); }
    void setProjectResult(std::vector<NodeModuleHit> hits);
    void setLeftoverResult(std::vector<OrphanFinding> findings);

    [[nodiscard]] QAbstractItemModel* projectHits() const;
    [[nodiscard]] QAbstractItemModel* goneLeftovers() const;
    [[nodiscard]] QAbstractItemModel* possibleLeftovers() const;
    [[nodiscard]] QStringList rootsForQml() const;
    [[nodiscard]] bool projectsScanning() const { return projectsScanning_; }
    [[nodiscard]] bool leftoversScanning() const { return leftoversScanning_; }
    [[nodiscard]] bool permanent() const;
    [[nodiscard]] static QString explanation() { return QString::fromUtf8(OldProjectScanner::kExplanation); }
    [[nodiscard]] static QString pickerPrompt() { return QString::fromUtf8(OldProjectScanner::kPickerPrompt); }
    [[nodiscard]] static QString holdText() { return QString::fromUtf8(OldProjectScanner::kHoldToDelete); }
    [[nodiscard]] static QString permanentOnText() { return QString::fromUtf8(OldProjectScanner::kPermanentOn); }
    [[nodiscard]] static QString possiblyHeading() { return QString::fromUtf8(AppLeftovers::kPossiblyLeftBehindHeading); }
    [[nodiscard]] static QString possiblyText() { return QString::fromUtf8(AppLeftovers::kPossiblyLeftBehindText); }
    [[nodiscard]] int selectedCount() const;
    [[nodiscard]] std::int64_t selectedBytes() const;
    [[nodiscard]] double selectedBytesForQml() const { return static_cast<double>(selectedBytes()); }
    // The old hits on show: those untouched for at least the set number of days.
    [[nodiscard]] std::vector<NodeModuleHit> oldHits() const;
    [[nodiscard]] const std::vector<OrphanFinding>& findings() const { return findings_; }

signals:
    void rootsChanged();
    void scanningChanged();
    void permanentChanged();
    void selectionChanged();
    // The progress line: "Looking for old project files…" while that scan runs, then empty.
    void progressText(const QString& text);

private:
    void rebuild();
    [[nodiscard]] std::string dataFolder() const;

    const FeatureContext& ctx_;
    KeyedListModel* hitList_;
    KeyedListModel* goneList_;
    KeyedListModel* possibleList_;
    std::vector<NodeModuleRoot> roots_;
    std::vector<NodeModuleHit> hits_;
    std::vector<OrphanFinding> findings_;
    std::set<std::string> selectedFindings_;
    AppLeftovers::Options leftoverOptions_;
    bool projectsScanning_ = false;
    bool leftoversScanning_ = false;
    bool projectsAgain_ = false; // a root was added while a scan ran
};

} // namespace bv
