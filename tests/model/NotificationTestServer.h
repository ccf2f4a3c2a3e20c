#pragma once
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <vector>

namespace bv::test {

// A small notification server for tests: owns org.freedesktop.Notifications on its own
// connection, records every Notify it receives, can refuse all of them, and can send the
// signals a real server sends when the user clicks.
class NotificationTestServer : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    struct Received {
        QString appName;
        uint replacesId = 0;
        QString summary, body;
        QStringList actions;
        QVariantMap hints;
        uint assignedId = 0;
    };

    explicit NotificationTestServer(QDBusConnection bus) : bus_(std::move(bus)) {}
    // True when the name is ours.
    bool start() {
        return bus_.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                                   QDBusConnection::ExportAllSlots) &&
               bus_.registerService(QStringLiteral("org.freedesktop.Notifications"));
    }

    void setRefusing(bool refusing) { refusing_ = refusing; }
    [[nodiscard]] const std::vector<Received>& received() const { return received_; }

    void invokeAction(uint id, const QString& key) {
        QDBusMessage s = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                    QStringLiteral("org.freedesktop.Notifications"),
                                                    QStringLiteral("ActionInvoked"));
        s << id << key;
        bus_.send(s);
    }
    void close(uint id) {
        QDBusMessage s = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                    QStringLiteral("org.freedesktop.Notifications"),
                                                    QStringLiteral("NotificationClosed"));
        s << id << uint(2);
        bus_.send(s);
    }

public slots:
    uint Notify(const QString& appName, uint replacesId, const QString& /*icon*/, const QString& summary,
                const QString& body, const QStringList& actions, const QVariantMap& hints, int /*timeout*/) {
        if (refusing_) {
            sendErrorReply(QDBusError::AccessDenied, QStringLiteral("notifications are off"));
            return 0;
        }
        const uint id = replacesId ? replacesId : ++lastId_;
        received_.push_back({appName, replacesId, summary, body, actions, hints, id});
        return id;
    }
    QStringList GetCapabilities() { return {QStringLiteral("actions"), QStringLiteral("body")}; }
    void CloseNotification(uint id) { close(id); }

private:
    QDBusConnection bus_;
    bool refusing_ = false;
    uint lastId_ = 40;
    std::vector<Received> received_;
};

} // namespace bv::test
