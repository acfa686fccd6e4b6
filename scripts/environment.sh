# shellcheck shell=bash
# Shared by ./run-tests and ./quickstart: what has to be installed, and where conversions can work.
# Sourced, not run.

say() { printf '%s\n' "$*" >&2; }
fail() { say "$*"; exit 1; }

# Runs a command as root; false where there is no way to.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    return 1
  fi
}

# install_missing "PROBE|PACKAGE"...: installs the package of every probe that fails. Nothing is asked of
# apt or sudo where all probes pass, so that an ordinary user needs neither on a machine that is set up.
install_missing() {
  local entry missing=()
  for entry in "$@"; do
    eval "${entry%%|*}" >/dev/null 2>&1 || missing+=("${entry#*|}")
  done
  [ ${#missing[@]} -eq 0 ] && return
  local advice="Install by hand: apt-get install ${missing[*]}"
  command -v apt-get >/dev/null || fail "Missing: ${missing[*]} (Debian's names), and there is no apt-get here."
  [ "$(id -u)" -eq 0 ] || command -v sudo >/dev/null || fail "Missing, and neither root nor sudo. $advice"
  say "Installing ${missing[*]}"
  as_root apt-get update -qq >&2 || say "apt-get update failed; trying with the lists that are there."
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -qq --no-install-recommends "${missing[@]}" >&2 || fail "Could not install. $advice"
}

# Likewise, for what can be done without.
install_if_possible() { (install_missing "$@") || say "Going on without it."; }

# What the library and the tool need to be built. pkg-config stands before the probes that use it.
build_requirements() {
  install_missing \
    'command -v g++|g++' \
    'command -v cmake|cmake' \
    'command -v ninja|ninja-build' \
    'command -v pkg-config|pkg-config' \
    'pkg-config --exists Qt5Core Qt5Gui|qtbase5-dev' \
    'pkg-config --exists sqlite3|libsqlite3-dev'
}

# configure FOLDER CMAKE-OPTIONS...
configure() {
  local folder=$1
  shift
  local options=(-G Ninja "$@")
  command -v ccache >/dev/null && options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  cmake -S "$root" -B "$folder" "${options[@]}"
}

scratch_folder=/opt/tarnbeam/database

# with_scratch_folder COMMAND...: runs it where conversions find the folder that they work through. A user and
# mount namespace of its own is preferred: the folder is in memory there, and never the one that the files of
# an instrument go through. Where that is not allowed, the folder itself is made.
with_scratch_folder() {
  if unshare --user --map-root-user --mount true 2>/dev/null; then
    unshare --user --map-root-user --mount bash -euc "$own_scratch_folder" - "$scratch_folder" "$@"
  elif mkdir -p "$scratch_folder" 2>/dev/null && [ -w "$scratch_folder" ]; then
    "$@"
  else
    fail "Conversions work in $scratch_folder, which this user cannot write to, and user namespaces are" \
      "not allowed here. Make the folder once: sudo install -d -o $(id -un) $scratch_folder"
  fi
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
