# Shared by run.sh, test.sh and .ci/run: what has to be installed, and how a preset is built.
# SPDX-License-Identifier: AGPL-3.0-or-later
# shellcheck shell=bash

# To build and to run.
build_packages=(
  g++ cmake ninja-build ccache pkg-config
  qt6-base-dev libqt6svg6 fonts-dejavu-core
  libsqlite3-dev libicu-dev libzstd-dev zlib1g-dev libstemmer-dev libseccomp-dev
  libarchive-dev libxml2-dev libgmime-3.0-dev libuchardet-dev
  libmspack-dev libexiv2-dev libtag1-dev libwpd-dev libwps-dev librevenge-dev
  libmupdf-dev libmujs-dev libgumbo-dev libopenjp2-7-dev libjbig2dec0-dev libharfbuzz-dev
  libfreetype-dev libjpeg-dev libssl-dev
  wordnet-base
)
test_packages=(libgtest-dev libgmock-dev dbus-daemon)
# To fuzz: the compiler, its sanitizers and fuzzer, and what gives their reports names.
fuzz_packages=(clang libclang-rt-14-dev llvm)

# The given packages that are not installed, one a line.
missing_packages() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      echo "$package"
  done
}

# Runs apt-get as root, through sudo when need be.
as_root_apt() {
  local root=()
  [ "$(id -u)" = 0 ] || root=(sudo)
  "${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o Acquire::Retries=3 "$@" </dev/null
}

# Installs what is missing of the given packages, and asks apt for nothing else.
install_packages() {
  local missing
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -gt 0 ] || return 0
  echo "To be installed: ${missing[*]}" >&2
  if [ "$(id -u)" != 0 ] && ! command -v sudo >/dev/null; then
    echo "Neither root nor sudo. As root: apt-get install ${missing[*]}" >&2
    return 1
  fi
  # First the lists: an older one names packages that the servers hold no more.
  as_root_apt update >&2 || return 1
  as_root_apt install -y --no-install-recommends "${missing[@]}" >&2
}

# Configures and builds a preset of CMakePresets.json; call in the project's folder.
build_preset() {
  cmake --preset "$1" >&2 && cmake --build --preset "$1" >&2
}
