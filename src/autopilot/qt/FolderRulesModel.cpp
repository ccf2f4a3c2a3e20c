#include "autopilot/qt/FolderRulesModel.h"

#include "core/qt/FeatureContext.h"
#include "core/qt/Settings.h"

namespace bv {

FolderRulesModel::FolderRulesModel(const FeatureContext& context, QObject* parent) : QObject(parent), ctx_(context) {
    if (ctx_.live) rules_ = loadFolderRules(ctx_.store);
    // The open builder follows a new default schedule at once.
    connect(&ctx_.settings, &Settings::defaultFolderScheduleChanged, this, [this] {
        draft_.schedule = ctx_.settings.value().defaultFolderSchedule;
        emit draftChanged();
    });
}

void FolderRulesModel::setFolderRules(std::vector<FolderWatchRule> rules) {
    if (rules == rules_) return;
    rules_ = std::move(rules);
    if (ctx_.live) saveFolderRules(ctx_.store, rules_);
    emit folderRulesChanged();
}

} // namespace bv
