#!/usr/bin/env bash
# completion.sh BUILD: what the completions offer for the words of a command line, split as bash
# splits them, which makes "=" a word. BUILD is the build directory whose zylstore is used.
set -uo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.." || exit
export PATH=$1/bin:$PATH SANDBOX_HOME
SANDBOX_HOME=$(mktemp -d)
trap 'rm -rf "$SANDBOX_HOME"' EXIT
# shellcheck source=packaging/completion/vexosync
source packaging/completion/vexosync
# shellcheck source=packaging/completion/zylstore
source packaging/completion/zylstore
mkdir "$SANDBOX_HOME/catalogs"
touch "$SANDBOX_HOME"/{'a b.opt',vexo.opt} "$SANDBOX_HOME"/catalogs/{prod,test}.db
bad=0 home=$SANDBOX_HOME

# offers WANTED WORD...: completes the last word; WANTED is what must be offered.
offers() {
  local wanted=$1 got
  shift
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
  "_$1"
  got=$(IFS=,; echo "${COMPREPLY[*]}")
  [[ $got == "$wanted" ]] && return
  printf 'completion: %s\n  offers: %s\n  wanted: %s\n' "$*" "$got" "$wanted" >&2
  bad=1
}

offers SYNCDB,QUERY,DELETE,HELP vexosync ''
offers SyNCDB vexosync SyN
offers SHOWSESSOPTIONS,SHOWSESSINFO vexosync SHOWSESS
offers -numorcinstances=,-vexo_optfile= vexosync syncdb -nocatalog -
offers -vexo_optfile= vexosync syncd -NUMCAT = 2 -
offers -numcatalogs=,-nocatalog vexosync syncdb -vexo_opt = X -n
offers '' vexosync syncdb -nocat -numorcinst = 2 -n
offers -vexo_optfile=,-outfile= vexosync showver ''
offers "$home/a b.opt" vexosync query -vexo_opt = "$home/a "
offers "$home/vexo.opt" vexosync query -NOCAT -VEXO_OPTFILE = "$home/v"
offers "-vexo_opt=$home/vexo.opt" vexosync query -vexo_opt="$home/v"

offers catalog,calls zylstore ca
offers add,load,list zylstore catalog ''
offers --objects,--orphans,--owner zylstore generate --node = x --o
offers none,des56,aes128,aes256 zylstore put --encryption =
offers prod,test zylstore catalog list ''
offers "$home/vexo.opt" zylstore catalog load prod "$home/v"
offers '' zylstore init --first-id ''
exit $bad
