#!/bin/bash
# The library exports exactly what exported_symbols.txt lists, where some names have a version behind them. Without
# optimisation, functions that are otherwise inlined are exported too; then nothing of the list may be missing.
. "$(dirname "$0")/common.sh"
scripts=$here/../../scripts
"$scripts/listed-symbols" "$qt" | cut -f1 >"$work/listed"
"$scripts/exported-symbols" "$build/lib$package_name.so" >"$work/exported"
if [ "$build_type" = Release ]; then
  same "exported symbols" "$(cat "$work/listed")" "$(cat "$work/exported")"
fi
same "symbols no longer exported" "" "$(LC_ALL=C comm -23 "$work/listed" "$work/exported")"
