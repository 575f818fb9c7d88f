#!/usr/bin/env bash
# lint.sh [CHECK ...]: checks the sources, scripts and documents without running the program: "plain"
# and "built", or the checks that are named. "plain" names those that need no build, "built" those that
# read build/dev; ./dev lint installs the tools, builds with both compilers, and runs them. "packaged"
# names those that read build/packages, which ./dev package runs; "oldest" reads them too.
#
# A check prints what it found, then what is wrong with it, and fails; it changes nothing.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")"

plain=(format layers circles messages types expectations braces shell manuals links)
built=(headers named calls static)
packaged=(packagers same documents)

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
  tracked dev .ci/run '*.sh' packaging/completion examples | xargs shellcheck -x
}

# Each header compiles alone; those of the tests know where the build is.
check_headers() {
  local header bad=0
  while read -r header; do
    g++ -std=c++20 -fsyntax-only -Wall -Wextra -I. -Ibuild/dev/generated -DBUILD_DIRECTORY='"."' \
      -x c++ "$header" || bad=1
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

# The functions of C itself, which every system has.
readonly standard_c='abort|atexit|atoi|atol|calloc|clearerr|exit|fclose|feof|ferror|fflush|fgetc|fgets|'\
'fopen|fprintf|fputc|fputs|fread|free|fseek|ftell|fwrite|getc|getenv|is[a-z]{5,6}|mem(chr|cmp|cpy|move|set)|malloc|'\
'mktime|printf|putc|putchar|puts|qsort|raise|realloc|remove|rename|rewind|setvbuf|signal|snprintf|sprintf|'\
'stderr|stdin|stdout|str(chr|cmp|cspn|error|ftime|len|ncat|ncmp|ncpy|pbrk|rchr|spn|str|tol|toll|toul|toull)|'\
'time|tolower|toupper|ungetc|v[a-z]*printf'
# The C functions beyond these that the program's objects name; not what the compiler's own libraries
# name with two underscores or in C++, and not what the objects define themselves.
called() {
  local objects
  mapfile -t objects < <(find build/dev/{common,api,agent,utility} -name '*.o')
  nm "${objects[@]}" | awk '
    NF == 2 && $1 == "U" && $2 !~ /^_[A-Z_]/ { wanted[$2] }
    NF == 3 { defined[$3] }
    END { for (name in wanted) if (!(name in defined)) print name }' |
    grep -vxE "$standard_c|prctl" | sort
}
# Those that docs/portability.md lists.
listed() { sed -n '/^## What it asks/,/^## /s/^| [a-z].* | \(`.*\) |$/\1/p' docs/portability.md | grep -oE '[a-z_]+' | sort; }
check_calls() {
  nothing "the program asks for more (<) or less (>) of a system than docs/portability.md says" \
    diff <(called) <(listed)
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

# The links of documents to files and headings that do not exist.
dead_links() {
  local document link file
  while IFS=: read -r document link; do
    link=${link#*(} link=${link%)}
    file=$(dirname "$document")/${link%%#*}
    if [[ $link == '#'* ]]; then file=$document; fi
    [[ $link == http* ]] || leads "$file" "$link" || echo "$document: $link"
  done < <(grep -HoE '\]\([^)]+\)' "$@")
}
# packaging/README.md has its links where it is installed: check_documents.
check_links() {
  local documents
  mapfile -t documents < <(tracked '*.md' ':!packaging/README.md')
  nothing "a document links to what does not exist" dead_links "${documents[@]}"
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

# Prints the directories in which the packages are unpacked: the files of each .deb in
# build/package/unpacked/deb/NAME, and those of each .rpm in build/package/unpacked/rpm/NAME.
unpacked() {
  local all=build/package/unpacked package into
  if [[ ! $all -nt build/packages ]]; then
    rm -rf "$all"
    for package in build/packages/*.rpm; do
      into=$all/rpm/$(rpm -qp --qf '%{NAME}' "$package")
      mkdir -p "$into"
      rpm2cpio "$package" | (cd "$into" && cpio -idm --quiet)
    done
    for package in build/packages/*.deb; do
      [[ -e $package ]] || continue
      into=$all/deb/$(dpkg-deb -f "$package" Package)
      mkdir -p "$into"
      dpkg-deb -x "$package" "$into"
    done
  fi
  printf '%s\n' "$all"/*/*
}

# The distributions' own checkers. Findings that are accepted are listed with their reasons in
# packaging/lintian-overrides and packaging/rpmlint.toml.
check_packagers() {
  local package
  if command -v lintian >/dev/null; then lintian --allow-root --fail-on error build/packages/*.deb; fi
  if command -v rpmlint >/dev/null; then rpmlint -c packaging/rpmlint.toml build/packages/*.rpm; fi
  for package in build/packages/*.rpm; do
    nothing "$package runs scripts" rpm -qp --scripts --triggers "$package"
    nothing "$package has files of other users than root" \
      grep -vx root:root <(rpm -qp --qf '[%{FILEUSERNAME}:%{FILEGROUPNAME}\n]' "$package")
    nothing "$package offers the client library" \
      grep ApiDS64 <(rpm -qp --provides "$package")
  done
}

# Names, modes, links and checksums of a directory's files, without those that only Debian's tools read.
listing() {
  (
    cd "$1"
    find . ! -type d ! -path './usr/share/lintian/*' ! -name changelog.Debian.gz -printf '%M %p %l\n' |
      sort -k 2
    find . -type f ! -path './usr/share/lintian/*' ! -name changelog.Debian.gz -exec sha256sum {} + |
      sort -k 2
  )
}
different_packages() {
  local deb
  for deb in build/package/unpacked/deb/*; do
    diff <(listing "$deb") <(listing "build/package/unpacked/rpm/${deb##*/}")
  done
}
# Both kinds of packages hold the same files.
check_same() {
  unpacked >/dev/null
  [[ ! -e build/package/unpacked/deb ]] ||
    nothing "a .deb (<) and its .rpm (>) hold different files" different_packages
}

# What the documents and manual pages of a package name is in that package.
astray_in() {
  local documents name
  mapfile -t documents < <(find "$1/usr/share/doc" -name '*.md')
  [[ ${#documents[@]} == 0 ]] || dead_links "${documents[@]}"
  find "$1/usr/share/man" -name '*.gz' -exec zcat {} + | grep -oE '/usr/share/doc/[^ ]*' |
    while read -r name; do [[ -e $1$name ]] || echo "a manual page names $name"; done
  find "$1/usr/share/doc" -type f \( -perm /111 -o -name '*.sh' \) ! -path '*/examples/*' \
    -printf '%p is no document\n'
}
check_documents() {
  local package
  for package in $(unpacked); do
    nothing "what a document names is not in the package" astray_in "$package"
  done
}

# The oldest system that the packages are for is RHEL 9 (and its kin), where most Oracle databases of
# today run: glibc 2.34, and libstdc++ of gcc 11, whose newest symbols are those named here. Symbols of a
# newer version would keep the program from starting there. They come from the machine that builds:
# Debian 12 has newer libraries, but these sources use none of their new symbols.
readonly oldest=(GLIBC_2.34 GLIBCXX_3.4.29 CXXABI_1.3.13)
too_new() {
  local limit versions newest package needed
  for package in $(unpacked); do
    versions=$(find "$package" -type f \( -perm /111 -o -name '*.so' \) -exec objdump -T {} + 2>/dev/null |
      grep -oE "\\b(GLIBC|GLIBCXX|CXXABI)_[0-9.]+" | sort -Vu)
    needed=
    for limit in "${oldest[@]}"; do
      newest=$(grep "^${limit%_*}_" <<<"$versions" | tail -n 1)
      needed+=" $newest"
      [[ -n $newest && $(printf '%s\n' "$newest" "$limit" | sort -V | tail -n 1) == "$limit" ]] ||
        echo "$package: ${newest:-no symbol was found}"
    done
    echo "lint: ${package#*unpacked/} needs$needed; there are ${oldest[*]}" >&2
  done
}
check_oldest() { nothing "the packages need newer libraries than RHEL 9 has" too_new; }

run() {
  local check
  for check; do
    case $check in
      plain) run "${plain[@]}" ;;
      built) run "${built[@]}" ;;
      packaged) run "${packaged[@]}" ;;
      *)
        if ! declare -F "check_$check" >/dev/null; then
          echo "lint: no check $check; there are: plain (${plain[*]}), built (${built[*]})," \
            "packaged (${packaged[*]}), oldest" >&2
          exit 2
        fi
        "check_$check" ;;
    esac
  done
}

[[ $# -gt 0 ]] || set -- plain built
run "$@"
echo "lint: found nothing in $*"
