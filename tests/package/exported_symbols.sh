#!/bin/bash
# The library exports exactly what exported_symbols.txt lists. Without optimisation functions that are
# otherwise inlined join it; then nothing of the list may be missing.
. "$(dirname "$0")/common.sh"
"$here/../../scripts/exported-symbols" "$build/libTarnbeamDatabase.so" >"$work/exported"
if [ "$build_type" = Release ]; then
  same "exported symbols" "$(cat "$here/exported_symbols.txt")" "$(cat "$work/exported")"
fi
same "symbols no longer exported" "" "$(LC_ALL=C comm -23 "$here/exported_symbols.txt" "$work/exported")"
