#!/usr/bin/env bash
# two.sh ROUNDS BUILD: two programs show the same list, then delete overlapping picks at the same
# time. Each must delete the first of its picks in whole transactions, and no object may be deleted
# by both. A program ends with 44 (the list was left) if it deleted all of its picks, and with 2 (the
# library's code: no such object) if the other one was faster. Both append to one record of
# deletions. The next run must be able to delete the rest.
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

# The objects that process $1 has deleted, according to the record of deletions.
committed() {
  # shellcheck disable=SC2016 # jq has variables of its own
  jq -rs --argjson pid "$1" 'map(select(.outcome == "committed") | .transaction) as $done
    | .[] | select(.event == "delete" and .pid == $pid and (.transaction | IN($done[]))) | .id' "$record"
}

# What program $1 with picks $2 to $3 did, and whether its status fits.
judge() {
  local picked=$(($3 - $2 + 1)) deleted
  committed "${pid[$1]}" >"$site/deleted.$1"
  deleted=$(wc -l <"$site/deleted.$1")
  awk -v from="$2" -v to=$(($2 + deleted)) 'NR >= from && NR < to' "$site/before" |
    cmp -s - "$site/deleted.$1" || fail "program $1 has not deleted the first of its picks"
  ((deleted % whole == 0 || deleted == picked)) || fail "program $1: the last transaction is not whole"
  case ${status[$1]} in
    44) ((deleted == picked)) || fail "program $1 has deleted only $deleted and reports success" ;;
    2) ((deleted < picked)) || fail "program $1 has deleted everything and reports a failure" ;;
    *) fail "program $1 ended with ${status[$1]}" ;;
  esac
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
  for p in 1 2; do judge $p "${from[p]}" "${to[p]}"; done
  zylstore list | cut -f1 >"$site/after"
  cat "$site"/deleted.[12] "$site/after" | sort -n | cmp -s - "$site/before" ||
    fail "what is missing is not what the programs deleted, or was deleted twice"
  expect_recorded whole
  outcomes["${status[*]}"]=$((${outcomes["${status[*]}"]:-0} + 1))
  delete 301 $((to[2] - all + $(wc -l <"$site/after")))
  expect_gone 301 "${to[2]}"
  expect_recorded whole
done
for outcome in "${!outcomes[@]}"; do
  echo "two: ${outcomes[$outcome]} of $rounds rounds ended with $outcome; seed $seed"
done
