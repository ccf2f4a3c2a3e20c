#!/usr/bin/env bash
# Whole-process comparison of `brimvale map` with its peers on one generated tree, warm caches.
#
# usage: bench/compare_map.sh [TREE] [BUILD]
#   TREE   a generated home-like tree (default /tmp/bv-bench-home; made by make_home_tree.py
#          when missing)
#   BUILD  the build folder (default ./build)
#
# Times, in the same run with hyperfine: `brimvale map TREE` (or bench_map_process, the same
# scan and printing, while the program cannot run the command yet), `ncdu -o /dev/null`,
# `gdu -n`, `du -s`, and the floor: bench_bare_walk, a bare parallel walk that only sums sizes.
# Then the folder measure (bench_measure_process) against `du -s`. Peak memory comes from
# /usr/bin/time -v. Goals: map wall <= 0.55 x ncdu and below gdu and du; map peak memory
# <= 1/4 of gdu's; folder measure <= 0.6 x du.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
tree="${1:-/tmp/bv-bench-home}"
build="${2:-$here/../build}"
runs="${RUNS:-7}"
for tool in hyperfine ncdu gdu du /usr/bin/time; do
    command -v "$tool" >/dev/null || { echo "missing $tool (scripts/packages.txt lists it)" >&2; exit 1; }
done
[ -e "$tree/.bv-bench-done" ] || python3 "$here/make_home_tree.py" "$tree"

map=("$build/bench/bench_map_process" "$tree")
if [ -x "$build/src/app/brimvale" ] && "$build/src/app/brimvale" help 2>/dev/null | grep -q '^  map '; then
    map=("$build/src/app/brimvale" map "$tree")
fi
floor=("$build/bench/bench_bare_walk" "$tree")
measure=("$build/bench/bench_measure_process" "$tree")
echo "tree: $tree ($(find "$tree" -type f | wc -l) files, $(du -sh "$tree" | cut -f1))"
echo "map command: ${map[*]}"
echo "cores: $(nproc)"

out="$(mktemp -d)"
hyperfine -N --warmup 2 --runs "$runs" --export-json "$out/map.json" \
    -n map "${map[*]}" -n ncdu "ncdu -q -o /dev/null $tree" -n gdu "gdu -n -p $tree" \
    -n du "du -s $tree" -n floor "${floor[*]}" -n measure "${measure[*]}" >/dev/null 2>&1 </dev/null

peak() { /usr/bin/time -v "$@" </dev/null 2>&1 >/dev/null | awk -F': ' '/Maximum resident set size/ {print $2}'; }
map_kb=$(peak "${map[@]}")
gdu_kb=$(peak gdu -n -p "$tree")
ncdu_kb=$(peak ncdu -q -o /dev/null "$tree")
du_kb=$(peak du -s "$tree")

python3 - "$out/map.json" "$map_kb" "$gdu_kb" "$ncdu_kb" "$du_kb" <<'PY'
import json, sys
res = {r["command"]: r for r in json.load(open(sys.argv[1]))["results"]}
med = {k: r["median"] for k, r in res.items()}
print("\nwall time (median of runs, seconds)")
for k in ["map", "ncdu", "gdu", "du", "floor", "measure"]:
    print(f"  {k:8s} {med[k]:8.3f}  (min {res[k]['min']:.3f}, max {res[k]['max']:.3f})")
m = med["map"]
print("\nratios")
print(f"  map / ncdu     {m / med['ncdu']:.3f}   goal <= 0.55")
print(f"  map / gdu      {m / med['gdu']:.3f}   goal < 1")
print(f"  map / du       {m / med['du']:.3f}   goal < 1")
print(f"  map / floor    {m / med['floor']:.3f}")
print(f"  measure / du   {med['measure'] / med['du']:.3f}   goal <= 0.6")
print(f"  measure / floor {med['measure'] / med['floor']:.3f}")
mk, gk, nk, dk = (int(x) for x in sys.argv[2:6])
print("\npeak memory (max RSS)")
print(f"  map {mk} KB, gdu {gk} KB, ncdu {nk} KB, du {dk} KB")
print(f"  map / gdu      {mk / gk:.3f}   goal <= 0.25")
PY
rm -rf "$out"
