#!/usr/bin/env bash
# run.sh: runs all benchmarks of the build directory $1 and prints their lines (harness.h). "quick"
# as $2: about one minute, sizes up to 100,000. Called by ./dev, which turns the lines into tables.
# Announces each step on standard error.
set -euo pipefail
build=$(readlink -f "$1") mode=${2:-full}
work=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
trap 'rm -rf "$work"' EXIT
export PATH=$build/bin:$build/bin/sandbox:$PATH
export LD_LIBRARY_PATH=$build/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
export TERM=ansi
unset VLTI_DIR VLTI_LOG VLTI_CONFIG NLS_LANG ORACLE_HOME ORACLE_PATH SQLPATH

sizes=(10000 100000) large=() rounds=9
[[ $mode == quick ]] || sizes+=(1000000) large=(+5000000) rounds=5

say() { echo "bench: $* (load $(cut -d' ' -f1 /proc/loadavg))" >&2; }

# Makes a site of $1 objects, $2 of them orphans, and enters it.
enter_site() {
  local site=$work/$1
  mkdir -p "$site/tmp"
  export SANDBOX_HOME=$site VEXO_OPTFILE=$site/vexo.opt TMPDIR=$site/tmp
  printf '%s\n' "STORE $site/store.db" >"$site/vlt.opt"
  printf '%s\n' "VLTI_ORC_CONFIG $site/vlt.opt" "VLTI_LOG $site" "VEXO_NODE ORANODE" \
    "VEXO_PSWDPATH $site/passwords" "VEXO_ENABLESCRIPTINPUT y" >"$site/vexo.opt"
  {
    zylstore init
    zylstore node ORANODE --password secret --save-password "$site/passwords"
    zylstore generate --objects "$1" --orphans "$2" --seed 1 --catalogs prod
    zylstore limits --max-objects-per-txn 256  # the program leaves one free
  } >"$site/made"
  zylstore catalog list prod | cut -f1 >"$site/handles"
  cp "$site/store.db" "$site/fresh.db"
}

say "trace lines"
bench_micro --benchmark_enable_random_interleaving=true --benchmark_repetitions=60 \
  --benchmark_min_time=0.02
say "list"
bench_list "$rounds" "${sizes[@]}"
say "pick list"
bench_pick 15 "${sizes[@]}"
for n in "${sizes[@]}"; do
  say "whole runs with $n objects"
  enter_site "$n" $((n / 100))
  printf '%s\n' "" +0 rman rman prod q >"$SANDBOX_HOME/answers"
  bench_whole sync "$rounds" "$n" $((n / 100))
  printf '%s\n' "" +0 + O y q >"$SANDBOX_HOME/answers"
  printf '%s\n' "" +0 + q >"$SANDBOX_HOME/leave"
  bench_whole delete "$rounds" "$n"
  rm -rf "$SANDBOX_HOME"
done
say "tree"
bench_tree "$rounds" "${sizes[@]}" "${large[@]}"
say "done"
