#include "core/UserDefaults.h"

#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace bv {

UserDefaults::UserDefaults() : path_(XdgPaths::appConfigDir() + "/defaults.json") {}
UserDefaults::UserDefaults(std::string filePath) : path_(std::move(filePath)) {}

Json UserDefaults::readAll() const {
    auto bytes = readWholeFile(path_);
    if (!bytes) return Json::object();
    auto parsed = parseJson(*bytes);
    return parsed && parsed->is_object() ? *parsed : Json::object();
}

std::optional<Json> UserDefaults::value(const std::string& key) const {
    Json all = readAll();
    auto it = all.find(key);
    if (it == all.end()) return std::nullopt;
    return *it;
}

std::optional<std::string> UserDefaults::text(const std::string& key) const {
    auto v = value(key);
    if (!v || !v->is_string()) return std::nullopt;
    return v->get<std::string>();
}

void UserDefaults::setValue(const std::string& key, const Json& value) const {
    Json all = readAll();
    all[key] = value;
    const auto slash = path_.rfind('/');
    if (slash != std::string::npos) makeDirectories(path_.substr(0, slash), 0700);
    (void)writeFileAtomically(path_, encodeJson(all));
}

void UserDefaults::remove(const std::string& key) const {
    Json all = readAll();
    if (all.erase(key) == 0) return;
    (void)writeFileAtomically(path_, encodeJson(all));
}

} // namespace bv
