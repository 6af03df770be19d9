#!/bin/bash
# What scripts/tally.sh counts, and what it shows.
set -u -o pipefail
cd "$(dirname "$0")/../.." || exit
# shellcheck source=scripts/tally.sh
. scripts/tally.sh

expect() {
  [ "$1" = "$2" ] && return
  printf 'expected: %s\nbut was:  %s\n' "$2" "$1" >&2
  exit 1
}

# Of commands that count their tests the numbers are taken, others are one test each.
counted() {
  (
    step title sh -c "$1" >/dev/null
    tally
    echo "status $?"
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
step first true >/dev/null
step second false >/dev/null
step third sh -c 'echo "3 passed, 0 failed"' >/dev/null
expect "$(tally)" "4 passed, 1 failed"
