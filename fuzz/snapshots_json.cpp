// Feeds arbitrary bytes to the "snapshots.json" decoder: it must either throw a decode error
// or give a list that encodes and decodes back to itself.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "space/SpaceSnapshot.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    std::vector<bv::SpaceSnapshot> list;
    try {
        list = bv::decodeSnapshots(*json);
    } catch (const bv::DecodeError&) {
        return 0;
    } catch (const bv::Json::exception&) {
        return 0;
    }
    if (list.size() > bv::SpaceSnapshot::kMaxSnapshots) std::abort();
    const auto again = bv::decodeSnapshots(*bv::parseJson(bv::encodeJson(bv::snapshotsJson(list))));
    // Dates keep whole seconds only, so compare after one round trip.
    const auto third = bv::decodeSnapshots(*bv::parseJson(bv::encodeJson(bv::snapshotsJson(again))));
    if (!(again == third)) std::abort();
    return 0;
}
