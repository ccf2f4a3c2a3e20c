#include "diagnostics/DeploymentConfig.h"

#include <cstdlib>
#include <sstream>
#include <utility>

#include "foundation/FileIO.h"
#include "foundation/Json.h"
#include "platform/XdgPaths.h"

namespace bv {

namespace {

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    const auto last = text.find_last_not_of(" \t\r\n");
    return text.substr(first, last - first + 1);
}

} // namespace

std::vector<std::string> DeploymentConfig::searchFiles() {
    std::vector<std::string> files{XdgPaths::appConfigDir() + "/deployment.json"};
    const char* dirs = std::getenv("XDG_CONFIG_DIRS");
    std::istringstream list((dirs && *dirs) ? dirs : "/etc/xdg");
    for (std::string dir; std::getline(list, dir, ':');)
        if (!dir.empty()) files.push_back(dir + "/brimvale/deployment.json");
    return files;
}

DeploymentConfig DeploymentConfig::load() { return loadFrom(searchFiles()); }

DeploymentConfig DeploymentConfig::loadFrom(const std::vector<std::string>& files) {
    DeploymentConfig config;
    const std::pair<const char*, std::string DeploymentConfig::*> keys[] = {
        {"updateFeedURL", &DeploymentConfig::updateFeedURL}, {"updatePublicKey", &DeploymentConfig::updatePublicKey},
        {"supportEmail", &DeploymentConfig::supportEmail},   {"supportURL", &DeploymentConfig::supportURL},
        {"privacyURL", &DeploymentConfig::privacyURL},       {"termsURL", &DeploymentConfig::termsURL},
    };
    for (const auto& file : files) {
        const auto text = readWholeFile(file);
        const auto json = text ? parseJson(*text) : std::nullopt;
        if (!json || !json->is_object()) continue;
        for (const auto& [key, field] : keys) {
            if (!(config.*field).empty()) continue;
            const auto it = json->find(key);
            if (it != json->end() && it->is_string()) config.*field = trimmed(it->get<std::string>());
        }
    }
    return config;
}

} // namespace bv
