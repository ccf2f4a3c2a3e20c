#include "clean/SmartCleanLayout.h"
#include "foundation/AsciiCase.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "clean/DevCacheCatalog.h"

namespace bv {
namespace {

// Marker files count as small whatever their size.
bool isMarkerFile(const std::string& path) {
    const std::string last = asciiUppercased(path.substr(path.rfind('/') + 1));
    return last == "CACHEDIR.TAG" || last == ".DS_STORE";
}

bool isSmall(const DevScanRow& row) { return isMarkerFile(row.path) || row.bytes < SmartCleanLayout::kLargeBytes; }

const char* safetyWord(const DevScanRow& row) {
    if (row.id == "sim-unavailable") return SmartCleanLayout::kSafetySimulatorTool;
    return row.optIn ? SmartCleanLayout::kSafetyTrash : SmartCleanLayout::kSafetyComesBack;
}

} // namespace

SmartCleanLayout::Family SmartCleanLayout::familyOf(const DevScanRow& row) {
    const std::string& id = row.id;
    auto is = [&](std::initializer_list<const char*> ids) {
        return std::any_of(ids.begin(), ids.end(), [&](const char* x) { return id == x; });
    };
    if (is({"derived", "archives", "device-support"})) return {id, row.title};
    if (id == "sim-caches") return {"simulator", "Simulator"};
    if (id == "cocoapods") return {"cocoapods", "CocoaPods"};
    if (is({"npm", "pnpm", "pip"})) return {id, id};
    if (id.starts_with("gradle")) return {"gradle", "Gradle"};
    if (id.starts_with("yarn")) return {"yarn", "Yarn"};
    if (id.starts_with("cargo")) return {"cargo", "Cargo"};
    if (id == "go") return {"go", "Go"};
    if (id.starts_with("node-") || id == "nvm") return {"node", "Node"};
    if (id == "pub") return {"pub", "Dart"};
    if (id == "homebrew") return {"homebrew", "Homebrew"};
    if (id.starts_with("expo")) return {"expo", "Expo"};
    if (id == "minikube") return {"minikube", "Minikube"};
    if (id.starts_with("playwright")) return {"playwright", "Playwright"};
    if (id == "cypress") return {"cypress", "Cypress"};
    if (id.starts_with("pdm")) return {"pdm", "pdm"};
    if (is({"poetry", "python-bytecode"})) return {"python", "Python"};
    if (is({"typescript-cache", "esbuild-cache"})) return {"node-tools", "Node build tools"};
    if (is({"watch-device-support", "tv-device-support"})) return {"device-support-other", "watchOS and tvOS device symbols"};
    if (id == "sim-unavailable") return {"simulator-unavailable", "Unavailable simulators"};
    if (id.starts_with("rustup") || id == "sccache") return {"rust", "Rust"};
    if (id.starts_with("updater-")) return {"updaters", "App update downloads"};
    if (id.starts_with("conda-")) return {"conda", "Conda"};
    if (is({"vscode-vsix", "cursor-vsix"})) return {"editor-vsix", "Editor extension downloads"};
    if (is({"electron", "electron-builder"})) return {"electron", "Electron"};
    if (is({"xcode-previews", "xcode-docs"})) return {"xcode-extras", "Xcode previews and docs"};
    if (id.starts_with("cache-")) return {"other-cache", "Tool caches (~/.cache)"};
    return {id, row.title};
}

bool SmartCleanLayout::isRecommended(const DevScanRow& row) {
    return row.selectable && row.kind == DevRowKind::cleanable && !row.optIn && row.bytes >= kLargeBytes &&
           !isMarkerFile(row.path);
}

void SmartCleanLayout::selectRecommended(std::vector<DevScanRow>& rows) {
    for (auto& row : rows)
        if (isRecommended(row)) row.selected = true;
}

std::vector<SmartCleanLayout::Card> SmartCleanLayout::cards(const std::vector<DevScanRow>& rows, bool showSmallItems) {
    // Families in the order their first row appears, so equal totals keep a stable order.
    std::vector<Card> out;
    std::map<std::string, std::size_t> index;
    std::map<std::string, std::vector<const DevScanRow*>> members;
    for (const auto& row : rows) {
        const Family family = familyOf(row);
        if (!index.contains(family.key)) {
            index[family.key] = out.size();
            out.push_back(Card{family.key, family.title, {}, {}, 0, std::nullopt, {}, 0});
        }
        members[family.key].push_back(&row);
    }
    const auto bySize = [](const DevScanRow& a, const DevScanRow& b) { return a.bytes > b.bytes; };
    for (auto& card : out) {
        std::vector<DevScanRow> small;
        std::optional<std::string> keptText;
        for (const DevScanRow* row : members[card.id]) {
            const std::string text = asciiLowercased(row->note + " " + row->blockedReason.value_or(""));
            const bool kept = !row->selectable && row->kind == DevRowKind::cleanable &&
                              (text.find("newest") != std::string::npos || text.find("every day") != std::string::npos ||
                               text.find("stays") != std::string::npos);
            if (kept) {
                if (!keptText || text.find("every day") != std::string::npos) keptText = text;
                continue;
            }
            (isSmall(*row) ? small : card.rows).push_back(*row);
            if (row->selectable && row->bytes >= 1) card.totalBytes += row->bytes;
        }
        std::stable_sort(card.rows.begin(), card.rows.end(), bySize);
        std::stable_sort(small.begin(), small.end(), bySize);
        card.hiddenCount = static_cast<int>(small.size());
        if (showSmallItems) card.smallRows = std::move(small);
        if (keptText)
            card.keptLine = keptText->find("every day") != std::string::npos ? "The version you use every day stays."
                                                                              : "The newest copy stays.";
        std::set<std::string> words;
        for (const auto& row : card.rows)
            if (row.selectable) words.insert(safetyWord(row));
        if (words == std::set<std::string>{kSafetySimulatorTool}) card.safety = kSafetySimulatorTool;
        else if (words == std::set<std::string>{kSafetyComesBack}) card.safety = kSafetyComesBack;
        else card.safety = kSafetyTrash;
    }
    std::erase_if(out, [](const Card& c) {
        return c.rows.empty() && c.smallRows.empty() && !c.keptLine && c.hiddenCount == 0;
    });
    std::stable_sort(out.begin(), out.end(), [](const Card& a, const Card& b) { return a.totalBytes > b.totalBytes; });
    return out;
}

CleanupPlan SmartCleanLayout::plan(const std::vector<DevScanRow>& rows, const std::string& home) {
    CleanupPlan plan;
    for (const auto& row : rows) {
        if (row.kind != DevRowKind::cleanable || !row.selected) continue;
        if (row.blockedReason) {
            plan.refusals.push_back(row.title + " was left alone. " + *row.blockedReason);
            continue;
        }
        if (!DevCacheCatalog::isInsideRoot(row.path, row.resolvedPath, row.allowRoot)) {
            plan.refusals.push_back(row.title + " points outside its cache folder, so it was skipped.");
            continue;
        }
        const bool simulators = row.id == "sim-unavailable";
        if (!simulators && !DevCacheCatalog::canCleanCachePath(row.resolvedPath, home, {})) {
            plan.refusals.push_back(row.title + " is protected and was not cleaned.");
            continue;
        }
        CleanupEntry e;
        e.id = row.id;
        e.title = row.title;
        e.path = row.resolvedPath;
        e.bytes = row.bytes;
        e.note = row.note;
        e.group = row.group;
        e.disposition = simulators ? CleanupDisposition::permanent : CleanupDisposition::trash;
        e.symbolName = simulators ? "terminal" : "trash";
        e.allowRoot = row.allowRoot;
        e.origin = CleanupOrigin::devCache;
        e.tier = !row.optIn ? CleanupTier::regenerable
                 : row.id.starts_with("node-") ? CleanupTier::abandonedTool
                                               : CleanupTier::userData;
        plan.entries.push_back(std::move(e));
    }
    return plan;
}

} // namespace bv
