#include "core/qt/NotificationCenter.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>

#include "core/qt/NotificationRouter.h"

namespace bv {
namespace {

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
constexpr int kCallTimeoutMs = 10'000;

} // namespace

NotificationCenter::NotificationCenter(QDBusConnection bus, NotificationRouter& router, QObject* parent)
    : NotificationCenter(router, parent) {
    attach(std::move(bus));
}

NotificationCenter::NotificationCenter(NotificationRouter& router, QObject* parent)
    : QObject(parent), bus_(QStringLiteral("brimvale-unattached")), router_(router) {}

void NotificationCenter::attach(QDBusConnection bus) {
    bus_ = std::move(bus);
    if (!bus_.isConnected()) return;
    // Servers send these to every listener; only ids we posted are acted on.
    bus_.connect(QString(), kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                 SLOT(onActionInvoked(uint, QString)));
    bus_.connect(QString(), kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                 SLOT(onNotificationClosed(uint, uint)));
}

std::optional<uint> NotificationCenter::lowSpaceAlertId() const {
    return lowSpaceId_ ? std::optional<uint>(lowSpaceId_) : std::nullopt;
}

void NotificationCenter::postNotification(const QString& title, const QString& body) { send(title, body, false); }

void NotificationCenter::postLowSpaceAlert(const QString& body) {
    // Until the server tells us the id of the alert in flight, a newer one waits, so that
    // it can name the one it replaces. Only the newest waiting text is kept.
    if (lowSpaceInFlight_) {
        queuedLowSpaceBody_ = body;
        return;
    }
    send(QStringLiteral("Brimvale"), body, true);
}

void NotificationCenter::send(const QString& title, const QString& body, bool lowSpace) {
    if (!bus_.isConnected()) {
        emit postSettled(false);
        return;
    }
    using namespace notification;
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    QStringList actions;
    QVariantMap hints;
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("brimvale"));
    if (lowSpace) {
        // "default" makes a click on the alert itself reach us as an action.
        actions << QLatin1String(kDefaultAction) << QString() << QLatin1String(kReviewCleanAction)
                << QLatin1String(kReviewCleanTitle);
        hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(1)); // normal: shows as a banner
        hints.insert(QStringLiteral("category"), QStringLiteral("x-brimvale.low-space"));
    } else {
        hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(0)); // low: quietly to the list
    }
    const uint replaces = lowSpace ? lowSpaceId_ : 0u;
    call << QStringLiteral("Brimvale") << replaces << QStringLiteral("brimvale") << title << body << actions << hints
         << qint32(-1);
    if (lowSpace) lowSpaceInFlight_ = true;

    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call, kCallTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, lowSpace](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        const QDBusPendingReply<uint> reply = *w;
        const bool ok = !reply.isError();
        if (ok) {
            const uint id = reply.value();
            categories_.insert(id, lowSpace ? QString::fromLatin1(notification::kLowSpaceCategory) : QString());
            if (lowSpace) lowSpaceId_ = id;
        }
        if (lowSpace) {
            lowSpaceInFlight_ = false;
            if (queuedLowSpaceBody_) {
                const QString next = *queuedLowSpaceBody_;
                queuedLowSpaceBody_.reset();
                send(QStringLiteral("Brimvale"), next, true);
            }
        }
        emit postSettled(ok);
    });
}

void NotificationCenter::onActionInvoked(uint id, const QString& actionKey) {
    const auto it = categories_.constFind(id);
    if (it == categories_.constEnd()) return; // someone else's notification
    router_.route(actionKey, *it);
}

void NotificationCenter::onNotificationClosed(uint id, uint /*reason*/) {
    categories_.remove(id);
    // A closed alert can't be replaced; the next one is new.
    if (id == lowSpaceId_) lowSpaceId_ = 0;
}

} // namespace bv
