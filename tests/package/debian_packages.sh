#!/bin/bash
# The Debian packages: what is in them, what they depend on, and that they work where they are unpacked.
. "$(dirname "$0")/common.sh"
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
architecture=$(dpkg --print-architecture)
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/packages" >"$work/log" 2>&1 ||
  { cat "$work/log"; fail "cpack"; }

package() { echo "$work/packages/$1_${version}_$architecture.deb"; }
field() { dpkg-deb -f "$(package "$1")" "$2"; }
files() { dpkg-deb -c "$(package "$1")" | awk '$1 !~ /^d/ { print $6 }' | LC_ALL=C sort; }

# depends PACKAGE OTHER...: among what it depends on.
depends() {
  local list other
  list=$(field "$1" Depends)
  for other in "${@:2}"; do
    case ", $list," in *", $other"[\ ,]*) ;; *) fail "$1 does not depend on $other: $list" ;; esac
  done
}

same "packages" "libtarnbeamdatabase-dev libtarnbeamdatabase1 tarnbeam-db" \
  "$(cd "$work/packages" && for file in *.deb; do printf '%s ' "${file%%_*}"; done | sed 's/ $//')"
for name in libtarnbeamdatabase1 libtarnbeamdatabase-dev tarnbeam-db; do
  same "version of $name" "$version" "$(field $name Version)"
  [ -n "$(field $name Maintainer)" ] || fail "$name has no maintainer"
  [ "$(field $name Description | wc -l)" -ge 2 ] || fail "$name is not described"
  if dpkg-deb -I "$(package $name)" conffiles >/dev/null 2>&1; then fail "$name has configuration files"; fi
done
same "synopsis of the tool's package" \
  "Creates, fills, reads, checks and migrates antenna-alignment databases" \
  "$(field tarnbeam-db Description | head -n 1)"
depends libtarnbeamdatabase1 libc6 libqt5core5a libsqlite3-0 libstdc++6 passwd
depends libtarnbeamdatabase-dev "libtarnbeamdatabase1 (= $version)" qtbase5-dev
depends tarnbeam-db "libtarnbeamdatabase1 (= $version)" libqt5core5a

same "files of the runtime package" \
  "./usr/lib/$triplet/libTarnbeamDatabase.so.${version%%.*}
./usr/lib/$triplet/libTarnbeamDatabase.so.$version" "$(files libtarnbeamdatabase1)"
for script in postinst postrm; do
  dpkg-deb -I "$(package libtarnbeamdatabase1)" $script >"$work/$script"
  sh -n "$work/$script"
done
grep -q '/opt/tarnbeam/database' "$work/postinst" || fail "postinst does not make the scratch folder"
unexpected=$(files libtarnbeamdatabase-dev | grep -vE "^\./usr/(include/TarnbeamDatabase/.*\.h|lib/$triplet/(libTarnbeamDatabase\.so|cmake/TarnbeamDatabase/.*\.cmake|pkgconfig/TarnbeamDatabase\.pc))$" || true)
same "unexpected development files" "" "$unexpected"
files tarnbeam-db | grep -qx ./usr/bin/tarnbeam-db || fail "no tool in its package"

for name in libtarnbeamdatabase1 libtarnbeamdatabase-dev tarnbeam-db; do
  dpkg-deb -x "$(package $name)" "$work/root"
done

# Each public header compiles on its own.
headers=$work/root/usr/include/TarnbeamDatabase
(cd "$headers" && find . -name '*.h' -printf '#include "%P"\n') | LC_ALL=C sort >"$work/all.h"
split -l 1 -d -a 3 --additional-suffix=.cpp "$work/all.h" "$work/header-"
# shellcheck disable=SC2046
"$CXX" -std=c++17 -fPIC -fsyntax-only -Wall -Wextra -I"$headers" $(pkg-config --cflags Qt5Core) \
  "$work"/header-*.cpp

consume "$work/root/usr"

tool() { LD_LIBRARY_PATH=$work/root/usr/lib/$triplet "$work/root/usr/bin/tarnbeam-db" "$@"; }
tool create "$work/main.sqlite" "$work/thresholds.sqlite" >/dev/null
tool version "$work/main.sqlite" | grep -qw 7 || fail "the tool does not create files of version 7"
