# The suites of scripts/test: for each a function suite_NAME RESULT that writes "PASSED FAILED" to the file RESULT.
# What a suite prints is shown when it fails; of one that passes, the lines that begin with "NOTE ".
# shellcheck shell=bash

ALL_SUITES=(format build header native fuzz unit sim behaviour session ubsan built-file pictures host desktop demo tidy)

# What several suites share is started here, in the script's own process, when the first of them comes.
prepare_for() {
  case $1 in
    unit | sim | behaviour | session | ubsan | header | host)
      if [[ -z ${shared_wine:-} ]] && start_xvfb && start_wine test; then shared_wine=1; fi
      ;;
  esac
}

# --- Helpers

# tally RESULT: "ok TEXT" and "FAILED TEXT" lines pass through from standard input and are counted.
tally() {
  local line passed=0 failed=0
  while IFS= read -r line; do
    printf '%s\n' "$line"
    case $line in
      ok\ *) passed=$((passed + 1)) ;;
      FAILED\ *) failed=$((failed + 1)) ;;
    esac
  done
  echo "$passed $failed" >"$1"
}

# check TEXT COMMAND...: one line for tally, with the command's output before it where it failed.
check() {
  local text=$1 output
  shift
  if output=$("$@" 2>&1); then
    echo "ok $text"
  else
    printf '%s\n' "$output"
    echo "FAILED $text"
  fi
}

# need_built PRESET TARGET...: ends the suite where these cannot be built.
need_built() {
  configure "$1" && build "$@" && return 0
  complain "*** $* was not built"
  exit 1
}

# run_program RESULT SHARDS PRESET NAME: a GoogleTest program under Wine.
run_program() {
  local result=$1 shards=$2 preset=$3 name=$4
  [[ -n ${shared_wine:-} ]] || { complain "*** there is no Wine to run it"; return 1; }
  cd "$BUILD/$preset/bin" || return 1
  python3 "$ROOT/scripts/lib/run_gtest.py" --shards "$shards" --timeout 600 "$result" "$WINE" "$name.exe"
}

# --- What is read

suite_format() {
  local name
  list_sources | while IFS= read -r name; do
    check "$name" clang-format-14 --dry-run --Werror "$ROOT/$name"
  done | grep -v '^ok' | tee "$OUT/test/format.wrong" | head -n 60
  local wrong all
  wrong=$(grep -c '^FAILED' "$OUT/test/format.wrong")
  all=$(list_sources | wc -l)
  echo "$((all - wrong)) $wrong" >"$1"
}

suite_tidy() {
  need_built release
  python3 "$ROOT/scripts/lib/run_tidy.py" --jobs "$JOBS" "$1" "$BUILD/release" "$ROOT" "$BUILD/tidy"
}

# --- What is built

suite_build() {
  { check "release: the library, its white-box build, the host and every test program" configure_and_build release; } |
    tally "$1"
}

configure_and_build() { configure "$1" && build "$1"; }

suite_header() {
  need_built release Ostrel
  local strict=(-Wall -Wextra -Wpedantic -Werror -I"$ROOT/include" -I"$ROOT") compiler define
  local cross_c=x86_64-w64-mingw32-gcc-posix cross_cpp=x86_64-w64-mingw32-g++-posix
  local folder=$BUILD/header
  mkdir -p "$folder" && cp "$BUILD/release/bin/Ostrel.dll" "$folder"
  {
    for compiler in "gcc -std=c99" "gcc -std=c11" "g++ -std=c++11 -x c++" "g++ -std=c++17 -x c++" \
      "$cross_c -std=c99" "$cross_cpp -std=c++11 -x c++" "$cross_cpp -std=c++17 -x c++"; do
      for define in OSTREL_WITH_PROTOTYPES OSTREL_NO_PROTOTYPES; do
        # shellcheck disable=SC2086
        check "$compiler -D$define" $compiler -D$define "${strict[@]}" -fsyntax-only "$ROOT/tests/header/alone.c"
      done
    done
    check "a C host links with the import library" "$cross_c" -std=c99 "${strict[@]}" "$ROOT/tests/header/c_host.c" \
      -o "$folder/c_host.exe" "$BUILD/release/lib/libOstrel.dll.a"
    check "a C++ host compiles" "$cross_cpp" -std=c++17 "${strict[@]}" -static "$ROOT/tests/header/cpp_host.cpp" \
      -o "$folder/cpp_host.exe"
    check "the C host gets its answers" run_here "$folder" c_host.exe
    check "the C++ host gets its answers" run_here "$folder" cpp_host.exe
  } | tally "$1"
}

# run_here FOLDER PROGRAM: under Wine, at most a minute.
run_here() { [[ -n ${shared_wine:-} ]] && cd "$1" && timeout 60 "$WINE" "$2"; }

suite_native() {
  need_built native
  ASAN_OPTIONS=detect_leaks=${OSTREL_LEAKS:-1} \
    python3 "$ROOT/scripts/lib/run_gtest.py" "$1" "$BUILD/native/bin/unit_tests"
}

# Fixed seeds: what fails here fails here again. The input that failed is kept beside the seeds.
suite_fuzz() {
  need_built fuzz edid_fuzz
  local folder=$BUILD/fuzz/edid
  rm -rf "$folder" && mkdir -p "$folder/corpus"
  python3 "$ROOT/tests/fuzz/make_edid_seeds.py" "$folder/seeds" || return 1
  {
    check "the EDID reader takes every seed" fuzz_seeds edid_fuzz "$folder"
    check "the EDID reader takes 800000 blocks made of them" fuzz_run edid_fuzz "$folder" 800000 300
  } | tally "$1"
}

# fuzz_seeds PROGRAM FOLDER: each seed once.
fuzz_seeds() { run_fuzzer "$1" -artifact_prefix="$2/" "$2"/seeds/*; }

# fuzz_run PROGRAM FOLDER RUNS LARGEST: it must tell that it has made them all.
fuzz_run() {
  run_fuzzer "$1" -artifact_prefix="$2/" -seed=1 -runs="$3" -max_len="$4" "$2/corpus" "$2/seeds" >"$2/run.log" 2>&1 &&
    grep -q "^Done $3 runs" "$2/run.log" && return 0
  tail -n 60 "$2/run.log"
  return 1
}

run_fuzzer() {
  local program=$1
  shift
  ASAN_OPTIONS=detect_leaks=${OSTREL_LEAKS:-1} timeout 300 "$BUILD/fuzz/bin/$program" "$@"
}

# --- What runs under Wine

suite_unit() { need_built release unit_tests; run_program "$1" 1 release unit_tests; }
suite_sim() { need_built release sim_tests; run_program "$1" "$JOBS" release sim_tests; }
suite_behaviour() { need_built release behaviour_tests; run_program "$1" "$JOBS" release behaviour_tests; }
suite_session() { need_built release session_tests; run_program "$1" "$JOBS" release session_tests; }

# The library alone is built once more; the test programs are those of the release build, beside it.
suite_ubsan() {
  local passed=0 failed=0 name part_passed part_failed
  need_built release behaviour_tests session_tests
  need_built ubsan Ostrel OstrelWhiteBox ostrel_pictures
  for name in behaviour_tests session_tests; do
    cp "$BUILD/release/bin/$name.exe" "$BUILD/ubsan/bin/"
    rm -f "$1.part"
    run_program "$1.part" "$JOBS" ubsan "$name"
    part_passed=0 part_failed=1
    [[ -s $1.part ]] && read -r part_passed part_failed <"$1.part"
    passed=$((passed + part_passed)) failed=$((failed + part_failed))
  done
  echo "$passed $failed" >"$1"
}

# --- What was built

suite_built_file() {
  need_built release Ostrel
  python3 "$ROOT/tests/built_file/run.py" "$1" "$BUILD/release/bin/Ostrel.dll" "$ROOT"
}

suite_pictures() {
  need_built release ostrel_pictures
  check "the rendered pictures" python3 "$ROOT/assets/check_pictures.py" "$BUILD/release/bin/OstrelRes" | tally "$1"
}

# --- The whole product

suite_host() {
  need_built release ostrel-host
  . "$ROOT/tests/host/suite.sh"
  host_checks | tally "$1"
}

suite_desktop() {
  need_built release desktop_tests
  . "$ROOT/tests/desktop/suite.sh"
  run_desktop_tests "$1"
}

suite_demo() {
  need_built release ostrel-host
  check "scripts/demo" "$ROOT/scripts/demo" | tally "$1"
}
