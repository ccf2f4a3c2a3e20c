#include "autopilot/FolderRuleDraft.h"

#include "clean/DevCacheCatalog.h"
#include "foundation/PhraseText.h"

namespace bv {
namespace {

std::vector<std::string> commaPieces(const std::string& text) {
    std::vector<std::string> pieces;
    size_t begin = 0;
    while (begin <= text.size()) {
        size_t end = text.find(',', begin);
        if (end == std::string::npos) end = text.size();
        std::string piece = trimmedWhitespace(std::string_view(text).substr(begin, end - begin));
        if (!piece.empty()) pieces.push_back(std::move(piece));
        begin = end + 1;
    }
    return pieces;
}

std::string joined(const std::vector<std::string>& items) {
    std::string out;
    for (const auto& item : items) out += (out.empty() ? "" : ", ") + item;
    return out;
}

} // namespace

FolderRuleDraft FolderRuleDraft::fresh(CleanSchedule schedule) {
    FolderRuleDraft draft;
    draft.schedule = schedule;
    return draft;
}

std::vector<std::string> FolderRuleDraft::names() const { return commaPieces(namesText); }

std::vector<std::string> FolderRuleDraft::extensions() const {
    std::vector<std::string> out;
    for (const auto& piece : commaPieces(extensionsText)) {
        std::string value = lowercased(trimmedOf(piece, "*."));
        if (!value.empty()) out.push_back(std::move(value));
    }
    return out;
}

std::optional<std::string> FolderRuleDraft::globPattern() const {
    std::string trimmed = trimmedWhitespace(glob);
    if (trimmed.empty()) return std::nullopt;
    return trimmed;
}

std::optional<std::int64_t> FolderRuleDraft::age() const {
    return useAge ? std::optional<std::int64_t>(minimumAgeDays) : std::nullopt;
}

std::optional<std::int64_t> FolderRuleDraft::newestToKeep() const {
    return useKeepNewest ? std::optional<std::int64_t>(keepNewest) : std::nullopt;
}

bool FolderRuleDraft::saysWhatToRemove() const {
    return !names().empty() || !extensions().empty() || globPattern() || age() || newestToKeep();
}

void FolderRuleDraft::apply(const ParsedFolderRule& reading) {
    parsed = reading;
    parseError.reset();
    namesText = joined(reading.names);
    extensionsText = joined(reading.extensions);
    useAge = reading.minimumAgeDays.has_value();
    if (reading.minimumAgeDays) minimumAgeDays = *reading.minimumAgeDays;
    useKeepNewest = reading.keepNewest.has_value();
    if (reading.keepNewest) keepNewest = *reading.keepNewest;
    directoriesOnly = reading.directoriesOnly;
    scope = reading.suggestedScope;
}

std::optional<std::string> previewCheckMessage(const FolderRuleDraft& draft, const std::string& home) {
    if (!draft.parentPath || draft.parentPath->empty()) return "Choose a folder first.";
    if (!draft.saysWhatToRemove()) return "Say what to remove: a name, a file type, or an age.";
    if (DevCacheCatalog::isUnsafeRuleFolder(*draft.parentPath, home))
        return "That folder is kept safe. Pick a project folder instead.";
    return std::nullopt;
}

std::optional<std::string> directPreviewCheckMessage(const FolderRuleDraft& draft, const std::string& home) {
    if (!draft.parentPath || draft.parentPath->empty() || !draft.saysWhatToRemove())
        return "Choose a folder and what to remove, such as a name, a file type, or an age.";
    if (DevCacheCatalog::isUnsafeRuleFolder(*draft.parentPath, home))
        return "That folder is kept safe. Pick a project folder, then preview again.";
    return std::nullopt;
}

} // namespace bv
