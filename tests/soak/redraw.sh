#!/usr/bin/env bash
# redraw.sh ROUNDS BUILD: the pick list is drawn again after each answer. That must not take more and
# more memory: the resident size is compared over ROUNDS times 200 pages. Pages are counted in the
# output, and the size is read where every user may read it: the program does not let itself be
# examined.
set -euo pipefail
rounds=$1
# shellcheck source=tests/soak/site.sh
source "$(dirname "$(readlink -f "$0")")/site.sh" "$2"
# The address sanitizer must not keep freed memory for long.
export ASAN_OPTIONS=${ASAN_OPTIONS:+$ASAN_OPTIONS:}quarantine_size_mb=1:thread_local_quarantine_size_kb=16
readonly pages=200 most=200 # kB

# Writes a line for every $pages prompts that it reads.
count_pages() {
  awk -v pages="$pages" '/Command ==>/ && ++drawn % pages == 0 { print drawn; fflush() }'
}

mkfifo "$site/drawn"
exec {drawn}<>"$site/drawn"
vexosync delete < <(printf '\n+0\n'; exec yes T) > >(count_pages >&"$drawn") 2>/dev/null &
program=$!

resident() { awk '$1 == "VmRSS:" { print $2 }' "/proc/$program/status"; }

# Waits until $pages more pages are drawn.
draw() {
  local count
  read -rt $longest -u "$drawn" count || fail "waited $longest s for $pages pages"
  kill -0 "$program" 2>/dev/null || fail "the program has ended after $count pages"
}

draw
before=$(resident)
for ((round = 1; round <= rounds; round++)); do
  draw
  now=$(resident)
  ((now - before <= most)) || fail "grown from $before to $now kB in $((round * pages)) pages"
done
echo "redraw: $((rounds * pages)) pages; $before kB resident before, $now kB after"
