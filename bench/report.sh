#!/usr/bin/env bash
# report.sh: compares the benchmarks' lines in the file $1 with the goals and prints the result. "yes"
# as $2: also writes the plots and the generated parts of docs/performance.md, each of which is between
# the comments "begin NAME" and "end NAME". Called by ./dev.
set -euo pipefail
figures=$(readlink -f "$1") write=${2:-no}
cd "$(dirname "$(readlink -f "$0")")/.."
document=docs/performance.md plots=docs/performance

table() { awk "$@" -f bench/report.awk bench/rows.tsv "$figures"; }

machine() {
  local compiler
  compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[^=]*=//p' build/bench/CMakeCache.txt)
  cat <<END
- $(lscpu | sed -n 's/^Model name: *//p'), $(nproc) processors, $(lscpu | sed -n 's/^L3 cache: *//p') L3 cache
- $(awk '/MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo) memory, Linux $(uname -r | cut -d. -f1,2)
- $("$compiler" --version | head -n 1), release build
END
}

# Replaces part $1 of the document with standard input.
replace_part() {
  cat >build/bench/part
  awk -v begin="<!-- begin $1 -->" -v end="<!-- end $1 -->" '
    $0 == end { inside = 0 }
    !inside { print }
    $0 == begin { inside = 1; while ((getline text < "build/bench/part") > 0) print text }
  ' "$document" >build/bench/document
  cp build/bench/document "$document"
}

# One plot: group, heading, unit.
plot() {
  table -v mode=plot -v group="$1" >build/bench/plot.tsv
  gnuplot -e "data='build/bench/plot.tsv'; out='$plots/$1.svg'; heading='$2'; unit='$3'" bench/plot.gp
}

table -v mode=rows
[[ $write == yes ]] || exit 0
mkdir -p "$plots"
machine | replace_part machine
table -v mode=rows -v markdown=1 | replace_part rows
table -v mode=growth -v markdown=1 | replace_part growth
plot build_random "Storing N handles in random order" "ns a handle"
plot hit "Looking a handle up among N" "ns a look-up"
plot memory_random "Memory of N handles" "bytes a handle"
plot list_append "Listing N objects" "ns an object"
plot sync_cpu "A whole SYNCDB of N objects" "processor seconds"
plot delete_cpu "A whole DELETE of N objects" "processor seconds"
echo "bench: $document and $plots are written" >&2
