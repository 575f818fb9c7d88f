#!/usr/bin/env bash
# full.sh ROUNDS BUILD: SYNCDB with its temporary directory and its error log on a small file system
# that is full at first and has more room in each round, while sqlplus spools 2,000 handles. All
# objects are known: whatever is lost on the disk, none may be offered; the answers would delete
# them all. Then DELETE with its record of deletions on such a file system: it deletes all picks, and
# says if lines of the record are missing. Needs its own mount namespace; ends with 77 if the system
# does not allow that.
set -euo pipefail
if [[ -z ${VEXO_OWN_NAMESPACE:-} ]]; then
  export VEXO_OWN_NAMESPACE=1
  for way in -m -rm; do
    if unshare $way true 2>/dev/null; then exec unshare $way "$0" "$@"; fi
  done
  echo "full: skipped, the system allows no mount namespace"
  exit 77
fi
rounds=$1
# shellcheck source=tests/soak/site.sh
source "$(dirname "$(readlink -f "$0")")/site.sh" "$2"
readonly room=256        # kB; the spool file takes 162 of them
readonly record_room=512 # kB; the record takes 397 of them

zylstore catalog add prod --user rman --password rman --kind recovery >/dev/null
zylstore list | awk -F '\t' '{ print substr($7, 2) "\t2020-01-01T00:00:00" }' >"$site/handles"
zylstore catalog load prod "$site/handles" >/dev/null
echo "VEXO_ENABLESCRIPTINPUT YES" >>"$site/vexo.opt"
mkdir "$site/small"
sed -i "s|^VLTI_LOG .*|VLTI_LOG $site/small|" "$site/vexo.opt"
record=$site/small/vexodeleted.log

# After a failure it is still mounted.
trap 'umount "$site/small" 2>/dev/null || true; leave_site' EXIT

# Mounts the small file system with room for $1 kB and at most $2 files (0: any number), as full as
# the round demands.
mount_small() {
  mount -t tmpfs -o "size=${1}k,nr_inodes=$2" vexo-full "$site/small"
  head -c $((($1 - $1 * round / rounds) * 1024)) /dev/zero >"$site/small/filler" 2>/dev/null || true
}

print_endings() {
  local ending
  for ending in "${!endings[@]}"; do
    echo "full: ${endings[$ending]} of $((rounds + 1)) rounds: $ending"
  done
  ((${#endings[@]} == 3)) || fail "some ending did not occur"
}

declare -A endings
for ((round = 0; round <= rounds; round++)); do
  mount_small $room 0
  status=0
  printf '%s\n' "" +0 rman rman prod + O y q |
    TMPDIR=$site/small timeout $longest vexosync syncdb >"$site/screen" 2>&1 || status=$?
  ending=$status:$(grep -o -m 1 -e QRB2575E -e QRB2649E -e QRB2650E -e QRB2643E -e QRB2599I "$site/screen") ||
    fail "ended with $status: $(tail -n 20 "$site/screen")"
  case $ending in
    255:QRB2575E) ending="no script" ;;
    229:QRB26*) ending="listing refused" ;;
    255:QRB2599I) ending="nothing to delete" ;;
    *) fail "ended with $ending" ;;
  esac
  endings[$ending]=$((${endings[$ending]:-0} + 1))
  expect_gone 1 0
  [[ ! -s $record ]] || fail "the record of deletions has lines"
  find "$site/small" -name 'SQL*' | grep -q . && fail "a temporary file was left"
  umount "$site/small"
done
print_endings

endings=()
for ((round = 0; round <= rounds; round++)); do
  restore
  # In some rounds there is not even a place for the record, only for the directory and the filler.
  mount_small $record_room $((round % 4 == 1 ? 2 : 0))
  delete 301 1807
  expect_gone 301 1807
  ending=$(grep -o -e QRB2667W -e QRB2668W "$site/screen") || ending=
  case $ending in
    QRB2667W) [[ ! -e $record ]] || fail "there is a record after all" ;;
    QRB2668W)
      expect_recorded incomplete
      ! (expect_recorded whole) 2>/dev/null || fail "nothing is missing in the record"
      ;;
    "") expect_recorded whole ;;
    *) fail "said ${ending//$'\n'/ and }" ;;
  esac
  ending=${ending/QRB2667W/deleted without a record}
  ending=${ending/QRB2668W/deleted with an incomplete record}
  ending=${ending:-deleted with a whole record}
  endings[$ending]=$((${endings[$ending]:-0} + 1))
  umount "$site/small"
done
print_endings
