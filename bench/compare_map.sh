#!/usr/bin/env bash
# Whole-process comparison of `brimvale map` (and the folder measure) with ncdu, gdu and du on
# a generated home-like tree, warm caches, runs interleaved. See compare_map.py for details.
#   bench/compare_map.sh [TREE] [--build DIR] [--runs N]
exec python3 "$(dirname "$0")/compare_map.py" "$@"
