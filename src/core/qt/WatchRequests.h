#pragma once
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace bv {

// A folder someone asked to watch (a brimvale://watch link, the file manager's folder
// action), waiting for the user: nothing is watched until the add-a-project flow confirms.
class WatchRequests : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Watch requests belong to AppModel.")
    Q_PROPERTY(QString pendingPath READ pendingPath NOTIFY changed)
    Q_PROPERTY(bool fromLink READ fromLink NOTIFY changed)

public:
    using QObject::QObject;
    void request(const QString& path, bool fromLink) {
        pendingPath_ = path;
        fromLink_ = fromLink;
        emit changed();
    }
    Q_INVOKABLE void clear() {
        if (pendingPath_.isEmpty()) return;
        pendingPath_.clear();
        fromLink_ = false;
        emit changed();
    }
    [[nodiscard]] QString pendingPath() const { return pendingPath_; }
    [[nodiscard]] bool fromLink() const { return fromLink_; }

signals:
    void changed();

private:
    QString pendingPath_;
    bool fromLink_ = false;
};

} // namespace bv
