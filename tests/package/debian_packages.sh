#!/bin/bash
# The Debian packages: what is in them, what they depend on, and that they work where they are unpacked.
. "$(dirname "$0")/common.sh"
library_version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
version=$(dpkg-parsechangelog -l "$here/../../cmake/debian/changelog" -S Version)
case $version in "$library_version"-*) ;; *) fail "the changelog is of $version, the library of $library_version" ;; esac
architecture=$(dpkg --print-architecture)
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
if [ "$qt" = 5 ]; then
  runtime=libtarnbeamdatabase1 development=libtarnbeamdatabase-dev tool=tarnbeam-db
  qt_development=qtbase5-dev
else
  runtime=libtarnbeamdatabaseqt$qt-1 development=libtarnbeamdatabaseqt$qt-dev tool=tarnbeam-db-qt$qt
  qt_development=qt$qt-base-dev
fi
# Its name differs between releases.
qt_runtime=$(dpkg-query -S "*/libQt${qt}Core.so.$qt" | sed 's/:.*//' | sort -u)
# The packages are the same whatever umask they are made with; this one is that of many users.
umask 002
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work/packages" >"$work/log" 2>&1 ||
  { cat "$work/log"; fail "cpack"; }

package() { echo "$work/packages/$1_${version}_$architecture.deb"; }
field() { dpkg-deb -f "$(package "$1")" "$2"; }
files() { dpkg-deb -c "$(package "$1")" | awk '$1 !~ /^d/ { print $6 }' | LC_ALL=C sort; }
files_without_documents() { files "$1" | grep -v "^./usr/share/doc/$1/"; }

# depends PACKAGE OTHER...: among what it depends on.
depends() {
  local list other
  list=$(field "$1" Depends)
  for other in "${@:2}"; do
    case ", $list," in *", $other"[\ ,]*) ;; *) fail "$1 does not depend on $other: $list" ;; esac
  done
}

# hardened FILE...: bound at start and then read-only, with guards on the stack. grep reads to the end: otherwise what
# writes to it would fail, and the check with it.
hardened() {
  local file
  for file in "$@"; do
    readelf -d "$file" | grep -E 'BIND_NOW|FLAGS_1.*NOW' >/dev/null || fail "$file is not bound at start"
    readelf -l "$file" | grep GNU_RELRO >/dev/null || fail "$file stays writable after it is bound"
    nm -D "$file" | grep __stack_chk_fail >/dev/null || fail "$file has no guards on the stack"
  done
}

same "packages" \
  "$(printf '%s\n' "$development" "$runtime-dbgsym" "$runtime" "$tool-dbgsym" "$tool" | LC_ALL=C sort)" \
  "$(cd "$work/packages" && for file in *.deb; do echo "${file%%_*}"; done | LC_ALL=C sort)"
for name in "$runtime" "$development" "$tool"; do
  same "version of $name" "$version" "$(field "$name" Version)"
  [ -n "$(field "$name" Maintainer)" ] || fail "$name has no maintainer"
  [ "$(field "$name" Description | wc -l)" -ge 2 ] || fail "$name is not described"
  files "$name" | grep -x "./usr/share/doc/$name/copyright" >/dev/null || fail "$name does not tell whose it is"
  if dpkg-deb -I "$(package "$name")" conffiles >/dev/null 2>&1; then fail "$name has configuration files"; fi
done
same "synopsis of the tool's package" \
  "Creates, fills, reads, checks and migrates antenna-alignment databases" \
  "$(field "$tool" Description | head -n 1)"
depends "$runtime" libc6 "$qt_runtime" libsqlite3-0 libstdc++6 passwd
depends "$development" "$runtime (= $version)" "$qt_development" libsqlite3-dev
depends "$tool" "$runtime (= $version)" "$qt_runtime"

same "files of the runtime package" \
  "./usr/lib/$triplet/lib$package_name.so.${library_version%%.*}
./usr/lib/$triplet/lib$package_name.so.$library_version" "$(files_without_documents "$runtime")"
for script in postinst postrm; do
  dpkg-deb -I "$(package "$runtime")" $script >"$work/$script"
  sh -n "$work/$script"
done
dpkg-deb -I "$(package "$runtime")" symbols >"$work/symbols"
same "symbols file" "lib$package_name.so.1 $runtime #MINVER#" "$(head -n 1 "$work/symbols")"
same "version of the symbols" 1.0.0 "$(awk '/@Base/ { print $NF }' "$work/symbols" | sort -u)"
same "symbols in the package" \
  "$(nm -D --defined-only "$build/lib$package_name.so" | awk '{ print $3 }' | LC_ALL=C sort)" \
  "$(sed -n 's/^ \(.*\)@Base .*/\1/p' "$work/symbols" | LC_ALL=C sort)"
same "several architectures" "same same foreign" \
  "$(field "$runtime" Multi-Arch) $(field "$development" Multi-Arch) $(field "$tool" Multi-Arch)"
lintian --fail-on error,warning "$work"/packages/*.deb >"$work/log" 2>&1 || { cat "$work/log"; fail "lintian"; }

grep -q '/opt/tarnbeam/database' "$work/postinst" || fail "postinst does not make the scratch folder"
unexpected=$(files_without_documents "$development" | grep -vE "^\./usr/(include/$package_name/.*\.h|lib/$triplet/(lib$package_name\.so|cmake/$package_name/.*\.cmake|pkgconfig/$package_name\.pc))$" || true)
same "unexpected development files" "" "$unexpected"
files "$tool" | grep -x ./usr/bin/tarnbeam-db >/dev/null || fail "no tool in its package"

for name in "$runtime" "$development" "$tool"; do
  dpkg-deb -x "$(package "$name")" "$work/root"
done
# For side_by_side.sh. The program is one, whichever Qt it is built with: the packages of it exclude each other.
for name in "$runtime" "$runtime-dbgsym" "$development" "$tool-dbgsym"; do
  files "$name"
done >"$build/package_files.txt"

# Each public header compiles on its own.
headers=$work/root/usr/include/$package_name
(cd "$headers" && find . -name '*.h' -printf '#include "%P"\n') | LC_ALL=C sort >"$work/all.h"
split -l 1 -d -a 3 --additional-suffix=.cpp "$work/all.h" "$work/header-"
# shellcheck disable=SC2046
printf '%s\0' "$work"/header-*.cpp | xargs -0 -P "$(nproc)" -n 8 \
  "$CXX" -std=c++17 -fPIC -fsyntax-only -Wall -Wextra -I"$headers" $(pkg-config --cflags "Qt${qt}Core")

hardened "$work/root/usr/lib/$triplet/lib$package_name.so" "$work/root/usr/bin/tarnbeam-db"
consume "$work/root/usr"

tool() { LD_LIBRARY_PATH=$work/root/usr/lib/$triplet "$work/root/usr/bin/tarnbeam-db" "$@"; }
tool create "$work/main.sqlite" "$work/thresholds.sqlite" >/dev/null
tool version "$work/main.sqlite" | grep -w 7 >/dev/null || fail "the tool does not create files of version 7"
