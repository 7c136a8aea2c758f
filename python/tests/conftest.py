"""Shared fixtures: scratch MariaDB databases made and judged with the
`mariadb` client (not through the package), copies of the sample Access files."""
from __future__ import annotations

import os
import re
import shutil
import subprocess
import uuid
from pathlib import Path
from typing import Dict, Iterator, List

import pytest

REPO = Path(__file__).resolve().parents[2]
SHARED = Path(os.environ.get("ZOLSDK_SHARED_DIR", REPO.parent / "shared"))
ACCESS_DIR = SHARED / "data" / "access"
SAKILA_DIR = SHARED / "data" / "sakila"
SERVER = os.environ.get("ZOLSDK_MYSQL_ATTRS", "dbtype=mysql;dblocation=127.0.0.1;username=zol;password=zol")


def _server() -> Dict[str, str]:
    pairs = (p.split("=", 1) for p in SERVER.split(";") if "=" in p)
    return {k.strip().lower(): v for k, v in pairs}


def mysql_attrs(database: str) -> str:
    return f"{SERVER};dbname={database}"


def mysql_cli(sql: str, database: str = "", stdin: str | None = None) -> List[List[str]]:
    """Rows as the mariadb client prints them (tab-separated, NULL as 'NULL')."""
    s = _server()
    cmd = ["mariadb", "-h", s.get("dblocation", "127.0.0.1"), "-P", s.get("port", "3306"),
           "-u", s.get("username", "zol"), f"-p{s.get('password', '')}", "-N", "-B",
           "--default-character-set=utf8mb4"]
    if sql:
        cmd += ["-e", sql]
    if database:
        cmd.append(database)
    done = subprocess.run(cmd, input=stdin, capture_output=True, text=True, timeout=600)
    if done.returncode != 0:
        raise RuntimeError(f"mariadb client failed: {done.stderr.strip()}")
    out = done.stdout
    return [line.split("\t") for line in out.splitlines()]


class ScratchDb:
    def __init__(self, stem: str) -> None:
        self.name = f"zpy_{stem}_{os.getpid()}_{uuid.uuid4().hex[:8]}"
        mysql_cli(f"CREATE DATABASE `{self.name}` DEFAULT CHARACTER SET utf8mb4")
        self.attrs = mysql_attrs(self.name)

    def run(self, sql: str) -> List[List[str]]:
        return mysql_cli(sql, self.name)

    def drop(self) -> None:
        mysql_cli(f"DROP DATABASE IF EXISTS `{self.name}`")


@pytest.fixture
def scratch() -> Iterator[ScratchDb]:
    db = ScratchDb("t")
    yield db
    db.drop()


@pytest.fixture(scope="session")
def sakila() -> Iterator[ScratchDb]:
    """The Sakila sample, loaded once for the whole run."""
    db = ScratchDb("sakila")
    for part in ("sakila-schema.sql", "sakila-data.sql"):
        text = (SAKILA_DIR / part).read_text(encoding="utf-8")
        # The files name their own database: point them at ours.
        text = re.sub(r"(?m)^(DROP SCHEMA IF EXISTS sakila;|CREATE SCHEMA sakila;)$", "", text)
        text = re.sub(r"(?m)^USE sakila;$", f"USE {db.name};", text)
        text = re.sub(r"\bsakila\.", f"{db.name}.", text)
        mysql_cli("", db.name, stdin=text)
    yield db
    db.drop()


@pytest.fixture
def access_copy(tmp_path: Path):
    """Copies a sample Access file into a folder of the test's own."""
    def copy(name: str) -> str:
        shutil.copy(ACCESS_DIR / name, tmp_path / name)
        return f"dbtype=msaccess;dbname={name};dblocation={tmp_path}"
    return copy
