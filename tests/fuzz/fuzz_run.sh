#!/usr/bin/env bash
# Fuzzes every target for a while from the seed corpora cut from data/;
# fails (with the target's report) as soon as one finds a fault.
#   tests/fuzz/fuzz_run.sh [SECONDS [WORK]]   default 60 s per target, build/fuzz/work
# The crashing input is left in WORK/crash_<target>/; once the fault is
# fixed, copy it to tests/fuzz/regressions/<target>/ so the tests replay it.
set -euo pipefail
cd "$(dirname "$0")/../.."
secs=${1:-60}
work=${2:-build/fuzz/work}

cmake --workflow --preset fuzz >/dev/null
mkdir -p "$work"
build/fuzz/tests/fuzz/fuzz_seeds data "$work/seeds"
for target in log rinex; do
  case $target in
    log) maxlen=16384 ;;
    rinex) maxlen=20000 ;;
  esac
  mkdir -p "$work/corpus_$target" "$work/crash_$target"
  # A smaller quarantine than the default keeps the target's per-input
  # handles from costing page faults on every run.
  if ! ASAN_OPTIONS=quarantine_size_mb=16 UBSAN_OPTIONS=print_stacktrace=1 \
       "build/fuzz/tests/fuzz/fuzz_$target" -max_total_time="$secs" -max_len=$maxlen -timeout=30 \
       -print_final_stats=1 -artifact_prefix="$work/crash_$target/" \
       "$work/corpus_$target" "$work/seeds/$target" >"$work/$target.log" 2>&1; then
    tail -n 60 "$work/$target.log"
    echo "fuzz_$target: fault found, input in $work/crash_$target/" >&2
    exit 1
  fi
  echo "fuzz_$target: $(grep -E '^#[0-9]+.*DONE' "$work/$target.log" | tail -n 1)"
done
