#include "screens/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace bv {
namespace {
constexpr const char* kWatcherPath = "/StatusNotifierWatcher";
constexpr const char* kWatcherInterface = "org.kde.StatusNotifierWatcher";
} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus)) {
    static const bool registered = [] {
        qDBusRegisterMetaType<StatusNotifierPixmap>();
        qDBusRegisterMetaType<StatusNotifierPixmaps>();
        qDBusRegisterMetaType<StatusNotifierToolTip>();
        return true;
    }();
    (void)registered;
    serviceName_ = QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
}

StatusNotifierItem::~StatusNotifierItem() {
    if (!started_) return;
    bus_.unregisterObject(QString::fromLatin1(kObjectPath));
    bus_.unregisterService(serviceName_);
}

bool StatusNotifierItem::start() {
    if (started_) return true;
    if (!bus_.isConnected()) return false;
    if (!bus_.registerObject(QString::fromLatin1(kObjectPath), this,
                             QDBusConnection::ExportScriptableSlots | QDBusConnection::ExportScriptableSignals |
                                 QDBusConnection::ExportAllProperties))
        return false;
    if (!bus_.registerService(serviceName_)) {
        bus_.unregisterObject(QString::fromLatin1(kObjectPath));
        return false;
    }
    started_ = true;
    // A panel that starts (or restarts) after us owns the watcher anew: announce again.
    watcher_ = new QDBusServiceWatcher(QString::fromLatin1(kWatcherService), bus_,
                                       QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& newOwner) {
                if (newOwner.isEmpty()) setHostAvailable(false);
                else announce();
            });
    const QString service = QString::fromLatin1(kWatcherService);
    bus_.connect(service, QString::fromLatin1(kWatcherPath), QString::fromLatin1(kWatcherInterface),
                 QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(hostRegistered()));
    bus_.connect(service, QString::fromLatin1(kWatcherPath), QString::fromLatin1(kWatcherInterface),
                 QStringLiteral("StatusNotifierHostUnregistered"), this, SLOT(hostUnregistered()));
    announce();
    return true;
}

void StatusNotifierItem::announce() {
    QDBusMessage call = QDBusMessage::createMethodCall(QString::fromLatin1(kWatcherService),
                                                       QString::fromLatin1(kWatcherPath),
                                                       QString::fromLatin1(kWatcherInterface),
                                                       QStringLiteral("RegisterStatusNotifierItem"));
    call << serviceName_;
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        if (w->isError()) setHostAvailable(false); // no watcher, or it refused us
        else readHostState();
    });
}

// A watcher may run without any panel drawing its items; only with a host is the tray real.
void StatusNotifierItem::readHostState() {
    QDBusMessage get = QDBusMessage::createMethodCall(QString::fromLatin1(kWatcherService),
                                                      QString::fromLatin1(kWatcherPath),
                                                      QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("Get"));
    get << QString::fromLatin1(kWatcherInterface) << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* pending = new QDBusPendingCallWatcher(bus_.asyncCall(get), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *w;
        // A watcher that cannot say is taken at its word that it shows what registers.
        setHostAvailable(reply.isError() ? true : reply.value().variant().toBool());
    });
}

void StatusNotifierItem::hostRegistered() { setHostAvailable(true); }
void StatusNotifierItem::hostUnregistered() { readHostState(); }

void StatusNotifierItem::setHostAvailable(bool available) {
    if (hostAvailable_ == available) return;
    hostAvailable_ = available;
    emit hostAvailableChanged(available);
}

void StatusNotifierItem::setText(const QString& title, const QString& label) {
    if (title != title_) {
        title_ = title;
        emit NewTitle();
        emit NewToolTip();
    }
    if (label != label_) {
        label_ = label;
        emit XAyatanaNewLabel(label_, labelGuide());
    }
}

void StatusNotifierItem::setIconName(const QString& name) {
    if (name == iconName_) return;
    iconName_ = name;
    emit NewIcon();
    emit NewToolTip();
}

StatusNotifierToolTip StatusNotifierItem::toolTip() const {
    return StatusNotifierToolTip{iconName_, {}, QStringLiteral("Brimvale"), title_};
}

void StatusNotifierItem::Activate(int x, int y) { emit activated(QPoint(x, y)); }
void StatusNotifierItem::SecondaryActivate(int x, int y) { emit secondaryActivated(QPoint(x, y)); }
void StatusNotifierItem::ContextMenu(int x, int y) { emit contextMenuRequested(QPoint(x, y)); }
void StatusNotifierItem::Scroll(int, const QString&) {}

} // namespace bv
