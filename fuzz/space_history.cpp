// Feeds arbitrary bytes to the "space-history.json" decoder.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "space/SpaceHistory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    try {
        auto history = bv::SpaceHistory::fromJson(*json);
        bool replaced = false;
        history = bv::SpaceHistory::accepting(history, replaced);
        (void)bv::SpaceHistory::fromJson(history.toJson());
    } catch (const std::exception&) {
    }
    return 0;
}
