#!/usr/bin/env bash
# scale.sh: SYNCDB on a large generated site in directory $1 with $2 orphans, all of them picked with
# "+" and deleted. Called by ./dev, which has made the site with the catalogs prod and test. Prints the
# time; exit status 0 only if as many objects are gone as there were orphans.
set -euo pipefail
site=$1 orphans=$2

cat "$(dirname "$0")/logon.session" - >"$site/session" <<'EOF'
expect Command ==>
send +
expect Command ==>
send b
expect Command ==>
send O
expect Do you want to continue?
send y
expect There are no backup objects to show.
EOF
before=$(zylstore list | wc -l)
status=0
TIMEFORMAT='SYNCDB on the terminal: %R s (user %U, system %S, children included)'
time playsession --timeout 600 "$site/session" -- vexosync SYNCDB -NUMCATALOGS=2 >"$site/screen" || status=$?
after=$(zylstore list | wc -l)
echo "objects before $before, after $after, orphans $orphans, exit status $status"
[[ $status == 44 && $((before - after)) == "$orphans" ]]
