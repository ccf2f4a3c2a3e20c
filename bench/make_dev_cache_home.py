#!/usr/bin/env python3
"""Fills every developer cache folder of the catalogue under a home-like folder.

usage: make_dev_cache_home.py FOLDERS_FILE HOME [--files N] [--seed S]

FOLDERS_FILE lists the catalogue's folders under HOME, one a line (from
`bench_dev_cache_process HOME --folders`). Each folder gets child folders named so that every
behaviour finds rows in it (update downloads, preview caches, versions), with small files
spread over a few levels, about N files in all. Files get their space with posix_fallocate.
HOME must lie outside the repository.
"""
import argparse
import os
import random
import sys


def main():
    p = argparse.ArgumentParser()
    p.add_argument("folders_file")
    p.add_argument("home")
    p.add_argument("--files", type=int, default=300_000)
    p.add_argument("--seed", type=int, default=11)
    a = p.parse_args()
    home = os.path.realpath(a.home)
    repo = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
    if home == repo or home.startswith(repo + os.sep):
        sys.exit("make_dev_cache_home.py: refusing to generate inside the repository")
    done = os.path.join(home, ".bv-dev-cache-done")
    if os.path.exists(done):
        print(f"{home}: already generated")
        return
    with open(a.folders_file) as f:
        folders = sorted({line.strip() for line in f if line.strip()})
    rnd = random.Random(a.seed)
    per_folder = max(1, a.files // len(folders))
    made = 0
    for folder in folders:
        if folder.endswith("Library/Caches"):
            child = "com.example.app{}.ShipIt"
        elif folder.endswith("Application Support/Caches"):
            child = "example-app{}-updater"
        elif folder.endswith("node"):
            child = "v{}.0.0"
        else:
            child = "pkg-cache-{}"
        for c in range(4):
            base = os.path.join(folder, child.format(c + 18))
            for i in range(per_folder // 4):
                d = os.path.join(base, f"d{i % 23}", f"e{i % 7}")
                os.makedirs(d, exist_ok=True)
                fd = os.open(os.path.join(d, f"f{i}"), os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
                try:
                    size = int(rnd.lognormvariate(7.0, 1.2))
                    if size > 0:
                        os.posix_fallocate(fd, 0, size)
                finally:
                    os.close(fd)
                made += 1
    os.makedirs(os.path.join(home, ".nvm", "alias"), exist_ok=True)
    with open(os.path.join(home, ".nvm", "alias", "default"), "w") as f:
        f.write("20\n")
    open(done, "w").close()
    print(f"{home}: {made} files in {len(folders)} folders")


if __name__ == "__main__":
    main()
