"""zolsdk: catalogs, schema, rows and migrations between database engines.

    import zolsdk
    from zolsdk import C

    with zolsdk.Catalog("dbtype=mysql;dbname=sakila;dblocation=127.0.0.1;username=zol;password=zol") as db:
        for table in db.tables:
            print(table.name, [c.name for c in table.columns])
        for row in db.rows("film", where=(C("length") > 120) & (C("rating") == "PG")):
            print(row)
"""
from .catalog import Catalog, Column, Index, Rows, Table, Tables, TypeGroup
from .criteria import C, Condition, Criteria
from .migrate import (MigrationReport, TablePlan, TableReport, Verification, copy_rows, copy_table,
                      migrate, plan, verify, verify_table)
from .errors import (Cancelled, ConnectFailed, CreateFailed, DbError, InvalidCall, InvalidOperator,
                     NotInitialized, Overflow, TypeMismatch)

__version__ = "0.1.0"

__all__ = [
    "Catalog", "Column", "Index", "Rows", "Table", "Tables", "TypeGroup",
    "C", "Condition", "Criteria",
    "migrate", "verify", "plan", "copy_table", "copy_rows", "verify_table",
    "MigrationReport", "TablePlan", "TableReport", "Verification",
    "DbError", "Cancelled", "ConnectFailed", "CreateFailed", "InvalidCall", "InvalidOperator",
    "NotInitialized", "Overflow", "TypeMismatch",
]
