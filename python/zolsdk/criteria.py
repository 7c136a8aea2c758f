"""Criteria trees built from Python and rendered by the library.

    where = (C("price") > 10) & (C("title").startswith("A") | C("rating") == "PG")

The tree is handed to the library as it is; the library's criteria code
writes the engine's SQL, with each column's type group taken from the table.
"""
from __future__ import annotations

from typing import Any, Iterable, List, Tuple, Union

# The library's condition operators.
_EQ, _NE, _LT, _GT, _LE, _GE = 1, 2, 3, 4, 5, 6
_BEGINS, _ENDS, _CONTAINS = 7, 8, 9
_NOT_BEGINS, _NOT_ENDS, _NOT_CONTAINS = 10, 11, 12
_NULL, _NOT_NULL, _IN = 14, 15, 45


class Criteria:
    """A node of a criteria tree; combine nodes with ``&`` and ``|``."""

    def __and__(self, other: "Criteria") -> "Criteria":
        return _Group.join("and", self, other)

    def __or__(self, other: "Criteria") -> "Criteria":
        return _Group.join("or", self, other)

    def __bool__(self) -> bool:
        raise TypeError("criteria have no truth value: combine them with & and |, not 'and'/'or'")

    def _tree(self) -> Tuple[Any, ...]:
        raise NotImplementedError


class Condition(Criteria):
    """One comparison of a column with a value."""

    __slots__ = ("column", "op", "value")

    def __init__(self, column: str, op: int, value: Any) -> None:
        self.column, self.op, self.value = column, op, value

    def _tree(self) -> Tuple[Any, ...]:
        return ("cond", self.column, self.op, self.value)

    def __repr__(self) -> str:
        return f"Condition({self.column!r}, {self.op}, {self.value!r})"


class _Group(Criteria):
    __slots__ = ("kind", "children")

    def __init__(self, kind: str, children: List[Criteria]) -> None:
        self.kind, self.children = kind, children

    @staticmethod
    def join(kind: str, a: Criteria, b: Criteria) -> "_Group":
        for x in (a, b):
            if not isinstance(x, Criteria):
                raise TypeError(f"cannot combine criteria with {type(x).__name__}")
        parts: List[Criteria] = []
        for x in (a, b):
            parts.extend(x.children if isinstance(x, _Group) and x.kind == kind else [x])
        return _Group(kind, parts)

    def _tree(self) -> Tuple[Any, ...]:
        return (self.kind, [c._tree() for c in self.children])

    def __repr__(self) -> str:
        return f" {self.kind} ".join(map(repr, self.children)).join("()")


class C:
    """A column to compare: ``C("price") > 10``, ``C("name").startswith("A")``."""

    __slots__ = ("name",)

    def __init__(self, name: str) -> None:
        self.name = name

    def __eq__(self, value: Any) -> Condition:  # type: ignore[override]
        return Condition(self.name, _NULL if value is None else _EQ, value)

    def __ne__(self, value: Any) -> Condition:  # type: ignore[override]
        return Condition(self.name, _NOT_NULL if value is None else _NE, value)

    def __lt__(self, value: Any) -> Condition:
        return Condition(self.name, _LT, value)

    def __gt__(self, value: Any) -> Condition:
        return Condition(self.name, _GT, value)

    def __le__(self, value: Any) -> Condition:
        return Condition(self.name, _LE, value)

    def __ge__(self, value: Any) -> Condition:
        return Condition(self.name, _GE, value)

    __hash__ = None  # type: ignore[assignment]

    def startswith(self, text: str) -> Condition:
        return Condition(self.name, _BEGINS, text)

    def endswith(self, text: str) -> Condition:
        return Condition(self.name, _ENDS, text)

    def contains(self, text: str) -> Condition:
        return Condition(self.name, _CONTAINS, text)

    def not_startswith(self, text: str) -> Condition:
        return Condition(self.name, _NOT_BEGINS, text)

    def not_endswith(self, text: str) -> Condition:
        return Condition(self.name, _NOT_ENDS, text)

    def not_contains(self, text: str) -> Condition:
        return Condition(self.name, _NOT_CONTAINS, text)

    def is_null(self) -> Condition:
        return Condition(self.name, _NULL, None)

    def not_null(self) -> Condition:
        return Condition(self.name, _NOT_NULL, None)

    def isin(self, values: Iterable[int]) -> Condition:
        """Integer columns only: the engine gets the numbers as an IN list."""
        items = list(values)
        if not items or not all(isinstance(v, int) and not isinstance(v, bool) for v in items):
            raise TypeError("isin takes a non-empty list of integers")
        return Condition(self.name, _IN, ",".join(map(str, items)))


Where = Union[Criteria, None]
