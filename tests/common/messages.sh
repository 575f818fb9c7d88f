#!/usr/bin/env bash
# messages.sh: checks of the message catalogs; the first argument chooses one.
#
#   document  docs/messages.md is generated from the catalog, and every message has its explanation
#   german    the German catalog has the same messages, with the same inserts and the same number of
#             answers, and no screen line is wider than 80 columns in either language
#   misfits   the compiler refuses a call that does not fit its message, and gives the right reason;
#             $2 is the compiler, $3 the directory of the generated sources
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
catalogs=$root/common/nls/catalog

make_from() { awk -v make="$1" -f "$catalogs/catalog.awk" "$catalogs/$2.msg"; }

check_document() {
  make_from document vexo | diff "$root/docs/messages.md" - && return
  echo "messages.sh: docs/messages.md is out of date; run ./dev messages" >&2
  return 1
}

check_german() {
  english=$(make_from rows vexo)
  german=$(make_from rows vexo_de)
  diff <(echo "$english") <(echo "$german")
  # Lines that are wider than a screen, of the texts that are shown without an identifier.
  ! sed -n 's/^[0-9]* "QRB[0-9]*Z\(.*\)"$/\1/p' "$catalogs"/vexo{,_de}.msg | sed 's/\\n/\n/g' |
    LC_ALL=C.UTF-8 grep -E '.{81}'
}

# Compiles a statement and prints the compiler's messages, whose words below are those of gcc and clang
# alike ("could not convert", "no viable conversion").
compile() {
  printf '#include "common/nls/nls.h"\nvoid f(const char* text) { %s; (void)text; }\n' "$3" |
    "$1" -std=c++20 -fsyntax-only -I"$root" -I"$2" -x c++ - 2>&1
}

check_misfits() {
  compile "$1" "$2" 'using namespace msg; nlprintf(kPasswordFileNotRead, text);
    nlprintf(kListLine, char(1), 2u, text); nls::ask(kAskContinue, kNotAnAnswer)'
  while IFS='|' read -r reason statement; do
    statement="using namespace msg; $statement"
    ! said=$(compile "$1" "$2" "$statement") && [[ $said == *"$reason"* ]] && continue
    echo "messages.sh: not refused for $reason: $statement"$'\n'"$said" >&2
    return 1
  done <<'END'
kNoSuchMessage|nlprintf(kNoSuchMessage)
no matching function|nlprintf(131)
an insert is missing|nlprintf(kPasswordFileNotRead)
an insert is not used|nlsprintf(kBlankLine, text)
an insert is of another kind|nlprintf(kPasswordFileNotRead, 7)
an insert is of another kind|nlprintf(kListLine, text, 2u, text)
conver|nls::plainText(kPasswordFileNotRead)
conver|nls::ask(kAskCatalogUser, kNotAnAnswer)
END
}

"check_$1" "${@:2}"
