# What every script starts with: where the checkout is, and where things made go.
# shellcheck shell=bash

set -u -o pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
BUILD=$ROOT/build
OUT=$ROOT/out
JOBS=${OSTREL_JOBS:-$(nproc)}
mkdir -p "$BUILD" "$OUT"

# Programs that keep caches in the user's home keep them here.
export XDG_CACHE_HOME=$BUILD/cache
export LC_ALL=C.UTF-8

say() { printf '%s\n' "$*"; }
complain() { printf '%s\n' "$*" >&2; }
die() {
  complain "$(basename "$0"): $*"
  exit 1
}

# At the exit, in reverse order: at_exit COMMAND [ARGUMENT...]
_exit_commands=()
at_exit() { _exit_commands+=("$(printf '%q ' "$@")"); }
_run_exit_commands() {
  local i
  for ((i = ${#_exit_commands[@]} - 1; i >= 0; --i)); do eval "${_exit_commands[i]}"; done
}
trap _run_exit_commands EXIT
# In a subshell: it ends what it started, and leaves to its parent what that started.
own_exit_commands() {
  _exit_commands=()
  trap _run_exit_commands EXIT
}
trap 'exit 130' INT
trap 'exit 143' TERM

# Ends one process that this script started, through sudo or not, and waits for it.
end_process() {
  local as_root=()
  [[ -e /proc/$1 && ! -O /proc/$1 ]] && as_root=(sudo -n)
  "${as_root[@]}" kill "$1" 2>/dev/null || return 0
  for _ in $(seq 50); do
    [[ -e /proc/$1 ]] || return 0
    sleep 0.1
  done
  "${as_root[@]}" kill -9 "$1" 2>/dev/null
}
