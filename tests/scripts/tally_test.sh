#!/bin/bash
# What .ci/tally.sh counts, and what it shows.
set -u -o pipefail
cd "$(dirname "$0")/../.." || exit
# shellcheck source=.ci/tally.sh
. .ci/tally.sh

expect() {
  [ "$1" = "$2" ] && return
  printf 'expected: %s\nbut was:  %s\n' "$2" "$1" >&2
  exit 1
}

# Of commands that count their tests the numbers are taken, others are one test each.
counted() {
  (
    step title sh -c "$1" >/dev/null
    said=$(tally) status=$?
    printf '%s\nstatus %d\n' "${said##*$'\n'}" "$status"
  )
}
expect "$(counted 'exit 0')" $'1 passed, 0 failed\nstatus 0'
expect "$(counted 'exit 3')" $'0 passed, 1 failed\nstatus 1'
expect "$(counted 'echo "7 passed, 0 failed"')" $'7 passed, 0 failed\nstatus 0'
expect "$(counted 'echo "7 passed, 0 failed, 2 skipped"')" $'7 passed, 0 failed, 2 skipped\nstatus 0'
expect "$(counted 'echo "7 passed, 2 failed"; exit 1')" $'7 passed, 2 failed\nstatus 1'
expect "$(counted 'echo "7 passed, 0 failed"; exit 1')" $'7 passed, 1 failed\nstatus 1'
expect "$(counted 'echo "7 passed, 0 failed"; echo "and then?"')" $'1 passed, 0 failed\nstatus 0'

# Steps add up, read nothing, and what they say is seen, on standard error too.
said=$(step first sh -c 'cat; echo one; echo two >&2' <<<text)
expect "${said%,*}" $'\n=== first\none\ntwo\n=== first: passed'

# How a step failed is said once more at the end, and the sums stay last.
said=$(
  step first sh -c 'echo good' >/dev/null
  step second sh -c 'seq 100; echo bad; exit 4' >/dev/null
  tally
)
expect "${said:0:54}" $'\n=== second failed with 4; its last lines were:\n42\n43\n'
expect "${said: -27}" $'\n100\nbad\n1 passed, 1 failed'

# The log of a long run with long names does not fit into a pipe at once.
log=$(mktemp)
trap 'rm "$log"' EXIT
for ((number = 1; number <= 2000; number++)); do
  printf '%d/2000 Test #%d: fixture.%080d ....   Passed %d.5 sec\n' "$number" "$number" "$number" "$number"
done >"$log"
slowest=$(slowest_tests "$log") || exit
expect "$(wc -l <<<"$slowest")" 12
expect "${slowest%%$'\n'*}" "  2000.5 s  fixture.$(printf '%080d' 2000)"
expect "$(count_tests "$log")" "0 passed, 1 failed"
echo '98% tests passed, 2 tests failed out of 100' >>"$log"
expect "$(count_tests "$log")" "98 passed, 2 failed"
echo '7/100 Test #7: name ....***Skipped   0.01 sec' >>"$log"
expect "$(count_tests "$log")" "97 passed, 2 failed, 1 skipped"

step first true >/dev/null
step second false >/dev/null
step third sh -c 'echo "3 passed, 0 failed"' >/dev/null
said=$(tally)
expect "${said##*$'\n'}" "4 passed, 1 failed"
