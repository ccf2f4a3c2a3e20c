#include "clean/KeptVersions.h"
#include "foundation/AsciiCase.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <vector>

#include "clean/DevCacheCatalog.h"
#include "foundation/FileIO.h"

namespace bv {
namespace {

namespace fs = std::filesystem;

// Names of the direct children of a folder; a folder that can't be listed gives none.
std::vector<std::string> childNames(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    fs::directory_iterator it(folder, ec), end;
    while (!ec && it != end) {
        names.push_back(it->path().filename().string());
        it.increment(ec);
    }
    return names;
}

std::string_view trimmed(std::string_view text, std::string_view drop) {
    const auto first = text.find_first_not_of(drop);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(drop);
    return text.substr(first, last - first + 1);
}

constexpr std::string_view kBlanks = " \t\r\n\v\f";

// A version name as the rules compare it: lower-cased, without a leading "v".
// The default alias, following aliases that name other alias files. Gives nothing when
// there is no default file or the chain runs past its bound.
std::optional<std::string> nvmDefault(const std::string& aliasFolder) {
    constexpr int kMaxSteps = 8;
    std::string name = "default";
    std::optional<std::string> value;
    for (int step = 0; step < kMaxSteps; ++step) {
        // The alias must stay inside the alias folder: no absolute names, no "..".
        if (name.empty() || name.front() == '/' || name.find("..") != std::string::npos) return value;
        const std::string file = aliasFolder + "/" + name;
        std::error_code ec;
        if (!fs::is_regular_file(file, ec)) return value;
        const auto text = readWholeFile(file);
        if (!text) return value;
        value = std::string(trimmed(*text, kBlanks));
        name = *value;
    }
    return value;
}

} // namespace

std::set<std::string> keptNodeVersions(std::string_view home) {
    const std::string homeText = DevCacheCatalog::standardizedPath(home);
    std::vector<std::string> installed;
    for (const auto& name : childNames(homeText + "/.nvm/versions/node")) installed.push_back(versionKey(name));

    std::set<std::string> kept;
    if (const auto value = nvmDefault(homeText + "/.nvm/alias")) {
        const std::string wanted = versionKey(trimmed(*value, kBlanks));
        for (const auto& version : installed)
            if (!wanted.empty() && (version == wanted || version.starts_with(wanted + "."))) kept.insert(version);
    }
    if (kept.empty()) kept.insert(installed.begin(), installed.end());
    return kept;
}

std::set<std::string> rustupSettingsValues(std::string_view settingsText) {
    std::set<std::string> values;
    std::string section;
    bool inSection = false;
    std::size_t start = 0;
    while (start <= settingsText.size()) {
        auto end = settingsText.find('\n', start);
        if (end == std::string_view::npos) end = settingsText.size();
        const std::string_view line = trimmed(settingsText.substr(start, end - start), kBlanks);
        start = end + 1;
        if (line.starts_with("[")) {
            section = std::string(trimmed(line, std::string(kBlanks) + "[]"));
            inSection = true;
            continue;
        }
        const auto equals = line.find('=');
        if (equals == std::string_view::npos) continue;
        const std::string quotesAndBlanks = std::string(kBlanks) + "\"";
        const std::string_view key = trimmed(line.substr(0, equals), quotesAndBlanks);
        const std::string_view value = trimmed(line.substr(equals + 1), quotesAndBlanks);
        if (value.empty()) continue;
        if ((!inSection && key == "default_toolchain") || (inSection && section == "overrides"))
            values.insert(std::string(value));
    }
    return values;
}

std::set<std::string> keptToolchains(std::string_view home) {
    const std::string homeText = DevCacheCatalog::standardizedPath(home);
    const auto folders = childNames(homeText + "/.rustup/toolchains");
    const std::set<std::string> everything(folders.begin(), folders.end());

    const auto text = readWholeFile(homeText + "/.rustup/settings.toml");
    if (!text) return everything;
    const auto values = rustupSettingsValues(*text);
    if (values.empty()) return everything;

    std::set<std::string> kept;
    for (const auto& folder : folders)
        for (const auto& value : values)
            if (folder == value || folder.starts_with(value + "-")) kept.insert(folder);
    return kept.empty() ? everything : kept;
}

std::string versionKey(std::string_view name) {
    std::string key = asciiLowercased(name);
    if (!key.empty() && key.front() == 'v') key.erase(0, 1);
    return key;
}

} // namespace bv
