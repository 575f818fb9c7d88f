#!/usr/bin/env bash
# keywords.sh BUILD: the manual pages, the sample options file and the completions have exactly the
# words that the tables of the program have, and state the codes, formats and defaults that it has;
# and the program accepts the sample if the stars before its options are removed.
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

wrong() {
  echo "keywords: $*" >&2
  bad=1
}

# same WHAT FILE...: every file has the lines of the first one, in any order.
same() {
  local what=$1 file
  shift
  [[ -s $1 ]] || wrong "found no $what"
  for file; do
    diff <(sort "$1") <(sort "$file") >"$site/diff" && continue
    wrong "$what: < is missing from ${file##*/}, > is not in ${1##*/}"$'\n'"$(<"$site/diff")"
  done
}

# The words of a page's tags; $2 is the macro of each, $3 what a word looks like.
tags() { grep -E '^\.It (Ic|Fl) ' "$man/$1" | grep -oE "$2 $3" | sed "s/^$2 //"; }

# Keywords of the options file.
mkdir "$site"/{lists,log}
sed -n 's/^    {"\([A-Z0-9_]*\)", &orcObj_t.*/\1/p' agent/parser2.cpp >"$site/lists/keywords"
tags vexo.opt.5 Ic 'V(LTI|EXO)_[A-Z0-9_]+' >"$site/lists/vexo.opt.5"
sed -n 's/^\*\([^ *][^ ]*\) .*/\1/p' "$sample" >"$site/lists/vexo.opt.sample"
same keyword "$site"/lists/{keywords,vexo.opt.5,vexo.opt.sample}

# Trace and test flags.
sed -n 's/^T[A-Z_]*(\([A-Z0-9_]*\)[,)].*/\1/p' common/ut/trcclass.def >"$site/lists/flags"
grep -oE '\w+' "$man/vexo.opt.5" | grep -vxFf - "$site/lists/flags" &&
  wrong "not in vexo.opt.5: these flags"

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
# shellcheck source=packaging/completion/zylstore
source packaging/completion/zylstore
offered() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  "_$1" || true # errexit is not for completions
  [[ ${#COMPREPLY[@]} == 0 ]] || printf '%s\n' "${COMPREPLY[@]}"
}
for letter in {A..Z}; do offered vexosync "$letter"; done >"$site/lists/completion"
while read -r command; do
  offered vexosync "$command" ''
  offered vexosync "$command" -NOCATALOG ''
done <"$site/lists/completion" | sed 's/^-//; s/=$//' | sort -u >"$site/lists/completion of options"
sed -i 's/.*/\U&/' "$site"/lists/{commands,options}
same command "$site"/lists/{commands,completion}
same option "$site"/lists/{options,'completion of options'}

# offers WANTED WORD...: what is offered for the last word, split as bash splits, which makes "=" a word.
offers() {
  local wanted=$1 got
  shift
  got=$(offered "$@" | paste -sd,)
  [[ $got == "$wanted" ]] || wrong "the completion of '$*' offers $got, not $wanted"
}
touch "$site/a b.opt"
offers SYNCDB,QUERY,DELETE,HELP vexosync ''
offers SyNCDB vexosync SyN
offers -numorcinstances=,-vexo_optfile= vexosync syncdb -nocatalog -
offers -vexo_optfile= vexosync syncd -NUMCAT = 2 -
offers -numcatalogs=,-nocatalog vexosync syncdb -vexo_opt = X -n
offers '' vexosync syncdb -nocat -numorcinst = 2 -n
offers -vexo_optfile=,-outfile= vexosync showver ''
offers "$site/a b.opt" vexosync query -vexo_opt = "$site/a "
offers "-vexo_opt=$site/vexo.opt" vexosync query -vexo_opt="$site/ve"
offers add,load,list zylstore catalog ''
offers --objects,--orphans,--owner zylstore generate --node = x --o
offers none,des56,aes128,aes256 zylstore put --encryption =
offers prod,test zylstore catalog list ''
offers "$site/vexo.opt" zylstore catalog load prod "$site/ve"
offers '' zylstore init --first-id ''

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

# Codes and what the shell sees of them. A code is a constant of the program or one of its messages.
sed -n 's/\\-/-/; s/^\.It \(-\?[0-9]*\) Ta \([0-9]*\) Ta .*/\1 \2/p' $man/vexosync.1 >"$site/lists/codes"
awk -F ' *[|] *' '/^## / { own = /Exit status/ } own && $2 ~ /^-?[0-9]/ {
  count = split($2, code, ", ")
  for (i = 1; i <= count; i++) print code[i], $3 == "the same" ? code[i] : $3 }' README.md |
  grep -vxFf "$site/lists/codes" && wrong "of README.md, not of vexosync.1: these codes"
grep -hoE 'code [0-9]+ \([0-9]+ in the shell' common/nls/catalog/vexo.msg | tr -dc '0-9 \n' >>"$site/lists/codes"
while read -r code shell; do
  [[ $shell == $((code & 255 || !code ? code & 255 : 255)) ]] || wrong "code $code is not $shell"
  [[ $code =~ ^(0|-1)$ ]] || grep -qE "^$code \"|(short k[A-Za-z]+|kPickCancelled|kNotLoaded) = $code;" \
    common/nls/catalog/vexo.msg {utility,agent,api,common/*}/*.h api/vltapid.cpp || wrong "no code $code"
done <"$site/lists/codes"

# Formats: the program shows the examples of vexo.opt.5; the sample has the same.
sed 's/\\-/-/g; s/\\(aq/'"'"'/g; s/"//g' $man/vexo.opt.5 | awk -F ' Ta ' -v lists="$site/lists/" '
  /^\.It Ic VEXO_.*_FMT/ { kind = /DATE/ ? "Dates" : /TIME/ ? "Times" : "Numbers" }
  /^\.It [0-6].* Ta / {
    key = substr($1, 5)
    for (i = 2; i <= NF; i++) print $i >(lists "format " (key + 0))
    value = NF == 2 ? $2 : "1" substr($2, 3, 1) "234" substr($3, 3, 1) "5"
    list[kind] = list[kind] (list[kind] ? ", " : " ") key ": " value
  }
  END { for (kind in list) print "* " kind "." list[kind] ". Default: 0" }' |
  grep -vxFf $sample && wrong "of vexo.opt.5, not of the sample: these examples"
zylstore put --node ORANODE --fs /marlorc --ll /example --owner oracle --date 2026-03-07T14:05:36 \
  --size 21004974194 >/dev/null
printf '\n+36500\nq\n' >"$site/answers"
for format in 0 {2..6}; do
  printf 'VEXO_%s_FMT %s\n' DATE "$format" TIME "$format" NUM "$format" |
    cat "$site/vexo.opt" - >"$site/formats"
  for command in query delete; do
    vexosync $command -vexo_opt="$site/formats" <"$site/answers" || true # 44: the list was left
  done >"$site/screen"
  while read -r shown; do
    grep -qF "$shown" "$site/screen" || wrong "format $format does not show $shown"
  done <"$site/lists/format $format"
done

# The sample, with its directories moved into the site and the build tree.
moved() { sed "s|/opt/norvik/zyl/client|$build/client|" $sample; }

# Whoever writes down the defaults that the sample states changes nothing.
grep -v DATE_FMT "$site/vexo.opt" >"$site/plain"
moved | awk '
  sub(/.*Default: /, "") { value = $0; sub(/[.,].*/, "", value) }
  /^\*[A-Z]/ { if (value ~ /^[A-Z0-9\/]|as shown/) print substr($1, 2), value == "as shown" ? $2 : value }
  ' | cat "$site/plain" - >"$site/written"
for options in plain written; do
  printf 'VEXO_TRACE_FLAGS PREFIX\nVEXO_TRACE_FILE %s.trc\n' "$site/$options" >>"$site/$options"
  vexosync query -vexo_opt="$site/$options" </dev/null >"$site/$options.screen"
  grep -E '^ V[A-Z_0-9]+ *: .' "$site/$options.trc" | grep -v TRACE_F >"$site/$options.values"
done
if ! cmp "$site"/{plain,written}.screen || grep -vxFf "$site"/{written,plain}.values; then
  wrong "the sample states other defaults than the program has"
fi

moved | sed "s|^\*\([^ *]\)|\1|; s|/etc/|$site/|
     s|/var/log/vexo|$site/log|; s|/var/lib/vexo|$site|" >"$site/vexo.opt"
if ! vexosync query -VEXO_OPTFILE="$site/vexo.opt" </dev/null >"$site/screen" 2>&1 ||
  [[ ! -s $site/log/vexo.trc ]] || ! grep -q /marlorc/ "$site/screen"; then
  wrong "vexosync QUERY does not work with the sample:"$'\n'"$(<"$site/screen")"
fi
exit $bad
