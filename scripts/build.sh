#!/usr/bin/env bash
# Configures and builds one build folder with Ninja and ccache.
#   scripts/build.sh [DIR] [extra cmake arguments...]   (DIR defaults to build)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
dir="${1:-build}"; shift || true
export CCACHE_BASEDIR="$root"
export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-5G}"
# The Qt layers compile against precompiled headers; ccache can still cache those units.
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:-pch_defines,time_macros,include_file_mtime,include_file_ctime}"
cmake -S "$root" -B "$root/$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
ninja -C "$root/$dir"
