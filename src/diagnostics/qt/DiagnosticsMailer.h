#pragma once
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace bv {

// "Send diagnostics…": a draft email with the reports attached, through `xdg-email`, which
// opens the user's own mail program; nothing is sent without the user. With no report or no
// valid address, or when `xdg-email` can't start or fails, the Diagnostics folder is shown
// instead with the reports selected (the file manager over the session bus,
// org.freedesktop.FileManager1), and when no file manager answers there, `openFolderRequested`
// asks the GUI to open the folder. Nothing here ever reports an error to the user.
// GUI thread only; it never blocks: the process and the bus call are asynchronous.
class DiagnosticsMailer : public QObject {
    Q_OBJECT

public:
    // What one send needs, gathered off the GUI thread.
    struct Request {
        QString directory;    // the Diagnostics folder
        QStringList reports;  // full paths, newest first
        QString address;      // as configured; "mailto:" is removed here
        QString version;
        QString systemName;   // "Debian GNU/Linux 12 (bookworm)"
    };

    explicit DiagnosticsMailer(QObject* parent = nullptr);

    // The address to write to, "mailto:" removed; empty when it is not one mail address
    // (which also keeps anything that would read as an option away from xdg-email).
    [[nodiscard]] static QString mailAddress(const QString& configured);
    [[nodiscard]] static QString subject();
    [[nodiscard]] static QString body(int count, const QString& version, const QString& systemName);
    // xdg-email's words for the request: subject, body, one --attach per report, address.
    [[nodiscard]] static QStringList xdgEmailArguments(const Request& request);

    void send(const Request& request);

signals:
    // No file manager took the folder over the bus: the GUI opens it its own way.
    void openFolderRequested(const QUrl& folder);
    // A send has ended: `mailed` when xdg-email ran and succeeded, else the folder was shown.
    void finished(bool mailed);

private:
    void showFolder(const Request& request);
};

} // namespace bv
