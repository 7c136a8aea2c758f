#!/usr/bin/env bash
# The whole test suite on a fresh Debian machine: packages, the local MariaDB
# server, the build (warnings are errors), then every test, the Python
# package, and each fuzz target for a bounded time (scripts/fuzz.sh,
# FUZZ_SECONDS each). Extra arguments go to ctest (e.g. scripts/test.sh -L xml)
# and run those tests alone, without the Python package or fuzzing.
#
#   scripts/test.sh --sanitize [ctest args]
# builds into build-sanitize/ with ZOLSDK_SANITIZE=address,undefined and runs
# the suite there. Leak checking is on, except for the tests that start the
# embedded JVM in their own process or in the zol they run (labels access,
# tool, migration, transfer): at exit the leak tracer faults on the JVM's
# threads. Those run with detect_leaks=0, the one option the JVM needs (see
# ZOLSDK_SANITIZE in CMakeLists.txt).
set -euo pipefail
cd "$(dirname "$0")/.."

sanitize=0
if [ "${1:-}" = "--sanitize" ]; then
  sanitize=1
  shift
fi

if [ "$sanitize" = 0 ]; then
  ZOLSDK_WERROR=ON bash scripts/build.sh
  bash scripts/start-mariadb.sh
  bash scripts/register-freetds.sh
  (cd build && ctest --output-on-failure --timeout 900 "$@")
  if [ "$#" -eq 0 ]; then   # on a full run: the Python package, then the fuzz targets
    bash scripts/test-python.sh
    bash scripts/fuzz.sh
  fi
  exit 0
fi

bash scripts/install-deps.sh
if [ -f scripts/fetch-access-jars.sh ]; then bash scripts/fetch-access-jars.sh; fi
bash scripts/start-mariadb.sh
bash scripts/register-freetds.sh
flags=(-DZOLSDK_SANITIZE=address,undefined)
if ! grep -q ZOLSDK_SANITIZE CMakeLists.txt cmake/*.cmake 2>/dev/null; then
  # A tree without the switch still gets the same instrumentation.
  flags+=("-DCMAKE_CXX_FLAGS=-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined"
          "-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=address,undefined"
          "-DCMAKE_SHARED_LINKER_FLAGS=-fsanitize=address,undefined")
fi
cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${flags[@]}" >/dev/null
cmake --build build-sanitize -j 2

export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
jvm_labels='access|tool|migration|transfer'
cd build-sanitize
status=0
ASAN_OPTIONS="detect_leaks=1" ctest -j 2 --output-on-failure --timeout 1800 -LE "$jvm_labels" "$@" || status=1
ASAN_OPTIONS="detect_leaks=0" ctest -j 2 --output-on-failure --timeout 1800 -L "$jvm_labels" "$@" || status=1
exit "$status"
