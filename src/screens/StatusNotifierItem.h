#pragma once
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QPoint>
#include <QString>

#include "screens/StatusNotifierTypes.h"

class QDBusServiceWatcher;

namespace bv {

// The tray item, our own StatusNotifierItem over the session bus: the service
// "org.kde.StatusNotifierItem-<pid>-1" with the object "/StatusNotifierItem", announced to
// org.kde.StatusNotifierWatcher, and announced again whenever the watcher's owner changes (a
// panel started after us, or restarted). The label is the `XAyatanaLabel` property, which some
// panels draw beside the icon; the tooltip always carries the text.
//
// `hostAvailable` is true once a watcher took the item and says a panel (a host) is showing
// items; without a bus, a watcher or a host it stays false and the program must not hide
// anything behind the tray. Every call to the watcher is asynchronous. GUI thread only.
class StatusNotifierItem : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(bv::StatusNotifierPixmaps IconPixmap READ noPixmaps)
    Q_PROPERTY(QString OverlayIconName READ noText)
    Q_PROPERTY(bv::StatusNotifierPixmaps OverlayIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionIconName READ noText)
    Q_PROPERTY(bv::StatusNotifierPixmaps AttentionIconPixmap READ noPixmaps)
    Q_PROPERTY(QString AttentionMovieName READ noText)
    Q_PROPERTY(QString IconThemePath READ noText)
    Q_PROPERTY(bv::StatusNotifierToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString XAyatanaLabel READ label)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide)

public:
    static constexpr const char* kWatcherService = "org.kde.StatusNotifierWatcher";
    static constexpr const char* kObjectPath = "/StatusNotifierItem";

    // `bus` is the session bus in the program; tests give a connection to a bus of their own.
    explicit StatusNotifierItem(QDBusConnection bus, QObject* parent = nullptr);
    ~StatusNotifierItem() override;

    // Puts the item on the bus and announces it. False when the bus is not connected or the
    // name or object could not be had; the item then never becomes available.
    bool start();
    // `title` is the status text (title and tooltip); `label` is what is drawn beside the
    // icon, empty for none. Signals the panel only when something changed.
    void setText(const QString& title, const QString& label);
    // The icon from the desktop's theme; "brimvale" when installed, else a generic disk.
    void setIconName(const QString& name);

    [[nodiscard]] bool hostAvailable() const { return hostAvailable_; }
    [[nodiscard]] QString serviceName() const { return serviceName_; }

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return QStringLiteral("brimvale"); }
    [[nodiscard]] QString title() const { return title_; }
    [[nodiscard]] QString status() const { return QStringLiteral("Active"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString iconName() const { return iconName_; }
    [[nodiscard]] StatusNotifierPixmaps noPixmaps() const { return {}; }
    [[nodiscard]] QString noText() const { return {}; }
    [[nodiscard]] StatusNotifierToolTip toolTip() const;
    [[nodiscard]] bool itemIsMenu() const { return false; }
    // No exported menu: a right click opens the popover, which holds Open, Settings and Quit.
    [[nodiscard]] QDBusObjectPath menu() const { return QDBusObjectPath("/NO_DBUSMENU"); }
    [[nodiscard]] QString label() const { return label_; }
    // The widest label likely, so a panel can keep its width steady.
    [[nodiscard]] QString labelGuide() const { return QStringLiteral("888.88 GB free"); }

public slots:
    // Called by the panel: a left click, a middle click, a right click, a wheel turn.
    Q_SCRIPTABLE void Activate(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString& orientation);

signals:
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void NewStatus(const QString& status);
    Q_SCRIPTABLE void XAyatanaNewLabel(const QString& label, const QString& guide);

    // For the program (not exported): where the panel was clicked, in screen coordinates.
    void activated(QPoint at);
    void contextMenuRequested(QPoint at);
    void secondaryActivated(QPoint at);
    void hostAvailableChanged(bool available);

private slots:
    void hostRegistered();
    void hostUnregistered();

private:
    void announce();
    void readHostState();
    void setHostAvailable(bool available);

    QDBusConnection bus_;
    QDBusServiceWatcher* watcher_ = nullptr;
    QString serviceName_;
    QString title_ = QStringLiteral("Disk");
    QString label_;
    QString iconName_ = QStringLiteral("drive-harddisk");
    bool started_ = false;
    bool hostAvailable_ = false;
};

} // namespace bv
