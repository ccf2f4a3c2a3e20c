#pragma once
#include <string>
#include <vector>

namespace bv {

// Values that belong to a deployment of the program rather than to its code: where update
// checks go and the key that signs them, where support requests and the maker's pages are.
// A distribution or a site sets them in "deployment.json"; a build with none of them set
// makes no network request and shows no support address.
//
// Looked up key by key, first hit wins: $XDG_CONFIG_HOME/Brimvale/deployment.json, then
// brimvale/deployment.json in each folder of $XDG_CONFIG_DIRS (default /etc/xdg). A file that
// is missing, unreadable or not a JSON object is skipped; a key with a value that is not text
// is skipped. Values are trimmed; an empty value counts as unset.
struct DeploymentConfig {
    std::string updateFeedURL;   // "updateFeedURL": http(s) address of the signed update feed
    std::string updatePublicKey; // "updatePublicKey": base64 of the raw 32-byte Ed25519 key
    std::string supportEmail;    // "supportEmail": where "Send diagnostics…" addresses its draft
    std::string supportURL;      // "supportURL"
    std::string privacyURL;      // "privacyURL"
    std::string termsURL;        // "termsURL"

    // Reads the files named above, from the environment as it is now.
    [[nodiscard]] static DeploymentConfig load();
    // Reads exactly these files, in this order (tests, and `load`).
    [[nodiscard]] static DeploymentConfig loadFrom(const std::vector<std::string>& files);
    // The files `load` reads, in order.
    [[nodiscard]] static std::vector<std::string> searchFiles();
};

} // namespace bv
