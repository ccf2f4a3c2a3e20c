#!/usr/bin/env bash
# Checks a built Debian package the way a distribution and a user would see it:
#   1. lintian finds no error and no warning that is not overridden (with its reason) in
#      packaging/lintian-overrides;
#   2. the AppStream metadata and the launcher entries it installs validate;
#   3. installed with dpkg into a throw-away root (no debootstrap or container image can be had
#      offline), the program in that root answers --version, help and overview --json, and
#      opens its window offscreen, with a temporary home and the source tree and its build
#      folders hidden; every QML module the window loads comes from a package it depends on;
#   4. dpkg --purge leaves the root as it was, and the user's own data where it was.
#   scripts/check-package.sh PACKAGE.deb
set -euo pipefail
[[ -f "${1:-}" ]] || { echo "usage: scripts/check-package.sh PACKAGE.deb" >&2; exit 2; }
deb="$(realpath "$1")"
# dpkg --root sets files' owners, and hiding the source tree takes a mount of its own.
[[ $(id -u) -eq 0 ]] || { echo "check-package: needs root (dpkg --root); run it with sudo" >&2; exit 2; }
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
work="$(mktemp -d /tmp/brimvale-package-check.XXXXXX)"
trap 'rm -rf "$work"' EXIT
fail() { echo "check-package: $*" >&2; exit 1; }
say() { echo "check-package: $*"; }

say "lintian"
lintian --fail-on error,warning --display-info "$deb" || fail "lintian found problems (above)"

say "AppStream and desktop entries"
dpkg-deb -x "$deb" "$work/contents"
appstreamcli validate-tree --no-net "$work/contents" || fail "appstreamcli validate-tree failed"
# The KDE service menu (share/kio/servicemenus) is KDE's own format, not a desktop entry.
desktop-file-validate "$work/contents"/usr/share/applications/*.desktop || fail "desktop-file-validate failed"

say "installing into a throw-away root"
target="$work/root"
mkdir -p "$target"/var/lib/dpkg/{info,updates,triggers} "$target"/var/log
touch "$target"/var/lib/dpkg/{status,available}
snapshot() { (cd "$target" && find . -path ./var/lib/dpkg -prune -o -path ./var/log -prune -o -print | sort); }
snapshot >"$work/root-before"
# The root holds no libraries: its dependencies are the host's, so dpkg is told not to insist.
dpkg --root="$target" --force-depends -i "$deb" >"$work/dpkg-install.log" 2>&1 || {
    cat "$work/dpkg-install.log"
    fail "dpkg -i failed"
}
program="$target/usr/bin/brimvale"
[[ -x "$program" ]] || fail "no usr/bin/brimvale in the installed root"

# Runs the installed program with a fresh home and XDG folders, no display, and the source
# tree (with every build folder in it) hidden behind an empty mount where that is allowed.
home="$work/home"
mkdir -p "$home"/{data,config,state,cache,runtime}
chmod 700 "$home/runtime"
# usage: run_installed [VAR=value...] -- ARGS...
run_installed() {
    local vars=()
    while [[ "$1" != "--" ]]; do vars+=("$1"); shift; done
    shift
    local hide=(sh -c 'cd / && exec "$@"' sh)
    if unshare --mount --propagation private true 2>/dev/null; then
        hide=(unshare --mount --propagation private sh -c 'mount -t tmpfs none "$0" && cd / && exec "$@"' "$root")
    fi
    env -i PATH=/usr/bin:/bin HOME="$home" XDG_DATA_HOME="$home/data" XDG_CONFIG_HOME="$home/config" \
        XDG_STATE_HOME="$home/state" XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$home/runtime" \
        LANG=C.UTF-8 "${vars[@]}" "${hide[@]}" "$program" "$@"
}

version=$(run_installed -- --version) || fail "brimvale --version failed"
expected="brimvale $(dpkg-deb -f "$deb" Version)"
[[ "$version" == "$expected" ]] || fail "--version said \"$version\", the package is \"$expected\""
say "$version"
run_installed -- help >"$work/help.txt" || fail "brimvale help failed"
grep -q '^Exit status' "$work/help.txt" || fail "brimvale help printed no exit statuses"
run_installed -- help overview >/dev/null || fail "brimvale help overview failed"
run_installed -- overview --json >"$work/overview.json" || fail "brimvale overview --json failed"
jq -e 'type == "object"' "$work/overview.json" >/dev/null || fail "overview --json printed no JSON object"
status=0
run_installed -- frobnicate 2>/dev/null || status=$?
[[ $status -eq 2 ]] || fail "an unknown command exited $status, not 2"

# The window, offscreen: quits after its first frame, and fails if a screen does not load.
run_installed QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software BV_EXIT_AFTER_FIRST_FRAME=1 QML_IMPORT_TRACE=1 -- \
    >"$work/window.log" 2>&1 || { tail -30 "$work/window.log"; fail "the installed program's window did not open"; }
say "the window opened and drew its first frame"
depends="$(dpkg-deb -f "$deb" Depends)"
owners=()
while read -r module; do
    owner=$(dpkg -S "$module/qmldir" 2>/dev/null | cut -d: -f1) || true
    [[ -n "$owner" ]] || continue
    grep -qE "(^|, )$owner( |,|$)" <<<"$depends" || fail "the window loads $module, from $owner, which the package does not depend on"
    owners+=("$owner")
done < <(grep -oE '/usr/lib/[^ "]*/qt6/qml/[^ "]*/qmldir' "$work/window.log" | xargs -r -n1 dirname | sort -u)
[[ ${#owners[@]} -gt 0 ]] || fail "no QML module showed in the window's import trace"
say "QML modules loaded, all depended on: $(printf '%s\n' "${owners[@]}" | sort -u | tr '\n' ' ')"

say "purging"
find "$home" -type f | sort >"$work/home-before"
[[ -s "$work/home-before" ]] || fail "the program kept nothing in the temporary home"
dpkg --root="$target" --purge brimvale >"$work/dpkg-purge.log" 2>&1 || { cat "$work/dpkg-purge.log"; fail "dpkg --purge failed"; }
snapshot >"$work/root-after"
diff -u "$work/root-before" "$work/root-after" || fail "the purge left files in the root (above)"
find "$home" -type f | sort | diff -u "$work/home-before" - || fail "the purge changed the user's own data"
say "all package checks passed"
