#!/usr/bin/env bash
# report.sh BUILD: the report of a run (VEXO_REPORT), read back with jq, and what becomes of it where it
# cannot be written.
# shellcheck disable=SC2016,SC1003 # jq has variables of its own; a name ends with a backslash
set -euo pipefail
build=$(readlink -f "$1")
cd "$(dirname "$(readlink -f "$0")")/../.."
# shellcheck disable=SC2034 # read by site.sh
site_programs=$build/bin:$build/bin/sandbox site_libraries=$build/lib
# shellcheck source=sandbox/site.sh
source sandbox/site.sh
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
make_site "$dir" 60 5 --today 2025-03-07 >"$dir/made"
echo VEXO_ENABLESCRIPTINPUT YES >>"$VEXO_OPTFILE"
zylstore limits --max-objects-per-txn 3 >"$dir/made" # two objects a transaction
cd "$dir"
export VEXO_REPORT=$dir/report

fail() {
  tail -n 20 screens "$VEXO_REPORT" >&2 || true
  echo "report: $name: $1" >&2
  exit 1
}

# run NAME STATUS COMMAND ANSWER...: runs a command with its answers, one a line.
run() {
  name=$1 status=0
  rm -f report
  printf '%s\n' "${@:4}" | $3 >screens 2>&1 || status=$?
  [[ $status == "$2" ]] || fail "ended with $status, not $2"
}

# holds JQ: a condition on the array of all lines.
holds() { jq -se "$1" "$VEXO_REPORT" >/dev/null || fail "does not hold: $1"; }

umask 022 # the file must be private all the same
run 'picks' 44 'vexosync syncdb -numcat=2' 1990-01-01 +0 rman rman prod rman rman test '1 2 3' O y q
holds '[.[].event] | join(" ") ==
  "start doubt object object object object object delete delete end delete end finish"'
[[ $(stat -c %a report) == 600 ]] || fail 'others may read it'
cmp <(grep -E '"event":"(delete|end)"' report) vexodeleted.log || fail 'is not what was recorded'
holds '.[0].run as $run | all(.v == 1 and (.run // .transaction | startswith($run)))'
holds ".[0] | .version == \"8.1.13.0\" and .command == \"SYNCDB\" and
  .node == \"ORANODE\" and .owner == \"\" and .from == \"1990-01-01\" and .to == \"$(date +%F)\""
holds '.[1] | .id == "QRB2665W" and (.text | startswith("The end date is today"))'
holds '.[2] | .id == "6" and .size == 9745182626 and .date == "2022-06-11T19:40:17" and
  .encryption == "AES_256BIT" and .name == "/marlorc/oracle/ORCL_df_654976417_4702_2"'
holds '[.[] | select(.event == "delete") | .id] == [.[2:5][] | .id]'
holds '[.[] | select(.event == "object")] as $o | .[-1] | .code == 300 and .status == 44 and .complete and
  .objects - .known == 5 and .listed == 5 and .listedBytes == ([$o[] | .size] | add) and
  .doubts == 1 and .deleted == 3 and .deletedBytes == ([$o[:3][] | .size] | add)'

zylstore fault EndTxn 2302 --after 1 --reason 8 >made # VLT_RC_CHECK_REASON
run 'a second transaction that fails' 8 'vexosync delete' 1990-01-01 +0 '1 2 3' O y q
holds '[.[-5:-1][] | .outcome // .event] == ["delete", "delete", "committed", "taken back"]'
holds '.[-1] | .deleted == 2 and .code == 8 and .listed == 57 and (has("known") | not)'

run 'nothing to list' 0 'vexosync query' 1990-01-01 1990-01-02
holds 'length == 2 and (.[1] | .complete and .objects == 0 and .code == 0)'
zylstore fault GetNextQObj 137 >made
run 'a listing that breaks off' 0 'vexosync query' 1990-01-01 +0
holds '.[-1] | .complete == false'
zylstore fault InitEx 53 >made
run 'no logon' 53 'vexosync query'
holds 'length == 2 and (.[0] | .node == "" and (has("from") | not))'
holds '.[1] | .code == 53 and .complete == false'
zylstore put --node ORANODE --fs /marlorc --hl '/"\' --ll $'/\x01\xff' --date 1999-01-01 >made
run 'a name of any bytes' 0 'vexosync query' 1999-01-01 1999-01-01
holds '.[1] | .name == "/marlorc/\"\\/\u0001?" and .nameBytes == "2f6d61726c6f72632f225c2f01ff"'
run 'a command without a report' 0 'vexosync help'
[[ ! -e report ]] || fail 'was made'

# Where no report can be written, the command does the same and says so once. It never follows a link.
echo foreign >target
ln -s target link
ln target second
mkfifo pipe
for file in link second pipe passwords missing/report; do
  VEXO_REPORT=$file run "$file" 0 'vexosync query' 1999-01-01 1999-01-01
  [[ $(grep -c QRB2697W screens) == 1 && $(grep -c 'Name:' screens) == 1 ]] || fail 'not said once'
done
[[ $(cat target) == foreign ]] || fail 'was written'

# With room for some lines only there are those, whole.
limited() { (ulimit -f 70 && exec vexosync query) | tail -n 30; } # 70 KB
seq -f $'ORANODE\t/marlorc\t/oracle\t/%0240g\t-\t1998-01-01\t1' 700 | sed 's/\t-\t/\t\t/' |
  zylstore load - >made
run 'a full disk' 0 limited 1998-01-01 1998-01-01
holds 'length > 100 and length < 700 and all(.event != "finish")'
grep -q QRB2697W vexoerror.log || fail 'the error log does not say so'
printf '{"v":1,"ev' >report
vexosync query <<<$'1999-01-01\n1999-01-01' >screens
[[ $(jq -cR 'fromjson? | .event' report | wc -l) == 3 ]] || fail 'half a line swallows the next one'
