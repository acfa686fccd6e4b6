#!/bin/bash
# The completion of bash knows every command and option that the program tells of, and the identifiers in its files.
#   completion.sh TOOL COMPLETION SURVEY
set -euo pipefail
export LC_ALL=C.UTF-8
tool=$1 survey=$3
# shellcheck source=/dev/null
. "$2"
folder=$(mktemp -d)
trap 'rm -r "$folder"' EXIT
cd "$folder"

# completed WORD...: what the last word may become, a line each.
completed() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  _tarnbeam_db
  printf '%s\n' "${COMPREPLY[@]}" | LC_ALL=C sort
}
# expect TITLE WANTED FOUND
expect() {
  [ "$2" = "$3" ] || { printf '%s\nwanted:\n%s\nfound:\n%s\n' "$1" "$2" "$3" >&2; exit 1; }
}
sorted() { LC_ALL=C sort -u; }

commands=$("$tool" --help | sed -n 's/^  \([a-z][a-z]*\)  .*/\1/p')
expect "commands" "$(printf '%s\n' "$commands" --help --version | sorted)" "$(completed "$tool" '')"
for command in $commands; do
  options=$("$tool" "$command" --help | sed -n 's/^  \(-[a-z], \)*\(--[a-z-]*\).*/\2/p' | sorted)
  expect "options of $command" "$options" "$(completed "$tool" "$command" --)"
done

"$tool" create m t >/dev/null
"$tool" import m t "$survey" >/dev/null
expect "a path" 'Żuławy\ –\ Elbląg' "$(completed "$tool" report m t --path Żu)"
expect "a site" 'Łódź\ –\ Księży\ Młyn' "$(completed "$tool" delete m t --site Łó)"

# Files of earlier versions stand alone.
# shellcheck disable=SC2317,SC2329
lister() { printf 'kind  reports  identifier\nsite        1  %s\n' "$*"; }
expect "one file" 'list\ old' "$(completed lister report old --site '')"
