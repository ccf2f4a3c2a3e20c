#!/usr/bin/env python3
"""Helpers for bench/duplicates_vs_peers.sh.

  duplicate_sets.py floor DIR MIN
      Bytes that reach the content pass of the serial design (files of a size >= MIN that
      share their size and their head-and-tail key with another), counted per path and per
      distinct storage object. Prints "paths_bytes objects_bytes".
  duplicate_sets.py sets TOOL OUTPUT
      Reads one tool's report and prints its duplicate sets in a canonical form: each set as
      the sorted (device, inode) pairs of its files, hard links folded together and sets of
      one storage object left out, so tools that treat hard links differently compare equal.
"""
import hashlib
import json
import os
import sys
from collections import defaultdict


def quick_key(path, size):
    h = hashlib.sha256()
    with open(path, "rb") as f:
        h.update(f.read(4096))
        if size > 4096:
            f.seek(size - 4096)
            h.update(f.read(4096))
    return h.digest()


def floor(top, minimum):
    by_size = defaultdict(list)
    for folder, dirs, names in os.walk(top):
        for n in names:
            p = os.path.join(folder, n)
            st = os.lstat(p)
            if os.path.stat.S_ISREG(st.st_mode) and st.st_size >= minimum:
                by_size[st.st_size].append((p, (st.st_dev, st.st_ino)))
    paths_bytes = objects_bytes = 0
    for size, files in by_size.items():
        if len(files) < 2:
            continue
        by_key = defaultdict(list)
        for p, obj in files:
            by_key[quick_key(p, size)].append(obj)
        for objs in by_key.values():
            if len(objs) >= 2:
                paths_bytes += size * len(objs)
                objects_bytes += size * len(set(objs))
    print(paths_bytes, objects_bytes)


def groups_of(tool, text):
    if tool == "brimvale":
        return [[f["path"] for f in g["files"]] for g in json.loads(text)]
    if tool == "rdfind":
        by_id = defaultdict(list)
        for line in text.splitlines():
            if not line or line.startswith("#"):
                continue
            fields = line.split(" ", 7)
            by_id[abs(int(fields[1]))].append(fields[7])
        return list(by_id.values())
    # jdupes and fdupes: sets separated by blank lines
    groups, current = [], []
    for line in text.splitlines():
        if line.strip():
            current.append(line)
        elif current:
            groups.append(current)
            current = []
    if current:
        groups.append(current)
    return groups


def sets(tool, output):
    with open(output, encoding="utf-8", errors="surrogateescape") as f:
        groups = groups_of(tool, f.read())
    canonical = set()
    for g in groups:
        objs = set()
        for p in g:
            st = os.stat(p)
            objs.add((st.st_dev, st.st_ino))
        if len(objs) >= 2:
            canonical.add(tuple(sorted(objs)))
    for s in sorted(canonical):
        print(" ".join(f"{d}:{i}" for d, i in s))


if __name__ == "__main__":
    if sys.argv[1:2] == ["floor"]:
        floor(sys.argv[2], int(sys.argv[3]))
    elif sys.argv[1:2] == ["sets"]:
        sets(sys.argv[2], sys.argv[3])
    else:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
