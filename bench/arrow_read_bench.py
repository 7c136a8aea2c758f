"""Reading a million rows from MariaDB into a pyarrow.Table through the
package, against the C++ library alone reading every cell of the same rows
(the yardstick, run in the same process, with no Python or Arrow in its
loop). Prints rows per second and the same-run ratio.

    bench/run-python.sh [--rows N] [--rounds N] [--keep]
"""
from __future__ import annotations

import argparse
import os
import statistics
import subprocess
import sys
import time

import pyarrow as pa
import pyarrow.compute as pc

import zolsdk
from zolsdk import _native

SERVER = os.environ.get("ZOLSDK_MYSQL_ATTRS", "dbtype=mysql;dblocation=127.0.0.1;username=zol;password=zol")


def client(sql: str, db: str = "") -> str:
    s = dict(p.split("=", 1) for p in SERVER.split(";") if "=" in p)
    cmd = ["mariadb", "-h", s.get("dblocation", "127.0.0.1"), "-P", s.get("port", "3306"),
           "-u", s.get("username", "zol"), f"-p{s.get('password', '')}", "-N", "-B", "-e", sql]
    return subprocess.run(cmd + ([db] if db else []), capture_output=True, text=True, check=True).stdout.strip()


def main() -> int:
    ap = argparse.ArgumentParser()
    ap.add_argument("--rows", type=int, default=1_000_000)
    ap.add_argument("--rounds", type=int, default=3)
    ap.add_argument("--keep", action="store_true", help="keep the generated database")
    a = ap.parse_args()

    db = f"zpy_bench_{a.rows}"
    if client(f"SELECT COUNT(*) FROM information_schema.tables WHERE table_schema='{db}' AND table_name='t'") != "1" \
            or client("SELECT COUNT(*) FROM t", db) != str(a.rows):
        print(f"generating {a.rows:,} rows ...", flush=True)
        client(f"DROP DATABASE IF EXISTS {db}; CREATE DATABASE {db} DEFAULT CHARACTER SET utf8mb4")
        client("CREATE TABLE t (id INT PRIMARY KEY, name VARCHAR(40), qty INT, price DECIMAL(12,2), "
               "ratio DOUBLE, seen DATETIME)", db)
        client(f"INSERT INTO t SELECT seq, CONCAT('name ', seq, ' é'), seq % 1000, seq / 100, seq * 0.5, "
               f"'2020-01-01' + INTERVAL seq SECOND FROM seq_1_to_{a.rows}", db)

    attrs = f"{SERVER};dbname={db}"
    cpp, arrow = [], []
    with zolsdk.Catalog(attrs) as cat:
        for _ in range(a.rounds):
            t0 = time.perf_counter()
            rows, _cells = _native.walk_rows(cat._handle, "t")
            cpp.append(time.perf_counter() - t0)
            assert rows == a.rows, rows
            t0 = time.perf_counter()
            table = cat.to_arrow("t")
            arrow.append(time.perf_counter() - t0)
            assert table.num_rows == a.rows
            # The Arrow table against the server's own sums.
            assert pc.sum(table.column("id")).as_py() == int(client("SELECT SUM(id) FROM t", db))
            assert str(pc.sum(table.column("price")).as_py()) == client("SELECT SUM(price) FROM t", db)
            del table
    if not a.keep:
        client(f"DROP DATABASE {db}")

    c, r = statistics.median(cpp), statistics.median(arrow)
    print(f"rows: {a.rows:,}, rounds: {a.rounds} (median), pyarrow {pa.__version__}")
    print("| way | seconds | rows/s | time against the C++ read |")
    print(f"|---|---:|---:|---:|")
    print(f"| C++ library reads every cell | {c:.2f} | {a.rows / c:,.0f} | 1.00x |")
    print(f"| zolsdk.Catalog.to_arrow | {r:.2f} | {a.rows / r:,.0f} | {r / c:.2f}x |")
    return 0


if __name__ == "__main__":
    sys.exit(main())
