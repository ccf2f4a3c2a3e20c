#!/usr/bin/env bash
# Times `brimvale duplicates` as a whole process against jdupes, rdfind and fdupes on the
# generated corpus, with warm caches, all at the same minimum size, and against the floor of
# a serial design: one core's SHA-256 over the bytes that reach the content pass, plus a
# bare walk of the tree. Then checks that the four tools report the same duplicate sets
# (hard links folded together).
#
# usage: bench/duplicates_vs_peers.sh BRIMVALE_BINARY [CORPUS_DIR] [RUNS]
#   CORPUS_DIR defaults to /tmp/brimvale-duplicate-corpus and is generated when missing.
set -euo pipefail

here="$(cd "$(dirname "$0")" && pwd)"
brimvale="$(realpath "$1")"
corpus="${2:-/tmp/brimvale-duplicate-corpus}"
runs="${3:-5}"
min=100000
work="$(mktemp -d /tmp/brimvale-dupbench-XXXXXX)"
trap 'rm -rf "$work"' EXIT

for tool in jdupes rdfind fdupes hyperfine openssl python3; do
    command -v "$tool" >/dev/null || { echo "missing $tool (see scripts/packages.txt)" >&2; exit 1; }
done
[ -d "$corpus" ] || python3 "$here/make_duplicate_corpus.py" "$corpus"

echo "corpus: $corpus, $(find "$corpus" -type f | wc -l) files, $(du -sb --count-links "$corpus" | cut -f1) bytes (links counted)"
# Warm the page cache: every tool then reads from memory, as the goals are stated for.
find "$corpus" -type f -print0 | xargs -0 cat >/dev/null

cmd_brimvale="$brimvale duplicates --min $min --json $corpus"
cmd_jdupes="jdupes -r -q -X size+=:$min $corpus"
cmd_fdupes="fdupes -r -q -G $min $corpus"
cmd_rdfind="rdfind -minsize $min -dryrun true -outputname $work/rdfind.txt $corpus"
cmd_walk="find $corpus -printf %s\\n"

hyperfine --style basic --warmup 1 --runs "$runs" --export-json "$work/times.json" \
    -n brimvale "$cmd_brimvale" -n jdupes "$cmd_jdupes" -n rdfind "$cmd_rdfind" \
    -n fdupes "$cmd_fdupes" -n walk "$cmd_walk" >"$work/hyperfine.txt" 2>&1 || { cat "$work/hyperfine.txt"; exit 1; }

# One core's SHA-256 rate over 1 MiB blocks, in bytes per second: per second of wall-clock
# time (the floor the goal is stated against, measured under the same load as the tools) and
# per second of CPU time (a floor that the machine's other load does not move).
speed() { openssl speed "$@" -evp sha256 -bytes 1048576 -seconds 3 2>/dev/null | awk '/^sha256/ {sub("k","",$2); print $2*1000}'; }
rate=$(speed -elapsed)
rate_cpu=$(speed)
read -r content_bytes object_bytes < <(python3 "$here/duplicate_sets.py" floor "$corpus" "$min")

python3 - "$work/times.json" "$rate" "$content_bytes" "$object_bytes" "$rate_cpu" <<'PY'
import json, sys
times = {r["command"]: r for r in json.load(open(sys.argv[1]))["results"]}
rate, content, objects, rate_cpu = float(sys.argv[2]), int(sys.argv[3]), int(sys.argv[4]), float(sys.argv[5])
med = {k: v["median"] for k, v in times.items()}
walk = med["walk"]
floor = content / rate + walk
floor_obj = objects / rate + walk
print(f"SHA-256 rate (openssl speed -evp sha256, 1 MiB blocks): {rate/1e9:.3f} GB/s wall-clock, {rate_cpu/1e9:.3f} GB/s CPU")
print(f"bytes reaching the content pass: {content/1e9:.3f} GB ({objects/1e9:.3f} GB of distinct storage objects)")
print(f"bare walk (find -printf %s): {walk:.3f} s")
print(f"floor = content bytes / rate + walk = {floor:.3f} s (distinct objects only: {floor_obj:.3f} s)")
for name in ("brimvale", "jdupes", "rdfind", "fdupes"):
    t = times[name]
    print(f"{name:9s} median {t['median']:.3f} s  (min {t['min']:.3f}, max {t['max']:.3f}, {len(t['times'])} runs; "
          f"CPU user+system {t['user'] + t['system']:.3f} s)")
b = med["brimvale"]
cpu = times["brimvale"]["user"] + times["brimvale"]["system"]
walk_cpu = times["walk"]["user"] + times["walk"]["system"]
floor_cpu = content / rate_cpu + walk_cpu
print(f"brimvale CPU time / CPU floor = {cpu/floor_cpu:.2f}  (CPU floor {floor_cpu:.3f} s; unmoved by other load)")
print(f"brimvale / floor  = {b/floor:.2f}  (goal <= 1.30; against the distinct-object floor {b/floor_obj:.2f})")
print(f"brimvale / rdfind = {b/med['rdfind']:.2f}  (goal < 1)")
print(f"brimvale / fdupes = {b/med['fdupes']:.2f}  (goal < 1)")
print(f"brimvale / jdupes = {b/med['jdupes']:.2f}  (a figure to watch)")
PY

# The same duplicate sets from all four tools.
$cmd_brimvale >"$work/brimvale.out"
$cmd_jdupes >"$work/jdupes.out"
$cmd_fdupes >"$work/fdupes.out"
$cmd_rdfind >/dev/null
cp "$work/rdfind.txt" "$work/rdfind.out"
for tool in brimvale jdupes fdupes rdfind; do
    python3 "$here/duplicate_sets.py" sets "$tool" "$work/$tool.out" >"$work/$tool.sets"
done
status=0
for tool in jdupes fdupes rdfind; do
    if cmp -s "$work/brimvale.sets" "$work/$tool.sets"; then
        echo "same duplicate sets as $tool: yes ($(wc -l <"$work/$tool.sets") sets)"
    else
        echo "same duplicate sets as $tool: NO"
        diff "$work/brimvale.sets" "$work/$tool.sets" | head -20 || true
        status=1
    fi
done
exit $status
