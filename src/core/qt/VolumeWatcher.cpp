#include "core/qt/VolumeWatcher.h"

#include <QDBusConnection>
#include <QSocketNotifier>

#include <fcntl.h>
#include <unistd.h>

namespace bv {

VolumeWatcher::VolumeWatcher(QObject* parent) : QObject(parent) {
    mountFd_ = ::open("/proc/self/mountinfo", O_RDONLY | O_CLOEXEC);
    if (mountFd_ >= 0) {
        notifier_ = std::make_unique<QSocketNotifier>(mountFd_, QSocketNotifier::Exception);
        connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
            // Reading to the end re-arms the kernel's change flag.
            char buf[4096];
            ::lseek(mountFd_, 0, SEEK_SET);
            while (::read(mountFd_, buf, sizeof buf) > 0) {}
            emit volumesChanged();
        });
    }
    QDBusConnection system = QDBusConnection::systemBus();
    if (system.isConnected())
        system.connect("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                       "PrepareForSleep", this, SLOT(prepareForSleep(bool)));
}

VolumeWatcher::~VolumeWatcher() {
    notifier_.reset();
    if (mountFd_ >= 0) ::close(mountFd_);
}

void VolumeWatcher::prepareForSleep(bool sleeping) {
    if (!sleeping) emit woke();
}

} // namespace bv
