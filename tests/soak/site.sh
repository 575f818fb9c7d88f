#!/usr/bin/env bash
# site.sh: the site of the soak scripts, which read it with `source site.sh BUILD`: the programs of
# the build directory BUILD, 2,000 objects, and transactions of at most 15 deletions. All files are
# in $site, which is removed at the end, after what still runs is killed. The random numbers have a
# fixed seed.
build=$(readlink -f "$1")
site=$(mktemp -d)
all=2000 whole=15 seed=4711 round=0
longest=$((60 * ${VEXO_TEST_PATIENCE:-1})) # seconds that anything may take
RANDOM=$seed
leave_site() {
  local running
  running=$(jobs -rp)
  # shellcheck disable=SC2086 # one word for each process
  [[ -z $running ]] || { kill -KILL $running && wait $running; } 2>/dev/null || true
  rm -rf "$site"
}
trap leave_site EXIT

# shellcheck disable=SC2034 # read by site.sh
site_programs=$build/bin:$build/bin/sandbox site_libraries=$build/lib
# shellcheck source=sandbox/site.sh
source "$(dirname "${BASH_SOURCE[0]}")/../../sandbox/site.sh"
export TMPDIR=$site TERM=ansi
make_site "$site" "$all" 0 >"$site/made"
rm -r "$site/catalogs" # a script that needs one makes its own
zylstore limits --max-objects-per-txn $((whole + 1)) >"$site/made"
cp "$site/store.db" "$site/fresh.db"
zylstore list | cut -f1 >"$site/before"
record=$site/vexodeleted.log

# Puts the store back as it was, with no record of deletions.
restore() {
  rm -f "$site"/store.db* "$record"
  cp "$site/fresh.db" "$site/store.db"
}

fail() {
  echo "$(basename "$0"): round $round, seed $seed: $*" >&2
  exit 1
}

# Waits for $1 microseconds without starting a program.
exec {idle}<> <(:)
pause() { read -rt "$(printf '%d.%06d' $(($1 / 1000000)) $(($1 % 1000000)))" -u "$idle" || true; }
microseconds() { echo "${EPOCHREALTIME/[.,]/}"; }

# Waits until a command succeeds; fails after $longest seconds.
await() {
  local begin
  begin=$(microseconds)
  until "$@" 2>/dev/null; do
    pause 2000
    (($(microseconds) - begin < longest * 1000000)) || fail "waited $longest s for: $*"
  done
}

# The answers that delete entries $1 to $2 of the list.
answers() { printf '%s\n' "" +0 "$1:$2+" O y q; }

# Deletes entries $1 to $2 of the list; none if $2 is before $1. Must succeed: no other program uses
# the store.
delete() {
  local status=0
  (($1 <= $2)) || return 0
  timeout $longest vexosync delete < <(answers "$1" "$2") >"$site/screen" 2>&1 || status=$?
  [[ $status == 44 ]] || fail "deleting $1 to $2 ended with $status"
}

# The store must hold all objects except entries $1 to $2; all of them if $2 is before $1.
expect_gone() {
  zylstore list | cut -f1 >"$site/after"
  awk -v from="$1" -v to="$2" 'NR < from || NR > to' "$site/before" | cmp -s - "$site/after" ||
    fail "what was deleted is not entries $1 to $2"
}

# Compares the record of deletions with the store: $site/before, and $site/after as expect_gone
# leaves it. An object is gone if the record says that it was committed, and that only once; every
# object that is gone has its line, in a transaction that was not taken back. $1 is what may be
# missing:
#   whole       nothing
#   killed      the end of one transaction, and one line may be torn: a killed write ends anywhere
#   incomplete  any line; what is there must be true
expect_recorded() {
  local lines=$record
  local -A lacks=([whole]=0 [killed]=1 [incomplete]=1000000)
  [[ -e $lines ]] || lines=/dev/null
  [[ $1 != whole || -z $(tail -c 1 "$lines") ]] || fail "the last line of the record is torn"
  # shellcheck disable=SC2016 # jq has variables of its own
  jq -nRc --argjson most "${lacks[$1]}" --rawfile before "$site/before" --rawfile after "$site/after" '
    ($after / "\n" | INDEX(.)) as $there | [inputs | [fromjson?][0]] as $lines
    | ($lines | map(values) | group_by(.transaction)) as $transactions
    | ($transactions | map(select(.[-1].outcome != "taken back")[] | .id // "") | INDEX(.)) as $mentioned
    | ($transactions | map(select(.[-1].outcome == "committed")[:-1][].id)) as $committed
    | { untorn: ($lines | map(select(. == null)) | length <= $most),
        ended: ($transactions | map(select(.[-1].outcome | IN("committed", "taken back") | not)) | length <= $most),
        ended_once: ($transactions | all(.[:-1] | all(.event == "delete"))),
        whole: ($most > 1 or ($transactions | all(.[-1].outcome == null or .[-1].objects == length - 1))),
        gone: ($committed | all(in($there) | not)), once: ($committed | length == (unique | length)),
        mentioned: ($most > 1 or ($before / "\n" | all(in($there) or in($mentioned)))) }
    ' "$lines" >"$site/why" || fail "the record of deletions has lines of other kinds"
  ! grep -q false "$site/why" || fail "the record of deletions: $(<"$site/why")"
}
