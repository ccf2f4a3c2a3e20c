#include "diagnostics/UpdateFeed.h"

#include <memory>
#include <openssl/evp.h>
#include <utility>

#include "core/StoredBookmark.h"
#include "diagnostics/UpdateVersion.h"
#include "foundation/Dates.h"
#include "foundation/Json.h"

namespace bv {

namespace {

constexpr std::size_t kKeyBytes = 32;
constexpr std::size_t kSignatureBytes = 64;

UpdateFeed::Reading refuse(std::string why) { return {std::nullopt, std::move(why)}; }

// True when `signature` is `key`'s Ed25519 signature of `message`.
bool verified(const std::string& key, const std::string& message, const std::string& signature) {
    using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
    using Context = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;
    Key pkey(EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr,
                                         reinterpret_cast<const unsigned char*>(key.data()), key.size()),
             &EVP_PKEY_free);
    Context ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!pkey || !ctx) return false;
    // Ed25519 hashes the message itself: no digest is named, and the message goes in whole.
    if (EVP_DigestVerifyInit(ctx.get(), nullptr, nullptr, nullptr, pkey.get()) != 1) return false;
    return EVP_DigestVerify(ctx.get(), reinterpret_cast<const unsigned char*>(signature.data()), signature.size(),
                            reinterpret_cast<const unsigned char*>(message.data()), message.size()) == 1;
}

// The text under `key`, or the refusal that names it.
std::optional<std::string> textAt(const Json& object, const char* key, std::string& refusal, const char* where) {
    const auto it = object.find(key);
    if (it == object.end()) refusal = std::string(where) + " has no “" + key + "”";
    else if (!it->is_string()) refusal = std::string(where) + "’s “" + key + "” is not text";
    else return it->get<std::string>();
    return std::nullopt;
}

bool isWebAddress(const std::string& url) {
    return (url.rfind("https://", 0) == 0 && url.size() > 8) || (url.rfind("http://", 0) == 0 && url.size() > 7);
}

} // namespace

UpdateFeed::Reading UpdateFeed::read(std::string_view body, std::string_view publicKeyBase64) {
    const auto key = StoredBookmark::decodeBase64(publicKeyBase64);
    if (!key || key->size() != kKeyBytes) return refuse("the configured update key is not a 32-byte Ed25519 key");

    const auto envelope = parseJson(body);
    if (!envelope) return refuse(body.empty() ? "the feed is empty" : "the feed is not complete JSON");
    if (!envelope->is_object()) return refuse("the feed is not a JSON object");
    std::string why;
    const auto payload64 = textAt(*envelope, "payload", why, "the feed");
    const auto signature64 = payload64 ? textAt(*envelope, "signature", why, "the feed") : std::nullopt;
    if (!signature64) return refuse(why);
    const auto payload = StoredBookmark::decodeBase64(*payload64);
    if (!payload) return refuse("the feed’s payload is not base64");
    const auto signature = StoredBookmark::decodeBase64(*signature64);
    if (!signature || signature->size() != kSignatureBytes) return refuse("the feed’s signature is not a 64-byte signature");
    if (!verified(*key, *payload, *signature)) return refuse("the feed’s signature does not match the update key");

    // Signed by the key's holder from here on; still checked, since a mistake can be signed too.
    const auto release = parseJson(*payload);
    if (!release || !release->is_object()) return refuse("the signed release is not a JSON object");
    UpdateFeed feed;
    const std::pair<const char*, std::string UpdateFeed::*> fields[] = {
        {"version", &UpdateFeed::version}, {"url", &UpdateFeed::url},
        {"notes", &UpdateFeed::notes},     {"published", &UpdateFeed::published}};
    for (const auto& [name, field] : fields) {
        auto value = textAt(*release, name, why, "the signed release");
        if (!value) return refuse(why);
        feed.*field = std::move(*value);
    }
    if (!UpdateVersion::parse(feed.version)) return refuse("the release’s version “" + feed.version + "” is not a version number");
    if (!isWebAddress(feed.url)) return refuse("the release’s address is not an http or https address");
    if (!parseIsoDate(feed.published)) return refuse("the release’s date is not an ISO 8601 date");
    return {std::move(feed), {}};
}

} // namespace bv
