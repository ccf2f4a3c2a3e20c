#!/usr/bin/env python3
"""Builds the duplicate-scan benchmark corpus: about 1.6 GB in about 5,400 files.

It mixes what makes a duplicate finder work hard in different ways:
  - true duplicates of 3-14 MB (two to four copies each) and many small duplicate groups;
  - same-sized files that differ (they stop at the head-and-tail key);
  - pairs of 6-10 MB files sharing head and tail but differing in the middle (they cost a
    full read each and still part at the content hash);
  - hard links, alone and beside real copies;
  - thousands of tiny files, below any minimum, in a deep tree;
  - files of unique sizes that are never read.
The contents come from a seeded generator, so every run makes the same corpus.

usage: make_duplicate_corpus.py DIR   (DIR must not exist or be empty; use /tmp, never the repo)
"""
import os
import random
import sys


def main() -> int:
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    top = os.path.abspath(sys.argv[1])
    if os.path.exists(top) and os.listdir(top):
        print(f"{top} is not empty", file=sys.stderr)
        return 1
    rng = random.Random(20261122)
    files = 0
    total = 0

    def write(rel: str, data: bytes) -> None:
        nonlocal files, total
        path = os.path.join(top, rel)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as f:
            f.write(data)
        files += 1
        total += len(data)

    def link(src_rel: str, dst_rel: str) -> None:
        nonlocal files
        dst = os.path.join(top, dst_rel)
        os.makedirs(os.path.dirname(dst), exist_ok=True)
        os.link(os.path.join(top, src_rel), dst)
        files += 1

    # True duplicates, large: 45 contents, 2-4 copies spread over folders.
    for i in range(45):
        data = rng.randbytes(rng.randrange(3_000_000, 14_000_000))
        for c in range(rng.choice((2, 2, 3, 4))):
            write(f"photos/{c}/{i:03d}-album-{c}.raw", data)

    # True duplicates, small: 220 groups of 100-600 KB, two or three copies.
    for i in range(220):
        data = rng.randbytes(rng.randrange(120_000, 600_000))
        for c in range(rng.choice((2, 3))):
            write(f"documents/set{c}/doc-{i:04d}.pdf", data)

    # Same size, different contents: 320 files of exactly 1 MB, parted by the quick key.
    for i in range(320):
        write(f"recordings/take-{i:04d}.wav", rng.randbytes(1_000_000))

    # Same head and tail, different middle: 36 pairs of 6-10 MB.
    for i in range(36):
        size = rng.randrange(6_000_000, 10_000_000)
        base = bytearray(rng.randbytes(size))
        write(f"builds/a/image-{i:03d}.img", bytes(base))
        base[size // 2] ^= 0xFF
        write(f"builds/b/image-{i:03d}.img", bytes(base))

    # Hard links: 30 files of 2-4 MB with one or two extra links; every third also has a
    # separate copy, so its group frees one file.
    for i in range(30):
        data = rng.randbytes(rng.randrange(2_000_000, 4_000_000))
        write(f"linked/orig-{i:03d}.bin", data)
        for k in range(rng.choice((1, 2))):
            link(f"linked/orig-{i:03d}.bin", f"linked/links/l{k}-{i:03d}.bin")
        if i % 3 == 0:
            write(f"linked/copies/copy-{i:03d}.bin", data)

    # Unique sizes, never read past the walk: 150 files of 150 KB-3 MB.
    used = set()
    for i in range(150):
        size = rng.randrange(150_000, 3_000_000)
        while size in used:
            size += 1
        used.add(size)
        write(f"misc/unique-{i:04d}.dat", rng.randbytes(size))

    # Tiny files, below the minimum: 4,200 of 1-40 KB in a deep tree, some identical.
    tiny_pool = [rng.randbytes(rng.randrange(1_000, 40_000)) for _ in range(300)]
    for i in range(4200):
        depth = "/".join(f"d{(i >> s) & 7}" for s in (0, 3, 6))
        write(f"source/{depth}/f{i:05d}.txt", rng.choice(tiny_pool))

    print(f"{top}: {files} files, {total / 1e9:.2f} GB")
    return 0


if __name__ == "__main__":
    sys.exit(main())
