#include "screens/GuiApplication.h"

#include <QApplication>
#include <QDBusConnection>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>

#include "model/AppModel.h"
#include "screens/DesktopShell.h"
#include "core/qt/SingleInstance.h"
#include "screens/DiagnosticsSetup.h"
#include "guidance/qt/CuePlayer.h"
#include "guidance/qt/GuidanceModel.h"

void qml_register_types_Brimvale_Core();
void qml_register_types_Brimvale();

namespace bv {

void registerQmlModules(AppModel& model) {
    AppModel::setQmlInstance(&model);
    static const bool registered = [] {
        qml_register_types_Brimvale_Core();
        qml_register_types_Brimvale(); // the screens' own C++ controls (HoldToConfirm)
        return true;
    }();
    (void)registered;
}

QQuickWindow* loadMainWindow(QQmlApplicationEngine& engine, AppModel& model) {
    // Symbol icons come from the desktop's theme; without one (a bare session, offscreen
    // rendering) Adwaita stands in.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor")) {
        QStringList paths = QIcon::themeSearchPaths();
        QString dataDirs = qEnvironmentVariable("XDG_DATA_DIRS");
        if (dataDirs.isEmpty()) dataDirs = QStringLiteral("/usr/local/share:/usr/share");
        for (const QString& dir : dataDirs.split(QLatin1Char(':'), Qt::SkipEmptyParts))
            if (!paths.contains(dir + QStringLiteral("/icons"))) paths << dir + QStringLiteral("/icons");
        QIcon::setThemeSearchPaths(paths);
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    }
    registerQmlModules(model);
    engine.addImportPath(QStringLiteral("qrc:/"));
    engine.load(QUrl(QStringLiteral("qrc:/Brimvale/Main.qml")));
    if (engine.rootObjects().isEmpty()) return nullptr;
    return qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
}

int runGuiApplication(int argc, char** argv) {
    // Our own arguments, read before the application object takes Qt's out of argv.
    QStringList ownArguments;
    for (int i = 1; i < argc; ++i) ownArguments << QString::fromLocal8Bit(argv[i]);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Brimvale"));
    QApplication::setOrganizationName(QStringLiteral("Brimvale"));
    QApplication::setDesktopFileName(QStringLiteral("brimvale"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("brimvale"), QIcon::fromTheme("drive-harddisk")));
    if (qEnvironmentVariableIsEmpty("QT_QUICK_CONTROLS_STYLE")) QQuickStyle::setStyle(QStringLiteral("Basic"));
    // The screens draw with Qt Quick's software renderer: a GL driver, once loaded, stays
    // mapped and resident for the life of the process (about 70 MB with Mesa's), which a
    // program idling in the tray all day should not carry. Nothing on our screens needs GL.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND") && qEnvironmentVariableIsEmpty("QSG_RHI_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);

    AppModel model(AppModel::liveDataFromEnvironment());
    installDiagnostics(model); // crash handler, hang watchdog, reports left by a crash
    CuePlayer cuePlayer; // the cues are heard only in the desktop program
    model.room<GuidanceModel>()->setSoundOutput(&cuePlayer);
    model.start();

    // The window lives only while shown; the tray item and its status stay (DesktopShell).
    QApplication::setQuitOnLastWindowClosed(false);
    DesktopShell shell(model, QDBusConnection::sessionBus());
    if (!qEnvironmentVariableIsSet("BV_EXIT_AFTER_FIRST_FRAME")) (void)shell.startTray();
    QQuickWindow* window = shell.showMainWindow();
    if (!window) return 1;
    // For the start-up benchmark: quit as soon as the first frame has been drawn.
    if (qEnvironmentVariableIsSet("BV_EXIT_AFTER_FIRST_FRAME"))
        QObject::connect(window, &QQuickWindow::frameSwapped, &app, [] { QCoreApplication::exit(0); },
                         Qt::QueuedConnection);
    // Later starts hand their links and folders over the instance socket.
    SingleInstance instance;
    if (!qEnvironmentVariableIsSet("BV_EXIT_AFTER_FIRST_FRAME")) {
        (void)instance.listen();
        QObject::connect(&instance, &SingleInstance::argumentsReceived, &model, &AppModel::handleInstanceArguments);
    }
    if (!ownArguments.isEmpty())
        QTimer::singleShot(0, &model, [&model, ownArguments] { model.handleInstanceArguments(ownArguments); });
    QObject::connect(&app, &QGuiApplication::applicationStateChanged, &model, [&model](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive) {
            model.recheckFullDiskAccess();
            model.refresh();
        } else if (state == Qt::ApplicationHidden || state == Qt::ApplicationSuspended) {
            model.noteSessionEnd();
        }
    });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &model, [&model] { model.noteSessionEnd(); });
    return app.exec();
}

} // namespace bv
