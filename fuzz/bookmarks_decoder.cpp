// Feeds arbitrary bytes to the "bookmarks.json" decoder and the Base64 reader. Neither may
// crash; whatever decodes must encode back to something that decodes to the same value.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/StoredBookmark.h"
#include "foundation/Json.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    if (auto bytes = bv::StoredBookmark::decodeBase64(text)) {
        if (bv::StoredBookmark::encodeBase64(*bytes) != text) std::abort(); // one text per value
    }
    const std::string encoded = bv::StoredBookmark::encodeBase64(text);
    if (bv::StoredBookmark::decodeBase64(encoded) != std::string(text)) std::abort();

    if (auto json = bv::parseJson(text)) {
        try {
            const auto marks = bv::bookmarksFromJson(*json);
            const auto again = bv::parseJson(bv::encodeJson(bv::bookmarksToJson(marks)));
            if (!again) std::abort();
            // Paths that are not UTF-8 come back with replacement characters, so compare what
            // the encoder keeps exactly: the keys that survive and the bookmark bytes.
            const auto back = bv::bookmarksFromJson(*again);
            for (const auto& [key, mark] : marks)
                if (back.contains(key) && back.at(key).data != mark.data) std::abort();
        } catch (const bv::DecodeError&) {
        } catch (const bv::Json::exception&) {
        }
    }
    return 0;
}
