#!/usr/bin/env bash
# examples.sh BUILD [PAGE...]: runs the examples of the manual pages and the README, as a reader
# would type them, with the programs of the build directory BUILD; each page has its own site.
#
# In README.md and unattended.md the examples are the ```console blocks, with answers in a comment before them.
#
# In a literal display, "$ " begins a command, which continues on the next line after a "\" or "|".
# The lines below are its output; "..." stands for any lines, and empty lines do not count. A status
# other than 0 must be shown by "echo $?". Comments hold what a reader does not see:
#   .\" file NAME            the display is written to this file
#   .\" expect|send|secret   what is typed on a terminal, in the form that playsession reads
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/../.."
root=$PWD build=$(readlink -f "$1")
shift
# shellcheck disable=SC2034 # read by site.sh
site_programs=$build/bin:$build/bin/sandbox site_libraries=$build/lib
# shellcheck source=sandbox/site.sh
source sandbox/site.sh
[[ $# -gt 0 ]] || set -- docs/man/*.[15] README.md docs/unattended.md
site=$(mktemp -d)
trap 'rm -rf "$site"' EXIT
# vexosync-sandbox with its stand-ins next to it, as installed.
mkdir "$site/sandbox" "$site/home"
cp sandbox/site.sh "$site/sandbox"
cp sandbox/vexosync-sandbox.sh "$site/sandbox/vexosync-sandbox"
ln -s "$build/bin/sandbox" "$site/sandbox/bin"
ln -s "$build/lib" "$site/sandbox/lib"
export PATH=$build/bin:$build/bin/sandbox:$site/sandbox:$root/examples:$PATH TERM=dumb HOME=$site/home
export LD_LIBRARY_PATH=$build/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
unset VLTI_DIR VLTI_LOG VLTI_CONFIG VEXO_OPTFILE TMPDIR NLS_LANG ORACLE_HOME ORACLE_PATH SQLPATH
readonly today=2025-03-08 # the day of the run, on the pages

fail() {
  printf 'examples: %s: %s\n$ %s\n' "$page" "$1" "$command" >&2
  cat "$site/seen" >&2
  exit 1
}

# Runs the current command and compares its output with the lines that were read after it.
finish() {
  local want gap=no at=0 seen
  [[ -n $command ]] || return 0
  # shellcheck disable=SC2016 # the text of the page
  if [[ $command == 'echo $?' ]]; then
    echo "$status" >"$site/seen"
    status=0
  elif [[ $status != 0 ]]; then
    fail "the command before this one ended with $status"
  elif [[ -n $session ]]; then
    playsession --rows 24 --cols 80 <(echo "$session") -- bash -c "$command" >"$site/seen" || status=$?
  else
    eval "$command" >"$site/seen" 2>&1 </dev/null || status=$?
  fi
  mapfile -t seen < <(sed "s/ *\$//; /^\$/d; s/$(date +%F)/$today/g" "$site/seen")
  for want in "${shown[@]}"; do
    if [[ $want == ... ]]; then gap=yes; continue; fi
    while [[ $gap == yes && $at -lt ${#seen[@]} && ${seen[at]} != "$want" ]]; do at=$((at + 1)); done
    [[ ${seen[at]-} == "$want" ]] || fail "does not show: $want"
    at=$((at + 1)) gap=no
  done
  [[ $gap == yes || $at == "${#seen[@]}" ]] || fail "shows more: ${seen[at]}"
  commands=$((commands + 1)) command='' session='' shown=()
}

run_page() {
  local line display=no answers=no file='' command='' session='' shown=() status=0 commands=0
  while IFS= read -r line; do
    case $line in
      '.Bd -literal'* | '```console') display=yes ;;
      .Ed | '```') finish; display=no file='' ;;
      '<!-- answers') answers=yes ;;
      '-->') answers=no ;;
      '.\" file '*) file=${line#'.\" file '} ;;
      '.\" expect'* | '.\" send'* | '.\" secret'*) session+=${line#'.\" '}$'\n' ;;
      *)
        [[ $answers == no ]] || session+=$line$'\n'
        [[ $display == yes ]] || continue
        line=$(sed 's/\\-/-/g; s/\\(aq/'\''/g; s/\\&//g; s/\\e/\\/g' <<<"$line")
        if [[ -n $file ]]; then echo "$line" >>"$file"
        elif [[ ${command: -1} == [\\\|] && ${#shown[@]} == 0 ]]; then command+=$'\n'$line
        elif [[ $line == '$ '* ]]; then finish; command=${line#'$ '}
        elif [[ -n $command && -n $line ]]; then shown+=("$line"); fi ;;
    esac
  done <"$root/$page"
  [[ $status == 0 ]] || fail "ended with $status"
  echo "examples: $page: $commands commands"
  [[ $commands -gt 0 ]]
}

for page in "$@"; do
  mkdir "$site/${page##*/}"
  (
    cd "$site/${page##*/}"
    # The site that the example of zylstore(1) makes; that page itself begins without one.
    [[ $page == */zylstore.1 ]] || make_site "$PWD" 60 5 --today 2025-03-07 >"$site/made"
    export TERM=dumb # no codes among what is compared
    run_page
  )
done
