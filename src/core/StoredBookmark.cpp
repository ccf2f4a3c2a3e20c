#include "core/StoredBookmark.h"

#include <array>

namespace bv {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<int, 256> makeDecodeTable() {
    std::array<int, 256> table{};
    for (auto& v : table) v = -1;
    for (int i = 0; i < 64; ++i) table[static_cast<unsigned char>(kAlphabet[i])] = i;
    return table;
}
constexpr auto kDecode = makeDecodeTable();

} // namespace

std::string StoredBookmark::encodeBase64(std::string_view bytes) {
    std::string out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    std::size_t i = 0;
    for (; i + 3 <= bytes.size(); i += 3) {
        const unsigned v = static_cast<unsigned char>(bytes[i]) << 16 | static_cast<unsigned char>(bytes[i + 1]) << 8 |
                           static_cast<unsigned char>(bytes[i + 2]);
        out += kAlphabet[v >> 18 & 63];
        out += kAlphabet[v >> 12 & 63];
        out += kAlphabet[v >> 6 & 63];
        out += kAlphabet[v & 63];
    }
    const std::size_t rest = bytes.size() - i;
    if (rest > 0) {
        unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
        if (rest == 2) v |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        out += kAlphabet[v >> 18 & 63];
        out += kAlphabet[v >> 12 & 63];
        out += rest == 2 ? kAlphabet[v >> 6 & 63] : '=';
        out += '=';
    }
    return out;
}

std::optional<std::string> StoredBookmark::decodeBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::string out;
    out.reserve(text.size() / 4 * 3);
    for (std::size_t i = 0; i < text.size(); i += 4) {
        const bool last = i + 4 == text.size();
        int pad = 0;
        if (last && text[i + 3] == '=') pad = text[i + 2] == '=' ? 2 : 1;
        unsigned v = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            if (k >= 4 - static_cast<std::size_t>(pad)) {
                v <<= 6;
                continue;
            }
            const int d = kDecode[static_cast<unsigned char>(text[i + k])];
            if (d < 0) return std::nullopt; // also catches "=" anywhere but the padding
            v = v << 6 | static_cast<unsigned>(d);
        }
        // Bits under the padding must be zero, so every text has one meaning.
        if ((pad == 1 && (v & 0xFF) != 0) || (pad == 2 && (v & 0xFFFF) != 0)) return std::nullopt;
        out += static_cast<char>(v >> 16 & 0xFF);
        if (pad < 2) out += static_cast<char>(v >> 8 & 0xFF);
        if (pad < 1) out += static_cast<char>(v & 0xFF);
    }
    return out;
}

Json StoredBookmark::toJson() const {
    Json j = Json::object();
    j["data"] = encodeBase64(data);
    j["path"] = path;
    return j;
}

StoredBookmark StoredBookmark::fromJson(const Json& json) {
    const JsonReader r(json);
    auto bytes = decodeBase64(r.text("data"));
    if (!bytes) throw DecodeError("bookmark data is not Base64");
    return StoredBookmark{std::move(*bytes), r.text("path")};
}

Json bookmarksToJson(const StoredBookmarks& bookmarks) {
    Json j = Json::object();
    for (const auto& [key, bookmark] : bookmarks) j[key] = bookmark.toJson();
    return j;
}

StoredBookmarks bookmarksFromJson(const Json& json) {
    if (!json.is_object()) throw DecodeError("bookmarks must be an object");
    StoredBookmarks out;
    for (const auto& [key, value] : json.items()) out.emplace(key, StoredBookmark::fromJson(value));
    return out;
}

} // namespace bv
