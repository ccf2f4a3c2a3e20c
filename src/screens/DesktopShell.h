#pragma once
#include <QDBusConnection>
#include <QObject>
#include <QPoint>
#include <memory>

class QQmlApplicationEngine;
class QQmlEngine;
class QQuickWindow;

namespace bv {

class AppModel;
class StatusNotifierItem;
class TrayStatus;

// The program's windows over its life: the tray item and its status (alive as long as the
// program), the main window (built on demand), and the popover (built when shown).
//
// The main window's QML engine exists only while one of its windows shows. When the last
// of them closes and a panel shows our tray item, the engine and everything it built are
// destroyed and the freed heap is handed back to the system, so the program idles in the
// tray with only the model; without a panel, closing the window quits, as nothing may be
// reachable only from the tray. "Open Brimvale", a notification's review action, a link or a
// second start build the window again. GUI thread only.
class DesktopShell : public QObject {
    Q_OBJECT
public:
    // `bus` is where the tray item lives: the session bus, or a test's own.
    DesktopShell(AppModel& model, QDBusConnection bus, QObject* parent = nullptr);
    ~DesktopShell() override;

    // Puts the tray item on the bus; false without a bus (the window then is all there is).
    bool startTray();
    // Builds the main window if needed, shows and raises it. Nullptr when QML failed.
    QQuickWindow* showMainWindow();
    // The settings window from the main engine, the main window staying hidden; where the
    // screens have no settings window, the main window comes instead.
    void openSettings();
    // The popover near `at` (screen coordinates of the click), or closed when it shows.
    void togglePopover(QPoint at);
    void closePopover();

    [[nodiscard]] QQuickWindow* mainWindow() const { return mainWindow_; }
    [[nodiscard]] QQuickWindow* popoverWindow() const { return popover_; }
    [[nodiscard]] TrayStatus* status() const { return status_; }
    [[nodiscard]] StatusNotifierItem* trayItem() const { return item_; }
    // True when closing the last window leaves the program in the tray.
    [[nodiscard]] bool keepsRunningInTray() const;

signals:
    // The main engine was destroyed (the window closed with a tray to fall back on).
    void mainWindowReleased();
    void popoverClosed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool ensureMainEngine(bool visible);
    void checkMainWindows();
    void releaseMainEngine();
    void releasePopover();
    void updateTrayText();
    static void returnFreedMemory();

    AppModel& model_;
    TrayStatus* status_ = nullptr;
    StatusNotifierItem* item_ = nullptr;
    std::unique_ptr<QQmlApplicationEngine> engine_;
    QQuickWindow* mainWindow_ = nullptr;
    std::unique_ptr<QQmlEngine> popoverEngine_;
    QQuickWindow* popover_ = nullptr;
    bool checkQueued_ = false;
};

} // namespace bv
