// The shell's edge towards the desktop: brimvale: links, what a later start hands over, and
// the folder action of file managers.
#include <QFileInfo>
#include <QTimer>

#include "buildwatch/qt/BuildWatchModel.h"
#include "clean/qt/SmartCleanModel.h"
#include "core/qt/BrimvaleLink.h"
#include "core/qt/Messages.h"
#include "core/qt/NotificationCenter.h"
#include "core/qt/NotificationRouter.h"
#include "core/qt/WatchRequests.h"
#include "model/AppModel.h"

namespace bv {

bool AppModel::handleLink(const QUrl& url) {
    const LinkRequest request = interpretLink(url);
    switch (request.kind) {
    case LinkRequest::Kind::none:
        return false;
    case LinkRequest::Kind::watch:
        emit raiseWindowRequested();
        watchRequests_->request(request.path, true);
        return true;
    case LinkRequest::Kind::scan:
        emit raiseWindowRequested();
        if (request.banner) messages_->setBanner(request.banner->toStdString());
        QTimer::singleShot(0, this, &AppModel::runLinkPass);
        return true;
    }
    return false;
}

void AppModel::runLinkPass() {
    emit linkPassStarted();
    if (!loadLiveData_) return;
    smartClean_->scan();
    buildWatch_->checkDue(true);
}

std::optional<QString> AppModel::watchFolderService(const QStringList& paths) {
    for (const QString& path : paths) {
        const QFileInfo info(path);
        if (info.isAbsolute() && info.isDir()) {
            emit raiseWindowRequested();
            watchRequests_->request(info.absoluteFilePath(), false);
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
            // No folder among the items: the window says so, where the user is looking.
            if (auto problem = watchFolderService(arguments.mid(i + 1))) {
                emit raiseWindowRequested();
                messages_->setErrorMessage(problem->toStdString());
            }
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

} // namespace bv
