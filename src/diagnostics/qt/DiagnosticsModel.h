#pragma once
#include <QObject>
#include <QString>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

#include <chrono>
#include <memory>

namespace bv {

struct FeatureContext;
class DiagnosticsMailer;
class HangWatchdog;

// The saved crash and hang reports, as the screens see them: how many there are, "Send
// diagnostics…", and the version and system line for a support request. The reports are
// files in the Diagnostics folder ($XDG_STATE_HOME/Brimvale/Diagnostics); their count is
// read on a worker thread. The hang watchdog of the GUI thread belongs here too, so a hang
// it saves shows in the count. A model without live data has no folder: the count stays 0
// and sending shows nothing.
class DiagnosticsModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Diagnostics belong to AppModel.")
    Q_PROPERTY(int reportCount READ reportCount NOTIFY reportCountChanged)
    // "1 report saved", "3 reports saved", "No reports saved".
    Q_PROPERTY(QString countText READ countText NOTIFY reportCountChanged)
    Q_PROPERTY(QString versionText READ versionText CONSTANT)
    // The system's name and its kernel: "Debian GNU/Linux 12 (bookworm), Linux 6.1.0-18-amd64".
    Q_PROPERTY(QString systemText READ systemText CONSTANT)

public:
    explicit DiagnosticsModel(FeatureContext& context, QObject* parent = nullptr);
    // Reports in exactly this folder (tests); an empty folder means none.
    explicit DiagnosticsModel(const QString& directory, QObject* parent = nullptr);
    ~DiagnosticsModel() override;

    // Mails the reports through the user's mail program, else shows their folder.
    Q_INVOKABLE void sendDiagnostics();
    // Asks for "Brimvale <version>\n<system>" on the clipboard (`copyRequested`).
    Q_INVOKABLE void copyVersionAndSystemInfo();
    Q_INVOKABLE void refreshCount();

    // Watches the application's (GUI) thread for hangs longer than `limit`, from now until
    // the object goes; a second call replaces the first watch.
    void startHangWatch(std::chrono::milliseconds limit = std::chrono::seconds(5));
    // Turns crash payloads left by an earlier run into reports, on a worker, then recounts.
    void collectPendingCrashes();

    [[nodiscard]] int reportCount() const { return reportCount_; }
    [[nodiscard]] QString countText() const { return countTextFor(reportCount_); }
    [[nodiscard]] QString versionText() const;
    [[nodiscard]] QString systemText() const { return systemText_; }
    [[nodiscard]] QString directory() const { return directory_; }
    [[nodiscard]] QString versionAndSystemInfo() const;
    [[nodiscard]] static QString countTextFor(int count);
    [[nodiscard]] DiagnosticsMailer& mailer() const { return *mailer_; }

signals:
    void reportCountChanged();
    // The text to put on the clipboard; the GUI does it (this layer has no clipboard).
    void copyRequested(const QString& text);
    // No file manager answered: the GUI opens the folder its own way.
    void openFolderRequested(const QUrl& folder);

private:
    QString directory_;
    QString systemText_;
    QString systemName_;
    int reportCount_ = 0;
    quint64 countToken_ = 0;
    DiagnosticsMailer* mailer_ = nullptr;
    std::unique_ptr<HangWatchdog> watchdog_;
    std::unique_ptr<QObject> hangWatchLink_; // owns the event loop connections that feed it
};

} // namespace bv
