#pragma once
#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <optional>
#include <string>

#include "foundation/Dates.h"

class QNetworkAccessManager;
class QNetworkReply;

namespace bv {

struct FeatureContext;

// Update checks: the one network request of the program's own. The feed's address and its
// public key come from the deployment ("deployment.json", DeploymentConfig); with either one
// missing, or in a build made without updates (a distribution package), nothing is ever
// requested and the controls say why. A check fetches the signed feed (UpdateFeed) with a
// transfer timeout and a cap on the answer's size, verifies it on arrival and offers the
// release when it is newer than this program. Automatic checks run from the minute tick at
// most once a day while the user's setting is on; their failures are silent, and only a
// check the user started says why it failed. The setting and the time of the last check
// live in the user defaults. GUI thread only; the request never blocks it.
class Updater : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The updater belongs to AppModel.")
    // Built with updates, and a feed address and key are configured.
    Q_PROPERTY(bool configured READ configured CONSTANT)
    // A check may start now: configured and none under way.
    Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates NOTIFY canCheckForUpdatesChanged)
    Q_PROPERTY(bool automaticallyChecksForUpdates READ automaticallyChecksForUpdates WRITE
                   setAutomaticallyChecksForUpdates NOTIFY automaticallyChecksForUpdatesChanged)
    // What the update controls say: why there are no checks, a check under way, or its outcome.
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    // The newer release a check found, until dismissed; empty otherwise.
    Q_PROPERTY(QString availableVersion READ availableVersion NOTIFY availableChanged)
    Q_PROPERTY(QUrl availableUrl READ availableUrl NOTIFY availableChanged)
    Q_PROPERTY(QString availableNotes READ availableNotes NOTIFY availableChanged)

public:
    static constexpr qint64 kMaxFeedBytes = 1024 * 1024;

    explicit Updater(FeatureContext& context, QObject* parent = nullptr);
    ~Updater() override;

    // False in a build made with BRIMVALE_UPDATES off.
    [[nodiscard]] static bool isBuiltIn();

    // The user's "Check for Updates…": does nothing unless canCheckForUpdates.
    Q_INVOKABLE void checkForUpdates();
    // "Later": the offer goes away until a later check finds it again.
    Q_INVOKABLE void dismissAvailable();

    [[nodiscard]] bool configured() const { return configured_; }
    [[nodiscard]] bool canCheckForUpdates() const { return configured_ && !reply_; }
    [[nodiscard]] bool automaticallyChecksForUpdates() const { return automatic_; }
    void setAutomaticallyChecksForUpdates(bool on);
    [[nodiscard]] QString statusText() const { return statusText_; }
    [[nodiscard]] QString availableVersion() const { return availableVersion_; }
    [[nodiscard]] QUrl availableUrl() const { return availableUrl_; }
    [[nodiscard]] QString availableNotes() const { return availableNotes_; }
    [[nodiscard]] std::optional<TimePoint> lastCheck() const { return lastCheck_; }

    // Seams for tests: how long a silent server is waited for, and the version this program is.
    void setTransferTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }
    void setCurrentVersion(const QString& version) { currentVersion_ = version; }

signals:
    void canCheckForUpdatesChanged();
    void automaticallyChecksForUpdatesChanged();
    void statusTextChanged();
    void availableChanged();
    // A check ended, whatever came of it.
    void checkFinished();

private:
    void checkIfDue();
    void startCheck(bool byUser);
    void finishCheck(QNetworkReply* reply);
    void setStatusText(const QString& text);
    [[nodiscard]] QString idleText() const;

    FeatureContext& ctx_;
    bool configured_ = false;
    bool persistent_ = false; // a live model keeps the setting and the last check
    QString feedUrl_;
    std::string publicKey_;
    QString currentVersion_;
    std::chrono::milliseconds timeout_{15000};
    bool automatic_ = true;
    std::optional<TimePoint> lastCheck_;

    QNetworkAccessManager* network_ = nullptr; // only while a check runs
    QNetworkReply* reply_ = nullptr;           // the check under way
    bool byUser_ = false;
    bool tooLarge_ = false;
    QString statusText_;
    QString availableVersion_;
    QUrl availableUrl_;
    QString availableNotes_;
};

} // namespace bv
