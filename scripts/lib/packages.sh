# Debian packages: installed where missing, by root or through sudo.
# shellcheck shell=bash

PACKAGES_BUILD=(
  cmake ninja-build git ca-certificates
  g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix
  libboost-dev libtomlplusplus-dev libcli11-dev nlohmann-json3-dev googletest
  librsvg2-bin python3
)
PACKAGES_RUN=(wine wine64 xvfb xcompmgr x11-xserver-utils imagemagick)
PACKAGES_TEST=(
  g++ clang-format-14 clang-tidy-14 clang-14 libclang-rt-14-dev
  xserver-xorg-core xserver-xorg-video-dummy
)

# need_packages NAME...: apt is not even asked when all are there.
need_packages() {
  local missing=() package as_root=()
  for package in "$@"; do
    if [[ $(dpkg-query -W -f '${Status}' "$package" 2>/dev/null) != 'install ok installed' ]]; then
      missing+=("$package")
    fi
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || die "these packages are missing, and there is no sudo to install them: ${missing[*]}"
    as_root=(sudo)
  fi
  say "Installing ${missing[*]}"
  local log=$OUT/packages.log
  if ! { "${as_root[@]}" apt-get -q update &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y --no-install-recommends install "${missing[@]}"; } \
    >"$log" 2>&1; then
    tail -n 20 "$log" >&2
    die "apt-get could not install these packages (see $log): ${missing[*]}"
  fi
}
