#include "core/qt/SingleInstance.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QPointer>
#include <unistd.h>

namespace bv {
namespace {

constexpr qint64 kMaxMessage = 1 << 20; // arguments beyond a megabyte are not ours

} // namespace

QString SingleInstance::defaultSocketName() {
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty()) return QString::fromLocal8Bit(runtime) + QStringLiteral("/brimvale.socket");
    return QStringLiteral("/tmp/brimvale-%1.socket").arg(::getuid());
}

SingleInstance::SingleInstance(QString socketName, QObject* parent) : QObject(parent), name_(std::move(socketName)) {
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&server_, &QLocalServer::newConnection, this, &SingleInstance::onNewConnection);
}

bool SingleInstance::handOver(const QStringList& arguments, int timeoutMs) const {
    QLocalSocket socket;
    socket.connectToServer(name_);
    if (!socket.waitForConnected(timeoutMs)) return false;
    QByteArray message = QJsonDocument(QJsonArray::fromStringList(arguments)).toJson(QJsonDocument::Compact);
    message.append('\n');
    socket.write(message);
    if (!socket.waitForBytesWritten(timeoutMs)) return false;
    QByteArray reply;
    while (!reply.contains('\n')) {
        if (!socket.waitForReadyRead(timeoutMs)) return false;
        reply += socket.readAll();
    }
    return reply.startsWith("ok");
}

bool SingleInstance::listen() {
    if (server_.isListening()) return true;
    // Ask first: with access options set, listening renames a fresh socket over the path
    // and would steal the name from a live instance.
    QLocalSocket probe;
    probe.connectToServer(name_);
    if (probe.waitForConnected(500)) return false;
    // Nobody answers: whatever is at the path was left by a crash.
    QLocalServer::removeServer(name_);
    return server_.listen(name_);
}

void SingleInstance::onNewConnection() {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            if (!socket->canReadLine()) {
                if (socket->bytesAvailable() > kMaxMessage) socket->abort();
                return;
            }
            const QByteArray line = socket->readLine(kMaxMessage);
            const QJsonDocument doc = QJsonDocument::fromJson(line);
            if (!doc.isArray()) {
                socket->abort();
                return;
            }
            QStringList arguments;
            for (const auto& v : doc.array()) arguments << v.toString();
            socket->write("ok\n");
            socket->flush();
            socket->disconnectFromServer();
            emit argumentsReceived(arguments);
        });
    }
}

} // namespace bv
