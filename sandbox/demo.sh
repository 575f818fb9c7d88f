#!/usr/bin/env bash
# demo.sh: SYNCDB on a miniature site. Called by ./dev, which has built the programs, put them on the
# PATH and made the site in directory $1.
#
# On a terminal the user answers. Without one a recorded session is played: two catalogs, two of the
# orphans picked, the others left; then the store is compared with its state before. Exit status 0 only
# if exactly the picked objects are gone.
set -euo pipefail
site=$1

# The lines that the run removed from the store's list. (diff ends with 1 if there is a difference.)
gone() { diff "$site/before" "$site/after" | sed -n 's/^< //p' || true; }

if [[ -t 0 && -t 1 ]]; then
  cat <<'EOF'
vexosync SYNCDB now asks for dates and for two catalogs: prod and test, user rman, password rman
(dates: press Enter for the start, +0 for the end; the connect string is the catalog's name). In the
list, pick objects by their numbers, then O; answer the question with y, and leave the list with q.
EOF
  read -rp "Press Enter to begin: "
  zylstore list >"$site/before"
  vexosync SYNCDB -NUMCATALOGS=2 || true
  zylstore list >"$site/after"
  echo
  echo "Objects that are gone from the store:"
  gone | sed 's/^/  /'
  exit 0
fi

# What must be found, from the store and the catalogs alone: object names that no catalog holds.
zylstore list >"$site/before"
{ zylstore catalog list prod; zylstore catalog list test; } | cut -f1 | sort -u >"$site/known"
awk -F'\t' 'NR == FNR { known[$1]; next } { name = $7; sub("^/", "", name); if (!(name in known)) print $1 "\t" $7 }' \
  "$site/known" "$site/before" >"$site/orphans"
orphans=$(wc -l <"$site/orphans")

cat "$(dirname "$0")/logon.session" - >"$site/session" <<'EOF'
# Entries 1 to 3 are picked, then 2 is dropped again: 1 and 3 are still picked.
expect Command ==>
send 1:3+
expect Command ==>
send 2-
expect Command ==>
send O
expect Do you want to continue?
send y
expect Command ==>
send q
EOF
status=0
playsession --rows 30 --cols 100 "$site/session" -- vexosync SYNCDB -NUMCATALOGS=2 || status=$?
zylstore list >"$site/after"

sed -n '1p;3p' "$site/orphans" | cut -f1 >"$site/picked"
gone | cut -f1 >"$site/gone"
echo
echo "The store before: $(wc -l <"$site/before") objects, $orphans of them known to no catalog:"
cut -f2 "$site/orphans" | sed 's/^/  /'
echo "The store after:  $(wc -l <"$site/after") objects; gone are"
gone | cut -f7 | sed 's/^/  /'

# 300, the code for leaving the list, is 44 in eight bits.
if [[ $status != 44 ]]; then
  echo "demo: vexosync ended with $status, not with 44 (the list was left)" >&2
  exit 1
fi
if ! cmp -s "$site/picked" "$site/gone" || [[ $(wc -l <"$site/gone") != 2 ]]; then
  echo "demo: the deleted objects are not the picked ones" >&2
  exit 1
fi
echo "Exactly the two picked orphans are gone."
