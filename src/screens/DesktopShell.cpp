#include "screens/DesktopShell.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>

#include <malloc.h>

#include "autopilot/qt/FolderRulesModel.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/qt/FeatureContext.h"
#include "model/AppModel.h"
#include "screens/GuiApplication.h"
#include "screens/StatusNotifierItem.h"
#include "screens/TrayStatus.h"
#include "space/qt/LowSpaceModel.h"
#include "space/qt/SpaceStatus.h"
#include "space/qt/StorageSurveyModel.h"

namespace bv {

DesktopShell::DesktopShell(AppModel& model, QDBusConnection bus, QObject* parent) : QObject(parent), model_(model) {
    status_ = new TrayStatus(model.context(), *model.room<SpaceStatus>(), *model.room<LowSpaceModel>(),
                             *model.room<SmartCleanModel>(), *model.room<StorageSurveyModel>(),
                             *model.folderRules(), this);
    item_ = new StatusNotifierItem(std::move(bus), this);
    item_->setIconName(QIcon::hasThemeIcon(QStringLiteral("brimvale")) ? QStringLiteral("brimvale")
                                                                      : QStringLiteral("drive-harddisk"));
    connect(status_, &TrayStatus::labelChanged, this, &DesktopShell::updateTrayText);
    updateTrayText();

    connect(item_, &StatusNotifierItem::activated, this, &DesktopShell::togglePopover);
    connect(item_, &StatusNotifierItem::contextMenuRequested, this, [this](QPoint at) {
        if (!popover_) togglePopover(at);
    });
    connect(item_, &StatusNotifierItem::secondaryActivated, this, [this] { showMainWindow(); });

    connect(status_, &TrayStatus::refreshRequested, &model_, &AppModel::refresh);
    connect(status_, &TrayStatus::openWindowRequested, this, [this] { showMainWindow(); });
    connect(status_, &TrayStatus::settingsRequested, this, &DesktopShell::openSettings);
    // The preview opens in the main window; the window takes the request when it appears.
    connect(status_, &TrayStatus::cleanNowRequested, &model_, &AppModel::requestCleanupSheet);
    connect(status_, &TrayStatus::quitRequested, this, [this] {
        closePopover();
        model_.noteSessionEnd();
        QCoreApplication::quit();
    });
    // A notification, a link or a second start asks for the window.
    connect(&model_, &AppModel::raiseWindowRequested, this, [this] { showMainWindow(); });
    qApp->installEventFilter(this);
}

DesktopShell::~DesktopShell() {
    qApp->removeEventFilter(this);
    releasePopover();
    engine_.reset();
}

bool DesktopShell::startTray() { return item_->start(); }

bool DesktopShell::keepsRunningInTray() const { return item_->hostAvailable(); }

void DesktopShell::updateTrayText() { item_->setText(status_->label(), status_->shownLabel()); }

bool DesktopShell::ensureMainEngine(bool visible) {
    if (engine_) return mainWindow_ != nullptr;
    engine_ = std::make_unique<QQmlApplicationEngine>();
    if (!visible) engine_->setInitialProperties({{QStringLiteral("visible"), false}});
    mainWindow_ = loadMainWindow(*engine_, model_);
    return mainWindow_ != nullptr;
}

QQuickWindow* DesktopShell::showMainWindow() {
    if (!ensureMainEngine(true)) return nullptr;
    mainWindow_->show();
    mainWindow_->raise();
    mainWindow_->requestActivate();
    return mainWindow_;
}

void DesktopShell::openSettings() {
    const bool hadWindow = mainWindow_ && mainWindow_->isVisible();
    if (!ensureMainEngine(hadWindow)) return;
    QObject* root = mainWindow_;
    if (root->metaObject()->indexOfMethod("openSettings()") >= 0) {
        QMetaObject::invokeMethod(root, "openSettings");
        return;
    }
    showMainWindow();
}

// Where any window of ours hides or closes: once no window of the main engine shows, the
// engine goes (with a tray to come back through) or the program ends.
bool DesktopShell::eventFilter(QObject* watched, QEvent* event) {
    if ((event->type() == QEvent::Hide || event->type() == QEvent::Close) && watched->isWindowType() && engine_ &&
        !checkQueued_) {
        checkQueued_ = true;
        QTimer::singleShot(0, this, &DesktopShell::checkMainWindows);
    }
    return QObject::eventFilter(watched, event);
}

void DesktopShell::checkMainWindows() {
    checkQueued_ = false;
    if (!engine_) return;
    for (QWindow* w : QGuiApplication::topLevelWindows())
        if (w->isVisible() && qmlEngine(w) == engine_.get()) return;
    if (keepsRunningInTray()) releaseMainEngine();
    else QCoreApplication::quit();
}

void DesktopShell::releaseMainEngine() {
    if (!engine_) return;
    mainWindow_ = nullptr;
    engine_->clearComponentCache();
    engine_.reset(); // its windows, their scene graphs and every compiled component
    returnFreedMemory();
    emit mainWindowReleased();
}

void DesktopShell::togglePopover(QPoint at) {
    if (popover_) {
        closePopover();
        return;
    }
    registerQmlModules(model_);
    popoverEngine_ = std::make_unique<QQmlEngine>();
    popoverEngine_->addImportPath(QStringLiteral("qrc:/"));
    QJSEngine::setObjectOwnership(status_, QJSEngine::CppOwnership);
    QQmlComponent component(popoverEngine_.get(), QUrl(QStringLiteral("qrc:/Brimvale/TrayPopover.qml")));
    QObject* made = component.createWithInitialProperties({{QStringLiteral("status"), QVariant::fromValue(status_)}});
    popover_ = qobject_cast<QQuickWindow*>(made);
    if (!popover_) {
        qWarning("%s", qPrintable(component.errorString()));
        delete made;
        popoverEngine_.reset();
        return;
    }
    // Beside the click, inside the screen: above it on a bottom panel, below it on a top one.
    QScreen* screen = QGuiApplication::screenAt(at);
    if (!screen) screen = QGuiApplication::primaryScreen();
    const QRect area = screen ? screen->availableGeometry() : QRect(0, 0, 1920, 1080);
    const int w = popover_->width();
    const int h = popover_->height();
    int x = std::clamp(at.x() - w / 2, area.left(), std::max(area.left(), area.right() - w));
    int y = at.y() > area.center().y() ? at.y() - h - 4 : at.y() + 4;
    y = std::clamp(y, area.top(), std::max(area.top(), area.bottom() - h));
    popover_->setPosition(x, y);
    connect(popover_, &QWindow::visibleChanged, this, [this](bool shown) {
        if (!shown) QTimer::singleShot(0, this, &DesktopShell::releasePopover);
    });
    popover_->show();
    popover_->requestActivate();
}

void DesktopShell::closePopover() {
    if (popover_) popover_->close();
}

void DesktopShell::releasePopover() {
    if (!popover_ && !popoverEngine_) return;
    delete popover_;
    popover_ = nullptr;
    popoverEngine_.reset();
    returnFreedMemory();
    emit popoverClosed();
}

// Qt's and QML's heap is handed back to the system, or the freed pages stay resident.
void DesktopShell::returnFreedMemory() { malloc_trim(0); }

} // namespace bv
