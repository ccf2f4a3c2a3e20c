#include "duplicates/ContentHasher.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bv {

std::string digestHex(const Sha256Digest& digest) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text(digest.size() * 2, '0');
    for (std::size_t i = 0; i < digest.size(); ++i) {
        text[2 * i] = kDigits[digest[i] >> 4];
        text[2 * i + 1] = kDigits[digest[i] & 0x0f];
    }
    return text;
}

ContentHasher::ContentHasher() {
    // Fetched once: an implicit fetch on every init would cost a lookup per file.
    md_ = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    ctx_ = EVP_MD_CTX_new();
    // Page-aligned so the kernel copies whole pages straight out of the page cache.
    buffer_ = static_cast<unsigned char*>(std::aligned_alloc(4096, kChunkBytes));
    if (!md_ || !ctx_ || !buffer_) {
        EVP_MD_free(md_);
        EVP_MD_CTX_free(ctx_);
        std::free(buffer_);
        throw std::bad_alloc();
    }
}

ContentHasher::~ContentHasher() {
    EVP_MD_CTX_free(ctx_);
    EVP_MD_free(md_);
    std::free(buffer_);
}

int ContentHasher::openRegular(const std::string& path, dev_t& device, ino_t& inode) {
    // O_NOFOLLOW and O_NONBLOCK: a path swapped for a link or a FIFO since the walk is
    // refused instead of followed or waited on. O_NOATIME spares a metadata write per file
    // where the kernel allows it (only the owner or root may ask for it).
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    int fd = ::open(path.c_str(), kFlags | O_NOATIME);
    if (fd < 0 && errno == EPERM) fd = ::open(path.c_str(), kFlags);
    if (fd < 0) return -1;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return -1;
    }
    device = st.st_dev;
    inode = st.st_ino;
    return fd;
}

bool ContentHasher::readFully(int fd, std::size_t want, off_t offset, std::size_t& got) {
    got = 0;
    while (got < want) {
        const ssize_t n = ::pread(fd, buffer_ + got, want - got, offset + static_cast<off_t>(got));
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (n == 0) break; // end of file: the file is shorter than it was
        got += static_cast<std::size_t>(n);
    }
    bytesRead_ += static_cast<std::int64_t>(got);
    return true;
}

bool ContentHasher::quickKeyOfDescriptor(int fd, std::int64_t size, Sha256Digest& out) {
    if (EVP_DigestInit_ex(ctx_, md_, nullptr) != 1) return false;
    std::size_t got = 0;
    if (!readFully(fd, kEdgeBytes, 0, got)) return false;
    EVP_DigestUpdate(ctx_, buffer_, got);
    if (size > static_cast<std::int64_t>(kEdgeBytes)) {
        // The tail overlaps the head for files under 8192 bytes; that is intended.
        if (!readFully(fd, kEdgeBytes, static_cast<off_t>(size - static_cast<std::int64_t>(kEdgeBytes)), got))
            return false;
        EVP_DigestUpdate(ctx_, buffer_, got);
    }
    unsigned int length = 0;
    return EVP_DigestFinal_ex(ctx_, out.data(), &length) == 1 && length == out.size();
}

bool ContentHasher::hashDescriptor(int fd, const CancellationFlag& flag, Sha256Digest& out) {
    if (EVP_DigestInit_ex(ctx_, md_, nullptr) != 1) return false;
    // Tell the kernel the whole file will be read front to back, so it reads ahead widely.
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    for (;;) {
        if (flag.isCancelled()) return false;
        const ssize_t n = ::read(fd, buffer_, kChunkBytes);
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        if (n == 0) break;
        bytesRead_ += n;
        EVP_DigestUpdate(ctx_, buffer_, static_cast<std::size_t>(n));
    }
    unsigned int length = 0;
    return EVP_DigestFinal_ex(ctx_, out.data(), &length) == 1 && length == out.size();
}

std::optional<ContentHasher::Result> ContentHasher::quickKey(const std::string& path, std::int64_t size) {
    Result result;
    const int fd = openRegular(path, result.device, result.inode);
    if (fd < 0) return std::nullopt;
    const bool ok = quickKeyOfDescriptor(fd, size, result.digest);
    ::close(fd);
    if (!ok) return std::nullopt;
    return result;
}

std::optional<ContentHasher::Result> ContentHasher::fullHash(const std::string& path, const CancellationFlag& flag) {
    Result result;
    const int fd = openRegular(path, result.device, result.inode);
    if (fd < 0) return std::nullopt;
    const bool ok = hashDescriptor(fd, flag, result.digest);
    ::close(fd);
    if (!ok) return std::nullopt;
    return result;
}

} // namespace bv
