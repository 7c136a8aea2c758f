#!/usr/bin/env bash
# The whole test suite on a fresh Debian machine: packages, the local MariaDB
# server, the build (warnings are errors), then every test. Extra arguments go to ctest
# (e.g. scripts/test.sh -L xml).
set -euo pipefail
cd "$(dirname "$0")/.."

ZOLSDK_WERROR=ON bash scripts/build.sh
bash scripts/start-mariadb.sh
bash scripts/register-freetds.sh
cd build
ctest --output-on-failure --timeout 900 "$@"
if [ "$#" -eq 0 ]; then cd .. && bash scripts/test-python.sh; fi   # the Python package, on a full run
