#include "screens/DiagnosticsSetup.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QTimer>

#include "diagnostics/CrashHandler.h"
#include "diagnostics/ProgramVersion.h"
#include "diagnostics/qt/DiagnosticsModel.h"
#include "model/AppModel.h"

namespace bv {

void installDiagnostics(AppModel& model) {
    DiagnosticsModel* diagnostics = model.room<DiagnosticsModel>();
    if (!model.loadLiveData() || !diagnostics) return;
    (void)CrashHandler::install({diagnostics->directory().toStdString(), programVersion(), true});
    diagnostics->collectPendingCrashes();
    // Watched from the first turn of the event loop: building the window is not a hang.
    QTimer::singleShot(0, diagnostics, [diagnostics] { diagnostics->startHangWatch(); });
    QObject::connect(diagnostics, &DiagnosticsModel::copyRequested, diagnostics,
                     [](const QString& text) { QGuiApplication::clipboard()->setText(text); });
    QObject::connect(diagnostics, &DiagnosticsModel::openFolderRequested, diagnostics,
                     [](const QUrl& folder) { QDesktopServices::openUrl(folder); });
}

} // namespace bv
