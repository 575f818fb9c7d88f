#!/usr/bin/env bash
# record.sh BUILD: records the screens that the documents show, from a real run in a terminal of 24
# lines and 80 columns, each as text and as an SVG made from the text. BUILD is the build directory
# whose programs are run. Called by ./dev screens.
set -euo pipefail
build=$(readlink -f "$1")
cd "$(dirname "$(readlink -f "$0")")"
# shellcheck disable=SC2034 # read by site.sh
site_programs=$build/bin:$build/bin/sandbox site_libraries=$build/lib
# shellcheck source=sandbox/site.sh
source ../../sandbox/site.sh
site=$(mktemp -d)
leave() {
  tmux -L "${site##*/}" kill-server 2>/dev/null || true
  rm -rf "$site"
}
trap leave EXIT
terminal() { tmux -L "${site##*/}" "$@"; }

# Waits until the screen shows a text.
await() {
  local tries
  for tries in {1..100}; do
    ! terminal capture-pane -p | grep -qF -- "$1" || return 0
    sleep 0.1
  done
  echo "record: after $tries tries the screen does not show: $1" >&2
  terminal capture-pane -p >&2
  return 1
}

# Waits for the prompt $1, then types $2 and Enter.
answer() {
  await "$1"
  terminal send-keys -l -- "$2"
  terminal send-keys Enter
}

# Saves the screen as $1.txt and $1.svg.
keep() {
  terminal capture-pane -p | sed 's/ *$//' >"$1.txt"
  awk '
    { gsub(/&/, "\\&amp;"); gsub(/</, "\\&lt;"); line[NR] = $0 }
    END {
      printf "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 696 %d\" ", NR * 18 + 24
      print "font-family=\"DejaVu Sans Mono, Menlo, Consolas, monospace\" font-size=\"14\">"
      print "<rect width=\"100%\" height=\"100%\" rx=\"6\" fill=\"#1b1f24\"/>"
      print "<g fill=\"#d6dbe1\" xml:space=\"preserve\">"
      for (i = 1; i <= NR; i++) {
        if (line[i] == "") continue
        printf "<text x=\"12\" y=\"%d\" textLength=\"%.1f\">%s</text>\n", i * 18 + 8, length(line[i]) * 8.4, line[i]
      }
      print "</g>\n</svg>"
    }' "$1.txt" >"$1.svg"
  echo "record: $1"
}

make_site "$site" 60 24 --today 2025-03-07 >"$site/made"
terminal -f /dev/null new-session -d -x 80 -y 24 "cd '$site' && exec vexosync syncdb -numcat=2"
answer "Start date" ""
answer "End date" 2025-03-06
answer "Catalog 1: user name" rman
answer "Catalog 1: password" rman
answer "Catalog 1: connect string" prod
answer "Catalog 2: user name" rman
answer "Catalog 2: password" rman
answer "Catalog 2: connect string" test
answer "Command ==>" 1:4+
await "+4 -0"
answer "Command ==>" "3 12+"
await "+1 -1"
keep pick_list
answer "Command ==>" O
await "continue?"
keep question
