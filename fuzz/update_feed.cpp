// Feeds arbitrary bytes to the update feed reader, as a server (or anyone between it and us)
// could send them, and to the version parser: each must answer or refuse, never crash, hang
// or leak. Reading never throws, so an exception here is a fault too.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "diagnostics/UpdateFeed.h"
#include "diagnostics/UpdateVersion.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    // Any well-formed key will do: the envelope, base64 and signature checks run before the key matters.
    (void)bv::UpdateFeed::read(text, "11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=");
    (void)bv::UpdateVersion::parse(text);
    return 0;
}
