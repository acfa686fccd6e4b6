# shellcheck shell=bash
# Shared by the tests of what gets installed. Sourced; the environment names the build that is tested.
set -euo pipefail
: "${build:?}" "${build_type:?}" "${CXX:?}"
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# In the build folder: programs are run there, which not every folder for temporary files allows.
work=$(mktemp -d -p "$build")
trap 'rm -rf "$work"' EXIT

# TarnbeamDatabase, or with a suffix of its own for another Qt.
qt=$(sed -n 's/^TARNBEAM_QT_MAJOR:STRING=//p' "$build/CMakeCache.txt")
package_name=TarnbeamDatabase
[ "$qt" = 5 ] || package_name+=Qt$qt

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }

# same WHAT EXPECTED ACTUAL
same() {
  [ "$2" = "$3" ] || { diff <(printf '%s\n' "$2") <(printf '%s\n' "$3") >&2 || true; fail "$1 (< expected, > seen)"; }
}

# run_consumer PROGRAM LIBRARIES: in a folder of its own, and checks the files that it leaves.
run_consumer() {
  local folder
  folder=$(mktemp -d -p "$work")
  same "output of $1" "Höhe 7 North: off by 1.50 degrees, within thresholds" \
    "$(cd "$folder" && LC_ALL=C.UTF-8 LD_LIBRARY_PATH=$2 "$1")"
  same "files of $1" "main.sqlite thresholds.sqlite" "$(cd "$folder" && echo *)"
}

# run_guarded PROGRAM LIBRARIES: in a folder without files, which it has to report.
run_guarded() {
  local folder
  folder=$(mktemp -d -p "$work")
  same "output of $1" "1: prepare SELECT SiteIdentifier FROM Sites: no such table: Sites" \
    "$(cd "$folder" && ! LD_LIBRARY_PATH=$2 QT_LOGGING_RULES='*.debug=false' "$1" 2>&1)"
}

# consume PREFIX: builds and runs the consumer against an installation, through CMake and pkg-config.
consume() {
  local prefix=$1 pc libraries
  pc=$(find "$prefix" -name "$package_name.pc")
  libraries=$(dirname "$(dirname "$pc")")

  cmake -S "$here/consumer" -B "$work/cmake-consumer" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$prefix" -DTARNBEAM="$package_name" \
    -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >"$work/log" 2>&1 || { cat "$work/log"; fail "find_package"; }
  cmake --build "$work/cmake-consumer" >"$work/log" 2>&1 || { cat "$work/log"; fail "build by CMake"; }
  run_consumer "$work/cmake-consumer/consumer" "$libraries"
  run_guarded "$work/cmake-consumer/guarded" "$libraries"

  local flags
  flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --cflags --libs "$package_name")
  case $flags in *"$prefix"/*) ;; *) fail "pkg-config does not follow the installation: $flags" ;; esac
  # shellcheck disable=SC2086
  "$CXX" -fPIC "$here/consumer/main.cpp" -o "$work/pkg-config-consumer" $flags
  run_consumer "$work/pkg-config-consumer" "$libraries"
}
