#include "guidance/FirstRunItems.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <map>

#include "clean/DevScanRow.h"
#include "sort/FileSample.h"

namespace bv {

namespace {

constexpr std::int64_t kOldDownloadMinBytes = 1'000'000;
constexpr auto kInstallerAge = std::chrono::hours(24 * 7);
constexpr auto kOldDownloadAge = std::chrono::hours(24 * 90);

std::string lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string lastComponent(const std::string& path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

bool allDigits(const std::string& text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool isInstallerName(const std::string& name) {
    static const std::array<const char*, 13> kinds = {".deb", ".rpm", ".appimage", ".flatpakref", ".flatpak", ".snap",
                                                      ".run", ".iso", ".img", ".dmg", ".pkg", ".exe", ".msi"};
    const std::string n = lower(name);
    return std::any_of(kinds.begin(), kinds.end(), [&](const char* ext) {
        const std::string e(ext);
        return n.size() > e.size() && n.compare(n.size() - e.size(), e.size(), e) == 0;
    });
}

// How old a download is: its content's date. The status-change time that stands in for the
// arrival date moves with every rename or permission change, so it would make old files young.
TimePoint arrivedAt(const FileSample& s) {
    if (s.modified) return *s.modified;
    return s.added.value_or(TimePoint{});
}

FirstRunItem downloadItem(const FileSample& s, const std::string& downloads, const char* category, const char* title) {
    FirstRunItem item;
    item.id = std::string(category) + "-" + s.name;
    item.categoryID = category;
    item.categoryTitle = title;
    item.title = s.name;
    item.path = s.path;
    item.bytes = s.size;
    item.safety = FirstRunItems::kSafetyMovesToTrash;
    item.allowRoot = downloads;
    return item;
}

} // namespace

std::vector<FirstRunItem> FirstRunItems::fromDeveloperRows(const std::vector<DevScanRow>& rows) {
    std::vector<FirstRunItem> items;
    for (const auto& row : rows) {
        if (!row.selectable || row.kind != DevRowKind::cleanable || row.bytes < 1) continue;
        const std::string name = lower(lastComponent(row.path));
        if (name == "cachedir.tag" || name == ".ds_store" || row.id == "sim-unavailable") continue;
        FirstRunItem item;
        item.id = "developer-" + row.id;
        item.categoryID = "developer";
        item.categoryTitle = "Developer caches";
        item.title = row.title;
        item.path = row.path;
        item.bytes = row.bytes;
        item.safety = row.optIn ? kSafetyMovesToTrash : kSafetyComesBack;
        item.allowRoot = row.allowRoot;
        item.toolCommand = row.toolCommand;
        item.selected = !row.optIn;
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<FirstRunItem> FirstRunItems::fromLeftovers(const std::vector<Leftover>& leftovers) {
    std::vector<FirstRunItem> items;
    for (const auto& found : leftovers) {
        if (found.bytes < 1) continue;
        FirstRunItem item;
        item.id = "leftovers-" + found.path;
        item.categoryID = "leftovers";
        item.categoryTitle = "App leftovers";
        item.title = found.title;
        item.path = found.path;
        item.bytes = found.bytes;
        item.safety = kSafetyMovesToTrash;
        item.allowRoot = found.allowRoot;
        items.push_back(std::move(item));
    }
    return items;
}

std::vector<FirstRunItem> FirstRunItems::fromDownloads(const std::vector<FileSample>& samples,
                                                       const std::string& downloads, TimePoint now) {
    std::vector<FirstRunItem> installers, repeats, old;
    std::map<std::string, const FileSample*> byName;
    for (const auto& s : samples)
        if (!s.isDirectory) byName[s.name] = &s;
    for (const auto& s : samples) {
        if (s.isDirectory || s.size < 1) continue;
        if (isInstallerName(s.name) && arrivedAt(s) < now - kInstallerAge) {
            installers.push_back(downloadItem(s, downloads, "installers", "Old installers and disk images"));
            continue;
        }
        const bool isRepeat = std::any_of(byName.begin(), byName.end(), [&](const auto& entry) {
            const FileSample& original = *entry.second;
            return original.name != s.name && original.size == s.size && isRepeatName(s.name, original.name) &&
                   sameContents(original.path, s.path);
        });
        if (isRepeat) {
            repeats.push_back(downloadItem(s, downloads, "duplicates", "Repeated downloads"));
            continue;
        }
        if (s.size >= kOldDownloadMinBytes && arrivedAt(s) < now - kOldDownloadAge)
            old.push_back(downloadItem(s, downloads, "downloads", "Old downloads"));
    }
    std::vector<FirstRunItem> items = std::move(installers);
    items.insert(items.end(), repeats.begin(), repeats.end());
    items.insert(items.end(), old.begin(), old.end());
    return items;
}

std::vector<FirstRunCategoryTotal> FirstRunItems::totals(const std::vector<FirstRunItem>& items) {
    std::vector<FirstRunCategoryTotal> lines;
    for (const auto& item : items) {
        const bool fromDownloads =
            item.categoryID == "installers" || item.categoryID == "duplicates" || item.categoryID == "downloads";
        const std::string id = fromDownloads ? "downloads" : item.categoryID;
        auto line = std::find_if(lines.begin(), lines.end(), [&](const auto& l) { return l.id == id; });
        if (line == lines.end()) {
            lines.push_back({id, fromDownloads ? "Old installers and downloads" : item.categoryTitle, 0, item.safety});
            line = lines.end() - 1;
        }
        line->bytes += item.bytes;
        // A line that holds anything that only moves to the Trash says so.
        if (item.safety == kSafetyMovesToTrash) line->safety = kSafetyMovesToTrash;
    }
    return lines;
}

std::int64_t FirstRunItems::sum(const std::vector<FirstRunItem>& items) {
    std::int64_t total = 0;
    for (const auto& item : items) total += item.bytes;
    return total;
}

bool FirstRunItems::isRepeatName(const std::string& copy, const std::string& original) {
    if (copy.size() > original.size() + 1 && copy.compare(0, original.size() + 1, original + ".") == 0 &&
        allDigits(copy.substr(original.size() + 1)))
        return true; // "report.pdf.1"
    const auto dot = original.find_last_of('.');
    const bool hasExtension = dot != std::string::npos && dot > 0;
    const std::string stem = hasExtension ? original.substr(0, dot) : original;
    const std::string ext = hasExtension ? original.substr(dot) : std::string();
    if (copy.size() <= original.size() || copy.compare(0, stem.size(), stem) != 0) return false;
    if (copy.compare(copy.size() - ext.size(), ext.size(), ext) != 0) return false;
    std::string middle = copy.substr(stem.size(), copy.size() - stem.size() - ext.size());
    if (!middle.empty() && middle.front() == ' ') middle.erase(0, 1);
    return middle.size() >= 3 && middle.front() == '(' && middle.back() == ')' &&
           allDigits(middle.substr(1, middle.size() - 2));
}

bool FirstRunItems::sameContents(const std::string& a, const std::string& b) {
    std::ifstream fa(a, std::ios::binary), fb(b, std::ios::binary);
    if (!fa || !fb) return false;
    std::array<char, 64 * 1024> ba{}, bb{};
    while (true) {
        fa.read(ba.data(), ba.size());
        fb.read(bb.data(), bb.size());
        const auto na = fa.gcount(), nb = fb.gcount();
        if (na != nb || !std::equal(ba.begin(), ba.begin() + na, bb.begin())) return false;
        if (na < static_cast<std::streamsize>(ba.size())) return true; // both ended together
    }
}

} // namespace bv
