# The desktop suite: the library with no simulation, on Wine and a real X server with two outputs.
# shellcheck shell=bash

run_desktop_tests() {
  local folder=$BUILD/desktop
  start_xorg "$ROOT/tests/desktop/xorg.conf" || return 1
  local mode
  for mode in 1366x768 1280x1024 1024x768 800x600; do xrandr --addmode DUMMY1 "$mode" || return 1; done
  xrandr --output DUMMY0 --mode 1366x768 --pos 0x0 --primary --output DUMMY1 --mode 1024x768 --pos 1366x0 || return 1
  # The server calls the new output connected only after somebody has asked again.
  xrandr --query >/dev/null || return 1
  start_compositor && start_wine desktop || return 1

  # A folder of its own: the library looks for its configuration and its pictures beside the program.
  rm -rf "$folder" && mkdir -p "$folder" || return 1
  cp -r "$BUILD/release/bin/"{desktop_tests.exe,Ostrel.dll,OstrelWhiteBox.dll,OstrelRes} \
    "$ROOT/tests/desktop/x-answers" "$folder" || return 1
  cd "$folder" || return 1
  python3 "$ROOT/scripts/lib/run_gtest.py" --timeout 300 "$1" "$WINE" desktop_tests.exe
}
