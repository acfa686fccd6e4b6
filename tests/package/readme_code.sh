#!/bin/bash
# The code in the README is the consumer that the other tests build and run.
. "$(dirname "$0")/common.sh"
same "code in README.md" "$(cat "$here/consumer/main.cpp")" \
  "$(sed -n '/^```cpp$/,/^```$/p' "$here/../../README.md" | sed '1d;$d')"
