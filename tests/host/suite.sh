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

# Exit code 0, and the words among the answer.
is_told() {
  local words=$1
  shift
  ask "$@"
  [[ $code -eq 0 && $answer == *"$words"* ]] && return 0
  printf 'exit code %s\n%s\n%s\n' "$code" "$answer" "$complaint"
  return 1
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

# edids CODE LINES COMPLAINTS ARGUMENT...: the exit code, every line of the answer (| for a tab) and of the complaint.
edids() {
  local wanted=$1 lines=$2 complaints=$3
  shift 3
  ask edid "$@"
  [[ $code -eq $wanted && ${answer//$'\t'/|} == "$lines" && $complaint == "$complaints" ]] && return 0
  printf 'exit code %s\n%s\n%s\n' "$code" "${answer//$'\t'/|}" "$complaint"
  return 1
}

# The same, with a file as standard input.
edids_from() {
  local input=$1
  shift
  edids "$@" <"$input"
}

# with TEXT WORD...: a line for each word, with the text behind it.
with() {
  local text=$1
  shift
  printf "%s$text\n" "$@"
}

edid_checks() {
  local folder=$BUILD/host-edids
  rm -rf "$folder" && python3 "$ROOT/tests/fuzz/make_edid_seeds.py" "$folder" && cd "$folder" || return 1
  mkdir folder
  od -An -v -tx1 named >blanks.txt
  tr -d ' ' <blanks.txt >lines.txt
  sed 's/ \(..\)/ 0x\1,/g' blanks.txt >array.txt
  tr 'a-f \n' 'A-F\t\t' <blanks.txt >capitals.txt
  { printf '\xEF\xBB\xBF' && cat blanks.txt; } >marked.txt
  echo 'hello' >words.txt
  echo '00 ff f' >one-digit.txt
  echo '00 ff f0f' >half.txt
  head -c 1100000 /dev/zero >huge

  local known='|loaded|Veld A1|1920|1080|60|1' nothing='|too short|||||'
  check "edid: the bytes themselves" edids 0 "named$known" '' named
  check "edid: an extension block" edids 0 "extension$known" '' extension
  local texts=(blanks.txt lines.txt array.txt capitals.txt marked.txt)
  check "edid: hexadecimal text in all its forms" edids 0 "$(with "$known" "${texts[@]}")" '' "${texts[@]}"
  check "edid: standard input without a file" edids_from named 0 "-$known" ''
  check "edid: standard input by its name" edids_from array.txt 0 "$(with "$known" named -)" '' named -
  cp named 'Größe Ω 日.bin'
  check "edid: a name outside the code page" edids 1 "Größe Ω 日.bin$known" 'ostrel-host: fehlt Ω: no such file' \
    'Größe Ω 日.bin' 'fehlt Ω'
  check "edid: an absolute path" edids 0 "$folder/named$known" '' "$folder/named"
  local headers=(bad-header bad-version zeros ones)
  check "edid: a damaged header is a result" edids 0 "$(with '|bad header|Unknown Mnt||||' "${headers[@]}")" '' \
    "${headers[@]}"
  check "edid: a damaged checksum is a result" edids 0 'bad-checksum|bad checksum|Unknown Mnt||||' '' bad-checksum
  local short=(empty one-byte short one-digit.txt)
  check "edid: too little is a result" edids 0 "$(with "$nothing" "${short[@]}")" '' "${short[@]}"
  check "edid: no timing, no size" edids 0 'no-timing|loaded|||||1' '' no-timing
  check "edid: a timing that is not preferred" edids 0 'no-preferred|loaded||1920|1080|60|0' '' no-preferred
  check "edid: a timing of no pixels" edids 0 'no-pixels|loaded||0|0|0|1' '' no-pixels
  check "edid: a name of 13 characters is passed over" edids 0 'name-of-13|loaded|short|1920|1080|60|1' '' name-of-13
  check "edid: a text ahead of the name" edids 0 'text-first|loaded|text|1920|1080|60|1' '' text-first
  check "edid: a name stays in its column" edids 0 'controls|loaded|a\x09b\x0D\x01\xFF, |1920|1080|60|1' '' controls
  local complaints=(
    'ostrel-host: missing: no such file'
    'ostrel-host: folder: is a directory'
    'ostrel-host: words.txt: neither an EDID nor hexadecimal text'
    'ostrel-host: half.txt: half a byte in its hexadecimal text'
    'ostrel-host: huge: too large for an EDID'
  )
  check "edid: unreadable files are told, the rest go on" edids 1 "$(with "$known" named blanks.txt)" \
    "$(printf '%s\n' "${complaints[@]}")" missing named folder words.txt half.txt huge blanks.txt
  check "edid: an unreadable file alone" edids 1 '' 'ostrel-host: missing: no such file' missing
  check "edid: takes no library" refuses "--library" --library Ostrel.dll edid named
  cd "$ROOT" || return 1
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

  local wide=$BUILD/host-Ω.toml
  cp machines/intel-panel-crt.toml "$wide"
  check "a notebook whose name is outside the code page" is_told "Connected     panel, crt (2)" --machine "$wide" \
    connected
  check "a library that is not there is refused on a notebook" refuses "nosuch.dll" --library nosuch.dll \
    --machine machines/intel-panel-crt.toml connected

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
  check "a press that ends otherwise" answers 1 'no, it is clone internal\+crt 1366x768$' \
    press --times 2 --interval 100 --expect "single internal"
  check "a press that ends in the size it should" answers 0 'clone internal\+crt 1366x768: yes$' \
    press --times 2 --interval 100 --expect "clone internal+crt 1366x768"
  check "a press that ends in another size" answers 1 'no, it is clone internal\+crt 1366x768$' \
    press --times 2 --interval 100 --expect "clone internal+crt 800x600"
  check "a memory where no folder can be is refused" refuses "there is no folder" \
    --machine machines/intel-panel-crt.toml --memory 'Z:\nosuch\folder' connected
  check "escape leaves everything as it was" answers 0 '^Mode after +single on panel' \
    press --times 2 --interval 100 --keys esc
  check "JSON of a query" json_says \
    'd["displays"]["names"] == ["panel", "crt"] and d["displays"]["count"] == 2 and d["displays"]["mask"] == 3' connected
  check "JSON of a press" json_says \
    '[e["code"] for e in d["events"] if e["event"] == "notification"] == [1, 2] and "clone" in d["after"]' \
    press --times 2 --interval 100
  edid_checks
}
