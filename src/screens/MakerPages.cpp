#include "screens/MakerPages.h"

#include "diagnostics/DeploymentConfig.h"

namespace bv {

MakerPages::MakerPages(QObject* parent) : QObject(parent) {
    const DeploymentConfig config = DeploymentConfig::load(); // two small files, once
    support_ = QString::fromStdString(config.supportURL);
    if (support_.isEmpty() && !config.supportEmail.empty())
        support_ = QStringLiteral("mailto:") + QString::fromStdString(config.supportEmail);
    privacy_ = QString::fromStdString(config.privacyURL);
    terms_ = QString::fromStdString(config.termsURL);
}

} // namespace bv
