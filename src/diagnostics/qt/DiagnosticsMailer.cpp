#include "diagnostics/qt/DiagnosticsMailer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QProcess>
#include <QRegularExpression>

#include <memory>

#include "platform/PlatformWording.h"

namespace bv {

DiagnosticsMailer::DiagnosticsMailer(QObject* parent) : QObject(parent) {}

QString DiagnosticsMailer::mailAddress(const QString& configured) {
    QString address = configured.trimmed();
    if (address.startsWith(QLatin1String("mailto:"), Qt::CaseInsensitive)) address = address.mid(7);
    static const QRegularExpression valid(QStringLiteral("^[A-Za-z0-9._%+][A-Za-z0-9._%+-]*@[A-Za-z0-9-]+(\\.[A-Za-z0-9-]+)+$"));
    return valid.match(address).hasMatch() ? address : QString();
}

QString DiagnosticsMailer::subject() { return QStringLiteral("Brimvale diagnostics"); }

QString DiagnosticsMailer::body(int count, const QString& version, const QString& systemName) {
    const std::string text = std::to_string(count) + (count == 1 ? " diagnostic report" : " diagnostic reports") +
                             " from Brimvale " + version.toStdString() + " on macOS " + systemName.toStdString() +
                             " are attached.\n\nWhat were you doing when it happened?\n\n";
    return QString::fromStdString(platformWording(text));
}

QStringList DiagnosticsMailer::xdgEmailArguments(const Request& request) {
    QStringList args{QStringLiteral("--subject"), subject(), QStringLiteral("--body"),
                     body(static_cast<int>(request.reports.size()), request.version, request.systemName)};
    for (const QString& report : request.reports) args << QStringLiteral("--attach") << report;
    args << mailAddress(request.address);
    return args;
}

void DiagnosticsMailer::send(const Request& request) {
    if (request.reports.isEmpty() || mailAddress(request.address).isEmpty()) {
        showFolder(request);
        return;
    }
    auto* process = new QProcess(this);
    process->setProgram(QStringLiteral("xdg-email"));
    process->setArguments(xdgEmailArguments(request));
    process->setStandardOutputFile(QProcess::nullDevice());
    process->setStandardErrorFile(QProcess::nullDevice());
    // Either signal may come first or alone; the request is answered once.
    auto answered = std::make_shared<bool>(false);
    connect(process, &QProcess::errorOccurred, this, [this, process, request, answered](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart || *answered) return;
        *answered = true;
        process->deleteLater();
        showFolder(request);
    });
    connect(process, &QProcess::finished, this, [this, process, request, answered](int code, QProcess::ExitStatus status) {
        if (*answered) return;
        *answered = true;
        process->deleteLater();
        if (status == QProcess::NormalExit && code == 0) emit finished(true);
        else showFolder(request);
    });
    process->start();
}

void DiagnosticsMailer::showFolder(const Request& request) {
    const QUrl folder = QUrl::fromLocalFile(request.directory);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        emit openFolderRequested(folder);
        emit finished(false);
        return;
    }
    QStringList uris;
    for (const QString& report : request.reports) uris << QUrl::fromLocalFile(report).toString();
    const bool selectReports = !uris.isEmpty();
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"),
        selectReports ? QStringLiteral("ShowItems") : QStringLiteral("ShowFolders"));
    call << (selectReports ? uris : QStringList{folder.toString()}) << QString();
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 5000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, folder](QDBusPendingCallWatcher* w) {
        w->deleteLater();
        if (w->isError()) emit openFolderRequested(folder);
        emit finished(false);
    });
}

} // namespace bv
