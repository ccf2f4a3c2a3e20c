#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "arrange/ArrangeSettleTracker.h"
#include "arrange/ArrangeSweep.h"
#include "arrange/ArrangeTimers.h"
#include "foundation/Uuid.h"
#include "platform/DirectoryWatcher.h"

class QSocketNotifier;
class QTimer;

namespace bv {

struct FeatureContext;

// Auto-Arrange while the program runs: the patterns (arrange rules kept among the sort
// rules, which the shell hands in with setRules and takes back from rulesEdited), the
// watcher of Downloads, its timers and sweeps, and the sheets' state. Folder
// events arrive on the GUI thread through a socket notifier on the watcher's descriptor;
// sweeps and moves run in the background on copies and come back here. The watcher runs
// while some pattern is on and stops with the last one.
class ArrangeLive : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Auto-Arrange belongs to AppModel.")
    // One map per pattern: id, glob, folder, folderName, isEnabled, status, note, waiting
    // (a list of {name, path}).
    Q_PROPERTY(QVariantList patterns READ patterns NOTIFY patternsChanged)
    Q_PROPERTY(bool isWatching READ isWatching NOTIFY watchingChanged)
    // The pattern whose Arrange now sheet is to be offered; empty for none.
    Q_PROPERTY(QString offer READ offer NOTIFY offerChanged)
    // The pattern sheet's reading of what is typed: valid, description, matchLine, matches.
    Q_PROPERTY(QVariantMap sheetPreview READ sheetPreview NOTIFY sheetPreviewChanged)
    // Downloads files still settling that some pattern will take, by name.
    Q_PROPERTY(QStringList settling READ settling NOTIFY patternsChanged)

public:
    explicit ArrangeLive(const FeatureContext& context, QObject* parent = nullptr);
    ~ArrangeLive() override;

    // The whole rule list as stored (sort and arrange rules); the watcher follows it once started.
    void setRules(std::vector<SortRule> rules);
    // At the program's start: the watcher comes in line with the patterns and sweeps once.
    void start();

    // Saves one pattern; empty when saved, else the refusal to show.
    Q_INVOKABLE QString savePattern(const QString& glob, const QString& folder);
    // Reads what the sheet's text means and which files in Downloads match it (in the background).
    Q_INVOKABLE void previewPattern(const QString& glob);
    // Moves the ticked files of one pattern; the note under it says how it went.
    Q_INVOKABLE void arrangeNow(const QString& ruleID, const QStringList& paths);
    Q_INVOKABLE void setPatternEnabled(const QString& ruleID, bool on);
    Q_INVOKABLE void removePattern(const QString& ruleID);
    Q_INVOKABLE QString removeExplanation(const QString& ruleID) const;
    Q_INVOKABLE void clearOffer();

    [[nodiscard]] QVariantList patterns() const;
    [[nodiscard]] bool isWatching() const { return watcher_.watchedPath().has_value(); }
    [[nodiscard]] QString offer() const;
    [[nodiscard]] QVariantMap sheetPreview() const { return sheetPreview_; }
    [[nodiscard]] QStringList settling() const;

    // For tests: the folder watched, and one sweep now (as a tick would).
    [[nodiscard]] const std::string& downloads() const { return downloads_; }
    void sweepNow();

signals:
    void patternsChanged();
    void watchingChanged();
    void offerChanged();
    void sheetPreviewChanged();
    // A sweep came back (for tests and the screen's busy marks).
    void sweepFinished();
    // The rule list changed here (a pattern saved, switched, removed, or a move counted).
    void rulesEdited(const std::vector<bv::SortRule>& rules);

private:
    void alignWatcher();
    void editRules(std::vector<SortRule> rules);
    void readEvents();
    void wake();
    void schedule();
    void startSweep();
    void finishSweep(ArrangeSweepOutcome outcome);
    void takeMoves(const std::vector<ArrangeMoved>& moved);
    [[nodiscard]] const SortRule* ruleByID(const QString& id) const;

    const FeatureContext& ctx_;
    std::vector<SortRule> rules_;
    bool started_ = false;
    std::string downloads_;
    std::string desktop_;
    DirectoryWatcher watcher_;
    QSocketNotifier* notifier_ = nullptr;
    QTimer* deadline_ = nullptr;
    ArrangeTimers timers_;
    ArrangeSettleTracker tracker_;
    std::set<std::string> leftAlone_;
    std::map<Uuid, std::vector<FileSample>> waiting_;
    std::map<Uuid, std::string> notes_;
    std::optional<Uuid> offer_;
    std::vector<std::string> unfinished_;
    std::set<Uuid> offerOnNextSweep_;
    QVariantMap sheetPreview_;
    Uuid previewToken_;
};

} // namespace bv
