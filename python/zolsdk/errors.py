"""Failures of the library as Python exceptions.

Every failure is a :class:`DbError` carrying the library's ``number``, its
``description`` and ``source``: the chain of routines the failure passed, one
per line.  A few kinds a script may want to tell apart have subclasses.
"""
from __future__ import annotations

from typing import Dict, Type

_BASE = 0x80040000


def _library(message_id: int) -> int:
    """The signed 32-bit number the library gives a message id."""
    n = _BASE + message_id
    return n - (1 << 32) if n >= (1 << 31) else n


class DbError(Exception):
    """A failure of the library or of an engine behind it."""

    number: int
    description: str
    source: str

    def __init__(self, number: int, description: str, source: str = "") -> None:
        super().__init__(number, description, source)
        self.number = number
        self.description = description
        self.source = source

    def __str__(self) -> str:
        return f"{self.description} (number {self.number})"


class ConnectFailed(DbError):
    """The engine could not be reached or refused the login."""


class CreateFailed(DbError):
    """A database could not be created."""


class NotInitialized(DbError):
    """The catalog has no engine (an unknown dbtype) or was closed."""


class InvalidOperator(DbError):
    """A criterion uses an operator the column's type has no predicate for."""


class TypeMismatch(DbError):
    """A value could not be read as the type it was needed as."""


class Overflow(DbError):
    """A value does not fit where it had to go."""


class InvalidCall(DbError):
    """An argument the call cannot work with (an unknown column, ...)."""


class Cancelled(DbError):
    """A migration was stopped before it finished (Ctrl-C)."""


_BY_NUMBER: Dict[int, Type[DbError]] = {
    _library(0xF001): ConnectFailed,
    _library(0xF000): CreateFailed,
    _library(0x3000): NotInitialized,
    91: NotInitialized,
    _library(0x2000): InvalidOperator,
    13: TypeMismatch,
    6: Overflow,
    5: InvalidCall,
}


def from_failure(number: int, description: str, source: str) -> DbError:
    """The exception for a failure the library raised (used by the extension)."""
    return _BY_NUMBER.get(number, DbError)(number, description, source)
