#pragma once
#include <QDBusConnection>
#include <QProcess>
#include <QString>

#include <csignal>
#include <sys/types.h>

namespace bv::test {

// A real, private session bus for one test: dbus-run-session starts a fresh dbus-daemon
// and a shell that prints the bus address and its own pid, then sleeps. Ending the shell
// makes dbus-run-session tear the daemon down. Nothing touches the user's own bus.
class PrivateSessionBus {
public:
    PrivateSessionBus() {
        process_.setProgram(QStringLiteral("dbus-run-session"));
        process_.setArguments({QStringLiteral("--"), QStringLiteral("sh"), QStringLiteral("-c"),
                               QStringLiteral("echo \"$DBUS_SESSION_BUS_ADDRESS\"; echo $$; exec sleep 600")});
        process_.start();
        if (!process_.waitForStarted(5000)) return;
        QByteArray out;
        while (out.count('\n') < 2 && process_.waitForReadyRead(5000)) out += process_.readAllStandardOutput();
        const auto lines = out.split('\n');
        if (lines.size() < 2) return;
        address_ = QString::fromUtf8(lines[0].trimmed());
        shellPid_ = lines[1].trimmed().toLongLong();
    }
    ~PrivateSessionBus() {
        for (const auto& name : names_) QDBusConnection::disconnectFromBus(name);
        if (shellPid_ > 0) ::kill(static_cast<pid_t>(shellPid_), SIGTERM);
        process_.waitForFinished(5000);
    }
    PrivateSessionBus(const PrivateSessionBus&) = delete;
    PrivateSessionBus& operator=(const PrivateSessionBus&) = delete;

    [[nodiscard]] bool isUp() const { return !address_.isEmpty(); }
    [[nodiscard]] const QString& address() const { return address_; }

    // A new, separate connection to this bus (each gets its own unique name).
    [[nodiscard]] QDBusConnection connect(const QString& name) {
        const QString full = name + QString::number(reinterpret_cast<quintptr>(this));
        names_ << full;
        return QDBusConnection::connectToBus(address_, full);
    }

private:
    QProcess process_;
    QString address_;
    qint64 shellPid_ = 0;
    QStringList names_;
};

} // namespace bv::test
