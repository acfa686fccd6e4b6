#!/bin/bash
# The recipes in examples/ name options, versions and files that exist, and their shell and make parts can be read.
. "$(dirname "$0")/common.sh"
root=$(cd "$here/../.." && pwd)
recipe=$(echo "$root"/examples/yocto/*.bb)
makefile=$root/examples/buildroot/tarnbeam-database/tarnbeam-database.mk
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")

same "options that CMake does not have" "" \
  "$(LC_ALL=C comm -23 <(grep -oh 'DTARNBEAM_[A-Z_]*' "$recipe" "$makefile" | cut -c2- | LC_ALL=C sort -u) \
    <(sed -n 's/^\(TARNBEAM_[A-Z_]*\):.*/\1/p' "$build/CMakeCache.txt" | LC_ALL=C sort -u))"
same "version in the recipe's name and text" "$(basename "${recipe#*_}" .bb) $version" \
  "${version%.*} $(sed -n 's/^PV = "\([0-9.]*\).*/\1/p' "$recipe")"

# The recipe's shell part, run on an installation.
install=$work/install
cmake --install "$build" --prefix "$install" >"$work/log" 2>&1 || { cat "$work/log"; fail "installation"; }
sed -n '/^do_install:append() {/,/^}/p' "$recipe" | sed '1d;$d' >"$work/append"
[ -s "$work/append" ] || fail "the recipe appends nothing to the installation"
D=$install libdir=/lib sh -euc "$(cat "$work/append")"
same "tmpfiles.d" "d /opt/tarnbeam/database 2775 root tarnbeam -
r /opt/tarnbeam/database/TemporaryDB.sqlite" "$(cat "$install/lib/tmpfiles.d/tarnbeam.conf")"
sed -n 's/^FILES:[^"]*"\(.*\)"$/\1/p' "$recipe" | tr ' ' '\n' >"$work/paths"
[ -s "$work/paths" ] || fail "the recipe packages nothing"
while IFS= read -r path; do
  path=$(bindir=bin datadir=share libdir=lib sh -euc "echo \"$path\"")
  [ -e "$install/$path" ] || fail "the recipe packages $path, which is not installed"
done <"$work/paths"

# The makefile, with Buildroot's own functions left out.
# shellcheck disable=SC2016 # make's
options() {
  make -f <(printf 'qstrip = $(1)\n'; cat "$makefile"
    printf 'show:\n\t@echo $(TARNBEAM_DATABASE_VERSION) $(TARNBEAM_DATABASE_SITE) $(TARNBEAM_DATABASE_CONF_OPTS)\n') \
    -s "$@" BR2_PACKAGE_TARNBEAM_DATABASE_SOURCE=/source show
}
same "what the makefile says" "$version /source -DTARNBEAM_BUILD_TESTS=OFF -DTARNBEAM_BUILD_TOOL=OFF" "$(options)"
same "what the makefile says with the program" \
  "$version /source -DTARNBEAM_BUILD_TESTS=OFF -DTARNBEAM_BUILD_TOOL=ON" "$(options BR2_PACKAGE_TARNBEAM_DATABASE_TOOL=y)"
