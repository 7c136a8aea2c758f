"""Migrations over the lossless copy road: plan, copy, verify, report.

Every entry point takes the two catalogs as attribute strings (or Catalog
objects) and opens its own connections, so one table, or one key range of a
table, can be copied and verified from a worker process with nothing but the
two strings.  Ctrl-C stops a running call within ``progress_every`` rows and then
raises KeyboardInterrupt.
"""
from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any, Callable, Dict, List, Optional, Sequence, Tuple, Union

from . import _native
from .catalog import Catalog

Progress = Callable[[str, int], Any]
"""progress(table, rows_written_so_far)"""

Target = Union[str, Catalog]


@dataclass(frozen=True)
class Verification:
    done: bool
    """Both sides were read to the end."""
    equal: bool
    source_rows: int
    target_rows: int
    source_checksum: int
    target_checksum: int
    first_difference: str
    failure: str


@dataclass(frozen=True)
class TableReport:
    table: str
    outcome: str
    """verified, created (copied without verifying), mismatch, failed, half_made or cancelled."""
    ok: bool
    rows_read: int
    rows_written: int
    verification: Verification
    changes: Tuple[str, ...]
    """What the target engine forced on the table."""
    failure: str
    seconds: float


@dataclass(frozen=True)
class MigrationReport:
    tables: Tuple[TableReport, ...]
    notes: Tuple[str, ...]
    ok: bool
    text: str
    """The report as the zol tool prints it."""

    def __getitem__(self, table: str) -> TableReport:
        for t in self.tables:
            if t.table.casefold() == table.casefold():
                return t
        raise KeyError(table)


@dataclass(frozen=True)
class TablePlan:
    name: str
    columns: Tuple[Tuple[str, str, str, bool], ...]
    """(name, kind, target type, nullable) for each column."""
    key_columns: Tuple[str, ...]
    changes: Tuple[str, ...] = field(default=())


def _attrs(x: Target) -> str:
    return x.attributes if isinstance(x, Catalog) else x


def _tables(tables: Optional[Sequence[str]]) -> Optional[List[str]]:
    if tables is None:
        return None
    if isinstance(tables, str):
        return [tables]
    return list(tables)


def _require() -> None:
    if not getattr(_native, "HAS_TRANSFER", False):
        raise NotImplementedError("this build of zolsdk has no copy road")


def _verification(d: Dict[str, Any]) -> Verification:
    return Verification(**d)


def _table(d: Dict[str, Any]) -> TableReport:
    d = dict(d)
    d["verification"] = _verification(d["verification"])
    d["changes"] = tuple(d["changes"])
    return TableReport(**d)


def _report(d: Dict[str, Any]) -> MigrationReport:
    return MigrationReport(tuple(_table(t) for t in d["tables"]), tuple(d["notes"]), d["ok"], d["text"])


def migrate(src: Target, dst: Target, tables: Optional[Sequence[str]] = None, jobs: int = 1,
            verify: bool = True, progress: Optional[Progress] = None, *, schema_only: bool = False,
            replace: bool = False, progress_every: int = 50000) -> MigrationReport:
    """Copies every table (or the ones named) from src to dst and verifies them.

    Tables are created on dst with their keys and indexes, their rows copied
    (``jobs`` tables at a time), foreign keys added last.  ``progress`` is
    called with the table and the rows written so far.
    """
    _require()
    return _report(_native.migrate(_attrs(src), _attrs(dst), _tables(tables), dict(
        jobs=jobs, verify=verify, progress=progress, schema_only=schema_only, replace=replace,
        progress_every=progress_every)))


def verify(src: Target, dst: Target, tables: Optional[Sequence[str]] = None) -> MigrationReport:
    """Compares the tables of two catalogs by row count and checksum."""
    _require()
    return _report(_native.verify(_attrs(src), _attrs(dst), _tables(tables), {}))


def plan(src: Target, dst: Target, tables: Optional[Sequence[str]] = None) -> List[TablePlan]:
    """What a migration would do to each table, before a row moves."""
    _require()
    return [TablePlan(n, tuple(tuple(c) for c in cols), tuple(keys), tuple(ch))  # type: ignore[misc]
            for n, cols, keys, ch in _native.plan(_attrs(src), _attrs(dst), _tables(tables))]


def copy_table(src: Target, dst: Target, table: str, *, verify: bool = True,
               progress: Optional[Progress] = None, replace: bool = False) -> TableReport:
    """One table: create it on dst, copy its rows, verify (a worker's unit)."""
    _require()
    return _table(_native.copy_table(_attrs(src), _attrs(dst), table, dict(
        create=True, verify=verify, progress=progress, replace=replace)))


def copy_rows(src: Target, dst: Target, table: str, key_from: Any = None, key_to: Any = None, *,
              verify: bool = True, progress: Optional[Progress] = None) -> TableReport:
    """The rows whose first key column lies in [key_from, key_to) into an existing table."""
    _require()
    return _table(_native.copy_table(_attrs(src), _attrs(dst), table, dict(
        create=False, verify=verify, progress=progress, key_from=key_from, key_to=key_to)))


def verify_table(src: Target, dst: Target, table: str, key_from: Any = None,
                 key_to: Any = None) -> Verification:
    """Compares one table, or one key range of it."""
    _require()
    return _verification(_native.verify_table(_attrs(src), _attrs(dst), table,
                                              dict(key_from=key_from, key_to=key_to)))
