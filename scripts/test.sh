#!/usr/bin/env bash
# The whole test suite on a fresh Debian machine: packages, the local MariaDB
# server, the build, then every test. Extra arguments go to ctest
# (e.g. scripts/test.sh -L xml).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/build.sh
if [ -f scripts/start-mariadb.sh ]; then
  bash scripts/start-mariadb.sh
fi
cd build
ctest --output-on-failure --timeout 900 "$@"
