#!/usr/bin/env bash
# Installs what is missing, builds and starts Brimvale. Without a display it prints the
# Overview in the terminal instead. Arguments are passed on (e.g. `overview --json`).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
"$root/scripts/setup.sh"
"$root/scripts/build.sh" build -DBRIMVALE_BENCH=OFF
exec "$root/build/src/app/brimvale" "$@"
