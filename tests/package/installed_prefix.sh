#!/bin/bash
# Another project builds and runs against an installed prefix that was moved after the installation.
. "$(dirname "$0")/common.sh"
cmake --install "$build" --prefix "$work/first" >"$work/log" || { cat "$work/log"; fail "installation"; }
mkdir "$work/moved"
mv "$work/first" "$work/moved/prefix"
consume "$work/moved/prefix"
