#include "core/qt/FolderAccessModel.h"

#include "core/qt/QtText.h"

namespace bv {

FolderAccessModel::FolderAccessModel(AppPersistence store, QObject* parent)
    : QObject(parent), access_(std::move(store)) {}

void FolderAccessModel::recompute() {
    auto state = access_.accessState();
    if (state == state_) return;
    state_ = std::move(state);
    emit folderStateChanged();
}

bool FolderAccessModel::grantFolderAccess(const QString& key, const QString& chosenFolder) {
    const auto chosen = chosenFolder.isEmpty() ? std::nullopt : std::optional(chosenFolder.toStdString());
    if (!access_.grant(key.toStdString(), chosen)) return false;
    recompute();
    emit granted();
    return true;
}

QVariantMap FolderAccessModel::folderStateMap() const {
    return {{"desktopReadable", state_.desktopReadable},   {"downloadsReadable", state_.downloadsReadable},
            {"homeReadable", state_.homeReadable},         {"desktopPath", q(state_.desktopPath)},
            {"downloadsPath", q(state_.downloadsPath)},    {"homePath", q(state_.homePath)}};
}

} // namespace bv
