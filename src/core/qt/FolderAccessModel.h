#pragma once
#include <QObject>
#include <QString>
#include <QVariantMap>
#include <QtQml/qqmlregistration.h>

#include "core/FolderAccess.h"
#include "core/FolderAccessState.h"

namespace bv {

// The standing folders (home, Desktop, Downloads) on the GUI thread: the grants restored at
// start, which of them can be read now, and the chooser's answer taken in. Refreshes and
// rules read their locations from here, so a folder the user chose is the one listed.
class FolderAccessModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Folder access belongs to AppModel.")
    Q_PROPERTY(QVariantMap folderState READ folderStateMap NOTIFY folderStateChanged)

public:
    FolderAccessModel(AppPersistence store, QObject* parent = nullptr);

    // Start-up: bring the granted folders back.
    void restore() { access_.restoreAll(); }
    // Which standing folders can be read now; notifies only on a change. Reads the disk:
    // called after start and after each refresh, never per frame.
    void recompute();
    // The screen ran the folder chooser: an empty path means the user cancelled. True when
    // the folder was stored; `granted` then fires so a refresh can follow.
    Q_INVOKABLE bool grantFolderAccess(const QString& key, const QString& chosenFolder);

    [[nodiscard]] FolderAccess& access() { return access_; }
    [[nodiscard]] const FolderAccess& access() const { return access_; }
    [[nodiscard]] const FolderAccessState& folderState() const { return state_; }
    [[nodiscard]] QVariantMap folderStateMap() const;

signals:
    void folderStateChanged();
    void granted();

private:
    FolderAccess access_;
    FolderAccessState state_;
};

} // namespace bv
