# Configures and builds one preset.
# shellcheck shell=bash

# configure PRESET
configure() {
  cmake --preset "$1" -S "$ROOT" >"$BUILD/configure-$1.log" 2>&1 && return 0
  tail -n 30 "$BUILD/configure-$1.log"
  return 1
}

# build PRESET [TARGET...]: goes on behind the first error, so that one look shows them all.
build() {
  local preset=$1
  shift
  ninja -C "$BUILD/$preset" -j "$JOBS" -k 0 "$@" >"$BUILD/build-$preset.log" 2>&1 && return 0
  grep -v '^\[[0-9]*/[0-9]*\] \(Building\|Linking\)' "$BUILD/build-$preset.log" | tail -n 150
  return 1
}
