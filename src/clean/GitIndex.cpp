#include "clean/GitIndex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <openssl/evp.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>

namespace bv {
namespace {

constexpr std::size_t kHashBytes = 20;          // SHA-1; other object formats are not read
constexpr std::size_t kStatAndHash = 40 + kHashBytes; // ctime .. size, then the object name
constexpr std::uint16_t kExtendedFlag = 0x4000;
constexpr std::uint16_t kNameLengthMask = 0x0fff;
constexpr std::uint16_t kSkipWorktree = 0x4000; // in the second flags word
constexpr std::uint16_t kIntentToAdd = 0x2000;
constexpr off_t kLargestIndex = off_t{512} << 20;

std::uint32_t be32(std::string_view b, std::size_t at) {
    const auto* p = reinterpret_cast<const unsigned char*>(b.data() + at);
    return (std::uint32_t{p[0]} << 24) | (std::uint32_t{p[1]} << 16) | (std::uint32_t{p[2]} << 8) | p[3];
}

std::uint16_t be16(std::string_view b, std::size_t at) {
    const auto* p = reinterpret_cast<const unsigned char*>(b.data() + at);
    return static_cast<std::uint16_t>((p[0] << 8) | p[1]);
}

bool checksumHolds(std::string_view bytes) {
    const std::string_view body = bytes.substr(0, bytes.size() - kHashBytes);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (EVP_Digest(body.data(), body.size(), digest, &length, EVP_sha1(), nullptr) != 1 || length != kHashBytes)
        return false;
    return std::memcmp(digest, bytes.data() + body.size(), kHashBytes) == 0;
}

// The count of bytes version 4 drops from the previous name: the variable-length number of
// the pack format's offset deltas (7 bits a byte, high bit "more", each continuation adding 1).
std::optional<std::size_t> prefixDrop(std::string_view b, std::size_t& at, std::size_t end) {
    if (at >= end) return std::nullopt;
    auto c = static_cast<unsigned char>(b[at++]);
    std::uint64_t value = c & 0x7f;
    while (c & 0x80) {
        if (at >= end || value > (std::uint64_t{1} << 48)) return std::nullopt;
        c = static_cast<unsigned char>(b[at++]);
        value = ((value + 1) << 7) | (c & 0x7f);
    }
    return static_cast<std::size_t>(value);
}

bool extensionUnderstood(std::string_view signature) {
    // Cache tree, resolve-undo, end-of-index and index-entry offsets: none changes which
    // paths the index holds. A split index ("link"), a sparse index ("sdir"), an untracked
    // cache or a file-system monitor's state might, or might change what git answers.
    return signature == "TREE" || signature == "REUC" || signature == "EOIE" || signature == "IEOT";
}

} // namespace

std::optional<GitIndex> GitIndex::read(const std::string& indexFile) {
    const int fd = ::open(indexFile.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        if (errno == ENOENT) return GitIndex{};
        return std::nullopt;
    }
    struct stat st {};
    std::string bytes;
    bool ok = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size <= kLargestIndex;
    if (ok) {
        bytes.resize(static_cast<std::size_t>(st.st_size));
        std::size_t got = 0;
        while (ok && got < bytes.size()) {
            const ssize_t r = ::read(fd, bytes.data() + got, bytes.size() - got);
            if (r > 0) got += static_cast<std::size_t>(r);
            else if (r == 0 || errno != EINTR) ok = false;
        }
    }
    ::close(fd);
    if (!ok) return std::nullopt;
    return parse(bytes);
}

std::optional<GitIndex> GitIndex::parse(std::string_view b) {
    if (b.size() < 12 + kHashBytes || b.substr(0, 4) != "DIRC" || !checksumHolds(b)) return std::nullopt;
    const std::uint32_t version = be32(b, 4);
    if (version < 2 || version > 4) return std::nullopt;
    const std::uint32_t count = be32(b, 8);
    const std::size_t end = b.size() - kHashBytes;
    if (count > end / (kStatAndHash + 2)) return std::nullopt;

    GitIndex index;
    index.paths_.reserve(count);
    std::size_t at = 12;
    std::string previous;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t start = at;
        if (end - at < kStatAndHash + 2) return std::nullopt;
        at += kStatAndHash;
        const std::uint16_t flags = be16(b, at);
        at += 2;
        if (flags & kExtendedFlag) {
            if (version < 3 || end - at < 2) return std::nullopt;
            if (be16(b, at) & (kSkipWorktree | kIntentToAdd)) return std::nullopt;
            at += 2;
        }
        std::string name;
        if (version == 4) {
            const auto drop = prefixDrop(b, at, end);
            if (!drop || *drop > previous.size()) return std::nullopt;
            const std::size_t nul = b.find('\0', at);
            if (nul == std::string_view::npos || nul >= end) return std::nullopt;
            name = previous.substr(0, previous.size() - *drop);
            name.append(b.substr(at, nul - at));
            at = nul + 1;
        } else {
            const std::size_t nul = b.find('\0', at);
            if (nul == std::string_view::npos || nul >= end) return std::nullopt;
            name.assign(b.substr(at, nul - at));
            // 1 to 8 NULs pad the entry to a multiple of eight bytes.
            at = start + ((at - start + name.size() + 8) & ~std::size_t{7});
            if (at > end) return std::nullopt;
        }
        const std::size_t recorded = flags & kNameLengthMask;
        if (name.empty() || (recorded < kNameLengthMask ? recorded != name.size() : name.size() < kNameLengthMask))
            return std::nullopt;
        previous = name;
        index.paths_.push_back(std::move(name));
    }
    while (at < end) {
        if (end - at < 8) return std::nullopt;
        const std::string_view signature = b.substr(at, 4);
        const std::uint32_t length = be32(b, at + 4);
        at += 8;
        if (!extensionUnderstood(signature) || length > end - at) return std::nullopt;
        at += length;
    }
    std::sort(index.paths_.begin(), index.paths_.end());
    return index;
}

bool GitIndex::holdsOrContains(std::string_view path) const {
    if (std::binary_search(paths_.begin(), paths_.end(), path, std::less<>{})) return true;
    const std::string below = std::string(path) + "/";
    const auto it = std::lower_bound(paths_.begin(), paths_.end(), below, std::less<>{});
    return it != paths_.end() && it->starts_with(below);
}

} // namespace bv
