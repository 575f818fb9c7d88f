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

shows_list() { grep -q 'Command ==>' "$site/screen.$1"; }
has_ended() { ! kill -0 "$1"; }

# What program $1 reads: the answers up to the list, then those that delete entries $2 to $3.
feed() {
  printf '\n+0\n'
  await test -e "$site/go.$1"
  printf '%s\n' "$2:$3+" O y q
}

declare -A outcomes
for ((round = 1; round <= rounds; round++)); do
  restore
  # Often the same entries, so that both programs delete the same objects at the same time.
  from=(0 301 $((301 + RANDOM % 3 * RANDOM % 600)))
  to=(0 $((from[1] + 700)) $((from[2] + 700)))
  for p in 1 2; do
    rm -f "$site/go.$p" "$site/screen.$p"
    vexosync delete < <(feed $p "${from[p]}" "${to[p]}") >"$site/screen.$p" 2>&1 &
    pid[p]=$!
  done
  for p in 1 2; do await shows_list $p; done
  first=$((1 + RANDOM % 2))
  for p in $first $((3 - first)); do
    touch "$site/go.$p"
    pause $((RANDOM % 4 * RANDOM / 4))
  done
  for p in 1 2; do
    await has_ended "${pid[p]}"
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
