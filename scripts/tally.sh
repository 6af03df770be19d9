# shellcheck shell=bash
# Sourced by scripts that run several steps and count them: bash, with pipefail.

passed=0 failed=0 skipped=0

# step TITLE COMMAND...: runs a command. What it says goes to standard output, and its last line is taken
# for its tests when it counts them ("7 passed, 0 failed", perhaps ", 1 skipped"); any other command
# counts as one test.
step() {
  local title=$1 began=$SECONDS log status=0 count
  shift
  log=$(mktemp)
  printf '\n=== %s\n' "$title"
  "$@" </dev/null 2>&1 | tee "$log" || status=$?
  count=$(tail -n 1 "$log" | grep -xE '[0-9]+ passed, [0-9]+ failed(, [0-9]+ skipped)?') || count=
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

# Prints the sums; the status is 0 if nothing failed.
tally() {
  local skips=
  [ "$skipped" = 0 ] || skips=", $skipped skipped"
  echo "$passed passed, $failed failed$skips"
  [ "$failed" = 0 ]
}
