#!/usr/bin/env bash
# Builds the fuzz targets with clang and libFuzzer (build-fuzz/) and runs
# each for a bounded time: FUZZ_SECONDS (default 30) each. A crash, a
# sanitizer report or a broken check fails the run; the input that did it
# is left in build-fuzz/crashes/.
set -euo pipefail
cd "$(dirname "$0")/.."

SECONDS_EACH="${FUZZ_SECONDS:-30}"
CXX_FUZZ="${CXX_FUZZ:-clang++-14}"
command -v "$CXX_FUZZ" >/dev/null || { echo "fuzz: $CXX_FUZZ is not installed (scripts/install-deps.sh)" >&2; exit 1; }

cmake -S fuzz -B build-fuzz -G Ninja -DCMAKE_CXX_COMPILER="$CXX_FUZZ" >/dev/null
cmake --build build-fuzz -j "$(nproc)"

rm -rf build-fuzz/crashes
mkdir -p build-fuzz/crashes
# The embedded JVM is never started here; leak checks stay on.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
for target in statement_builders attribute_strings xml_schema_files codecs; do
  corpus="build-fuzz/corpus/$target"
  mkdir -p "$corpus"
  echo "fuzz: $target for ${SECONDS_EACH}s"
  "build-fuzz/fuzz_$target" "$corpus" -max_total_time="$SECONDS_EACH" -timeout=10 -rss_limit_mb=2048 \
    -artifact_prefix=build-fuzz/crashes/"$target"- -print_final_stats=1 2>&1 | grep -E "^(stat::number_of_executed_units|==|SUMMARY|#[0-9]+ +DONE)" || true
  # libFuzzer's exit status is lost in the pipe: a crash leaves an artifact.
  if ls build-fuzz/crashes/"$target"-* >/dev/null 2>&1; then
    echo "fuzz: $target failed; inputs in build-fuzz/crashes/" >&2
    exit 1
  fi
done
