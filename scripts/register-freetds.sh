#!/usr/bin/env bash
# Registers the FreeTDS ODBC driver (package tdsodbc) with the ODBC driver
# manager under the name the SQL Server provider asks for ("FreeTDS"), when
# no driver of that name is registered yet. Safe to run again.
set -euo pipefail

DRIVER_NAME="FreeTDS"

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

if odbcinst -q -d -n "$DRIVER_NAME" >/dev/null 2>&1; then
  exit 0
fi

find_driver_lib() {
  local c
  for c in /usr/lib/x86_64-linux-gnu/odbc/libtdsodbc.so /usr/lib/aarch64-linux-gnu/odbc/libtdsodbc.so \
           /usr/lib/*/odbc/libtdsodbc.so /usr/lib/odbc/libtdsodbc.so /usr/lib64/libtdsodbc.so \
           /usr/local/lib/libtdsodbc.so; do
    if [ -f "$c" ]; then echo "$c"; return 0; fi
  done
  return 1
}

DRIVER_LIB="$(find_driver_lib)" || { echo "the FreeTDS ODBC driver (tdsodbc) is not installed" >&2; exit 1; }

template="$(mktemp)"
cat >"$template" <<INI
[$DRIVER_NAME]
Description = FreeTDS ODBC driver for the SQL Server engine
Driver      = $DRIVER_LIB
INI
$SUDO odbcinst -i -d -f "$template" >/dev/null
rm -f "$template"
echo "registered ODBC driver '$DRIVER_NAME' -> $DRIVER_LIB"
