"""The README's Python example, run as written on a loaded Sakila and a copy
of a sample Access file; the migrated rows are judged by mdb-export."""
from __future__ import annotations

import re
import shutil
import subprocess

import pytest

import zolsdk
from conftest import ACCESS_DIR, REPO


def readme_examples() -> list:
    text = (REPO / "README.md").read_text(encoding="utf-8")
    section = text.split("## Python", 1)[1].split("\n## ", 1)[0]
    return re.findall(r"```python\n(.*?)```", section, re.S)


def run_example(code: str, sakila, folder, scope: dict) -> None:
    code = code.replace("dbname=sakila", f"dbname={sakila.name}").replace("/tmp/zolsdk-demo", str(folder))
    exec(compile(code, "README.md", "exec"), scope)


def test_readme_example_reads_both_engines(sakila, tmp_path, capsys):
    shutil.copy(ACCESS_DIR / "testV2000.mdb", tmp_path / "testV2000.mdb")
    run_example(readme_examples()[0], sakila, tmp_path, {})
    out = capsys.readouterr().out
    # Both schemas, the filtered films as the server picks them, the Access row.
    assert "film ('film_id',)" in out and "Table1 ('A',)" in out
    picked = sakila.run("SELECT title, length FROM film WHERE length > 180 AND rating IN ('PG', 'G')")
    assert picked and all(f"{t} {n}" in out for t, n in picked)
    assert "('abcdefg', 'hijklmnop', 2, 222, 333333333" in out
    n = sakila.run("SELECT COUNT(*) FROM film WHERE rental_rate >= 4")[0][0]
    assert f"{n} decimal128(4, 2)" in out


def test_readme_example_migrates(sakila, tmp_path, capsys):
    if not getattr(zolsdk._native, "HAS_TRANSFER", False):
        pytest.skip("this build has no copy road (include/zolsdk/transfer)")
    shutil.copy(ACCESS_DIR / "testV2000.mdb", tmp_path / "testV2000.mdb")
    scope: dict = {}
    for code in readme_examples():
        run_example(code, sakila, tmp_path, scope)
    out = capsys.readouterr().out
    assert "film: 1000 rows" in out
    # The film rows as an outside reader sees them in the new file.
    exported = subprocess.run(["mdb-export", str(tmp_path / "films.mdb"), "film"], capture_output=True,
                              text=True, check=True).stdout.splitlines()
    assert len(exported) == 1 + 1000
    titles = sorted(r[0] for r in sakila.run("SELECT title FROM film"))
    assert sorted(line.split(",")[1].strip('"') for line in exported[1:]) == titles
