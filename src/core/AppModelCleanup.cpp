// The model's side of the clean-up preview and of folder access: the plan on show, the
// entries the user unticked, the sheet, and which standing folders can be read.
#include "core/AppModel.h"

namespace bv {

// ---- folder access ------------------------------------------------------------------------

FolderAccess& AppModel::folderAccess() {
    if (!folderAccess_) folderAccess_.emplace(store_);
    return *folderAccess_;
}

// Start-up: bring the granted folders back.
void AppModel::restoreFolderAccess() { folderAccess().restoreAll(); }

// After start and after each refresh: which standing folders can be read now.
void AppModel::computeFolderState() {
    auto state = folderAccess().accessState();
    if (state == folderState_) return;
    folderState_ = std::move(state);
    emit folderStateChanged();
}

bool AppModel::grantFolderAccess(const QString& key, const QString& chosenFolder) {
    const auto chosen = chosenFolder.isEmpty() ? std::nullopt : std::optional(chosenFolder.toStdString());
    if (!folderAccess().grant(key.toStdString(), chosen)) return false;
    refresh();
    computeFolderState();
    return true;
}

QVariantMap AppModel::folderStateMap() const {
    return {{"desktopReadable", folderState_.desktopReadable},
            {"downloadsReadable", folderState_.downloadsReadable},
            {"homeReadable", folderState_.homeReadable},
            {"desktopPath", QString::fromStdString(folderState_.desktopPath)},
            {"downloadsPath", QString::fromStdString(folderState_.downloadsPath)},
            {"homePath", QString::fromStdString(folderState_.homePath)}};
}

// ---- the preview ----------------------------------------------------------------------------

void AppModel::setCleanupPlan(std::optional<CleanupPlan> plan) {
    if (plan == cleanupPlan_) return;
    cleanupPlan_ = std::move(plan);
    emit cleanupPlanChanged();
}

bool AppModel::presentCleanupPlan(CleanupPlan plan, CleanupSheetMode mode) {
    if (auto error = preview::previewError(plan)) {
        setErrorMessage(std::move(error));
        return false;
    }
    setCleanupPlan(std::move(plan));
    if (!cleanupExcluded_.empty()) {
        cleanupExcluded_.clear();
        emit cleanupExcludedChanged();
    }
    if (cleanupSheetMode_ != mode || !isCleanupSheetPresented_) {
        cleanupSheetMode_ = mode;
        isCleanupSheetPresented_ = true;
        emit cleanupSheetChanged();
    }
    // The sheet on screen shows the run's copy of the plan and carries out the run.
    cleanRun_->presentPlan(*cleanupPlan_, mode);
    return true;
}

void AppModel::setCleanupEntryExcluded(const QString& id, bool excluded) {
    const std::string key = id.toStdString();
    const bool changed = excluded ? cleanupExcluded_.insert(key).second : cleanupExcluded_.erase(key) > 0;
    if (changed) emit cleanupExcludedChanged();
}

void AppModel::dismissCleanupSheet() {
    if (!isCleanupSheetPresented_) return;
    isCleanupSheetPresented_ = false;
    emit cleanupSheetChanged();
}

std::optional<std::vector<CleanupEntry>> AppModel::entriesForCleaning() {
    if (auto error = preview::cleanError(cleanupPlan_, cleanupExcluded_)) {
        setErrorMessage(std::move(error));
        return std::nullopt;
    }
    return preview::entriesToClean(*cleanupPlan_, cleanupExcluded_);
}

QString AppModel::cleanupSheetModeText() const {
    return QString::fromUtf8(textValue(cleanupSheetMode_).data(), static_cast<qsizetype>(textValue(cleanupSheetMode_).size()));
}

QStringList AppModel::cleanupExcludedList() const {
    QStringList out;
    for (const auto& id : cleanupExcluded_) out << QString::fromStdString(id);
    return out;
}

} // namespace bv
