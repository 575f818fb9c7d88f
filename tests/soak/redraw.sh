#!/usr/bin/env bash
# redraw.sh ROUNDS BUILD: the pick list is drawn again after every answer. That must not take more
# and more memory: the resident size is compared over ROUNDS times 200 pages, after empty answers.
set -euo pipefail
rounds=$1
# shellcheck source=tests/soak/site.sh
source "$(dirname "$(readlink -f "$0")")/site.sh" "$2"
# The address sanitizer must not keep freed memory for long.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}quarantine_size_mb=1:thread_local_quarantine_size_kb=16
readonly pages=200 most=200 # kB

vexosync delete < <(printf '\n+0\n' && yes '') >/dev/null 2>&1 &
program=$!

# A page is shorter than the output's buffer, so it is written at once.
drawn() { awk '$1 == "syscw:" { print $2 }' "/proc/$program/io"; }
resident() { awk '$1 == "VmRSS:" { print $2 }' "/proc/$program/status"; }

drawn_or_ended() { (($(drawn) >= goal)) || ! kill -0 "$program"; }

# Waits until $pages more pages are drawn.
draw() {
  goal=$(($(drawn) + pages))
  await drawn_or_ended
  kill -0 "$program" 2>/dev/null || fail "the program has ended"
}

draw
before=$(resident)
for ((round = 1; round <= rounds; round++)); do
  draw
  now=$(resident)
  ((now - before <= most)) || fail "grown from $before to $now kB in $((round * pages)) pages"
done
echo "redraw: $((rounds * pages)) pages; $before kB resident before, $now kB after"
