#!/usr/bin/env bash
# Makes the signing key of the update feed and signs releases into feeds, with the openssl
# and jq command-line tools.
#
#   scripts/sign-update-feed.sh new-key KEY.pem
#       Makes a new Ed25519 private key in KEY.pem (mode 0600; keep it off the web server and
#       out of the repository) and prints its public key for deployment.json.
#   scripts/sign-update-feed.sh public-key KEY.pem
#       Prints the public key of KEY.pem: base64 of the raw 32 bytes, the "updatePublicKey"
#       that deployment.json hands to the program.
#   scripts/sign-update-feed.sh sign KEY.pem VERSION URL [NOTES_FILE] > feed.json
#       Prints the signed feed of one release: VERSION (e.g. 1.4.0 or 2.0.0-rc.1), URL (the
#       http or https page to download it from), the release notes read from NOTES_FILE
#       (plain text, none when left out) and the time of signing as its publication date.
#       Put feed.json at the address named by "updateFeedURL".
#
# The feed is {"payload": <base64 of the release's JSON bytes>, "signature": <base64 of the
# Ed25519 signature over exactly those bytes>}; the release JSON holds "version", "url",
# "notes" and "published". The program reads nothing of the release until the signature
# checks out against its configured key.
set -euo pipefail

usage() { sed -n '2,16p' "$0" | sed 's/^# \{0,1\}//' >&2; exit 2; }
need() { command -v "$1" >/dev/null || { echo "sign-update-feed: $1 is needed (apt install $1)" >&2; exit 1; }; }
need openssl

# The raw public key is the last 32 bytes of its DER encoding (a fixed 12-byte header first).
public_key() { openssl pkey -in "$1" -pubout -outform DER | tail -c 32 | base64 -w0; echo; }

[[ $# -ge 2 ]] || usage
command="$1" key="$2"
case "$command" in
new-key)
    [[ $# -eq 2 ]] || usage
    [[ ! -e "$key" ]] || { echo "sign-update-feed: $key exists; not overwriting a key" >&2; exit 1; }
    (umask 077 && openssl genpkey -algorithm ed25519 -out "$key")
    public_key "$key"
    ;;
public-key)
    [[ $# -eq 2 ]] || usage
    public_key "$key"
    ;;
sign)
    [[ $# -eq 4 || $# -eq 5 ]] || usage
    need jq
    version="$3" url="$4" notes_file="${5:-/dev/null}"
    [[ "$url" =~ ^https?://. ]] || { echo "sign-update-feed: the URL must be an http or https address" >&2; exit 2; }
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    jq -n -c --arg version "$version" --arg url "$url" --rawfile notes "$notes_file" \
        --arg published "$(date -u +%Y-%m-%dT%H:%M:%SZ)" \
        '{version: $version, url: $url, notes: ($notes | sub("\n+$"; "")), published: $published}' \
        | tr -d '\n' >"$work/release.json"
    openssl pkeyutl -sign -inkey "$key" -rawin -in "$work/release.json" -out "$work/release.sig"
    jq -n --arg payload "$(base64 -w0 "$work/release.json")" --arg signature "$(base64 -w0 "$work/release.sig")" \
        '{payload: $payload, signature: $signature}'
    ;;
*) usage ;;
esac
