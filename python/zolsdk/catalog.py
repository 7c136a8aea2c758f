"""Catalogs and their schema as Python objects."""
from __future__ import annotations

import enum
import re
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Iterator, List, Optional, Sequence, Tuple, Union, overload

from . import _native, errors
from .criteria import Criteria

if TYPE_CHECKING:  # pyarrow stays optional
    import pyarrow  # type: ignore[import-untyped,unused-ignore]


class TypeGroup(enum.IntEnum):
    """The library's portable type groups."""

    UNKNOWN = 0
    VARCHAR = 1
    CHAR_BLOB = 2
    INTEGER = 3
    UNSIGNED_INTEGER = 4
    DATE = 5
    TIME = 6
    DATETIME = 7
    BOOLEAN = 8
    DOUBLE = 9
    BINARY_BLOB = 10
    SINGLE = 11
    DECIMAL = 12
    CURRENCY = 13


@dataclass(frozen=True)
class Column:
    name: str
    position: int
    data_type: int
    """The engine's type number, as its provider reports it."""
    type_group: TypeGroup
    size: int
    """Characters (or bytes) the column holds; 0 where it has no limit."""
    precision: int
    scale: int
    nullable: bool
    has_default: bool
    default: Optional[str]
    primary_key: bool
    """Part of the table's primary key."""
    indexes: Tuple[str, ...]
    """The indexes the column is part of."""


@dataclass(frozen=True)
class Index:
    name: str
    primary_key: bool
    unique: bool
    columns: Tuple[str, ...]


class Table:
    """One table; its columns and indexes are read at first use."""

    def __init__(self, catalog: "Catalog", name: str) -> None:
        self._catalog = catalog
        self.name = name
        self._columns: Optional[List[Column]] = None
        self._indexes: Optional[List[Index]] = None

    def __repr__(self) -> str:
        return f"<Table {self.name}>"

    @property
    def indexes(self) -> List[Index]:
        if self._indexes is None:
            self._indexes = [Index(n, p, u, tuple(c)) for n, p, u, c in
                             self._catalog._handle.indexes(self.name)]
        return list(self._indexes)

    @property
    def columns(self) -> List[Column]:
        if self._columns is None:
            idx = self.indexes
            out = []
            for name, pos, dtype, group, size, prec, scale, nullable, has_def, default in \
                    self._catalog._handle.columns(self.name):
                folded = name.casefold()
                member = tuple(i.name for i in idx if folded in (c.casefold() for c in i.columns))
                primary = any(i.primary_key and folded in (c.casefold() for c in i.columns) for i in idx)
                out.append(Column(name, pos, dtype, _group(group), size, prec, scale, nullable, has_def,
                                  default, primary, member))
            self._columns = out
        return list(self._columns)

    @property
    def primary_key(self) -> Tuple[str, ...]:
        return next((i.columns for i in self.indexes if i.primary_key), ())

    def column(self, name: str) -> Column:
        for c in self.columns:
            if c.name.casefold() == name.casefold():
                return c
        raise KeyError(name)

    def row_count(self) -> int:
        return self._catalog._handle.row_count(self.name)


def _group(n: int) -> TypeGroup:
    try:
        return TypeGroup(n)
    except ValueError:
        return TypeGroup.UNKNOWN


class Tables(Sequence[Table]):
    """The tables of a catalog, in the engine's order; also by name, case-blind."""

    def __init__(self, tables: List[Table]) -> None:
        self._tables = tables

    @overload
    def __getitem__(self, key: int) -> Table: ...
    @overload
    def __getitem__(self, key: str) -> Table: ...
    @overload
    def __getitem__(self, key: slice) -> List[Table]: ...

    def __getitem__(self, key: Union[int, str, slice]) -> Any:
        if isinstance(key, str):
            for t in self._tables:
                if t.name.casefold() == key.casefold():
                    return t
            raise KeyError(key)
        return self._tables[key]

    def __len__(self) -> int:
        return len(self._tables)

    def __contains__(self, key: object) -> bool:
        if isinstance(key, str):
            return any(t.name.casefold() == key.casefold() for t in self._tables)
        return key in self._tables

    def names(self) -> List[str]:
        return [t.name for t in self._tables]

    def __repr__(self) -> str:
        return f"Tables({self.names()!r})"


class Catalog:
    """One database, opened from an attribute string.

    ``Catalog("dbtype=mysql;dbname=shop;dblocation=127.0.0.1;username=u;password=p")``.
    Use it as a context manager, or call :meth:`close`.
    """

    def __init__(self, attributes: str) -> None:
        self.attributes = attributes
        self._handle = _native.NativeCatalog.open(attributes)

    def __enter__(self) -> "Catalog":
        return self

    def __exit__(self, *exc: object) -> None:
        self.close()

    def close(self) -> None:
        self._handle.close()

    @property
    def closed(self) -> bool:
        return self._handle.closed

    def __repr__(self) -> str:
        return f"<Catalog {self.attributes!r}{' closed' if self.closed else ''}>"

    @property
    def name(self) -> str:
        return self._handle.name()

    @property
    def catalog_type(self) -> str:
        return self._handle.catalog_type()

    @property
    def location(self) -> str:
        return self._handle.location()

    @property
    def tables(self) -> Tables:
        """Read again at each access."""
        return Tables([Table(self, n) for n in self._handle.table_names()])

    def create(self) -> bool:
        """Creates the database the attribute string names."""
        return self._handle.create()

    def drop(self) -> bool:
        return self._handle.drop()

    def execute(self, sql: str) -> bool:
        """Runs a statement as it is; True when it touched a row."""
        return self._handle.execute(sql)

    def row_count(self, table: str) -> int:
        return self._handle.row_count(table)

    def rows(self, table: Union[str, Table], where: Optional[Criteria] = None,
             columns: Optional[Sequence[str]] = None, chunk: int = 4096,
             lossy_binary: bool = False) -> "Rows":
        """The rows of a table (those the criteria select) as tuples.

        Binary columns fail the read unless left out or ``lossy_binary`` is
        given: the library's data sets hand them out with the last byte as 0.
        """
        return Rows(_native.open_rows(self._handle, _name(table), _columns(columns), _where(where),
                                      lossy_binary), chunk)

    def to_arrow(self, table: Union[str, Table], where: Optional[Criteria] = None,
                 columns: Optional[Sequence[str]] = None, batch_rows: int = 65536,
                 lossy_binary: bool = False) -> "pyarrow.Table":
        """The rows as a pyarrow.Table (needs pyarrow); binary columns as in :meth:`rows`."""
        reader = self.arrow_reader(table, where, columns, batch_rows, lossy_binary)
        try:
            return reader.read_all()
        except OSError as e:
            # pyarrow reports a failed stream as OSError with the stream's text.
            raise _stream_failure(e) from None

    def arrow_reader(self, table: Union[str, Table], where: Optional[Criteria] = None,
                     columns: Optional[Sequence[str]] = None,
                     batch_rows: int = 65536, lossy_binary: bool = False) -> "pyarrow.RecordBatchReader":
        """The rows as a stream of record batches (needs pyarrow)."""
        try:
            import pyarrow as pa
        except ImportError as e:  # pragma: no cover - depends on the environment
            raise ImportError("to_arrow needs pyarrow: pip install pyarrow") from e
        stream = self.arrow_stream(table, where, columns, batch_rows, lossy_binary)
        return pa.RecordBatchReader.from_stream(stream)

    def arrow_stream(self, table: Union[str, Table], where: Optional[Criteria] = None,
                     columns: Optional[Sequence[str]] = None, batch_rows: int = 65536,
                     lossy_binary: bool = False) -> Any:
        """An object with ``__arrow_c_stream__``, for any Arrow-aware library."""
        return _native.open_arrow(self._handle, _name(table), _columns(columns), _where(where), batch_rows,
                                  lossy_binary)


class Rows(Iterator[Tuple[Any, ...]]):
    """Tuples in the order of :attr:`columns`; fetched a chunk at a time."""

    def __init__(self, reader: Any, chunk: int) -> None:
        self._reader = reader
        self._chunk = max(1, chunk)
        self._buffer: List[Tuple[Any, ...]] = []
        self._pos = 0
        self.columns: List[str] = [n for n, _ in reader.columns]
        self.type_groups: List[TypeGroup] = [_group(g) for _, g in reader.columns]

    def __iter__(self) -> "Rows":
        return self

    def __next__(self) -> Tuple[Any, ...]:
        if self._pos >= len(self._buffer):
            self._buffer = self._reader.fetch(self._chunk) if self._reader is not None else []
            self._pos = 0
            if not self._buffer:
                self._reader = None
                raise StopIteration
        row = self._buffer[self._pos]
        self._pos += 1
        return row


def _stream_failure(e: OSError) -> Exception:
    """The library's failure behind a failed Arrow stream, as its DbError."""
    m = re.search(r"(.*) \(number (-?\d+)\)\n(.*)", str(e), re.S)
    if not m:
        return e
    return errors.from_failure(int(m.group(2)), m.group(1).strip(), m.group(3))


def _name(table: Union[str, Table]) -> str:
    return table.name if isinstance(table, Table) else table


def _columns(columns: Optional[Sequence[str]]) -> Optional[List[str]]:
    if columns is None:
        return None
    if isinstance(columns, str):
        raise TypeError("columns is a list of names, not one string")
    return list(columns)


def _where(where: Optional[Criteria]) -> Optional[Tuple[Any, ...]]:
    if where is None:
        return None
    if not isinstance(where, Criteria):
        raise TypeError(f"where takes criteria built with C(...), not {type(where).__name__}")
    # A lone condition is a group of one.
    tree = where._tree()
    return tree if tree[0] in ("and", "or") else ("and", [tree])
