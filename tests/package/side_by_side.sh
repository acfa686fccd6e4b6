#!/bin/bash
# The packages for Qt 5 and Qt 6 can be installed together: no file is in both.
. "$(dirname "$0")/common.sh"
for folder in "$build" "${other_build:?}"; do
  [ "$(wc -l <"$folder/package_files.txt")" -gt 20 ] || fail "no list of the packages' files in $folder"
done
same "files in both" "" "$(LC_ALL=C sort "$build/package_files.txt" "$other_build/package_files.txt" | uniq -d)"
