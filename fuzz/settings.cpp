// Feeds arbitrary bytes to the "settings.json" decoder: it must either decode or throw
// DecodeError / a JSON error, never crash, hang or leak.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/BrimvaleSettings.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto json = bv::parseJson(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!json) return 0;
    try {
        const auto settings = bv::BrimvaleSettings::fromJson(*json);
        // A decoded record must survive its own encoding.
        (void)bv::BrimvaleSettings::fromJson(settings.toJson());
    } catch (const std::exception&) {
    }
    return 0;
}
