#pragma once
#include <QObject>
#include <QString>

namespace bv {

// Names shared by the notifications we post and the router that reads the clicks on them.
namespace notification {
inline constexpr const char* kLowSpaceCategory = "low-space";      // category and request name
inline constexpr const char* kReviewCleanAction = "review-clean";  // the button on a low-space alert
inline constexpr const char* kReviewCleanTitle = "Review & Clean";
inline constexpr const char* kPreviewCleanupAction = "preview-cleanup"; // accepted like review-clean
// The freedesktop key for a click on the notification itself.
inline constexpr const char* kDefaultAction = "default";
} // namespace notification

// Decides what a click on one of our notifications does. One shared instance lives for the
// whole process; whoever can open the clean-up preview (the main window's owner) listens
// to brimvalePreviewCleanup, which stands in for a process-wide notification.
class NotificationRouter : public QObject {
    Q_OBJECT
public:
    [[nodiscard]] static NotificationRouter& shared();

    // The review actions, or a click on a low-space alert, post brimvalePreviewCleanup and
    // give true. Anything else (another category's click, an unknown action) does nothing.
    bool route(const QString& actionIdentifier, const QString& category);

signals:
    void brimvalePreviewCleanup();
};

} // namespace bv
