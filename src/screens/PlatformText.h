#pragma once
#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

namespace bv {

// The screens' way to the platform's wording table: a text that names another desktop's
// places ("System Settings › Login Items", "~/Library/Application Support/Brimvale") comes
// back in this system's words, and any other text comes back unchanged. Also the folder the
// login item lives in, for the button that shows it.
class PlatformText : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(QUrl loginItemsFolder READ loginItemsFolder CONSTANT)

public:
    using QObject::QObject;

    Q_INVOKABLE QString worded(const QString& text) const;
    [[nodiscard]] QUrl loginItemsFolder() const;
};

} // namespace bv
