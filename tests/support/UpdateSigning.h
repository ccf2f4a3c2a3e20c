#pragma once
#include <memory>
#include <openssl/evp.h>
#include <string>

#include "core/StoredBookmark.h"
#include "foundation/Json.h"

namespace bv::test {

// An Ed25519 key made for one test, signing feeds as scripts/sign-update-feed.sh does.
class UpdateSigningKey {
public:
    [[nodiscard]] std::string publicKeyBase64() const {
        std::string raw(32, '\0');
        std::size_t size = raw.size();
        EVP_PKEY_get_raw_public_key(key_.get(), reinterpret_cast<unsigned char*>(raw.data()), &size);
        return StoredBookmark::encodeBase64(raw);
    }
    // The feed of `payload` with a signature over `signedBytes` (the same unless a test lies).
    [[nodiscard]] std::string feed(const std::string& payload, const std::string* signedBytes = nullptr) const {
        const std::string& message = signedBytes ? *signedBytes : payload;
        std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        std::string signature(64, '\0');
        std::size_t size = signature.size();
        EVP_DigestSignInit(ctx.get(), nullptr, nullptr, nullptr, key_.get());
        EVP_DigestSign(ctx.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                       reinterpret_cast<const unsigned char*>(message.data()), message.size());
        return Json{{"payload", StoredBookmark::encodeBase64(payload)}, {"signature", StoredBookmark::encodeBase64(signature)}}.dump();
    }

private:
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519"), &EVP_PKEY_free};
};

// A release's JSON text with every key; `key` and `value` replace one of them.
[[nodiscard]] inline std::string updateRelease(const std::string& version, const char* key = nullptr, Json value = {}) {
    Json release{{"version", version}, {"url", "https://example.org/get/" + version}, {"notes", "Faster scans."},
                 {"published", "2026-11-20T09:00:00Z"}};
    if (key && value.is_null()) release.erase(key);
    else if (key) release[key] = std::move(value);
    return release.dump();
}

} // namespace bv::test
