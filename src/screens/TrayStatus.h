#pragma once
#include <QObject>
#include <QString>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

namespace bv {

struct FeatureContext;
class FolderRulesModel;
class LowSpaceModel;
class SmartCleanModel;
class SpaceStatus;
class StorageSurveyModel;

// What the tray item says and what its popover shows, top to bottom, drawn from the rooms it
// is given (it never reaches the model). It lives as long as the program, so it holds only
// texts and recomputes them when one of its rooms changes; it reads no file.
//
// The popover's buttons only ask: the program's shell answers each request (open the window,
// the settings, the clean-up preview in the window, quit). Nothing here removes anything.
// The popover has no Full Disk Access line: Linux has no such layer, access is always granted.
// GUI thread only.
class TrayStatus : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The tray status belongs to the program's shell.")
    // The item: "Disk" before the first good reading, then "<free> free"; `shownLabel` is
    // that text when it is drawn beside the icon, empty when the setting is off.
    Q_PROPERTY(QString label READ label NOTIFY labelChanged)
    Q_PROPERTY(QString shownLabel READ shownLabel NOTIFY labelChanged)
    // "<free> free" and "of <total>"; "Looking at your disk" and "" before a good reading.
    Q_PROPERTY(QString freeLine READ freeLine NOTIFY changed)
    Q_PROPERTY(QString totalLine READ totalLine NOTIFY changed)
    // The low-space line at critical severity, else "".
    Q_PROPERTY(QString lowSpaceLine READ lowSpaceLine NOTIFY changed)
    Q_PROPERTY(QString freedTodayText READ freedTodayText NOTIFY changed)
    // The reclaimable total, "Scanning…" while a scan runs, "—" before the first refresh.
    Q_PROPERTY(QString candidatesText READ candidatesText NOTIFY changed)
    // The newest entries: each {title, subtitle, bytesText}.
    Q_PROPERTY(QVariantList recentRows READ recentRows NOTIFY changed)
    // "Nothing recent yet." for an empty log, "No cleanup yet today." when none is from today.
    Q_PROPERTY(QString recentNote READ recentNote NOTIFY changed)
    Q_PROPERTY(QString nextAutoCleanText READ nextAutoCleanText NOTIFY changed)
    Q_PROPERTY(QString versionText READ versionText CONSTANT)

public:
    TrayStatus(const FeatureContext& context, SpaceStatus& space, LowSpaceModel& lowSpace, SmartCleanModel& smartClean,
               StorageSurveyModel& survey, FolderRulesModel& folderRules, QObject* parent = nullptr);

    [[nodiscard]] QString label() const { return label_; }
    [[nodiscard]] QString shownLabel() const { return showsLabel_ ? label_ : QString(); }
    [[nodiscard]] QString freeLine() const { return freeLine_; }
    [[nodiscard]] QString totalLine() const { return totalLine_; }
    [[nodiscard]] QString lowSpaceLine() const { return lowSpaceLine_; }
    [[nodiscard]] QString freedTodayText() const { return freedToday_; }
    [[nodiscard]] QString candidatesText() const { return candidates_; }
    [[nodiscard]] QVariantList recentRows() const { return recentRows_; }
    [[nodiscard]] QString recentNote() const { return recentNote_; }
    [[nodiscard]] QString nextAutoCleanText() const { return nextAutoClean_; }
    [[nodiscard]] static QString versionText();

    // The popover appeared: the disk is read again.
    Q_INVOKABLE void popoverShown() { emit refreshRequested(); }
    Q_INVOKABLE void openWindow() { emit openWindowRequested(); }
    Q_INVOKABLE void openSettings() { emit settingsRequested(); }
    // "Clean Now…" and "Review & Clean": the preview opens in the main window; nothing goes.
    Q_INVOKABLE void cleanNow() { emit cleanNowRequested(); }
    Q_INVOKABLE void quit() { emit quitRequested(); }
    // Every text again from the rooms (also on each minute tick, for "today" and the schedule).
    void recompute();

signals:
    void changed();
    void labelChanged();
    void refreshRequested();
    void openWindowRequested();
    void settingsRequested();
    void cleanNowRequested();
    void quitRequested();

private:
    const FeatureContext& ctx_;
    SpaceStatus& space_;
    LowSpaceModel& lowSpace_;
    SmartCleanModel& smartClean_;
    StorageSurveyModel& survey_;
    FolderRulesModel& folderRules_;

    QString label_;
    bool showsLabel_ = true;
    QString freeLine_;
    QString totalLine_;
    QString lowSpaceLine_;
    QString freedToday_;
    QString candidates_;
    QVariantList recentRows_;
    QString recentNote_;
    QString nextAutoClean_;
};

} // namespace bv
