#pragma once
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

namespace bv {

// The maker's pages for the Help menu and the About pane, from the deployment's settings
// ("deployment.json"), read once when QML first asks. An address that is not set is empty,
// and the screens hide its entry rather than offer a dead one. `support` is the support page,
// else a mail link to the support address.
class MakerPages : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QString support MEMBER support_ CONSTANT)
    Q_PROPERTY(QString privacy MEMBER privacy_ CONSTANT)
    Q_PROPERTY(QString terms MEMBER terms_ CONSTANT)

public:
    explicit MakerPages(QObject* parent = nullptr);

private:
    QString support_;
    QString privacy_;
    QString terms_;
};

} // namespace bv
