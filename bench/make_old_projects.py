#!/usr/bin/env python3
"""Makes a parent folder of old projects for the old-project walk benchmark.

usage: make_old_projects.py PARENT [--projects N] [--files F]

Each of N projects is a git repository with a package.json, a source folder, a .gitignore
that ignores node_modules and a backdated commit, and a node_modules folder of F small files
spread over packages two levels deep (N x F files in all: 500 x 1000 by default). A second
run on a finished folder does nothing. PARENT must lie outside the repository.
"""
import argparse
import os
import subprocess
import sys


def main():
    p = argparse.ArgumentParser()
    p.add_argument("parent")
    p.add_argument("--projects", type=int, default=500)
    p.add_argument("--files", type=int, default=1000)
    a = p.parse_args()
    parent = os.path.realpath(a.parent)
    repo = os.path.realpath(os.path.join(os.path.dirname(__file__), ".."))
    if parent == repo or parent.startswith(repo + os.sep):
        sys.exit("make_old_projects.py: refusing to generate inside the repository")
    done = os.path.join(parent, ".bv-old-projects-done")
    if os.path.exists(done):
        return
    env = dict(os.environ, GIT_COMMITTER_DATE="@1700000000 +0000", GIT_AUTHOR_DATE="@1700000000 +0000")
    payload = b"module.exports = 1;\n" * 20
    for i in range(a.projects):
        proj = os.path.join(parent, "project-%03d" % i)
        os.makedirs(os.path.join(proj, "src"), exist_ok=True)
        with open(os.path.join(proj, "package.json"), "w") as f:
            f.write('{"name": "project-%d"}\n' % i)
        with open(os.path.join(proj, "src", "index.js"), "w") as f:
            f.write("console.log(1)\n")
        with open(os.path.join(proj, ".gitignore"), "w") as f:
            f.write("node_modules\n")
        subprocess.run(["git", "init", "-q", proj], check=True)
        subprocess.run(["git", "-C", proj, "add", "."], check=True)
        subprocess.run(["git", "-C", proj, "-c", "user.name=b", "-c", "user.email=b@b", "commit", "-qm", "init"],
                       check=True, env=env)
        nm = os.path.join(proj, "node_modules")
        for j in range(a.files):
            pkg = os.path.join(nm, "pkg-%02d" % (j % 40), "lib-%d" % (j % 5))
            os.makedirs(pkg, exist_ok=True)
            with open(os.path.join(pkg, "f%d.js" % j), "wb") as f:
                f.write(payload)
        for root, dirs, files in os.walk(proj):
            for name in files + dirs:
                os.utime(os.path.join(root, name), (1700000000, 1700000000), follow_symlinks=False)
    open(done, "w").close()


if __name__ == "__main__":
    main()
