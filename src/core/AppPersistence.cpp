#include "core/AppPersistence.h"

#include <sys/stat.h>

#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace bv {

AppPersistence AppPersistence::live() {
    std::string base = XdgPaths::dataHome();
    struct stat st{};
    if (base.empty() || (::stat(base.c_str(), &st) != 0 && !makeDirectories(base, 0700))) {
        const char* tmp = std::getenv("TMPDIR");
        base = tmp && *tmp ? tmp : "/tmp";
    }
    AppPersistence p(base + "/Brimvale");
    makeDirectories(*p.directory_, 0700);
    return p;
}

AppPersistence::AppPersistence(std::string directory) : directory_(std::move(directory)) {}

std::string AppPersistence::pathOf(const std::string& fileName) const {
    return directory_ ? *directory_ + "/" + fileName : std::string();
}

void AppPersistence::saveJson(const std::string& fileName, const Json& value) const {
    if (!directory_) return;
    std::string text;
    try {
        text = encodeJson(value);
    } catch (const std::exception&) {
        return;
    }
    (void)writeFileAtomically(pathOf(fileName), text);
}

std::optional<Json> AppPersistence::loadJson(const std::string& fileName) const {
    if (!directory_) return std::nullopt;
    auto bytes = readWholeFile(pathOf(fileName));
    if (!bytes) return std::nullopt;
    return parseJson(*bytes);
}

bool AppPersistence::exists(const std::string& fileName) const {
    if (!directory_) return false;
    struct stat st{};
    return ::stat(pathOf(fileName).c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

std::string AppPersistence::corruptCopyName(const std::string& fileName, TimePoint now) {
    std::string stamp = isoDateText(now);
    for (char& c : stamp)
        if (c == ':') c = '-';
    const auto dot = fileName.rfind('.');
    const std::string stem = dot == std::string::npos ? fileName : fileName.substr(0, dot);
    return stem + ".corrupt-" + stamp + ".json";
}

void AppPersistence::preserveCorruptCopy(const std::string& fileName, TimePoint now) const {
    if (!directory_) return;
    auto bytes = readWholeFile(pathOf(fileName));
    if (!bytes) return;
    (void)writeFileAtomically(pathOf(corruptCopyName(fileName, now)), *bytes);
}

} // namespace bv
