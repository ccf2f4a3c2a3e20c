#include "core/qt/NotificationRouter.h"

namespace bv {

NotificationRouter& NotificationRouter::shared() {
    static NotificationRouter router;
    return router;
}

bool NotificationRouter::route(const QString& actionIdentifier, const QString& category) {
    using namespace notification;
    const bool review = actionIdentifier == QLatin1String(kReviewCleanAction) ||
                        actionIdentifier == QLatin1String(kPreviewCleanupAction);
    const bool lowSpaceClick =
        actionIdentifier == QLatin1String(kDefaultAction) && category == QLatin1String(kLowSpaceCategory);
    if (!review && !lowSpaceClick) return false;
    emit brimvalePreviewCleanup();
    return true;
}

} // namespace bv
