#!/bin/bash
# The same sources in another folder make the same packages, byte by byte.
. "$(dirname "$0")/common.sh"
root=$(cd "$here/../.." && pwd)
SOURCE_DATE_EPOCH=$(dpkg-parsechangelog -l "$root/cmake/debian/changelog" -S Timestamp)
export SOURCE_DATE_EPOCH

# In a path of another length, without a compiler cache, and without what programs do not get to see: tests.
other=$work/sources/in/another/folder
mkdir -p "$other"
tar -C "$root" -c --exclude=./build --exclude=./.git --exclude=./quickstart-output . | tar -x -C "$other"
{
  cmake -S "$other" -B "$other/made" -G Ninja -DCMAKE_BUILD_TYPE="$build_type" -DCMAKE_CXX_COMPILER="$CXX" \
    -DTARNBEAM_QT_MAJOR="$qt" -DTARNBEAM_BUILD_TESTS=OFF
  cmake --build "$other/made"
} >"$work/log" 2>&1 || { cat "$work/log"; fail "the other build"; }
for folder in "$build" "$other/made"; do
  cpack -G DEB --config "$folder/CPackConfig.cmake" -B "$work/packages-$(basename "$folder")" >"$work/log" 2>&1 ||
    { cat "$work/log"; fail "cpack in $folder"; }
done
sums() { (cd "$work/packages-$(basename "$1")" && sha256sum -- *.deb); }
same "packages" "$(sums "$build")" "$(sums "$other/made")"
