#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace bv {

// The signed update feed: one small JSON document at the address a deployment configures,
//
//   {"payload": "<base64 of the release’s JSON bytes>", "signature": "<base64 Ed25519 signature>"}
//
// where the signature is made over exactly the payload's bytes (after base64 decoding) with
// the deployment's private key, and the payload is the release:
//
//   {"version": "1.4.0", "url": "https://…", "notes": "What changed.", "published": "2026-11-20T09:00:00Z"}
//
// Nothing inside the payload is read before its signature checks out. scripts/sign-update-feed.sh
// makes keys and feeds. Unknown keys on either level are ignored, so a feed can grow.
struct UpdateFeed {
    std::string version;   // as written; UpdateVersion::parse accepts it
    std::string url;       // http or https: the release’s download or release page
    std::string notes;     // plain text, may be empty
    std::string published; // ISO 8601, as written

    struct Reading;

    // Checks `body` against `publicKeyBase64` (base64 of the raw 32-byte Ed25519 key).
    [[nodiscard]] static Reading read(std::string_view body, std::string_view publicKeyBase64);
};

// Either the release or `refusal`, a short lower-case phrase that says what was wrong ("the
// feed’s signature does not match the update key"). Reading a feed never throws.
struct UpdateFeed::Reading {
    std::optional<UpdateFeed> feed;
    std::string refusal;
};

} // namespace bv
