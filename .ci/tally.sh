# shellcheck shell=bash
# Sourced by scripts that run several steps and count them: bash, with pipefail.

passed=0 failed=0 skipped=0
failures=

# step TITLE COMMAND...: runs a command. What it says goes to standard output, and its last line is taken
# for its tests when it counts them ("7 passed, 0 failed", perhaps ", 1 skipped"); any other command
# counts as one test. The end of what a failed one said is kept, for tally to repeat it at the end.
step() {
  local title=$1 began=$SECONDS log status=0 count
  shift
  log=$(mktemp)
  printf '\n=== %s\n' "$title"
  "$@" </dev/null 2>&1 | tee "$log" || status=$?
  count=$(tail -n 1 "$log" | grep -xE '[0-9]+ passed, [0-9]+ failed(, [0-9]+ skipped)?') || count=
  [ "$status" = 0 ] ||
    failures+=$'\n'"=== $title failed with $status; its last lines were:"$'\n'"$(tail -n 60 "$log")"$'\n'
  rm "$log"
  add_to_tally "$status" "$count"
  printf '=== %s: %s, %d s\n' "$title" "$([ "$status" = 0 ] && echo passed || echo FAILED)" \
    $((SECONDS - began))
}

add_to_tally() {
  local status=$1 numbers=0
  read -r -a numbers <<<"${2//[!0-9 ]/}"
  if [ "${#numbers[@]}" -gt 1 ]; then
    passed=$((passed + numbers[0]))
    failed=$((failed + numbers[1]))
    skipped=$((skipped + ${numbers[2]-0}))
    [ "$status" = 0 ] || [ "${numbers[1]}" != 0 ] || failed=$((failed + 1))
  elif [ "$status" = 0 ]; then
    passed=$((passed + 1))
  else
    failed=$((failed + 1))
  fi
}

# Prints how the failed steps ended, and the sums last; the status is 0 if nothing failed.
tally() {
  local skips=
  printf '%s' "$failures"
  [ "$skipped" = 0 ] || skips=", $skipped skipped"
  echo "$passed passed, $failed failed$skips"
  [ "$failed" = 0 ]
}

# slowest_tests LOG: the twelve tests that took longest, of the log of a ctest run.
slowest_tests() {
  sed -nE 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: (.*[^ .]) \.+.* ([0-9.]+) sec.*/\2 \1/p' "$1" |
    sort -rn | awk 'NR <= 12 { printf "%8.1f s  %s\n", $1, substr($0, index($0, $2)) }'
}

# count_tests LOG: the line that counts the tests of a ctest run, from its log. CTest's "98% tests passed,
# 2 tests failed out of 100" has those that were skipped among the passed.
count_tests() {
  local skips
  skips=$(grep -cE '^ *[0-9]+/[0-9]+ Test .*\*\*\*Skipped' "$1" || true)
  sed -n 's/.*tests passed, \([0-9]*\) tests\{0,1\} failed out of \([0-9]*\)$/\1 \2/p' "$1" |
    awk -v skipped="$skips" '
      { print $2 - $1 - skipped " passed, " $1 " failed" (skipped > 0 ? ", " skipped " skipped" : "") }
      END { if (NR == 0) print "0 passed, 1 failed" }'
}
