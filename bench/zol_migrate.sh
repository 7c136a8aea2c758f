#!/usr/bin/env bash
# zol migrate against the dump tools, on the local MariaDB server: one table
# of a million rows, and a database of 8 tables of 250,000 rows. For each,
# `zol migrate --jobs 1`, `zol migrate --jobs 4` and `mariadb-dump | mariadb`
# copy the source into a fresh database; every copy is checked against the
# source by the server's own count and checksum of every row, and the peak
# resident memory of zol is taken by /usr/bin/time. Prints rows/s and the
# ratios against the dump tools, from this one run.
#
# Uses build/tools/zol (ZOL=... for another); ROWS=... and SMALL_ROWS=...
# change the sizes; KEEP=1 keeps the databases.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$(dirname "$here")"
zol="${ZOL:-$root/build/tools/zol}"
rows="${ROWS:-1000000}"
small="${SMALL_ROWS:-250000}"
host=127.0.0.1 port=3306 user=zol password=zol
sql() { mariadb --protocol=tcp -h$host -P$port -u$user -p$password -N -B "$@"; }
attrs() { echo "dbtype=mysql;dbname=$1;dblocation=$host;port=$port;username=$user;password=$password"; }

[ -x "$zol" ] || { echo "no zol at $zol: build it first (scripts/build.sh)" >&2; exit 1; }
if ! sql -e 'SELECT 1' >/dev/null 2>&1; then "$root/scripts/start-mariadb.sh"; fi

prefix="zb_$$"
cleanup() {
  [ "${KEEP:-0}" = 1 ] && return
  for db in $(sql -e "SHOW DATABASES LIKE '${prefix}%'"); do sql -e "DROP DATABASE \`$db\`"; done
  rm -f "/tmp/${prefix}"*
}
trap cleanup EXIT

# A table of typical columns: keys, short and long text, decimals, dates, a double, a flag.
make_table() { # db table rows
  sql "$1" -e "CREATE TABLE \`$2\` (id BIGINT PRIMARY KEY, code VARCHAR(20) NOT NULL, name VARCHAR(100),
      note TEXT, amount DECIMAL(12,2), ratio DOUBLE, made DATETIME, born DATE, flag TINYINT, KEY (code));
    INSERT INTO \`$2\` SELECT seq, CONCAT('C', seq % 9973), CONCAT('name ', seq, ' ', REPEAT('é', seq % 7)),
      IF(seq % 5 = 0, NULL, REPEAT(CONCAT('note ', seq, '; '), 1 + seq % 12)), (seq % 100000) / 100, seq / 3,
      '2020-01-01' + INTERVAL seq SECOND, '1990-01-01' + INTERVAL seq % 10000 DAY, seq % 2 FROM seq_1_to_$3;"
}

# Count and checksum of every table of a database, computed by the server.
fingerprint() { # db
  for t in $(sql "$1" -e "SHOW TABLES"); do
    sql "$1" -e "SELECT '$t', COUNT(*), SUM(CRC32(CONCAT_WS('|', id, code, name, note, amount, ratio, made, born, flag))) FROM \`$t\`"
  done
}

now() { date +%s.%N; }
declare -A SECONDS_OF RSS_OF

run_way() { # case way source target
  local case=$1 way=$2 src=$3 dst=$4 t0 t1 rss=""
  sql -e "CREATE DATABASE \`$dst\` DEFAULT CHARACTER SET utf8mb4"
  t0=$(now)
  case $way in
    jobs1|jobs4)
      /usr/bin/time -f "%M" -o "/tmp/${prefix}.rss" "$zol" migrate --from "$(attrs "$src")" --to "$(attrs "$dst")" \
        --jobs "${way#jobs}" --state "/tmp/${prefix}_$dst.state" >"/tmp/${prefix}_$dst.log" 2>&1 \
        || { echo "zol failed ($case, $way):" >&2; tail -20 "/tmp/${prefix}_$dst.log" >&2; exit 1; }
      rss=$(( $(cat "/tmp/${prefix}.rss") / 1024 ));;
    dump)
      mariadb-dump --protocol=tcp -h$host -P$port -u$user -p$password --single-transaction "$src" \
        | sql "$dst";;
  esac
  t1=$(now)
  SECONDS_OF[$case.$way]=$(echo "$t1 - $t0" | bc -l)
  RSS_OF[$case.$way]=$rss
  if [ "$(fingerprint "$dst")" != "$(fingerprint "$src")" ]; then
    echo "the copy by $way ($case) differs from its source" >&2; exit 1
  fi
}

echo "generating: 1 table of $rows rows, 8 tables of $small rows"
sql -e "CREATE DATABASE ${prefix}_one DEFAULT CHARACTER SET utf8mb4; CREATE DATABASE ${prefix}_eight DEFAULT CHARACTER SET utf8mb4"
make_table "${prefix}_one" big "$rows"
for i in 1 2 3 4 5 6 7 8; do make_table "${prefix}_eight" "t$i" "$small"; done

declare -A TOTAL=([one]=$rows [eight]=$((8 * small)))
for case in one eight; do
  for way in dump jobs1 jobs4; do
    echo "copying $case by $way"
    run_way $case $way "${prefix}_$case" "${prefix}_${case}_$way"
  done
done

echo
echo "| case | way | seconds | rows/s | vs dump tools | peak RSS |"
echo "|---|---|---:|---:|---:|---:|"
for case in one eight; do
  label=$([ $case = one ] && echo "1 table, $rows rows" || echo "8 tables, $small rows each")
  dump=${SECONDS_OF[$case.dump]}
  for way in dump jobs1 jobs4; do
    s=${SECONDS_OF[$case.$way]}
    name=$(case $way in dump) echo '`mariadb-dump \| mariadb`';; jobs1) echo '`zol migrate --jobs 1`';; jobs4) echo '`zol migrate --jobs 4`';; esac)
    rss=${RSS_OF[$case.$way]}
    printf '| %s | %s | %.1f | %s | %.2fx | %s |\n' "$label" "$name" "$s" \
      "$(printf '%.0f' "$(echo "${TOTAL[$case]} / $s" | bc -l)")" "$(echo "$dump / $s" | bc -l)" \
      "$([ -n "$rss" ] && echo "$rss MiB" || echo "-")"
  done
done
echo
echo "every copy holds its source's rows (count and checksum of every row, by the server)"
