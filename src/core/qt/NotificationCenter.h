#pragma once
#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QString>
#include <optional>

namespace bv {

class NotificationRouter;

// Posts our notifications to the desktop's notification server (org.freedesktop.Notifications
// on the session bus) and hands clicks on them to the router. Never blocks: every call is
// asynchronous. With no bus, no server, or a server that refuses, posting is silent, the way
// a denied permission is: no error, no fallback.
class NotificationCenter : public QObject {
    Q_OBJECT
public:
    // `bus` is the session bus in the program; tests give a connection to their own bus.
    explicit NotificationCenter(QDBusConnection bus, NotificationRouter& router, QObject* parent = nullptr);
    // Not connected yet: every post is silent until `attach` (the model attaches at start).
    explicit NotificationCenter(NotificationRouter& router, QObject* parent = nullptr);
    // Posts go out on `bus` from now on; clicks on them come back to the router.
    void attach(QDBusConnection bus);

    // A plain, low-urgency notification that stands on its own.
    void postNotification(const QString& title, const QString& body);
    // The low-space alert: title "Brimvale", normal urgency, the "Review & Clean" action and a
    // click that opens the preview. A new alert replaces the one still showing.
    void postLowSpaceAlert(const QString& body);
    // The desktop asks nobody's permission to show notifications, so there is nothing to
    // request; kept so the settings can call it when alerts are turned on.
    void requestAuthorizationIfNeeded() {}

    // The server's id of the low-space alert on show, if any.
    [[nodiscard]] std::optional<uint> lowSpaceAlertId() const;

signals:
    // After each post settles: whether the server took it. For tests and diagnostics only;
    // the user never hears of a failure.
    void postSettled(bool delivered);

private slots:
    void onActionInvoked(uint id, const QString& actionKey);
    void onNotificationClosed(uint id, uint reason);

private:
    void send(const QString& title, const QString& body, bool lowSpace);

    QDBusConnection bus_;
    NotificationRouter& router_;
    QHash<uint, QString> categories_; // our notifications still showing, by server id
    uint lowSpaceId_ = 0;
    bool lowSpaceInFlight_ = false;
    std::optional<QString> queuedLowSpaceBody_; // a newer alert waiting for the id of the last
};

} // namespace bv
