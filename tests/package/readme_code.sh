#!/bin/bash
# The code in the README is that of the consumers, which the other tests build and run.
. "$(dirname "$0")/common.sh"
# shellcheck disable=SC2016 # Markdown
same "code in README.md" "$(cat "$here/consumer/main.cpp" "$here/consumer/guarded.cpp")" \
  "$(awk '/^```cpp$/ { code = 1; next } /^```$/ { code = 0 } code' "$here/../../README.md")"
