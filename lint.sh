#!/usr/bin/env bash
# lint.sh [CHECK ...]: checks the sources, scripts and documents without running the program: all
# checks, or those that are named. "plain" names those that need no build, "built" the others, which
# read build/dev. ./dev lint installs the tools, builds with both compilers, and runs them all.
#
# A check prints what it found, then what is wrong with it, and fails; it changes nothing.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

plain=(format layers circles messages types expectations braces shell manuals links)
built=(headers named static)

layers=(common/ut common/nls api agent utility sandbox)

tracked() { git ls-files -co --exclude-standard -- "$@"; }
sources() { tracked '*.cpp' '*.h' ':!api/vltlib.h'; }
sources_in() { sources | grep -E "^($(IFS='|'; echo "$*"))"; }  # all without an argument

# nothing REASON COMMAND ...: fails if the command prints anything.
nothing() {
  local reason=$1 found
  shift
  found=$("$@") || true
  [[ -n $found ]] || return 0
  printf '%s\n' "$found" "lint: $reason (see above)" >&2
  return 1
}

check_format() { sources | xargs clang-format --dry-run -Werror; }

# A layer may include itself and the layers below it.
upward_includes() {
  local rule folder allowed
  for rule in "common/ut:common/ut" "common/nls:common/(ut|nls)" "api:common|api" \
              "agent:common|api|agent" "utility:common|api|agent|utility" \
              "sandbox:sandbox|api/vlt(lib.h|entries.def)"; do
    folder=${rule%%:*} allowed=${rule#*:}
    grep -rnE '^#include "' "$folder" --include='*.cpp' --include='*.h' |
      grep -vE "#include \"($allowed)"
  done
}
check_layers() { nothing "a layer includes one above it" upward_includes; }

# "A B" for each include of B by A within layer $1. A header and its source count as one, because
# whoever needs the header needs what the source includes.
includes_within() {
  tracked "$1/*.cpp" "$1/*.h" | xargs grep -HE "^#include \"$1/" |
    sed -E 's/^([^:]*)\.[a-z]+:#include "([^"]*)\.[a-z]+".*/\1 \2/' | sort -u
}
circles() {
  local layer
  for layer; do
    { includes_within "$layer" | tsort >/dev/null; } 2>&1
  done
}
check_circles() { nothing "files of one layer include each other" circles "${layers[@]}"; }

# A number does not tell a reader what is said; names are in msg:: (common/nls/message.h).
check_messages() {
  nothing "a message is called by its number" \
    git grep -nE '(nlprintf|nlsprintf|plainText|nls::ask)\([0-9]' -- '*.cpp' '*.h'
}

unqualified_types() {
  sources |
    xargs grep -nP '(?<!std::)\b(size_t|ptrdiff_t|u?int(8|16|32|64)_t)\b'
}
check_types() { nothing "a standard type without std::" unqualified_types; }

# For Perl expressions: (...) with as many closing brackets as opening ones, as (?&round), and a
# text or a character, as (?&quoted).
readonly syntax='(?(DEFINE)(?<quoted>"(?:\\.|[^"\\])*"|'\''(?:\\.|[^'\''\\])*'\'')'\
'(?<round>\((?:[^()"'\'']|(?&quoted)|(?&round))*\)))'

# Prints what an expression matches in the sources (of some folders), over several lines too.
matches() {
  local expression=$1 files
  mapfile -t files < <(sources_in "${@:2}")
  grep -PzoH -- "$syntax$expression" "${files[@]}" | tr '\0' '\n'
}

# EXPECT_EQ(expected, actual): a bare number or text is what is expected.
reversed_expectations() {
  local value='(?:-?[0-9][\w.]*|(?:(?&quoted)\s*)+)'
  local argument='(?:[^(){}"'\'',;]|(?&quoted)|(?&round)|\{[^{};]*\})+'
  matches "\b(?:EXPECT|ASSERT)_(?:EQ|NE|STREQ|STRNE)\((?!\s*$value\s*,)$argument,\s*$value\s*\)" tests
}
check_expectations() { nothing "the expected value comes first" reversed_expectations; }

# A body without braces is on the line of its condition, and ends there. clang-tidy has the same
# rule, but does not read the tests.
bare_bodies() {
  matches '(?m)^\s*(?:\} (?=else))?(?:(?:else )?(?:if|for|while)(?: constexpr)? (?&round)|(?:else|do)\b)'\
'(?: \[\[\w+\]\])?+(?! if\b)(?! \{(?: *\\|  //.*)?$)(?!.*[;}](?: *\\|  //.*)?$).*\n.*'
}
check_braces() { nothing "a body on a line of its own needs braces" bare_bodies; }

check_shell() {
  tracked dev .ci/run '*.sh' packaging/completion | xargs shellcheck -x
}

# Each header compiles alone.
check_headers() {
  local header bad=0
  while read -r header; do
    g++ -std=c++20 -fsyntax-only -Wall -Wextra -I. -Ibuild/dev/generated -x c++ "$header" || bad=1
  done < <(tracked '*.h')
  [[ $bad == 0 ]]
}

# Tests that documents name as `Suite.Test`, and comments as "pinned by Suite.Test".
named_tests() {
  local name='[A-Z][A-Za-z]+\.[A-Z][A-Za-z]+'
  tracked '*.md' | xargs grep -ohE "\`$name\`" | tr -d '`'
  sources | xargs grep -Pzoh "pinned(\s|//)+by(\s|//)+\K$name" | tr '\0' '\n'
}
check_named() {
  local name bad=0 tests
  tests=$(ctest --test-dir build/dev -N)
  for name in $(named_tests | sort -u); do
    grep -q ": $name\$" <<<"$tests" || { echo "lint: no test $name" >&2; bad=1; }
  done
  [[ $bad == 0 ]]
}

# From their folder, where mandoc finds the pages that they refer to. A page names the system that it
# belongs to, with its version; without that it would name the reader's own, and mandoc prefers that.
manual_findings() (
  version=$(sed -n 's/^project(vexosync VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
  cd docs/man
  mandoc -Tlint -- *.[15] | grep -v 'operating system explicitly specified'
  grep -L -x -F ".Os vexosync $version" -- *.[15]
)
check_manuals() { nothing "a manual page is wrong, or has another version" manual_findings; }

# The anchors of a document's headings: in small letters, without punctuation, blanks as hyphens.
anchors() { sed -n 's/^##* //p' "$1" | tr '[:upper:] ' '[:lower:]-' | tr -cd '[:lower:][:digit:]\n-'; }

leads() { [[ -e $1 && ($2 != *'#'* || $'\n'$(anchors "$1")$'\n' == *$'\n'"${2#*#}"$'\n'*) ]]; }

# Every file and every heading that a document links to exists.
check_links() {
  local document link file bad=0
  while IFS=: read -r document link; do
    link=${link#*(} link=${link%)}
    file=$(dirname "$document")/${link%%#*}
    if [[ $link == '#'* ]]; then file=$document; fi
    if [[ $link != http* ]] && ! leads "$file" "$link"; then
      echo "lint: $document links to $link, which does not exist" >&2
      bad=1
    fi
  done < <(tracked '*.md' | xargs grep -HoE '\]\([^)]+\)')
  [[ $bad == 0 ]]
}

# Findings that are accepted are listed with their reasons in .clang-tidy and .cppcheck-suppressions.
# The tests' macros are too much for clang-tidy; cppcheck reads the tests as well.
check_static() {
  cppcheck -q -j "$(nproc)" --project=build/dev/compile_commands.json --library=googletest \
    --enable=warning,performance,portability,style --suppressions-list=.cppcheck-suppressions \
    --inline-suppr --error-exitcode=1
  tracked 'common/*.cpp' 'api/*.cpp' 'agent/*.cpp' 'utility/*.cpp' 'sandbox/*.cpp' |
    xargs -P "$(nproc)" -n 4 clang-tidy -quiet -p build/dev 2>/dev/null
}

run() {
  local check
  for check; do
    case $check in
      plain) run "${plain[@]}" ;;
      built) run "${built[@]}" ;;
      *)
        if ! declare -F "check_$check" >/dev/null; then
          echo "lint: no check $check; there are: plain (${plain[*]}), built (${built[*]})" >&2
          exit 2
        fi
        "check_$check" ;;
    esac
  done
}

[[ $# -gt 0 ]] || set -- plain built
run "$@"
echo "lint: found nothing in $*"
