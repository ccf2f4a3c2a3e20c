// The Qt and standard headers nearly every file of the Qt layers includes, compiled once per
// target to keep builds on small machines short.
#pragma once
#include <QAbstractListModel>
#include <QFuture>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariant>
#include <QVariantList>
#include <QVariantMap>
#include <QtConcurrent/QtConcurrentRun>
#include <QtQml/qqmlregistration.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
