#include "diagnostics/qt/DiagnosticsModel.h"

#include <QAbstractEventDispatcher>

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QStringList>
#include <QSysInfo>
#include <QtConcurrent/QtConcurrentRun>

#include <string>
#include <utility>
#include <vector>

#include "core/qt/FeatureContext.h"
#include "core/qt/QtText.h"
#include "core/qt/WhenDone.h"
#include "diagnostics/CrashHandler.h"
#include "diagnostics/DeploymentConfig.h"
#include "diagnostics/DiagnosticsStore.h"
#include "diagnostics/HangWatchdog.h"
#include "diagnostics/ProgramVersion.h"
#include "diagnostics/qt/DiagnosticsMailer.h"
#include "foundation/FileIO.h"

namespace bv {

DiagnosticsModel::DiagnosticsModel(FeatureContext& context, QObject* parent)
    : DiagnosticsModel(context.live ? q(context.folders.stateHome + "/Brimvale/Diagnostics") : QString(), parent) {}

DiagnosticsModel::DiagnosticsModel(const QString& directory, QObject* parent)
    : QObject(parent), directory_(directory), mailer_(new DiagnosticsMailer(this)) {
    // Read once: the name comes from /etc/os-release, a few hundred bytes.
    systemName_ = QSysInfo::prettyProductName();
    QString kernel = QSysInfo::kernelType();
    if (!kernel.isEmpty()) kernel[0] = kernel[0].toUpper();
    systemText_ = systemName_ + QStringLiteral(", ") + kernel + QLatin1Char(' ') + QSysInfo::kernelVersion();
    connect(mailer_, &DiagnosticsMailer::openFolderRequested, this, &DiagnosticsModel::openFolderRequested);
    if (!directory_.isEmpty()) refreshCount();
}

DiagnosticsModel::~DiagnosticsModel() = default;

QString DiagnosticsModel::versionText() const { return QString::fromLatin1(programVersion()); }

QString DiagnosticsModel::versionAndSystemInfo() const {
    return QStringLiteral("Brimvale ") + versionText() + QLatin1Char('\n') + systemText_;
}

QString DiagnosticsModel::countTextFor(int count) {
    if (count <= 0) return QStringLiteral("No reports saved");
    return QStringLiteral("%1 %2 saved").arg(count).arg(count == 1 ? QStringLiteral("report") : QStringLiteral("reports"));
}

void DiagnosticsModel::refreshCount() {
    if (directory_.isEmpty()) return;
    const quint64 token = ++countToken_;
    QPointer<DiagnosticsModel> self(this);
    auto work = QtConcurrent::run([dir = directory_.toStdString()] { return static_cast<int>(DiagnosticsStore(dir).count()); });
    whenDone(work, this, [self, token](int count) {
        if (!self || token != self->countToken_ || count == self->reportCount_) return;
        self->reportCount_ = count;
        emit self->reportCountChanged();
    });
}

void DiagnosticsModel::collectPendingCrashes() {
    if (directory_.isEmpty()) return;
    QPointer<DiagnosticsModel> self(this);
    auto work = QtConcurrent::run([dir = directory_.toStdString()] { return CrashHandler::collectPending(DiagnosticsStore(dir)); });
    whenDone(work, this, [self](int collected) {
        if (self && collected > 0) self->refreshCount();
    });
}

void DiagnosticsModel::sendDiagnostics() {
    if (directory_.isEmpty()) return;
    DiagnosticsMailer::Request request;
    request.directory = directory_;
    request.version = versionText();
    request.systemName = systemName_;
    QPointer<DiagnosticsModel> self(this);
    // The listing and the deployment files are read on a worker; the folder is made so
    // there is one to show even before the first report.
    auto work = QtConcurrent::run([asked = std::move(request)] {
        DiagnosticsMailer::Request ready = asked;
        const DiagnosticsStore store(ready.directory.toStdString());
        (void)makeDirectories(store.directory(), 0700);
        for (const auto& path : store.list()) ready.reports << q(path);
        ready.address = q(DeploymentConfig::load().supportEmail);
        return ready;
    });
    whenDone(work, this, [self](const DiagnosticsMailer::Request& ready) {
        if (self) self->mailer_->send(ready);
    });
}

void DiagnosticsModel::copyVersionAndSystemInfo() { emit copyRequested(versionAndSystemInfo()); }

void DiagnosticsModel::startHangWatch(std::chrono::milliseconds limit) {
    hangWatchLink_.reset(); // no call reaches the old watchdog once it is gone
    watchdog_.reset();
    if (directory_.isEmpty()) return;
    QPointer<DiagnosticsModel> self(this);
    HangWatchdog::Setup setup{DiagnosticsStore(directory_.toStdString()), limit, programVersion(), {}};
    setup.reportSaved = [self] {
        QMetaObject::invokeMethod(QCoreApplication::instance(), [self] {
            if (self) self->refreshCount();
        }, Qt::QueuedConnection);
    };
    watchdog_ = std::make_unique<HangWatchdog>(std::move(setup));
    // The event loop of this thread says when it wakes and when it waits; the watchdog needs
    // nothing else, so an idle program is never woken for it.
    auto* dispatcher = QAbstractEventDispatcher::instance(thread());
    if (!dispatcher) return;
    HangWatchdog* watchdog = watchdog_.get();
    hangWatchLink_ = std::make_unique<QObject>();
    connect(dispatcher, &QAbstractEventDispatcher::awake, hangWatchLink_.get(),
            [watchdog] { watchdog->noteAwake(); }, Qt::DirectConnection);
    connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, hangWatchLink_.get(),
            [watchdog] { watchdog->noteAboutToBlock(); }, Qt::DirectConnection);
}

} // namespace bv
