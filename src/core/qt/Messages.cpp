#include "core/qt/Messages.h"

#include "core/qt/QtText.h"
#include "platform/PlatformWording.h"

namespace bv {

void Messages::setErrorMessage(std::optional<std::string> message) {
    if (message) message = platformWording(*message); // every alert speaks of this system's places
    if (errorMessage_ == message) return;
    errorMessage_ = std::move(message);
    emit errorMessageChanged();
}

void Messages::setBanner(std::optional<std::string> text) {
    if (text) text = platformWording(*text);
    if (banner_ == text) return;
    banner_ = std::move(text);
    emit bannerChanged();
}

void Messages::setCleanupNotice(std::optional<CleanupNotice> notice) {
    if (cleanupNotice_ == notice) return;
    cleanupNotice_ = std::move(notice);
    emit cleanupNoticeChanged();
}

QString Messages::errorText() const { return q(errorMessage_); }
QString Messages::bannerText() const { return q(banner_); }
QString Messages::cleanupNoticeTitle() const { return cleanupNotice_ ? q(cleanupNotice_->title) : QString(); }
QString Messages::cleanupNoticeMessage() const { return cleanupNotice_ ? q(cleanupNotice_->message) : QString(); }

} // namespace bv
