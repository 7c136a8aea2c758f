#!/usr/bin/env bash
# Makes the local MariaDB server usable by the MySQL engine and its tests:
#  1. registers MariaDB Connector/ODBC under the name "MySQL ODBC 5.1 Driver".
#     The MySQL engine itself no longer uses it (it talks to the server
#     through the MariaDB client library); the SQL Server tests do, to run
#     the generic ODBC backend's catalog calls against a live driver;
#  2. starts mariadbd on 127.0.0.1:3306 when nothing answers there (there is
#     no service manager in CI, so the server runs in the background);
#  3. creates the test login zol/zol with all privileges, usable over TCP.
# Runs as root on a fresh machine without questions, and is safe to run again.
set -euo pipefail

DRIVER_NAME="MySQL ODBC 5.1 Driver"
TEST_USER="${ZOLSDK_MYSQL_USER:-zol}"
TEST_PASSWORD="${ZOLSDK_MYSQL_PASSWORD:-zol}"
DATADIR=/var/lib/mysql
RUNDIR=/run/mysqld
LOG=/var/log/mysql/zolsdk-mariadbd.log

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

# ---- 1. the ODBC driver -----------------------------------------------------
find_driver_lib() {
  local c
  for c in /usr/lib/x86_64-linux-gnu/odbc/libmaodbc.so /usr/lib/aarch64-linux-gnu/odbc/libmaodbc.so \
           /usr/lib/*/odbc/libmaodbc.so /usr/lib/odbc/libmaodbc.so /usr/lib64/libmaodbc.so; do
    if [ -f "$c" ]; then echo "$c"; return 0; fi
  done
  return 1
}

DRIVER_LIB="$(find_driver_lib)" || { echo "MariaDB Connector/ODBC (odbc-mariadb) is not installed" >&2; exit 1; }

if ! odbcinst -q -d -n "$DRIVER_NAME" >/dev/null 2>&1; then
  template="$(mktemp)"
  cat >"$template" <<EOF
[$DRIVER_NAME]
Description = MariaDB Connector/ODBC for the MySQL engine
Driver      = $DRIVER_LIB
Threading   = 0
EOF
  $SUDO odbcinst -i -d -f "$template" >/dev/null
  rm -f "$template"
  echo "registered ODBC driver '$DRIVER_NAME' -> $DRIVER_LIB"
fi

# ---- 2. the server ------------------------------------------------------------
server_answers() { mariadb-admin --protocol=socket -uroot ping >/dev/null 2>&1; }
# A ping answers even when the login is refused, so ask a real question.
tcp_answers() {
  mariadb --protocol=tcp -h127.0.0.1 -P3306 -u"$TEST_USER" -p"$TEST_PASSWORD" -N -e 'SELECT 1' >/dev/null 2>&1
}

if ! server_answers; then
  $SUDO mkdir -p "$RUNDIR" "$(dirname "$LOG")"
  $SUDO chown mysql:mysql "$RUNDIR" "$(dirname "$LOG")"
  if [ ! -d "$DATADIR/mysql" ]; then
    echo "initialising $DATADIR"
    $SUDO mariadb-install-db --user=mysql --datadir="$DATADIR" --auth-root-authentication-method=socket \
      --skip-test-db >/dev/null
  fi
  echo "starting mariadbd"
  # setsid: the server must outlive this script and the shell that ran it.
  $SUDO setsid mysqld_safe --user=mysql --datadir="$DATADIR" --bind-address=127.0.0.1 --port=3306 \
    --log-error="$LOG" </dev/null >/dev/null 2>&1 &
  for _ in $(seq 1 120); do
    if server_answers; then break; fi
    sleep 0.5
  done
  if ! server_answers; then
    echo "mariadbd did not come up; log follows" >&2
    $SUDO tail -n 50 "$LOG" >&2 || true
    exit 1
  fi
fi

# ---- 3. the test login --------------------------------------------------------
if ! tcp_answers; then
  $SUDO mariadb --protocol=socket -uroot <<EOF
CREATE USER IF NOT EXISTS '$TEST_USER'@'localhost' IDENTIFIED BY '$TEST_PASSWORD';
CREATE USER IF NOT EXISTS '$TEST_USER'@'127.0.0.1' IDENTIFIED BY '$TEST_PASSWORD';
ALTER USER '$TEST_USER'@'localhost' IDENTIFIED BY '$TEST_PASSWORD';
ALTER USER '$TEST_USER'@'127.0.0.1' IDENTIFIED BY '$TEST_PASSWORD';
GRANT ALL PRIVILEGES ON *.* TO '$TEST_USER'@'localhost' WITH GRANT OPTION;
GRANT ALL PRIVILEGES ON *.* TO '$TEST_USER'@'127.0.0.1' WITH GRANT OPTION;
FLUSH PRIVILEGES;
EOF
fi

if ! tcp_answers; then
  echo "the login $TEST_USER cannot reach 127.0.0.1:3306" >&2
  exit 1
fi
echo "mariadb ready on 127.0.0.1:3306 (user $TEST_USER)"
