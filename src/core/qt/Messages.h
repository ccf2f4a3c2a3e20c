#pragma once
#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <optional>
#include <string>

#include "clean/CleanupNotice.h"

namespace bv {

// How the user hears of things: the error line (an alert titled "Something went wrong"), the
// notice after a clean or run, and the one-line banner. One alert is up at a time: the
// screen shows the error first and the notice once the error is dismissed. Setters compare
// before notifying.
class Messages : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Messages belong to AppModel.")
    Q_PROPERTY(QString errorMessage READ errorText NOTIFY errorMessageChanged)
    Q_PROPERTY(QString banner READ bannerText NOTIFY bannerChanged)
    Q_PROPERTY(bool hasCleanupNotice READ hasCleanupNotice NOTIFY cleanupNoticeChanged)
    Q_PROPERTY(QString cleanupNoticeTitle READ cleanupNoticeTitle NOTIFY cleanupNoticeChanged)
    Q_PROPERTY(QString cleanupNoticeMessage READ cleanupNoticeMessage NOTIFY cleanupNoticeChanged)

public:
    using QObject::QObject;

    void setErrorMessage(std::optional<std::string> message);
    void setBanner(std::optional<std::string> text);
    void setCleanupNotice(std::optional<CleanupNotice> notice);
    Q_INVOKABLE void dismissError() { setErrorMessage(std::nullopt); }
    Q_INVOKABLE void dismissCleanupNotice() { setCleanupNotice(std::nullopt); }

    [[nodiscard]] const std::optional<std::string>& errorMessage() const { return errorMessage_; }
    [[nodiscard]] const std::optional<std::string>& banner() const { return banner_; }
    [[nodiscard]] const std::optional<CleanupNotice>& cleanupNotice() const { return cleanupNotice_; }
    [[nodiscard]] QString errorText() const;
    [[nodiscard]] QString bannerText() const;
    [[nodiscard]] bool hasCleanupNotice() const { return cleanupNotice_.has_value(); }
    [[nodiscard]] QString cleanupNoticeTitle() const;
    [[nodiscard]] QString cleanupNoticeMessage() const;

signals:
    void errorMessageChanged();
    void bannerChanged();
    void cleanupNoticeChanged();

private:
    std::optional<std::string> errorMessage_;
    std::optional<std::string> banner_;
    std::optional<CleanupNotice> cleanupNotice_;
};

} // namespace bv
