#include "buildwatch/PropertyListReader.h"

#include "foundation/FileIO.h"

namespace bv {
namespace {

std::string unescapeXml(std::string_view s) {
    std::string out;
    for (std::size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '&') {
            out += s[i];
            continue;
        }
        const auto semi = s.find(';', i);
        if (semi == std::string_view::npos) return out + std::string(s.substr(i));
        const std::string_view entity = s.substr(i + 1, semi - i - 1);
        if (entity == "amp") out += '&';
        else if (entity == "lt") out += '<';
        else if (entity == "gt") out += '>';
        else if (entity == "quot") out += '"';
        else if (entity == "apos") out += '\'';
        else out += std::string(s.substr(i, semi - i + 1));
        i = semi;
    }
    return out;
}

} // namespace

std::optional<std::string> PropertyListReader::topLevelString(const std::string& path, const std::string& key) {
    const auto text = readWholeFile(path);
    if (!text || text->starts_with("bplist")) return std::nullopt;
    const std::string& t = *text;
    int dictDepth = 0, arrayDepth = 0;
    bool wantValue = false;
    std::size_t at = 0;
    while ((at = t.find('<', at)) != std::string::npos) {
        const auto close = t.find('>', at);
        if (close == std::string::npos) return std::nullopt;
        std::string tag = t.substr(at + 1, close - at - 1);
        const std::size_t contentStart = close + 1;
        at = close + 1;
        if (tag.empty() || tag[0] == '?' || tag[0] == '!') continue;
        const bool selfClosing = tag.back() == '/';
        const std::string name = tag.substr(0, tag.find_first_of(" /"));
        const bool topLevel = dictDepth == 1 && arrayDepth == 0;
        if (name == "dict" && !selfClosing) {
            ++dictDepth;
            wantValue = false;
        } else if (tag == "/dict") {
            --dictDepth;
        } else if (name == "array" && !selfClosing) {
            ++arrayDepth;
            wantValue = false;
        } else if (tag == "/array") {
            --arrayDepth;
        } else if (name == "key" && !selfClosing) {
            const auto end = t.find("</key>", contentStart);
            if (end == std::string::npos) return std::nullopt;
            wantValue = topLevel && unescapeXml(std::string_view(t).substr(contentStart, end - contentStart)) == key;
            at = end + 6;
        } else if (name == "string" && !selfClosing) {
            const auto end = t.find("</string>", contentStart);
            if (end == std::string::npos) return std::nullopt;
            if (wantValue && topLevel) return unescapeXml(std::string_view(t).substr(contentStart, end - contentStart));
            at = end + 9;
        } else if (topLevel && wantValue && name != "plist") {
            return std::nullopt; // the key holds something other than a string
        }
    }
    return std::nullopt;
}

} // namespace bv
