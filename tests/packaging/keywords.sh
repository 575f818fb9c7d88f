#!/usr/bin/env bash
# keywords.sh BUILD: the manual pages, the sample options file and the completions have exactly the
# words that the tables of the program have; and the program accepts the sample if the stars before
# its options are removed.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
build=$(readlink -f "$1") man=docs/man sample=packaging/vexo.opt.sample bad=0
site=$(mktemp -d)
trap 'rm -rf "$site"' EXIT
# shellcheck disable=SC2034 # read by site.sh
site_programs=$build/bin site_libraries=$build/lib
# shellcheck source=sandbox/site.sh
source sandbox/site.sh
make_site "$site" 1 1 --owner oracle >/dev/null

# same WHAT FILE...: every file has the lines of the first one, in any order.
same() {
  local what=$1 file
  shift
  [[ -s $1 ]] || { echo "keywords: found no $what" >&2; bad=1; }
  for file; do
    diff <(sort "$1") <(sort "$file") >"$site/diff" && continue
    echo "keywords: $what: < is missing from ${file##*/}, > is not in ${1##*/}" >&2
    cat "$site/diff" >&2
    bad=1
  done
}

# The words of a page's tags; $2 is the macro of each, $3 what a word looks like.
tags() { grep -E '^\.It (Ic|Fl) ' "$man/$1" | grep -oE "$2 $3" | sed "s/^$2 //"; }

# Keywords of the options file.
mkdir "$site/lists"
sed -n 's/^    {"\([A-Z0-9_]*\)", &orcObj_t.*/\1/p' agent/parser2.cpp >"$site/lists/keywords"
tags vexo.opt.5 Ic 'V(LTI|EXO)_[A-Z0-9_]+' >"$site/lists/vexo.opt.5"
sed -n 's/^\*\([^ *][^ ]*\) .*/\1/p' "$sample" >"$site/lists/vexo.opt.sample"
same keyword "$site"/lists/{keywords,vexo.opt.5,vexo.opt.sample}

# Trace and test flags.
sed -n 's/^T[A-Z_]*(\([A-Z0-9_]*\)[,)].*/\1/p' common/ut/trcclass.def >"$site/lists/flags"
while read -r word; do
  grep -qw "$word" "$man/vexo.opt.5" || { echo "keywords: no flag $word in vexo.opt.5" >&2; bad=1; }
done <"$site/lists/flags"

# Commands and options of the command line. The completion is called as bash calls it.
rows() { sed -n "/^constexpr KeywordRow $1/,/^}/s/^    {\"\(.*\)\", k.*/\1/p" utility/utparser.cpp; }
rows commandTable >"$site/lists/commands"
rows optionTable | cut -c2- >"$site/lists/options"
tags vexosync.1 Ic '[A-Z][A-Za-z]{3,}' >"$site/lists/vexosync.1"
tags vexosync.1 Fl '[A-Z][A-Za-z_]{3,}' >"$site/lists/vexosync.1 options"
same command "$site"/lists/{commands,vexosync.1}
same option "$site"/lists/{options,'vexosync.1 options'}

# shellcheck source=packaging/completion/vexosync
source packaging/completion/vexosync
offered() {
  COMP_WORDS=(vexosync "$@") COMP_CWORD=$#
  _vexosync || return # the condition: errexit is not for completions
  [[ ${#COMPREPLY[@]} == 0 ]] || printf '%s\n' "${COMPREPLY[@]}"
}
for letter in {A..Z}; do offered "$letter"; done >"$site/lists/completion"
while read -r command; do
  offered "$command" ''
  offered "$command" -NOCATALOG ''
done <"$site/lists/completion" | sed 's/^-//; s/=$//' | sort -u >"$site/lists/completion of options"
sed -i 's/.*/\U&/' "$site"/lists/{commands,options}
same command "$site"/lists/{commands,completion}
same option "$site"/lists/{options,'completion of options'}

# Commands and options of zylstore; on the page each option is listed under its command.
zylstore --help | sed -n 's/^  \([a-z][a-z ]*[a-z]\)  .*/\1/p' >"$site/lists/zylstore"
tags zylstore.1 Ic '[a-z]+( (add|load|list))?' | sort -u >"$site/lists/zylstore.1"
same 'command of zylstore' "$site"/lists/{zylstore,zylstore.1}
while read -r command; do
  # shellcheck disable=SC2086 # one or two words
  zylstore $command --help | sed -n 's/^  --\([a-z-]*\) .*/\1/p' | grep -vxE 'store|help' | sort >"$site/lists/options" || true
  sed 's/\\-/-/g' "$man/zylstore.1" |
    awk -v tag=".It Ic $command" '/^\.It Ic |^\.S[hs] /{ own = index($0 " ", tag " ") == 1 } own && /^\.It /' |
    grep -oE 'Fl Fl [a-z-]+' | sed 's/^Fl Fl //' | sort -u >"$site/lists/options of $command" || true
  cmp -s "$site"/lists/{options,"options of $command"} ||
    same "option of zylstore $command" "$site"/lists/{options,"options of $command"}
done <"$site/lists/zylstore"

# The sample, with its directories moved into the site and the build tree.
mkdir "$site/log"
sed "s|^\*\([^ *]\)|\1|; s|/opt/norvik/zyl/client|$build/client|; s|/etc/|$site/|
     s|/var/log/vexo|$site/log|; s|/var/lib/vexo|$site|" "$sample" >"$site/vexo.opt"
if ! vexosync query -VEXO_OPTFILE="$site/vexo.opt" </dev/null >"$site/screen" 2>&1 ||
  [[ ! -s $site/log/vexo.trc ]] || ! grep -q /marlorc/ "$site/screen"; then
  echo "keywords: vexosync QUERY does not work with the sample" >&2
  cat "$site/screen" >&2
  bad=1
fi
exit $bad
