// Feeds arbitrary index-file bodies to the index reader. The trailing checksum is computed
// here so the fuzzer gets past it and into the entries and extensions; whatever parses must
// answer questions about its own paths.
#include <openssl/sha.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "clean/GitIndex.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string bytes(reinterpret_cast<const char*>(data), size);
    unsigned char digest[SHA_DIGEST_LENGTH];
    SHA1(data, size, digest);
    bytes.append(reinterpret_cast<const char*>(digest), sizeof digest);
    const auto index = bv::GitIndex::parse(bytes);
    if (!index) return 0;
    const auto& paths = index->paths();
    if (!std::is_sorted(paths.begin(), paths.end())) __builtin_trap();
    for (const auto& p : paths)
        if (!index->holdsOrContains(p)) __builtin_trap();
    return 0;
}
