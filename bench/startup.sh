#!/usr/bin/env bash
# Whole process from start to the first rendered frame, offscreen, in a temporary home.
# The program quits on its first swapped frame (BV_EXIT_AFTER_FIRST_FRAME); hyperfine
# times the whole process, dynamic loading included. Goal: under 600 ms.
#   bench/startup.sh [BUILD_DIR]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${1:-$root/build}"
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
export HOME="$home" XDG_DATA_HOME="$home/data" XDG_CONFIG_HOME="$home/config" XDG_STATE_HOME="$home/state"
export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software BV_EXIT_AFTER_FIRST_FRAME=1
"$build/src/app/brimvale" >/dev/null 2>&1 # first run writes the state files
hyperfine --warmup 3 --runs 20 --export-json "$build/startup.json" \
    "$build/src/app/brimvale"
