#!/usr/bin/env bash
# The Python package: builds it into a virtual environment (pip from PyPI,
# pyarrow for the Arrow tests) and runs its pytest suite against the local
# MariaDB and the sample Access files. Extra arguments go to pytest.
# Expects what scripts/test.sh sets up first (packages, jars, the server).
set -euo pipefail
cd "$(dirname "$0")/.."

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
need=()
python3 -c 'import venv, ensurepip' 2>/dev/null || need+=(python3-venv)
python3 -c 'import sysconfig, os, sys; sys.exit(not os.path.exists(os.path.join(sysconfig.get_paths()["include"], "Python.h")))' \
  || need+=(python3-dev)
command -v mdb-export >/dev/null || need+=(mdbtools)
if [ "${#need[@]}" -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
fi

VENV="${ZOLSDK_PYTHON_VENV:-python/build/venv}"
[ -x "$VENV/bin/python" ] || python3 -m venv "$VENV"
"$VENV/bin/pip" install -q --disable-pip-version-check scikit-build-core nanobind pytest pyarrow
# The package's build folder (python/build) is kept between runs, and the
# compiler cache is shared: a rebuild compiles only what changed.
export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}" CCACHE_NOHASHDIR=1
"$VENV/bin/pip" install -q --disable-pip-version-check --no-build-isolation ./python

# Run from the tests folder so that the installed package is the one imported.
set +e
"$VENV/bin/pytest" -p no:cacheprovider -q python/tests "$@"
rc=$?
set -e
if [ "$rc" -eq 5 ]; then
  echo "test-python: pytest collected no tests" >&2
  exit 1
fi
exit "$rc"
