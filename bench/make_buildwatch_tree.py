#!/usr/bin/env python3
"""Makes the source tree the Build Watch look is measured on: 2,000 projects and about
500,000 files under ROOT/code, with the folders a walk must not enter (node_modules, target,
build, .git, venv, dist) holding most of the files.

Half of the 40 groups are one repository holding 50 projects (a monorepo), the other half
hold 50 projects that are each their own repository. Build folders are ignored by git. The
first project of ten groups holds 1.1 GB of allocated build output (fallocate, so it is
quick to make), enough to become a suggestion; the rest stay under the look's minimum.
Usage: make_buildwatch_tree.py ROOT"""
import os
import subprocess
import sys

GROUPS, PER_GROUP = 40, 50
KINDS = ["rust", "node", "gradle", "python", "flutter"]


def touch(path, content=b""):
    with open(path, "wb") as f:
        f.write(content)


def files(folder, count, prefix="f", content=b""):
    os.makedirs(folder, exist_ok=True)
    for i in range(count):
        touch(os.path.join(folder, f"{prefix}{i}.txt"), content)
    return count


def project(path, kind):
    n = 0
    os.makedirs(path, exist_ok=True)
    manifest = {"rust": "Cargo.toml", "node": "package.json", "gradle": "build.gradle",
                "python": "pyproject.toml", "flutter": "pubspec.yaml"}[kind]
    touch(os.path.join(path, manifest), b"x\n")
    touch(os.path.join(path, "README.md"), b"readme\n")
    n += 2
    for d in range(4):  # sources, a few levels deep: walked
        n += files(os.path.join(path, "src", f"mod{d}", "inner"), 8, content=b"code\n")
    if kind == "rust":
        n += files(os.path.join(path, "target", "debug", "deps"), 60, content=b"o" * 64)
        n += files(os.path.join(path, "target", "debug", "incremental"), 20, content=b"i" * 64)
        n += files(os.path.join(path, "target", "release"), 20)
    elif kind == "node":
        for p in range(12):
            n += files(os.path.join(path, "node_modules", f"pkg{p}", "lib"), 10)
        n += files(os.path.join(path, "node_modules", ".cache", "babel"), 20, content=b"c" * 64)
        n += files(os.path.join(path, "dist"), 10)
    elif kind == "gradle":
        n += files(os.path.join(path, "build", "classes"), 80, content=b"k" * 64)
        n += files(os.path.join(path, ".gradle", "8.0"), 40, content=b"g" * 64)
    elif kind == "python":
        n += files(os.path.join(path, "venv", "lib", "site-packages", "x"), 100)
        n += files(os.path.join(path, ".pytest_cache", "v"), 20, content=b"p" * 64)
    else:
        n += files(os.path.join(path, "build", "app"), 60, content=b"b" * 64)
        n += files(os.path.join(path, ".dart_tool", "x"), 40, content=b"d" * 64)
    return n


def big(project_path):
    """1.1 GB of allocated space in the project's first build folder."""
    for sub in ("target/debug", "node_modules/.cache", "build", ".pytest_cache"):
        folder = os.path.join(project_path, sub)
        if os.path.isdir(folder):
            fd = os.open(os.path.join(folder, "big.bin"), os.O_CREAT | os.O_WRONLY, 0o644)
            os.posix_fallocate(fd, 0, 1100 * 1000 * 1000)
            os.close(fd)
            return


def git_init(path):
    subprocess.run(["git", "init", "-q", path], check=True)
    touch(os.path.join(path, ".gitignore"), b"target/\nnode_modules/.cache/\nbuild/\n.gradle/\n.pytest_cache/\n.dart_tool/\n")


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    code = os.path.join(sys.argv[1], "code")
    total = 0
    for g in range(GROUPS):
        group = os.path.join(code, f"group{g:02d}")
        monorepo = g % 2 == 0
        os.makedirs(group, exist_ok=True)
        if monorepo:
            git_init(group)
        for p in range(PER_GROUP):
            proj = os.path.join(group, f"project{p:02d}")
            total += project(proj, KINDS[(g + p) % len(KINDS)])
            if not monorepo:
                git_init(proj)
            if p == 0 and g < 10:
                big(proj)
        # Stop-listed folders beside the projects: the walk must pass them by.
        for m in range(100):
            total += files(os.path.join(group, "node_modules", f"shared{m}"), 49)
        total += files(os.path.join(group, "docs", "pages"), 40)
    print(f"{GROUPS * PER_GROUP} projects, {total} files under {code}")


if __name__ == "__main__":
    main()
