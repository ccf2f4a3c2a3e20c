#!/bin/sh
# The old-project search against the bare parallel walk (the floor) over the same generated
# tree, warm, in the same run. Prints best-of-N wall times and their ratio (goal <= 1.3).
#   bench/compare_old_projects.sh BUILD_DIR [PARENT] [RUNS]
# PARENT defaults to /dev/shm/bv-old-projects (made once by make_old_projects.py).
set -eu
build=${1:?usage: compare_old_projects.sh BUILD_DIR [PARENT] [RUNS]}
parent=${2:-/dev/shm/bv-old-projects}
runs=${3:-3}
here=$(dirname "$0")
mkdir -p "$parent"
python3 "$here/make_old_projects.py" "$parent"

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

"$build/bench/bench_old_projects" "$parent" | sed 's/^/old projects: /'
"$build/bench/bench_old_projects" "$parent" --no-git | sed 's/^/without git: /'
scan=$(best "$build/bench/bench_old_projects" "$parent")
bare=$(best "$build/bench/bench_bare_walk" "$parent")
printf 'old-project search %.3f s, bare walk %.3f s, ratio %.2f (goal <= 1.30)\n' "$scan" "$bare" "$(echo "$scan / $bare" | bc -l)"
