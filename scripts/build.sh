#!/usr/bin/env bash
# Configures and builds one build folder with Ninja and ccache.
#   scripts/build.sh [DIR] [extra cmake arguments...]   (DIR defaults to build)
#   BRIMVALE_TARGETS="a b" scripts/build.sh ...           builds only those targets
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
dir="${1:-build}"; shift || true
export CCACHE_BASEDIR="$root"
export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-5G}"
# Build folders and worktrees share cached objects: the build directory stays out of the hash.
export CCACHE_NOHASHDIR=1
# The Qt layers compile against precompiled headers; ccache can still cache those units.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros,include_file_mtime,include_file_ctime}"
[[ "$dir" = /* ]] || dir="$root/$dir"
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
# BRIMVALE_TARGETS (space-separated) builds only those targets instead of everything.
# shellcheck disable=SC2086
ninja -C "$dir" ${BRIMVALE_TARGETS:-}
