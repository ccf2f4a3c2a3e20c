#!/usr/bin/env python3
"""Whole-process comparison of `brimvale map` and the folder measure with their peers.

usage: compare_map.py [TREE] [--build DIR] [--runs N]

TREE is a generated home-like tree (default /tmp/bv-bench-tree; made by make_home_tree.py when
the folder does not exist yet), or any existing folder, such as /usr, which is only read. Every command runs once to warm the caches, then the commands take turns, run after
run, so a change in the machine's load falls on all of them alike. Each run is timed by
/usr/bin/time (wall, user + system CPU, peak resident memory); the report gives medians and
the ratios the goals speak of:

  map / ncdu -o /dev/null   <= 0.55     map / gdu -n < 1     map / du -s < 1
  map peak memory / gdu's   <= 0.25     measure / du -s <= 0.6
and our ratios to the floor, a bare parallel walk that only sums sizes (bench_bare_walk).

Last, the totals: the map's (and the bytes it left out as hard links counted once already)
against the allocated bytes of the distinct files, counted here by a serial walk, and du -s
(which counts folders too) with hard links once and, with -l, once per name.

The map command is `brimvale map TREE` when the program answers it, else bench_map_process,
the same scan and printing.
"""
import argparse
import os
import shutil
import statistics
import subprocess
import sys

here = os.path.dirname(os.path.abspath(__file__))

def main():
    p = argparse.ArgumentParser()
    p.add_argument("tree", nargs="?", default="/tmp/bv-bench-tree")
    p.add_argument("--build", default=os.path.join(here, "..", "build"))
    p.add_argument("--runs", type=int, default=5)
    a = p.parse_args()
    for tool in ("ncdu", "gdu", "du", "/usr/bin/time"):
        if not shutil.which(tool):
            sys.exit(f"missing {tool} (scripts/packages.txt lists it)")
    if not os.path.exists(a.tree):
        subprocess.run([sys.executable, os.path.join(here, "make_home_tree.py"), a.tree], check=True)

    brimvale = os.path.join(a.build, "src/app/brimvale")
    answers = False
    if os.access(brimvale, os.X_OK):
        out = subprocess.run([brimvale, "help"], capture_output=True, text=True).stdout
        answers = any(line.strip().startswith("map ") for line in out.splitlines())
    commands = {
        "map": [brimvale, "map", a.tree] if answers else [os.path.join(a.build, "bench/bench_map_process"), a.tree],
        "ncdu": ["ncdu", "-q", "-o", "/dev/null", a.tree],
        "gdu": ["gdu", "-n", "-p", a.tree],
        "du": ["du", "-s", a.tree],
        "floor": [os.path.join(a.build, "bench/bench_bare_walk"), a.tree],
        "measure": [os.path.join(a.build, "bench/bench_measure_process"), a.tree],
    }
    print(f"tree: {a.tree}")
    print(f"map command: {' '.join(commands['map'])}")
    print(f"cores: {os.cpu_count()}, load before: {os.getloadavg()[0]:.1f}")

    def run(cmd):
        r = subprocess.run(["/usr/bin/time", "-f", "@@ %e %U %S %M"] + cmd, stdin=subprocess.DEVNULL,
                           stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        line = [l for l in r.stderr.splitlines() if l.startswith("@@ ")][-1].split()
        return float(line[1]), float(line[2]) + float(line[3]), int(line[4])

    for cmd in commands.values():
        run(cmd)  # warm-up
    results = {k: [] for k in commands}
    for i in range(a.runs):
        for k, cmd in commands.items():
            results[k].append(run(cmd))
        print(f"  run {i + 1}/{a.runs} done, load {os.getloadavg()[0]:.1f}", flush=True)

    med = {k: (statistics.median(x[0] for x in v), statistics.median(x[1] for x in v), max(x[2] for x in v))
           for k, v in results.items()}
    print("\n            wall (median)   CPU user+sys (median)   peak RSS")
    for k, (w, c, m) in med.items():
        lo = min(x[0] for x in results[k]); hi = max(x[0] for x in results[k])
        print(f"  {k:8s}  {w:7.2f} s [{lo:.2f}-{hi:.2f}]   {c:7.2f} s   {m:9d} KB")
    w = {k: v[0] for k, v in med.items()}
    c = {k: v[1] for k, v in med.items()}
    print("\nratios (wall; CPU in brackets)")
    for name, num, den, goal in [("map / ncdu", "map", "ncdu", "<= 0.55"), ("map / gdu", "map", "gdu", "< 1"),
                                 ("map / du", "map", "du", "< 1"), ("map / floor", "map", "floor", ""),
                                 ("measure / du", "measure", "du", "<= 0.6"), ("measure / floor", "measure", "floor", "")]:
        print(f"  {name:16s} {w[num] / w[den]:6.3f}  [{c[num] / c[den]:.3f}]  {('goal ' + goal) if goal else ''}")
    print(f"  map RSS / gdu RSS {med['map'][2] / med['gdu'][2]:.3f}  goal <= 0.25")
    totals(a.tree, commands["map"])

def distinct_file_bytes(tree):
    """Allocated bytes of the distinct regular files (device, inode) under tree, on its file system."""
    seen, total = set(), 0
    top = os.lstat(tree).st_dev
    for folder, dirs, files in os.walk(tree):
        dirs[:] = [d for d in dirs if os.lstat(os.path.join(folder, d)).st_dev == top]
        for f in files:
            try:
                st = os.lstat(os.path.join(folder, f))
            except OSError:
                continue
            if not os.path.islink(os.path.join(folder, f)) and (st.st_dev, st.st_ino) not in seen:
                seen.add((st.st_dev, st.st_ino))
                total += st.st_blocks * 512
    return total

def totals(tree, map_cmd):
    import json
    out = subprocess.run(map_cmd[:-1] + ["--json", tree], capture_output=True, text=True).stdout
    m = json.loads(out)
    du = lambda *flags: int(subprocess.run(["du", "-s", "-x", "-B1", *flags, tree], capture_output=True,
                                           text=True).stdout.split()[0])
    distinct = distinct_file_bytes(tree)
    print("\ntotals (bytes)")
    print(f"  map totalBytes           {m['totalBytes']:>16,}   map / distinct files {m['totalBytes'] / distinct:.4f}")
    print(f"  map sharedBytes          {m.get('sharedBytes', 0):>16,}")
    print(f"  distinct files           {distinct:>16,}")
    print(f"  du -s (links once)       {du():>16,}")
    print(f"  du -s -l (every name)    {du('-l'):>16,}")

if __name__ == "__main__":
    main()
