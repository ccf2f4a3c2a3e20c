#include "diagnostics/qt/Updater.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include "core/UserDefaults.h"
#include "core/qt/AppClock.h"
#include "core/qt/FeatureContext.h"
#include "core/qt/QtText.h"
#include "diagnostics/DeploymentConfig.h"
#include "diagnostics/UpdateFeed.h"
#include "diagnostics/UpdateVersion.h"

// Both come from the build (src/model/CMakeLists.txt), for this file only.
#ifndef BRIMVALE_UPDATES
#error "BRIMVALE_UPDATES must be defined by the build"
#endif
#ifndef BRIMVALE_VERSION
#error "BRIMVALE_VERSION must be defined by the build"
#endif

namespace bv {

namespace {

constexpr auto kCheckInterval = std::chrono::hours(24);
const std::string kAutomaticKey = "updates.automaticallyChecks";
const std::string kLastCheckKey = "updates.lastCheck";

} // namespace

bool Updater::isBuiltIn() { return BRIMVALE_UPDATES != 0; }

Updater::Updater(FeatureContext& context, QObject* parent)
    : QObject(parent), ctx_(context), persistent_(context.live), currentVersion_(QStringLiteral(BRIMVALE_VERSION)) {
    if (persistent_) {
        const UserDefaults defaults;
        if (const auto on = defaults.value(kAutomaticKey); on && on->is_boolean()) automatic_ = on->get<bool>();
        if (const auto last = defaults.text(kLastCheckKey)) lastCheck_ = parseIsoDate(*last);
    }
    if (isBuiltIn() && ctx_.live) {
        const auto config = DeploymentConfig::load();
        feedUrl_ = q(config.updateFeedURL);
        publicKey_ = config.updatePublicKey;
        const QUrl url(feedUrl_, QUrl::StrictMode);
        const bool web = url.isValid() && !url.host().isEmpty() &&
                         (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
        configured_ = web && !publicKey_.empty();
    }
    statusText_ = idleText();
    connect(&ctx_.clock, &AppClock::ticked, this, &Updater::checkIfDue);
}

Updater::~Updater() {
    if (!reply_) return;
    disconnect(reply_, nullptr, this, nullptr);
    reply_->abort();
}

QString Updater::idleText() const {
    if (!isBuiltIn()) return QStringLiteral("Updates are managed by your package manager.");
    if (!configured_) return QStringLiteral("No update feed is configured, so Brimvale never checks for updates.");
    return automatic_ ? QStringLiteral("Brimvale checks for updates once a day.")
                      : QStringLiteral("Brimvale checks for updates only when you ask.");
}

void Updater::setStatusText(const QString& text) {
    if (statusText_ == text) return;
    statusText_ = text;
    emit statusTextChanged();
}

void Updater::setAutomaticallyChecksForUpdates(bool on) {
    if (automatic_ == on) return;
    const bool idle = statusText_ == idleText();
    automatic_ = on;
    if (persistent_) UserDefaults().setValue(kAutomaticKey, on);
    emit automaticallyChecksForUpdatesChanged();
    if (idle) setStatusText(idleText());
}

void Updater::checkForUpdates() { startCheck(true); }

void Updater::dismissAvailable() {
    if (availableVersion_.isEmpty()) return;
    availableVersion_.clear();
    availableUrl_.clear();
    availableNotes_.clear();
    emit availableChanged();
}

// From the minute tick: a check when the last one is a day old (or in the future, after
// the clock was set back).
void Updater::checkIfDue() {
    if (!configured_ || !automatic_ || reply_) return;
    const TimePoint now = ctx_.clock.now();
    if (lastCheck_ && *lastCheck_ <= now && now - *lastCheck_ < kCheckInterval) return;
    startCheck(false);
}

void Updater::startCheck(bool byUser) {
    if (!isBuiltIn() || !canCheckForUpdates()) return;
    byUser_ = byUser;
    tooLarge_ = false;
    lastCheck_ = ctx_.clock.now();
    if (persistent_) UserDefaults().setValue(kLastCheckKey, isoDateText(*lastCheck_));

    if (!network_) network_ = new QNetworkAccessManager(this);
    QNetworkRequest request{QUrl(feedUrl_)};
    // Reset by every byte that arrives: a server that stops answering ends the check.
    request.setTransferTimeout(static_cast<int>(timeout_.count()));
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Brimvale/") + currentVersion_);
    QNetworkReply* reply = network_->get(request);
    reply_ = reply;
    // The answer is kept in memory until it ends: more than the cap is not a feed.
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
        if (reply != reply_ || tooLarge_ || (received <= kMaxFeedBytes && total <= kMaxFeedBytes)) return;
        tooLarge_ = true;
        reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply] { finishCheck(reply); });
    if (byUser) setStatusText(QStringLiteral("Checking…"));
    emit canCheckForUpdatesChanged();
}

void Updater::finishCheck(QNetworkReply* reply) {
    reply->deleteLater();
    if (reply != reply_) return;
    reply_ = nullptr;
    // Checks are a day apart: the network stack (its thread, its connections) goes until the next.
    network_->deleteLater();
    network_ = nullptr;

    QString failure;
    std::optional<UpdateFeed> feed;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (tooLarge_) {
        failure = QStringLiteral("the answer is larger than 1 MiB");
    } else if (reply->error() == QNetworkReply::OperationCanceledError || reply->error() == QNetworkReply::TimeoutError) {
        failure = QStringLiteral("the server did not answer in time");
    } else if (status != 0 && (status < 200 || status > 299)) {
        failure = QStringLiteral("the server answered with HTTP status %1").arg(status);
    } else if (reply->error() != QNetworkReply::NoError) {
        failure = QStringLiteral("the server could not be reached (%1)").arg(reply->errorString());
    } else {
        const QByteArray body = reply->readAll();
        auto reading = UpdateFeed::read(std::string_view(body.constData(), static_cast<std::size_t>(body.size())),
                                        publicKey_);
        if (reading.feed) feed = std::move(reading.feed);
        else failure = q(reading.refusal);
    }

    if (feed) {
        const auto offered = UpdateVersion::parse(feed->version); // UpdateFeed::read checked it
        const auto current = UpdateVersion::parse(currentVersion_.toStdString()).value_or(UpdateVersion{});
        if (offered && offered->compare(current) > 0) {
            availableVersion_ = q(feed->version);
            availableUrl_ = QUrl(q(feed->url));
            availableNotes_ = q(feed->notes);
            emit availableChanged();
            setStatusText(QStringLiteral("Brimvale %1 is available.").arg(availableVersion_));
        } else {
            setStatusText(QStringLiteral("Brimvale is up to date."));
        }
    } else if (byUser_) {
        setStatusText(QStringLiteral("Couldn’t check for updates: %1.").arg(failure));
    }
    emit canCheckForUpdatesChanged();
    emit checkFinished();
}

} // namespace bv
