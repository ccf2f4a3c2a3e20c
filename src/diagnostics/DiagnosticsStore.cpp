#include "diagnostics/DiagnosticsStore.h"

#include <dirent.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <utility>

#include "foundation/FileIO.h"
#include "platform/XdgPaths.h"

namespace bv {

namespace {

constexpr std::string_view kExtension = ".json";
constexpr std::size_t kDateLength = 20; // yyyyMMddTHHmmss.SSSZ

bool endsWith(std::string_view text, std::string_view tail) {
    return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

// Report names in the folder, unsorted; empty when it can't be read.
std::vector<std::string> reportNames(const std::string& directory) {
    std::vector<std::string> names;
    DIR* dir = ::opendir(directory.c_str());
    if (!dir) return names;
    while (const dirent* entry = ::readdir(dir)) {
        const std::string_view name = entry->d_name;
        if (name.size() > kExtension.size() && endsWith(name, kExtension) && name.front() != '.')
            names.emplace_back(name);
    }
    ::closedir(dir);
    return names;
}

} // namespace

DiagnosticsStore::DiagnosticsStore(std::string directory, int limit) : directory_(std::move(directory)), limit_(limit) {}

std::string DiagnosticsStore::defaultDirectory() { return XdgPaths::stateHome() + "/Brimvale/Diagnostics"; }

std::string DiagnosticsStore::kindLabel(int crashes, int hangs, int cpuExceptions, int diskWriteExceptions) {
    const std::pair<int, const char*> parts[] = {
        {crashes, "crash"}, {hangs, "hang"}, {cpuExceptions, "cpu"}, {diskWriteExceptions, "diskwrite"}};
    std::string label;
    for (const auto& [count, word] : parts) {
        if (count < 1) continue;
        if (!label.empty()) label += '+';
        label += word;
    }
    return label.empty() ? "diagnostic" : label;
}

std::string DiagnosticsStore::fileDate(std::chrono::system_clock::time_point date) {
    using namespace std::chrono;
    const auto ms = duration_cast<milliseconds>(date.time_since_epoch()).count();
    const auto seconds = static_cast<std::time_t>(ms >= 0 ? ms / 1000 : (ms - 999) / 1000);
    const int millis = static_cast<int>(ms - static_cast<long long>(seconds) * 1000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char text[40];
    std::snprintf(text, sizeof text, "%04d%02d%02dT%02d%02d%02d.%03dZ", parts.tm_year + 1900, parts.tm_mon + 1,
                  parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec, millis);
    return text;
}

std::string DiagnosticsStore::digest(std::string_view data) {
    unsigned char sum[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(data.data(), data.size(), sum, &length, EVP_sha256(), nullptr) != 1) return {};
    std::string hex;
    hex.reserve(length * 2);
    for (unsigned int i = 0; i < length; ++i) {
        char byte[3];
        std::snprintf(byte, sizeof byte, "%02x", sum[i]);
        hex += byte;
    }
    return hex;
}

DiagnosticsStore::SaveResult DiagnosticsStore::save(std::string_view data, const std::string& label,
                                                    std::chrono::system_clock::time_point end,
                                                    std::string* savedPath) const {
    if (!makeDirectories(directory_, 0700)) return SaveResult::failed;
    const std::string sum = digest(data);
    if (sum.empty()) return SaveResult::failed;
    // The same data delivered again (a crash collected at its moment and again at the next
    // start) is a repeat, whatever date or label it came with.
    const std::string tail = "-" + sum;
    for (const auto& name : reportNames(directory_)) {
        if (!endsWith(std::string_view(name).substr(0, name.size() - kExtension.size()), tail)) continue;
        if (savedPath) *savedPath = directory_ + "/" + name;
        return SaveResult::repeat;
    }
    const std::string path = directory_ + "/" + fileDate(end) + "-" + label + tail + std::string(kExtension);
    if (!writeFileAtomically(path, data)) return SaveResult::failed;
    if (savedPath) *savedPath = path;
    const auto reports = list();
    for (std::size_t i = static_cast<std::size_t>(std::max(limit_, 0)); i < reports.size(); ++i)
        ::unlink(reports[i].c_str());
    return SaveResult::saved;
}

std::vector<std::string> DiagnosticsStore::list() const {
    auto names = reportNames(directory_);
    std::sort(names.begin(), names.end(), std::greater<>());
    for (auto& name : names) name = directory_ + "/" + name;
    return names;
}

std::optional<DiagnosticsStore::NameParts> DiagnosticsStore::parseName(const std::string& fileName) {
    if (!endsWith(fileName, kExtension)) return std::nullopt;
    const std::string stem = fileName.substr(0, fileName.size() - kExtension.size());
    const auto lastDash = stem.rfind('-');
    if (stem.size() < kDateLength + 3 || stem[kDateLength] != '-' || lastDash <= kDateLength) return std::nullopt;
    std::tm parts{};
    int millis = 0;
    char t = 0, z = 0, dot = 0;
    if (std::sscanf(stem.c_str(), "%4d%2d%2d%c%2d%2d%2d%c%3d%c", &parts.tm_year, &parts.tm_mon, &parts.tm_mday, &t,
                    &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &dot, &millis, &z) != 10 ||
        t != 'T' || dot != '.' || z != 'Z')
        return std::nullopt;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const std::time_t seconds = ::timegm(&parts);
    NameParts out;
    out.kind = stem.substr(kDateLength + 1, lastDash - kDateLength - 1);
    out.date = std::chrono::system_clock::from_time_t(seconds) + std::chrono::milliseconds(millis);
    out.digest = stem.substr(lastDash + 1);
    if (out.kind.empty() || out.digest.empty()) return std::nullopt;
    return out;
}

} // namespace bv
