#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

#include "foundation/CancellationFlag.h"

struct evp_md_ctx_st;
struct evp_md_st;

namespace bv {

using Sha256Digest = std::array<std::uint8_t, 32>;

// Lower-case hexadecimal, two digits per byte.
[[nodiscard]] std::string digestHex(const Sha256Digest& digest);

// Hashes files for the duplicate scan with SHA-256. One hasher is made per scan and used by
// that scan's one thread: it owns a single page-aligned 1 MiB buffer and one digest context,
// reused for every file, so hashing allocates nothing per file. Not thread-safe.
class ContentHasher {
public:
    static constexpr std::size_t kEdgeBytes = 4096;      // read from each end for the quick key
    static constexpr std::size_t kChunkBytes = 1 << 20;  // one read of the full hash

    // What the hasher learnt of the file it opened: the storage object behind the open
    // descriptor (so a file swapped between passes is never mistaken for the old one).
    struct Result {
        Sha256Digest digest{};
        dev_t device = 0;
        ino_t inode = 0;
    };

    ContentHasher();
    ~ContentHasher();
    ContentHasher(const ContentHasher&) = delete;
    ContentHasher& operator=(const ContentHasher&) = delete;

    // The quick key's digest: SHA-256 of up to 4096 bytes from the start and, when `size`
    // is above 4096, of up to 4096 bytes from `size` - 4096 on. `size` is the size the walk
    // saw. Empty when the file can't be opened as a regular file or a read fails.
    [[nodiscard]] std::optional<Result> quickKey(const std::string& path, std::int64_t size);

    // SHA-256 of the whole contents, read in 1 MiB chunks from the start until a read gives
    // nothing. `flag` is read before each chunk; a set flag abandons the hash. Empty on
    // cancellation or any error.
    [[nodiscard]] std::optional<Result> fullHash(const std::string& path, const CancellationFlag& flag);

    // Opens `path` for reading as a regular file (no links followed, never blocking on a
    // special file) and tells its storage object; -1 when that can't be done. The caller
    // closes the descriptor. Used by the scan to recognise hard links before reading.
    [[nodiscard]] static int openRegular(const std::string& path, dev_t& device, ino_t& inode);

    // Full hash of an already opened descriptor, from its start.
    [[nodiscard]] bool hashDescriptor(int fd, const CancellationFlag& flag, Sha256Digest& out);
    [[nodiscard]] bool quickKeyOfDescriptor(int fd, std::int64_t size, Sha256Digest& out);

    // Bytes read by this hasher so far (for the benchmarks' floor).
    [[nodiscard]] std::int64_t bytesRead() const { return bytesRead_; }

private:
    [[nodiscard]] bool readFully(int fd, std::size_t want, off_t offset, std::size_t& got);

    evp_md_st* md_ = nullptr;
    evp_md_ctx_st* ctx_ = nullptr;
    unsigned char* buffer_ = nullptr;
    std::int64_t bytesRead_ = 0;
};

} // namespace bv
