#pragma once

class QQmlApplicationEngine;
class QQuickWindow;

namespace bv {

class AppModel;

// Builds the application object, the model and the main window, and runs the event loop.
int runGuiApplication(int argc, char** argv);

// Makes AppModel reachable from QML as the singleton `AppModel` and registers the screens'
// own types; once per process, before any engine loads a screen.
void registerQmlModules(AppModel& model);

// Makes AppModel reachable from QML as the singleton `AppModel` (import Brimvale.Core) and
// loads the main window into `engine`. Returns the window, or nullptr when QML failed.
QQuickWindow* loadMainWindow(QQmlApplicationEngine& engine, AppModel& model);

} // namespace bv
