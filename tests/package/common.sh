# shellcheck shell=bash
# Shared by the tests of what gets installed. Sourced with $build and $source set.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

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

# consume PREFIX: builds and runs the consumer against an installation, through CMake and pkg-config.
consume() {
  local prefix=$1 pc libraries
  pc=$(find "$prefix" -name TarnbeamDatabase.pc)
  libraries=$(dirname "$(dirname "$pc")")

  cmake -S "$here/consumer" -B "$work/cmake-consumer" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF >"$work/log" 2>&1 || { cat "$work/log"; fail "find_package"; }
  cmake --build "$work/cmake-consumer" >"$work/log" 2>&1 || { cat "$work/log"; fail "build by CMake"; }
  run_consumer "$work/cmake-consumer/consumer" "$libraries"

  local flags
  flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --cflags --libs TarnbeamDatabase)
  case $flags in *"$prefix"/*) ;; *) fail "pkg-config does not follow the installation: $flags" ;; esac
  # shellcheck disable=SC2086
  "$CXX" "$here/consumer/main.cpp" -o "$work/pkg-config-consumer" $flags
  run_consumer "$work/pkg-config-consumer" "$libraries"
}
