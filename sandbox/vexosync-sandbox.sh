#!/usr/bin/env bash
# vexosync-sandbox: a shell, or one command, in a site in miniature. The stand-ins are in bin and
# lib beside this script, wherever the link to it is.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
site_programs=$here/bin site_libraries=$here/lib
# shellcheck source=sandbox/site.sh
source "$here/site.sh"

usage() {
  cat <<'END'
Usage: vexosync-sandbox [DIRECTORY] [-- COMMAND [ARGUMENT ...]]

Opens a shell in which vexosync, sqlplus and zylstore work on a site in miniature: 2,000 generated
backup objects, of which two catalogs know 1,960. The site is in DIRECTORY: an empty or new one gets a
new site, which is kept; one that has a site is used as it is. Without DIRECTORY the site is temporary
and is removed when you leave. COMMAND is run instead of the shell.
END
}

complain() {
  echo "vexosync-sandbox: $1" >&2
  exit "${2:-1}"
}

temporary=
leave() { [[ -z $temporary ]] || rm -rf "$temporary"; }
trap leave EXIT

# Makes the site in directory $1, or enters the one that is there.
open_site() {
  local site=$1
  # Option lines give such characters a meaning.
  [[ $site != *[[:space:]\"\']* ]] || complain "no blanks and quotes in the directory's name: $site"
  if [[ -e $site/store.db && -e $site/vexo.opt ]]; then
    enter_site "$site"
  elif [[ -n $(ls -A "$site") ]]; then
    complain "not empty, and no site: $site"
  else
    make_site "$site" 2000 40
  fi
}

main() {
  local directory=
  case ${1:-} in
    -h | --help) usage; return ;;
    --) ;;
    -*) usage >&2; return 2 ;;
    ?*) directory=$1; shift ;;
  esac
  if [[ $# -gt 0 && ( $1 != -- || $# -lt 2 ) ]]; then usage >&2; return 2; fi
  shift $(($# > 0))

  if [[ -n $directory ]]; then
    mkdir -p -- "$directory"
    directory=$(readlink -f -- "$directory")
  else
    temporary=$(mktemp -d)
    directory=$temporary
  fi
  open_site "$directory" >&2
  if [[ $# -gt 0 ]]; then
    "$@"
  else
    echo "The site is in $directory${temporary:+ (it is removed when you leave)}."
    site_shell "$directory"
  fi
}

main "$@"
