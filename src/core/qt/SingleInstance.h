#pragma once
#include <QLocalServer>
#include <QObject>
#include <QString>
#include <QStringList>

namespace bv {

// Keeps the program to one running instance per user. The first start listens on a local
// socket in the user's runtime folder; a later start hands its arguments (links, a folder to
// watch) to it and exits. Message: one JSON array of strings and a newline; the running
// instance answers "ok\n" once it has passed them on, so the sender knows they arrived.
class SingleInstance : public QObject {
    Q_OBJECT
public:
    // $XDG_RUNTIME_DIR/brimvale.socket, else /tmp/brimvale-<uid>.socket.
    [[nodiscard]] static QString defaultSocketName();

    explicit SingleInstance(QString socketName = defaultSocketName(), QObject* parent = nullptr);

    // Blocking, and usable before any application object exists. True when a running
    // instance took the arguments (this process should then exit); false when none answers
    // within the timeout.
    [[nodiscard]] bool handOver(const QStringList& arguments, int timeoutMs = 3000) const;

    // Becomes the running instance. A socket left behind by a crashed instance is removed;
    // false when another live instance holds the name (then hand over instead).
    [[nodiscard]] bool listen();
    [[nodiscard]] bool isListening() const { return server_.isListening(); }
    [[nodiscard]] const QString& socketName() const { return name_; }

signals:
    // Arguments a later start handed over, in the order it got them.
    void argumentsReceived(const QStringList& arguments);

private:
    void onNewConnection();

    QString name_;
    QLocalServer server_;
};

} // namespace bv
