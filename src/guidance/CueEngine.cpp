#include "guidance/CueEngine.h"

#include <algorithm>
#include <array>

#include "foundation/ByteText.h"

namespace bv {

namespace {
constexpr std::array<CueKey, 4> kAllKeys = {CueKey::reviewClean, CueKey::autoSortSuggestions, CueKey::autopilotFirst,
                                            CueKey::duplicatesFirst};

bool wasSeen(const CueContext& c, CueKey key) { return c.seen.count(std::string(cueKeyName(key))) > 0; }
} // namespace

std::string_view cueKeyName(CueKey key) {
    switch (key) {
    case CueKey::reviewClean: return "reviewClean";
    case CueKey::autoSortSuggestions: return "autoSortSuggestions";
    case CueKey::autopilotFirst: return "autopilotFirst";
    case CueKey::duplicatesFirst: return "duplicatesFirst";
    }
    return "reviewClean";
}

std::optional<CueKey> cueKeyFromName(std::string_view name) {
    for (CueKey key : kAllKeys)
        if (cueKeyName(key) == name) return key;
    return std::nullopt;
}

std::optional<CueKey> chooseCue(const CueContext& c) {
    if (!c.firstRunDone || c.sheetOpen) return std::nullopt;
    if (c.screen == "overview") {
        if (wasSeen(c, CueKey::reviewClean) || c.scanning || c.reclaimableBytes < 1 || c.hasCleanedEver)
            return std::nullopt;
        return CueKey::reviewClean;
    }
    if (c.screen == "rules") {
        if (wasSeen(c, CueKey::autoSortSuggestions) || c.suggestionCount < 1) return std::nullopt;
        return CueKey::autoSortSuggestions;
    }
    if (c.screen == "watchedFolders") {
        if (wasSeen(c, CueKey::autopilotFirst)) return std::nullopt;
        return CueKey::autopilotFirst;
    }
    if (c.screen == "duplicates") {
        if (wasSeen(c, CueKey::duplicatesFirst) || c.hasScannedDuplicates) return std::nullopt;
        return CueKey::duplicatesFirst;
    }
    return std::nullopt;
}

CueText cueText(CueKey key, const CueContext& c) {
    switch (key) {
    case CueKey::reviewClean:
        return {byteText(c.reclaimableBytes) +
                    " can go. Review & Clean is a preview; nothing moves until you confirm.",
                std::string("Review & Clean")};
    case CueKey::autoSortSuggestions:
        return {"These came from the files in your Downloads. Preview shows exactly which files a rule would "
                "touch before anything moves.",
                std::nullopt};
    case CueKey::autopilotFirst:
        return {"Pick a project folder. Deleting build and dist folders older than a week is the classic win, and "
                "it never touches node_modules.",
                std::nullopt};
    case CueKey::duplicatesFirst:
        return {"Press Scan. Matches are confirmed byte for byte, so a result is never a name guess.", std::nullopt};
    }
    return {};
}

bool markCueSeen(std::vector<std::string>& seenCues, CueKey key) {
    const std::string name(cueKeyName(key));
    if (std::find(seenCues.begin(), seenCues.end(), name) != seenCues.end()) return false;
    seenCues.push_back(name);
    return true;
}

} // namespace bv
