#!/usr/bin/env bash
# Installs what the project needs and builds the library, the zol tool and
# the tests into build/. ZOLSDK_WERROR=ON in the environment turns warnings
# into errors (scripts/test.sh does).
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh
if [ -f scripts/fetch-access-jars.sh ]; then
  bash scripts/fetch-access-jars.sh
fi
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZOLSDK_WERROR="${ZOLSDK_WERROR:-OFF}" >/dev/null
cmake --build build -j "$(nproc)"
