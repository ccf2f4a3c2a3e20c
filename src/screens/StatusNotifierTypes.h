#pragma once
#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

namespace bv {

// One picture of the tray item as the panel protocol carries it: width, height and ARGB32
// pixels in network byte order (D-Bus signature (iiay)).
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray argb;
};
using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

// The tray item's tooltip (D-Bus signature (sa(iiay)ss)): icon name, pictures, title, text.
struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps pixmaps;
    QString title;
    QString text;
};

inline QDBusArgument& operator<<(QDBusArgument& out, const StatusNotifierPixmap& p) {
    out.beginStructure();
    out << p.width << p.height << p.argb;
    out.endStructure();
    return out;
}
inline const QDBusArgument& operator>>(const QDBusArgument& in, StatusNotifierPixmap& p) {
    in.beginStructure();
    in >> p.width >> p.height >> p.argb;
    in.endStructure();
    return in;
}
inline QDBusArgument& operator<<(QDBusArgument& out, const StatusNotifierToolTip& t) {
    out.beginStructure();
    out << t.iconName << t.pixmaps << t.title << t.text;
    out.endStructure();
    return out;
}
inline const QDBusArgument& operator>>(const QDBusArgument& in, StatusNotifierToolTip& t) {
    in.beginStructure();
    in >> t.iconName >> t.pixmaps >> t.title >> t.text;
    in.endStructure();
    return in;
}

} // namespace bv

Q_DECLARE_METATYPE(bv::StatusNotifierPixmap)
Q_DECLARE_METATYPE(bv::StatusNotifierToolTip)
