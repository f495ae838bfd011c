# The reference host, as a person or a program calls it.
# shellcheck shell=bash

# ask ARGUMENT...: runs the host; sets answer, complaint and code.
ask() {
  answer=$(timeout 60 "$WINE" "$BUILD/release/bin/ostrel-host.exe" "$@" 2>"$BUILD/host.complaint" | tr -d '\r')
  code=${PIPESTATUS[0]}
  complaint=$(tr -d '\r' <"$BUILD/host.complaint")
}

# Wrong arguments and unusable files: one line that says `what`, exit code 2, nothing on standard output.
refuses() {
  local what=$1
  shift
  ask "$@"
  [[ $code -eq 2 && -z $answer && $(wc -l <<<"$complaint") -eq 1 && $complaint == ostrel-host:*"$what"* ]] && return 0
  printf 'exit code %s, answer "%s", complaint "%s"\n' "$code" "$answer" "$complaint"
  return 1
}

# On the notebook with panel and CRT: exit code `wanted`, and every further word of `lines` as a line of the answer.
answers() {
  local wanted=$1 lines=$2 line
  shift 2
  ask --machine machines/intel-panel-crt.toml "$@"
  while IFS= read -r line; do
    [[ $code -eq $wanted ]] && grep -Eq "$line" <<<"$answer" && continue
    printf 'exit code %s, no line "%s" in:\n%s\n%s\n' "$code" "$line" "$answer" "$complaint"
    return 1
  done <<<"$lines"
}

# The JSON document has this value at this place: a Python expression over d.
json_says() {
  local expression=$1
  shift
  ask --json --machine machines/intel-panel-crt.toml "$@"
  [[ $code -eq 0 ]] && python3 -c "import json, sys; d = json.loads(sys.argv[1]); sys.exit(not ($expression))" "$answer" &&
    return 0
  printf 'exit code %s, not %s:\n%s\n%s\n' "$code" "$expression" "$answer" "$complaint"
  return 1
}

host_checks() {
  cd "$ROOT" || return 1
  local broken=$BUILD/host-broken.toml
  printf 'name = "broken"\n\n[windows]\nversion = 7\n' >"$broken"

  check "no command is refused" refuses "subcommand"
  check "an unknown command is refused" refuses "" dance
  check "an unknown option is refused" refuses "" --dance connected
  check "no press at all is refused" refuses "--times" press --times 0
  check "an unknown mode is refused" refuses "dance" set dance panel
  check "an unknown display is refused" refuses "dance" set clone dance
  check "an unknown key is refused" refuses "dance" press --keys dance
  check "a library that is not there is refused" refuses "nosuch.dll" --library nosuch.dll connected
  check "a library that is none is refused" refuses "README.md" --library README.md connected
  check "a notebook that is not there is refused" refuses "nosuch.toml" --machine nosuch.toml connected
  check "a broken notebook is told by file, line and field" refuses "host-broken.toml, line 4, field \"windows.version\"" \
    --machine "$broken" connected

  check "connected" answers 0 '^Connected +panel, crt \(2\)$' connected
  check "active" answers 0 '^Active +panel \(1\)$' active
  check "mode" answers 0 '^Mode +single on panel$' mode
  check "vendor" answers 0 '^Vendor +Intel$' vendor
  check "capability" answers 0 $'^Dual output +yes$\n^External +yes$\n^Extended +no$' capability
  check "set clone" answers 0 $'^Mode +clone on panel, crt$\n^Result +done$' set clone panel crt
  check "set single on the CRT" answers 0 '^Mode +single on crt$' set single crt
  check "extend on" answers 0 $'^Mode +extend on panel, crt$\n^Result +done$' extend on
  check "extend off" answers 0 '^Mode +single on panel$' extend off
  check "panel-only" answers 0 '^Mode +single on panel$' panel-only
  check "a press that ends as expected" answers 0 'clone internal\+crt: yes$' \
    press --times 2 --interval 100 --expect "clone internal+crt"
  check "a press that ends otherwise" answers 1 'no, it is clone internal\+crt$' \
    press --times 2 --interval 100 --expect "single internal"
  check "escape leaves everything as it was" answers 0 '^Mode after +single on panel' \
    press --times 2 --interval 100 --keys esc
  check "JSON of a query" json_says \
    'd["displays"]["names"] == ["panel", "crt"] and d["displays"]["count"] == 2 and d["displays"]["mask"] == 3' connected
  check "JSON of a press" json_says \
    '[e["code"] for e in d["events"] if e["event"] == "notification"] == [1, 2] and "clone" in d["after"]' \
    press --times 2 --interval 100
}
