#!/usr/bin/env bash
# Builds the Access benchmark and zol, and runs it against the local MariaDB
# server (started by scripts/start-mariadb.sh when nothing answers).
# Arguments go to the program: --rows N, --big-rows N, --keep.
# ZOLSDK_MYSQL_ATTRS names another server; ZOLSDK_BENCH_BUILD another build folder.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
build="${ZOLSDK_BENCH_BUILD:-$root/build-bench}"

if [ -z "${ZOLSDK_MYSQL_ATTRS:-}" ] && ! mariadb-admin --protocol=tcp -h127.0.0.1 -uzol -pzol ping >/dev/null 2>&1; then
  "$root/scripts/start-mariadb.sh"
fi

cmake -S "$root" -B "$build" -G Ninja -DZOLSDK_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target zol_access_bench zol -j2
exec "$build/bench/zol_access_bench" "$@"
