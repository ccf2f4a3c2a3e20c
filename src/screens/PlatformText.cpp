#include "screens/PlatformText.h"

#include "platform/PlatformWording.h"
#include "platform/XdgPaths.h"

namespace bv {

QString PlatformText::worded(const QString& text) const {
    return QString::fromStdString(platformWording(text.toStdString()));
}

QUrl PlatformText::loginItemsFolder() const {
    return QUrl::fromLocalFile(QString::fromStdString(XdgPaths::configHome() + "/autostart"));
}

} // namespace bv
