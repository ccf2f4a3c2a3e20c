#!/bin/sh
# The whole developer cache scan against `du -s` of the same folders, in the same run, warm.
# Prints both best-of-N wall times and their ratio (goal: scan <= 0.7 x du).
#   bench/compare_dev_cache_scan.sh BUILD_DIR [HOME] [RUNS]
# HOME defaults to /dev/shm/bv-dev-cache-home (made once by make_dev_cache_home.py).
set -eu
build=${1:?usage: compare_dev_cache_scan.sh BUILD_DIR [HOME] [RUNS]}
home=${2:-/dev/shm/bv-dev-cache-home}
runs=${3:-5}
tool="$build/bench/bench_dev_cache_process"
here=$(dirname "$0")
list=$(mktemp)
trap 'rm -f "$list"' EXIT
mkdir -p "$home"
"$tool" "$home" --folders > "$list"
python3 "$here/make_dev_cache_home.py" "$list" "$home"

best() { # best wall time in seconds of running "$@" $runs times
    b=""
    i=0
    while [ $i -lt "$runs" ]; do
        s=$(date +%s.%N); "$@" > /dev/null 2>&1 || true; e=$(date +%s.%N)
        t=$(echo "$e - $s" | bc -l)
        if [ -z "$b" ] || [ "$(echo "$t < $b" | bc -l)" = 1 ]; then b=$t; fi
        i=$((i + 1))
    done
    echo "$b"
}
du_all() { tr '\n' '\0' < "$list" | xargs -0 du -s 2>/dev/null; }

"$tool" "$home" | sed 's/^/scan: /'
scan=$(best "$tool" "$home")
du=$(best du_all)
printf 'dev cache scan %.3f s, du -s %.3f s, ratio %.2f (goal <= 0.70)\n' "$scan" "$du" "$(echo "$scan / $du" | bc -l)"
