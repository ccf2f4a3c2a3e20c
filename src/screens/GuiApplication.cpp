#include "screens/GuiApplication.h"

#include <QApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQuickStyle>
#include <QQuickWindow>

#include "core/AppModel.h"

void qml_register_types_Brimvale_Core();

namespace bv {

QQuickWindow* loadMainWindow(QQmlApplicationEngine& engine, AppModel& model) {
    AppModel::setQmlInstance(&model);
    static const bool registered = [] {
        qml_register_types_Brimvale_Core();
        return true;
    }();
    (void)registered;
    engine.load(QUrl(QStringLiteral("qrc:/Brimvale/Main.qml")));
    if (engine.rootObjects().isEmpty()) return nullptr;
    return qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
}

int runGuiApplication(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Brimvale"));
    QApplication::setOrganizationName(QStringLiteral("Brimvale"));
    QApplication::setDesktopFileName(QStringLiteral("brimvale"));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("brimvale"), QIcon::fromTheme("drive-harddisk")));
    // The window keeps running in the tray when closed once the tray icon exists; until
    // then closing the last window quits.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_CONTROLS_STYLE")) QQuickStyle::setStyle(QStringLiteral("Basic"));

    AppModel model(AppModel::liveDataFromEnvironment());
    model.start();

    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, model);
    if (!window) return 1;
    // For the start-up benchmark: quit as soon as the first frame has been drawn.
    if (qEnvironmentVariableIsSet("BV_EXIT_AFTER_FIRST_FRAME"))
        QObject::connect(window, &QQuickWindow::frameSwapped, &app, [] { QCoreApplication::exit(0); },
                         Qt::QueuedConnection);
    QObject::connect(&model, &AppModel::raiseWindowRequested, window, [window] {
        window->show();
        window->raise();
        window->requestActivate();
    });
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
