#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "buildwatch/BuildWatch.h"
#include "clean/CleanupEntry.h"
#include "foundation/Uuid.h"

namespace bv {

struct FeatureContext;

// Build Watch on the GUI thread: the watched projects ("build-watch.json") with their measured
// targets, the suggestions of the look for projects, and the draft of the add-a-project sheet.
//
// Disk work (scans, the due check's run, the look) runs in pool tasks on plain copies and
// comes back here with a token or an id check, since the user may have changed or removed a
// watch meanwhile. On each clock tick the due watches are checked (unless a run, a clean-up
// sheet or a clean is under way) and an unforced look runs when twelve hours have passed.
// A watch over its limit is cleaned by that run without a sheet, because confirming the watch
// was the user's consent; "Clean now" always opens the shared preview first.
class BuildWatchModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Build Watch belongs to AppModel.")
    Q_PROPERTY(QVariantList watches READ watchesForQml NOTIFY watchesChanged)
    Q_PROPERTY(QVariantList suggestions READ suggestionsForQml NOTIFY suggestionsChanged)
    Q_PROPERTY(bool suggestionsScanning READ suggestionsScanning NOTIFY suggestionsChanged)
    // "Some folders couldn’t be checked" and the folders, or empty.
    Q_PROPERTY(QString refusedNote READ refusedNote NOTIFY suggestionsChanged)
    Q_PROPERTY(bool runInFlight READ runInFlight NOTIFY watchesChanged)
    Q_PROPERTY(bool hasDraft READ hasDraft NOTIFY draftChanged)
    Q_PROPERTY(QVariantMap draft READ draftForQml NOTIFY draftChanged)
    Q_PROPERTY(QString toast READ toast NOTIFY toastChanged)
    // The sidebar's badge: the suggestions' bytes, else the number of watches, else empty.
    Q_PROPERTY(QString badge READ badge NOTIFY badgeChanged)
    // Watches run only while the program is open: the screen offers to open it at login.
    Q_PROPERTY(bool openAtLogin READ openAtLogin WRITE setOpenAtLogin NOTIFY openAtLoginChanged)

  public:
    explicit BuildWatchModel(const FeatureContext& context, QObject* parent = nullptr);

    // What the shell knows and this room must not reach itself: whether a clean-up sheet is up
    // or a clean runs (the due check then waits), and whether the disk is low now.
    void setCleanBusySource(std::function<bool()> busy) { cleanBusy_ = std::move(busy); }
    void setDiskIsLowSource(std::function<bool()> low) { diskIsLow_ = std::move(low); }
    // The search roots of the look; the default is the usual source folders under home.
    void setSearchRoots(std::vector<std::string> roots) { searchRoots_ = std::move(roots); }

    // ---- the draft ----
    // Resolves links, then opens the draft (and its scan) or says the folder is watched already.
    Q_INVOKABLE void startDraft(const QString& path, bool fromLink = false);
    // "cadence" (raw value), "limitStep" (+1/-1), "autoClean", "removesPermanently", "openAtLogin".
    Q_INVOKABLE void setDraftField(const QString& key, const QVariant& value);
    Q_INVOKABLE void confirmDraft();
    Q_INVOKABLE void cancelDraft();

    // ---- a watch, by its id's text ----
    Q_INVOKABLE void setCadence(const QString& id, const QString& cadence);
    Q_INVOKABLE void stepLimit(const QString& id, int direction);
    Q_INVOKABLE void setAutoClean(const QString& id, bool on);
    Q_INVOKABLE void setRemovesPermanently(const QString& id, bool on);
    Q_INVOKABLE void setEnabled(const QString& id, bool on);
    Q_INVOKABLE void stopWatching(const QString& id);
    Q_INVOKABLE void measureNow(const QString& id);
    // Scans the project and opens the preview with its build folders; never cleans by itself.
    Q_INVOKABLE void cleanNow(const QString& id);

    // ---- suggestions ----
    Q_INVOKABLE void lookForProjects(bool force = true);
    Q_INVOKABLE void dismissSuggestion(const QString& path);
    Q_INVOKABLE void watchSuggestion(const QString& path) { startDraft(path, false); }
    Q_INVOKABLE void clearToast();

    // The tick: due watches, then an unforced look; the start-up pass and a link's pass force it.
    void checkDue(bool forceLook = false);
    // After any clean the shell saw finish: watches whose build folders it removed are credited
    // from the log entries History received.
    void creditFinishedClean();

    [[nodiscard]] const BuildWatchState& state() const { return state_; }
    [[nodiscard]] const std::optional<BuildWatchDraft>& draftValue() const { return draft_; }
    [[nodiscard]] const std::vector<BuildSuggestion>& suggestionValues() const { return suggestions_; }
    [[nodiscard]] const std::map<Uuid, std::vector<BuildTarget>>& targets() const { return targets_; }
    [[nodiscard]] bool busy(const Uuid& id) const { return busyIDs_.contains(id); }

    [[nodiscard]] QVariantList watchesForQml() const;
    [[nodiscard]] QVariantList suggestionsForQml() const;
    [[nodiscard]] bool suggestionsScanning() const { return suggestionsScanning_; }
    [[nodiscard]] QString refusedNote() const;
    [[nodiscard]] bool runInFlight() const { return runInFlight_; }
    [[nodiscard]] bool hasDraft() const { return draft_.has_value(); }
    [[nodiscard]] QVariantMap draftForQml() const;
    [[nodiscard]] QString toast() const { return toast_; }
    [[nodiscard]] QString badge() const;
    [[nodiscard]] bool openAtLogin() const;
    void setOpenAtLogin(bool on);

  signals:
    void watchesChanged();
    void suggestionsChanged();
    void draftChanged();
    void toastChanged();
    void badgeChanged();
    void openAtLoginChanged();
    // A draft opened or a watch request arrived: the window shows Build Watch.
    void draftStarted();
    // A due run freed space: the disk figures are stale.
    void spaceFreed();

  private:
    void save();
    void changeWatch(const QString& id, const std::function<void(BuildWatch&)>& change);
    void openDraft(const std::string& path, bool fromLink);
    void showToast(const std::string& text);
    void runDue();
    void startCleanPreview(const Uuid& id, const BuildWatchScanner::ProjectScan& scan);
    // Measures one watched project on the pool, one request per project at a time; `then`
    // runs on the GUI thread while this object lives.
    void scanInPool(const QString& id, std::function<void(const Uuid&, const BuildWatchScanner::ProjectScan&)> then);

    const FeatureContext& ctx_;
    BuildWatchState state_;
    std::map<Uuid, std::vector<BuildTarget>> targets_;
    std::vector<BuildSuggestion> suggestions_;
    std::vector<std::string> refusedFolders_;
    std::optional<BuildWatchDraft> draft_;
    Uuid draftToken_;
    std::set<Uuid> busyIDs_;
    bool suggestionsScanning_ = false;
    bool runInFlight_ = false;
    QString toast_;
    // The entries last handed to the preview, and the History entries there were then, so
    // the clean's own entries can be told apart when it ends.
    std::vector<CleanupEntry> previewed_;
    std::set<Uuid> logBefore_;

    std::function<bool()> cleanBusy_ = [] { return false; };
    std::function<bool()> diskIsLow_ = [] { return false; };
    std::optional<std::vector<std::string>> searchRoots_;
};

} // namespace bv
