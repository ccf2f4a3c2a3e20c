#pragma once
#include <QObject>
#include <memory>

class QSocketNotifier;

namespace bv {

// Tells the model when file systems come and go (the kernel flags /proc/self/mountinfo
// with a priority event on every change) and when the machine wakes (logind's
// PrepareForSleep(false) on the system bus). Without a system bus it only watches mounts.
class VolumeWatcher : public QObject {
    Q_OBJECT
public:
    explicit VolumeWatcher(QObject* parent = nullptr);
    ~VolumeWatcher() override;

signals:
    void volumesChanged();
    void woke();

private slots:
    void prepareForSleep(bool sleeping);

private:
    int mountFd_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace bv
