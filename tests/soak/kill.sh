#!/usr/bin/env bash
# kill.sh ROUNDS BUILD: kills a deletion at a random moment. What was deleted by then must be the
# first of the picked objects, in whole transactions, and be in the record of deletions; the next
# run must be able to delete the rest.
set -euo pipefail
rounds=$1
# shellcheck source=tests/soak/site.sh
source "$(dirname "$(readlink -f "$0")")/site.sh" "$2"
first=301 last=1807 # a hundred transactions and a smaller one
picked=$((last - first + 1))

# The first run warms the caches, the second one is measured.
for _ in 1 2; do
  restore
  begin=$(microseconds)
  delete $first $last
  lasted=$(($(microseconds) - begin))
done
expect_gone $first $last
expect_recorded whole

early=0 late=0 hits=0 torn=0
places=() # how much was gone, for each hit
for ((round = 1; round <= rounds; round++)); do
  restore
  vexosync delete < <(answers $first $last) >/dev/null 2>&1 &
  program=$!
  pause $((lasted * RANDOM / 32768))
  { kill -KILL $program && wait $program; } 2>/dev/null || true
  gone=$((all - $(zylstore list | wc -l)))
  expect_gone $first $((first + gone - 1))
  expect_recorded killed
  case $gone in
    0) early=$((early + 1)) ;;
    "$picked") late=$((late + 1)) ;;
    *) hits=$((hits + 1)) places[gone]=hit
      ((gone % whole == 0)) || fail "$gone deletions are not whole transactions" ;;
  esac
  if [[ -e $record && -n $(tail -c 1 "$record") ]]; then torn=$((torn + 1)); fi
  delete $first $((last - gone))
  expect_gone $first $last
  expect_recorded killed
done
echo "kill: $rounds rounds, $hits in mid-deletion (${#places[@]} different places), $early before," \
  "$late after; $torn left a torn line; undisturbed $((lasted / 1000)) ms; seed $seed"
((rounds < 20 || hits > 0)) || fail "no round hit the deletion"
