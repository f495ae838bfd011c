# Wine with a prefix below build/, one server for the whole script.
# shellcheck shell=bash

_find_wine() {
  command -v wine64 || { [[ -x /usr/lib/wine/wine64 ]] && echo /usr/lib/wine/wine64; }
}

# start_wine NAME: the prefix build/wine-NAME. Needs DISPLAY.
start_wine() {
  WINE=$(_find_wine) || { complain "There is no 64-bit Wine."; return 1; }
  export WINEPREFIX=$BUILD/wine-$1 WINEDEBUG=-all WINEARCH=win64
  # No downloads of Mono and Gecko, and no menu entries in the user's home.
  export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
  # The person's own X display, where there is one, still wants its cookie.
  export XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority}
  export HOME=$BUILD/home
  mkdir -p "$HOME" "$WINEPREFIX"
  _wine_server -p
  at_exit stop_wine
  if [[ ! -e $WINEPREFIX/ready ]]; then
    if ! timeout 300 "$WINE" wineboot -i >"$BUILD/wineboot.log" 2>&1; then
      complain "Wine could not make $WINEPREFIX."
      return 1
    fi
    touch "$WINEPREFIX/ready"
  fi
  # No window manager runs here: without this Wine waits two seconds for one at every close of the pop-up.
  "$WINE" reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null
}

_wine_server() {
  WINEPREFIX=$WINEPREFIX "$(command -v wineserver || echo /usr/lib/wine/wineserver64)" "$@"
}

stop_wine() {
  _wine_server -k 2>/dev/null
  # Until the last process of the prefix has gone, but not for ever.
  _wine_server -w 2>/dev/null &
  timeout 20 tail --pid=$! -f /dev/null
  return 0
}

# windows_path PATH: as a program under Wine names it.
windows_path() { printf 'Z:%s' "${1//\//\\}"; }
