#!/bin/bash
# The library exports exactly what exported_symbols.txt lists; see scripts/update-exported-symbols.
. "$(dirname "$0")/common.sh"
same "exported symbols" "$(cat "$here/exported_symbols.txt")" \
  "$("$here/../../scripts/exported-symbols" "$build/libTarnbeamDatabase.so")"
