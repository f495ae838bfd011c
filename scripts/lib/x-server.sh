# X servers of our own, on a free display number, gone with the script that started them.
# shellcheck shell=bash

# _start_x LOG COMMAND...: sets DISPLAY once the server accepts connections, and X_SERVER to its process.
_start_x() {
  local log=$1 number
  shift
  mkdir -p "$BUILD/x"
  number=$(mktemp "$BUILD/x/display.XXXXXX")
  # The number comes through standard output: sudo closes every other file.
  "$@" -displayfd 1 >"$number" 2>"$log" &
  X_SERVER=$!
  disown "$X_SERVER"
  at_exit end_process "$X_SERVER"
  for _ in $(seq 300); do
    [[ -s $number ]] && break
    kill -0 "$X_SERVER" 2>/dev/null || break
    sleep 0.1
  done
  if [[ ! -s $number ]]; then
    complain "The X server did not start: $*"
    tail -n 20 "$log" >&2
    return 1
  fi
  DISPLAY=:$(<"$number")
  export DISPLAY
  rm -f "$number"
}

# One screen, no hardware.
start_xvfb() {
  _start_x "$BUILD/xvfb.log" Xvfb -screen 0 "${1:-1366x768}x24" -nolisten tcp -noreset +extension Composite
}

# A real server on the dummy driver, whose outputs DUMMY0, DUMMY1, ... xrandr and Wine can switch.
# start_xorg CONFIGURATION
start_xorg() {
  local as_root=()
  [[ $(id -u) -ne 0 ]] && as_root=(sudo -n)
  _start_x "$BUILD/xorg.out" "${as_root[@]}" Xorg -config "$1" -logfile "$BUILD/xorg.log" -nolisten tcp -noreset \
    -ac -novtswitch -sharevts -keeptty
}

# Windows with alpha show what lies behind them only where a compositor runs.
start_compositor() {
  xcompmgr >"$BUILD/xcompmgr.log" 2>&1 &
  local compositor=$!
  disown "$compositor"
  at_exit end_process "$compositor"
  sleep 0.5
  kill -0 "$compositor" 2>/dev/null || { complain "The compositor did not start, see $BUILD/xcompmgr.log."; return 1; }
}

# paint_desktop IMAGE SIZE: a window below all others with a picture as ImageMagick names it. A picture of the root
# window itself would not outlive Wine's start.
paint_desktop() {
  display -size "$2" -geometry +0+0 -borderwidth 0 "$1" >"$BUILD/paint.log" 2>&1 &
  local painter=$!
  disown "$painter"
  at_exit end_process "$painter"
  sleep 1
}

# screenshot FILE.png: the root window as a person would see it.
screenshot() { import -silent -window root "png:$1"; }
