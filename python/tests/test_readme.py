"""The README's Python example, run as written on a loaded Sakila and a copy
of a sample Access file; the migrated rows are judged by mdb-export."""
from __future__ import annotations

import re
import shutil
import subprocess

import pytest

import zolsdk
from conftest import ACCESS_DIR, REPO


def readme_example() -> str:
    text = (REPO / "README.md").read_text(encoding="utf-8")
    section = text.split("## Python", 1)[1]
    return re.search(r"```python\n(.*?)```", section, re.S).group(1)


def test_readme_example_runs(sakila, tmp_path, capsys):
    if not getattr(zolsdk._native, "HAS_TRANSFER", False):
        pytest.fail("the package was built without the copy road")
    shutil.copy(ACCESS_DIR / "testV2000.mdb", tmp_path / "testV2000.mdb")
    code = readme_example().replace("dbname=sakila", f"dbname={sakila.name}").replace(
        "/tmp/zolsdk-demo", str(tmp_path))
    exec(compile(code, "README.md", "exec"), {})
    out = capsys.readouterr().out
    assert "film" in out and "Table1" in out and "film: 1000 rows" in out
    # The film rows as an outside reader sees them in the new file.
    exported = subprocess.run(["mdb-export", str(tmp_path / "films.mdb"), "film"], capture_output=True,
                              text=True, check=True).stdout.splitlines()
    assert len(exported) == 1 + 1000
    titles = sorted(r[0] for r in sakila.run("SELECT title FROM film"))
    assert sorted(line.split(",")[1].strip('"') for line in exported[1:]) == titles
