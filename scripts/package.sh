#!/usr/bin/env bash
# Builds the Debian package: a build folder configured the way a distribution ships the
# program (update checks off: the package manager updates it), the program with its manual
# page and completions built, and CPack run. DIR defaults to build-package, a folder of its
# own (so a full compile); CI passes build, which it has just built and tested, so only the
# program relinks.
#   scripts/package.sh [DIR]     prints the path of the .deb on its last line
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
dir="${1:-build-package}"
[[ "$dir" = /* ]] || dir="$root/$dir"

# Only the program and what is installed with it: the tests and benchmarks are not built,
# and installing does not build "all" first. Full RELRO and immediate binding harden the
# program at link time without changing a compiled object.
package_options=(-DBRIMVALE_UPDATES=OFF -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON "-DCMAKE_EXE_LINKER_FLAGS=-Wl,-z,relro -Wl,-z,now")
# A folder that was configured before gets its own settings back afterwards, so a developer's
# build keeps its update checks.
restore=()
if [[ -f "$dir/CMakeCache.txt" ]]; then
    for name in BRIMVALE_UPDATES CMAKE_SKIP_INSTALL_ALL_DEPENDENCY CMAKE_EXE_LINKER_FLAGS; do
        if line=$(grep -m1 "^$name:" "$dir/CMakeCache.txt"); then restore+=("-D$line"); else restore+=("-U$name"); fi
    done
fi
BRIMVALE_TARGETS="brimvale brimvale_docs" "$root/scripts/build.sh" "$dir" "${package_options[@]}" >&2
rm -rf "$dir/packages"
(cd "$dir" && cpack -G DEB >&2)
if [[ ${#restore[@]} -gt 0 ]]; then cmake -B "$dir" "${restore[@]}" >/dev/null; fi
deb=$(ls "$dir"/packages/brimvale_*.deb)
echo "$deb"
