#!/usr/bin/env bash
# Builds the Python package (as scripts/test-python.sh does) and runs the
# Arrow read benchmark against the local MariaDB. Arguments go to the
# benchmark: --rows N, --rounds N, --keep.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
VENV="${ZOLSDK_PYTHON_VENV:-python/build/venv}"
[ -x "$VENV/bin/python" ] || python3 -m venv "$VENV"
"$VENV/bin/pip" install -q --disable-pip-version-check scikit-build-core nanobind pyarrow
export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$root}" CCACHE_NOHASHDIR=1
"$VENV/bin/pip" install -q --disable-pip-version-check --no-build-isolation ./python
VENV="$(cd "$VENV" && pwd)"
cd bench
exec "$VENV/bin/python" arrow_read_bench.py "$@"
