// Feeds arbitrary bytes to the "duplicate-roots.json" decoder. Anything it accepts must
// encode and decode back to the same roots; anything it refuses must be refused with
// DecodeError (or a JSON type error), never a crash.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "duplicates/DuplicateRoot.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    std::vector<bv::DuplicateRoot> roots;
    try {
        roots = bv::decodeDuplicateRoots(*json);
    } catch (const bv::DecodeError&) {
        return 0;
    } catch (const bv::Json::exception&) {
        return 0;
    }
    const auto again = bv::parseJson(bv::encodeJson(bv::encodeDuplicateRoots(roots)));
    if (!again || bv::decodeDuplicateRoots(*again) != roots) std::abort();
    return 0;
}
