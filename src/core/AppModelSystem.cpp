// The model's edge towards the desktop: notifications and the clicks on them, brimvale:
// links and what a later start hands over, the folder action of file managers, and the
// login item.
#include "core/AppModel.h"

#include <QDBusConnection>
#include <QFileInfo>
#include <QTimer>

#include "core/LoginItemService.h"
#include "core/qt/BrimvaleLink.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/NotificationRouter.h"

namespace bv {

void AppModel::registerNotifications() {
    const QDBusConnection bus = notificationConnectionName_.isEmpty() ? QDBusConnection::sessionBus()
                                                                      : QDBusConnection(notificationConnectionName_);
    notifications_ = new NotificationCenter(bus, NotificationRouter::shared(), this);
    // The review action or a click on a low-space alert: the window comes forward and the
    // clean-up preview is on its way (requestCleanupSheet raises the window too).
    connect(&NotificationRouter::shared(), &NotificationRouter::brimvalePreviewCleanup, this,
            &AppModel::requestCleanupSheet, Qt::UniqueConnection);
}

// Links and the folder action arrive through the single-instance socket, which the
// application object owns and feeds to handleInstanceArguments; nothing to install here.
void AppModel::installLinkService() {}

void AppModel::postNotification(const std::string& title, const std::string& body) {
    if (notifications_) notifications_->postNotification(QString::fromStdString(title), QString::fromStdString(body));
}

void AppModel::postLowSpaceAlert(const std::string& body) {
    if (notifications_) notifications_->postLowSpaceAlert(QString::fromStdString(body));
}

bool AppModel::handleLink(const QUrl& url) {
    const LinkRequest request = interpretLink(url);
    switch (request.kind) {
    case LinkRequest::Kind::none:
        return false;
    case LinkRequest::Kind::watch:
        emit raiseWindowRequested();
        requestWatch(request.path, true);
        return true;
    case LinkRequest::Kind::scan:
        emit raiseWindowRequested();
        if (request.banner) setBanner(request.banner->toStdString());
        QTimer::singleShot(0, this, [this] { runLinkPass(); });
        return true;
    }
    return false;
}

void AppModel::runLinkPass() {
    emit linkPassStarted();
    if (!loadLiveData_) return;
    scanDeveloperCaches();
    // The old project files scan, Autopilot's and Build Watch's due checks and the forced
    // build suggestion scan follow here as those features land.
}

void AppModel::requestWatch(const QString& path, bool fromLink) {
    // Build Watch's add-a-project flow takes this up; until the user confirms there, the
    // folder is only remembered and nothing is watched.
    pendingWatchPath_ = path;
    pendingWatchFromLink_ = fromLink;
    emit watchRequestChanged();
}

std::optional<QString> AppModel::watchFolderService(const QStringList& paths) {
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.isAbsolute() && info.isDir()) {
            emit raiseWindowRequested();
            requestWatch(info.absoluteFilePath(), false);
            return std::nullopt;
        }
    }
    return QStringLiteral("Choose a folder to watch.");
}

void AppModel::handleInstanceArguments(const QStringList& arguments) {
    bool handled = false;
    for (int i = 0; i < arguments.size(); ++i) {
        const QString& arg = arguments[i];
        if (arg == QLatin1String("--watch-folder")) {
            (void)watchFolderService(arguments.mid(i + 1)); // the sender already told of no folder
            handled = true;
            break;
        }
        if (arg == QLatin1String("--review-clean")) {
            NotificationRouter::shared().route(QString::fromLatin1(notification::kPreviewCleanupAction), {});
            handled = true;
        } else if (arg.startsWith(QLatin1String("brimvale:"))) {
            handled = handleLink(QUrl(arg)) || handled;
        }
    }
    // A plain second start means "show me the window".
    if (!handled) emit raiseWindowRequested();
}

std::optional<std::string> AppModel::applyLoginItem(bool enabled) {
    try {
        LoginItemService::live().setEnabled(enabled);
        return std::nullopt;
    } catch (const std::exception& e) {
        return std::string(e.what());
    }
}

bool AppModel::loginItemEnabled() const {
    return LoginItemService::live().status() == LoginItemService::Status::enabled;
}

QString AppModel::loginItemStatus() const {
    switch (LoginItemService::live().status()) {
    case LoginItemService::Status::enabled: return QStringLiteral("enabled");
    case LoginItemService::Status::requiresApproval: return QStringLiteral("requiresApproval");
    case LoginItemService::Status::off: return QStringLiteral("off");
    }
    return QStringLiteral("off");
}

} // namespace bv
