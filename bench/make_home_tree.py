#!/usr/bin/env python3
"""Makes a home-like folder tree for the whole-process benchmarks.

usage: make_home_tree.py [FOLDER] [--files N] [--seed S] [--max-gb G]

FOLDER defaults to /tmp/bv-bench-home and must lie outside the repository. The tree mixes
what a developer's home holds: deep node_modules and git object stores full of small files,
tool caches, photos and videos, documents and downloads. Files get their space with
posix_fallocate, so the tree takes real disk blocks without writing their contents, and the
same seed gives the same tree. The whole tree stays under --max-gb (default 5) and under a
third of the free space, whatever the random sizes say.
"""
import argparse
import os
import random
import sys

def main():
    p = argparse.ArgumentParser()
    p.add_argument("folder", nargs="?", default="/tmp/bv-bench-home")
    p.add_argument("--files", type=int, default=320_000)
    p.add_argument("--seed", type=int, default=7)
    p.add_argument("--max-gb", type=float, default=5.0)
    a = p.parse_args()
    root = os.path.realpath(a.folder)
    repo = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
    if root == repo or root.startswith(repo + os.sep):
        sys.exit("make_home_tree.py: refusing to generate inside the repository")
    if os.path.exists(os.path.join(root, ".bv-bench-done")):
        print(f"{root}: already generated")
        return
    rnd = random.Random(a.seed)
    made = 0
    os.makedirs(root, exist_ok=True)
    vfs = os.statvfs(root)
    budget_bytes = min(int(a.max_gb * 1e9), vfs.f_bavail * vfs.f_frsize // 3)
    spent = 0

    def size_small():
        return int(rnd.lognormvariate(7.5, 1.6))  # mostly a few KB, a long tail

    def put(path, size):
        nonlocal made, spent
        size = max(0, min(size, budget_bytes - spent))
        spent += size
        fd = os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)
        try:
            if size > 0:
                os.posix_fallocate(fd, 0, size)
        finally:
            os.close(fd)
        made += 1

    def folder(path):
        os.makedirs(path, exist_ok=True)
        return path

    # Shares of the file count per kind of place.
    budget = a.files
    shares = [("projects", 0.46), ("cache", 0.24), ("git", 0.13), ("documents", 0.08),
              ("pictures", 0.002), ("config", 0.06), ("downloads", 0.0003), ("music", 0.0003)]
    for kind, share in shares:
        n = int(budget * share)
        if kind == "projects":
            per = n // 12
            for proj in range(12):
                base = folder(f"{root}/Projects/app-{proj}")
                left = per
                pkg = 0
                while left > 0:
                    d = folder(f"{base}/node_modules/pkg-{pkg}/lib/sub-{pkg % 7}/dist")
                    for i in range(min(left, rnd.randint(5, 40))):
                        put(f"{d}/module-{i}.js", size_small())
                        left -= 1
                    pkg += 1
                src = folder(f"{base}/src/components")
                for i in range(40):
                    put(f"{src}/view {i}.tsx", size_small())
        elif kind == "cache":
            for i in range(n):
                d = folder(f"{root}/.cache/tool-{i % 9}/{(i // 9) % 256:02x}/{(i // 2304) % 64:02x}")
                put(f"{d}/entry-{i}", size_small())
        elif kind == "git":
            for i in range(n):
                d = folder(f"{root}/Projects/app-{i % 12}/.git/objects/{(i // 12) % 256:02x}")
                put(f"{d}/{i:038x}", size_small() // 2)
        elif kind == "documents":
            for i in range(n):
                d = folder(f"{root}/Documents/Year {2015 + i % 11}/Folder ñ {i % 37}")
                put(f"{d}/Note {i}.odt", size_small() * 4)
        elif kind == "pictures":
            for i in range(n):
                d = folder(f"{root}/Pictures/{2015 + i % 11}/{1 + i % 12:02d}")
                put(f"{d}/IMG_{i:05d}.jpg", rnd.randint(500_000, 4_000_000))
        elif kind == "config":
            for i in range(n):
                d = folder(f"{root}/.config/app-{i % 60}/profile/storage/{i % 11}")
                put(f"{d}/state-{i}.json", size_small())
        elif kind == "downloads":
            for i in range(n):
                d = folder(f"{root}/Downloads")
                put(f"{d}/download-{i}.bin", min(int(rnd.lognormvariate(15, 1.5)), 200_000_000))
        elif kind == "music":
            for i in range(n):
                d = folder(f"{root}/Music/Artist {i % 40}/Album {i % 7}")
                put(f"{d}/Track {i}.flac", rnd.randint(5_000_000, 15_000_000))
    while made < a.files:
        d = folder(f"{root}/misc/{made % 100}")
        put(f"{d}/odd-{made}", size_small())
    # A few links, which no scan follows.
    os.symlink("/usr", f"{root}/usr-link")
    os.symlink(f"{root}/Pictures", f"{root}/Desktop-Pictures")
    open(os.path.join(root, ".bv-bench-done"), "w").close()
    print(f"{root}: {made + 1} files, {spent / 1e9:.2f} GB allocated")

if __name__ == "__main__":
    main()
