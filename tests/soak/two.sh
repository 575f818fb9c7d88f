#!/usr/bin/env bash
# two.sh ROUNDS BUILD: two programs show the same list, then delete overlapping picks at the same
# time. A program ends with 44 (the list was left) if it deleted all of its picks, and with 2 (the
# library's code: no such object) if the other one was faster. Both append to one record of
# deletions, which must be whole and agree with the store. The next run must be able to delete the
# rest.
set -euo pipefail
rounds=$1
# shellcheck source=tests/soak/site.sh
source "$(dirname "$(readlink -f "$0")")/site.sh" "$2"

# What a program reads: the answers up to the list, and when both show it, those that delete entries $1
# to $2.
feed() {
  printf '\n+0\n'
  until (($(cat "$site"/screen.* | grep -c 'Command ==>') >= 2)); do pause 2000; done
  pause $((RANDOM % 4 * RANDOM / 4))
  printf '%s\n' "$1:$2+" O y q
}

declare -A outcomes
for ((round = 1; round <= rounds; round++)); do
  restore
  # Often the same entries, so that both programs delete the same objects at the same time.
  from=(0 301 $((301 + RANDOM % 3 * RANDOM % 600)))
  to=(0 $((from[1] + 700)) $((from[2] + 700)))
  rm -f "$site"/screen.*
  for p in 1 2; do
    vexosync delete >"$site/screen.$p" 2>&1 < <(feed "${from[p]}" "${to[p]}") &
    pid[p]=$!
  done
  for p in 1 2; do
    status[p]=0
    wait "${pid[p]}" || status[p]=$?
  done
  [[ ${status[*]} =~ ^(44|2)\ (44|2)$ ]] || fail "ended with ${status[*]}"
  zylstore list | cut -f1 >"$site/after"
  expect_recorded whole
  outcomes["${status[*]}"]=$((${outcomes["${status[*]}"]:-0} + 1))
  delete 301 $((to[2] - all + $(wc -l <"$site/after")))
  expect_gone 301 "${to[2]}"
  expect_recorded whole
done
for outcome in "${!outcomes[@]}"; do
  echo "two: ${outcomes[$outcome]} of $rounds rounds ended with $outcome; seed $seed"
done
