# shellcheck shell=bash
# Shared by ./run-tests, ./quickstart, bench/run and the scripts beside it: what has to be installed, and where
# conversions can work. Sourced, not run.

# The top folder.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*" >&2; }
fail() { say "$*"; exit 1; }

# step LOG TITLE COMMAND...: prints the title, and what the command printed only if it fails.
step() {
  local log=$1 title=$2
  shift 2
  mkdir -p "$(dirname "$log")"
  say "$title (log: $log)"
  "$@" >"$log" 2>&1 || { tail -n 60 "$log" >&2; fail "$title: failed, all of it is in $log"; }
}

# What is needed for what. Each line is a probe, run by the shell, and the Debian package to install if the probe fails.
# A package whose name differs between releases is found by a command.
#   group NAME <<END
#   large_group NAME WHAT <<END    the same for what only ./run-tests --all does; WHAT says what that is
declare -A needs=()
large_groups=()
large_titles=()
group() { needs[$1]=$(cat); }
large_group() {
  group "$1"
  large_groups+=("$1")
  large_titles+=("$2")
}

group build <<'END'
command -v g++ | g++
command -v cmake | cmake
command -v ninja | ninja-build
command -v pkg-config | pkg-config
pkg-config --exists sqlite3 | libsqlite3-dev
pkg-config --exists geographiclib | $(geographiclib_package)
END

group qt5 <<'END'
pkg-config --exists Qt5Core Qt5Gui | qtbase5-dev
END

group quickstart <<'END'
command -v sqlite3 | sqlite3
END

group tests <<'END'
pkg-config --exists gtest | libgtest-dev
END

group lint <<'END'
command -v git | git
command -v shellcheck | shellcheck
END

group lint_clang <<'END'
command -v clang-format-14 | clang-format-14
command -v clang-tidy-14 | clang-tidy-14
END

group coverage <<'END'
command -v gcovr | gcovr
END

group profiler <<'END'
command -v valgrind | valgrind
END

group clang <<'END'
command -v clang++ | clang
END

group cross <<'END'
command -v cmake | cmake
command -v ninja | ninja-build
command -v qemu-aarch64 && command -v qemu-arm | qemu-user
END

group cross_arm64 <<'END'
command -v aarch64-linux-gnu-g++ | g++-aarch64-linux-gnu
END

group cross_armhf <<'END'
command -v arm-linux-gnueabihf-g++ | g++-arm-linux-gnueabihf
END

large_group fuzzer 'fuzzing by clang' <<'END'
command -v clang++ | clang
clang_links -fsanitize=fuzzer,address,undefined | libclang-rt-$(clang_release)-dev
END

large_group reference "doxygen's reference" <<'END'
command -v doxygen | doxygen
command -v dot | graphviz
END

large_group packages 'Debian packages' <<'END'
command -v dpkg-shlibdeps | dpkg-dev
command -v file | file
command -v lintian | lintian
command -v make | make
END

large_group layout "the classes' layout" <<'END'
command -v abidiff | abigail-tools
command -v xz | xz-utils
END

large_group qt6 'the library with Qt 6' <<'END'
pkg-config --exists Qt6Core Qt6Gui | qt6-base-dev
END

large_group maps 'maps as GDAL sees them' <<'END'
command -v python3 | python3
command -v ogrinfo | gdal-bin
command -v GeodSolve | geographiclib-tools
command -v sqlite3 | sqlite3
END

large_group pictures 'pages and pictures' <<'END'
command -v python3 | python3
command -v pdftoppm | poppler-utils
command -v ogr2ogr | gdal-bin
command -v bc | bc
[ -e /usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf ] | fonts-dejavu-core
[ -e /usr/share/fonts/truetype/noto/NotoSansArabic-Regular.ttf ] | fonts-noto-core
[ -e /usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc ] | fonts-noto-cjk
END

large_group postgresql 'PostgreSQL' <<'END'
command -v python3 | python3
command -v sqlite3 | sqlite3
command -v psql | postgresql-client
compgen -G '/usr/lib/postgresql/*/bin/initdb' | postgresql
compgen -G '/usr/share/postgresql/*/extension/postgis.control' | postgresql-postgis
END

large_group benchmarks 'benchmarks' <<'END'
command -v python3 | python3
command -v sqlite3 | sqlite3
pkg-config --exists benchmark | libbenchmark-dev
have_header SQLiteCpp/SQLiteCpp.h | libsqlitecpp-dev
compgen -G "$(pkg-config --variable=libdir Qt5Core)/qt5/plugins/sqldrivers/libqsqlite.so" | libqt5sql5-sqlite
END

have_header() { echo "#include <$1>" | g++ -std=c++17 -E -x c++ -; }

# The package was renamed between releases.
geographiclib_package() {
  apt-cache show libgeographiclib-dev >/dev/null 2>&1 && echo libgeographiclib-dev || echo libgeographic-dev
}

# Whether a fuzzer can be linked with these options; its runtime is a package separate from clang.
clang_links() (
  folder=$(mktemp -d)
  trap 'rm -r "$folder"' EXIT
  echo 'extern "C" int LLVMFuzzerTestOneInput(const unsigned char*, unsigned long) { return 0; }' |
    clang++ -x c++ "$@" -o "$folder/probe" -
)

# Major version of the clang++ that is here, or else of the one that would be installed.
clang_release() {
  local version
  version=$(clang++ -dumpversion 2>/dev/null || apt-cache depends clang | sed -n 's/.*Depends: clang-//p')
  echo "${version%%.*}"
}

# Runs a command as root; false if there is no way to. Asks for a password only if somebody can answer.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif [ -t 0 ]; then
    sudo "$@"
  else
    sudo -n "$@"
  fi
}

# install_missing GROUP...: installs the package of every probe that fails. Nothing is asked of apt or sudo if all
# probes pass, so that an ordinary user needs neither on a machine that is set up.
install_missing() {
  local probe package name missing=() log=$root/build/install.txt
  while IFS='|' read -r probe package; do
    (eval "$probe") >/dev/null 2>&1 </dev/null || missing+=("$package")
  done < <(for name in "$@"; do printf '%s\n' "${needs[$name]}"; done)
  [ ${#missing[@]} -gt 0 ] || return 0
  command -v apt-get >/dev/null || fail "Missing, and no apt-get here (Debian's names):${missing[*]}"

  # Names that differ are found in the package lists, and a bare system has none.
  (step "$log" "Fetching the lists of packages" as_root apt-get update -q) || say "Trying with those that are there."
  mapfile -t missing < <(eval "printf '%s\n' ${missing[*]}" | sort -u)
  (step "$log" "Installing ${missing[*]}" as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}") ||
    fail "To install by hand, as root: apt-get install ${missing[*]}"
}

# configure FOLDER CMAKE-OPTIONS...
configure() {
  local folder=$1
  shift
  local options=(-G Ninja "$@")
  command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake -S "$root" -B "$folder" "${options[@]}"
}

# build FOLDER CMAKE-OPTIONS...
build() {
  configure "$@" && cmake --build "$1" -j "$(nproc)"
}

scratch_folder=/opt/tarnbeam/database

# with_scratch_folder COMMAND...: runs it where conversions find the folder that they work through. A user and mount
# namespace of its own is preferred: there the folder is in memory, and never the one that the files of an instrument go
# through. Where that is not allowed, the folder itself is made for this user.
with_scratch_folder() {
  if unshare --user --map-root-user --mount true 2>/dev/null; then
    unshare --user --map-root-user --mount bash -euc "$own_scratch_folder" - "$scratch_folder" "$@"
  else
    make_scratch_folder
    "$@"
  fi
}

# With the folder above, since tests take the scratch folder away and put it back.
make_scratch_folder() {
  local above=${scratch_folder%/*} command
  [ ! -w "$scratch_folder" ] || [ ! -w "$above" ] || return 0
  command="mkdir -p $scratch_folder && chown $(id -u) $above $scratch_folder"
  as_root sh -c "$command" 2>/dev/null ||
    fail "Conversions work in $scratch_folder, which this user cannot write to, and user namespaces are" \
      "not allowed here. Make the folder once, as root: $command"
  say "Made $scratch_folder for $(id -un): user namespaces are not allowed here."
}

# Lays an empty file system over /opt, with what was there before bound into it.
# shellcheck disable=SC2016
own_scratch_folder='
  folder=$1
  shift
  before=$(mktemp -d)
  mount --rbind /opt "$before"
  mount -t tmpfs tmpfs /opt
  for entry in "$before"/*/; do
    [ -d "$entry" ] && [ "$(basename "$entry")" != tarnbeam ] || continue
    mkdir "/opt/$(basename "$entry")"
    mount --rbind "$entry" "/opt/$(basename "$entry")"
  done
  umount -l "$before"
  rmdir "$before"
  mkdir -p "$folder"
  exec "$@"'
