"""Schema, rows and criteria against the local MariaDB, judged by the
mariadb client."""
from __future__ import annotations

import datetime as dt
from decimal import Decimal

import pytest

import zolsdk
from zolsdk import C, TypeGroup

ITEM = """
CREATE TABLE item (
  id INT NOT NULL AUTO_INCREMENT,
  code VARCHAR(20) NOT NULL,
  title VARCHAR(200) NULL,
  price DECIMAL(10,2) NULL,
  qty INT NULL,
  born DATE NULL,
  seen DATETIME NULL,
  ratio DOUBLE NULL,
  notes TEXT NULL,
  photo BLOB NULL,
  PRIMARY KEY (id),
  UNIQUE KEY uq_code (code),
  KEY ix_title_qty (title, qty)
) DEFAULT CHARSET=utf8mb4;
INSERT INTO item (code, title, price, qty, born, seen, ratio, notes) VALUES
 ('a1', 'Apple',       10.50,  3, '2001-02-03', '2001-02-03 04:05:06', 0.25, 'crisp'),
 ('a2', 'Avocado',     99.99, 12, '1999-12-31', '1999-12-31 23:59:59', 1.5,  NULL),
 ('b1', 'Banana',       0.10,  0, NULL,         NULL,                  NULL, 'ripe'),
 ('c1', 'Ça va 普林斯顿', 1234.56, NULL, '2024-02-29', '2024-02-29 12:00:00', -2.75, ''),
 ('c2', NULL,          NULL, 100, '1970-01-01', '1970-01-01 00:00:00', 0, 'x');
"""


@pytest.fixture
def shop(scratch):
    scratch.run(ITEM)
    with zolsdk.Catalog(scratch.attrs) as cat:
        yield scratch, cat


def test_schema_lists_columns_keys_and_indexes(shop):
    _, cat = shop
    assert "item" in cat.tables
    item = cat.tables["ITEM"]
    cols = {c.name: c for c in item.columns}
    assert [c.name for c in item.columns] == ["id", "code", "title", "price", "qty", "born", "seen",
                                              "ratio", "notes", "photo"]
    expected = {  # name: (group, size, precision, scale, nullable)
        "id": (TypeGroup.INTEGER, 0, 10, 0, False),
        "code": (TypeGroup.VARCHAR, 20, 0, 0, False),
        "title": (TypeGroup.VARCHAR, 200, 0, 0, True),
        "price": (TypeGroup.DECIMAL, 0, 10, 2, True),
        "born": (TypeGroup.DATE, 0, 0, 0, True),
        "seen": (TypeGroup.DATETIME, 0, 0, 0, True),
        "ratio": (TypeGroup.DOUBLE, 0, 15, 0, True),
    }
    for name, (group, size, prec, scale, nullable) in expected.items():
        c = cols[name]
        assert (c.type_group, c.size, c.precision, c.scale, c.nullable) == (group, size, prec, scale, nullable), name
    assert (cols["notes"].type_group, cols["photo"].type_group) == (TypeGroup.CHAR_BLOB, TypeGroup.BINARY_BLOB)
    assert cols["notes"].size > 0 and cols["photo"].size > 0
    assert cols["id"].primary_key and not cols["code"].primary_key
    assert set(cols["title"].indexes) == {"ix_title_qty"} and set(cols["qty"].indexes) == {"ix_title_qty"}
    assert cols["ratio"].indexes == ()
    idx = {i.name: i for i in item.indexes}
    assert idx["PRIMARY"].primary_key and idx["PRIMARY"].columns == ("id",)
    assert idx["uq_code"].unique and not idx["uq_code"].primary_key
    assert idx["ix_title_qty"].columns == ("title", "qty") and not idx["ix_title_qty"].unique
    assert item.primary_key == ("id",)
    assert item.row_count() == 5


def test_rows_carry_each_type_as_python_values(shop):
    db, cat = shop
    rows = {r[1]: r for r in cat.rows("item", lossy_binary=True)}
    assert len(rows) == int(db.run("SELECT COUNT(*) FROM item")[0][0])
    a1 = rows["a1"]
    assert a1[2:9] == ("Apple", Decimal("10.5"), 3, dt.date(2001, 2, 3), dt.datetime(2001, 2, 3, 4, 5, 6),
                       0.25, "crisp")
    assert rows["c1"][2] == "Ça va 普林斯顿" and rows["c1"][3] == Decimal("1234.56") and rows["c1"][4] is None
    assert rows["b1"][5:8] == (None, None, None)
    assert rows["c2"][2] is None and rows["c2"][3] is None
    # Every text as the client reads it.
    for code, title in db.run("SELECT code, IFNULL(title, '<null>') FROM item"):
        assert (rows[code][2] or "<null>") == title


CRITERIA = [
    (C("price") > 10, "price > 10"),
    ((C("price") > 10) & (C("qty") < 10), "price > 10 AND qty < 10"),
    ((C("qty") == 0) | (C("qty") >= 100), "qty = 0 OR qty >= 100"),
    (C("title").startswith("A"), "title LIKE 'A%'"),
    (C("title").contains("an"), "title LIKE '%an%'"),
    (C("born") < dt.date(2000, 1, 1), "born < '2000-01-01'"),
    (C("seen") >= dt.datetime(2001, 2, 3, 4, 5, 6), "seen >= '2001-02-03 04:05:06'"),
    (C("ratio") < 0, "ratio < 0"),
    (C("qty").isin([3, 100]), "qty IN (3, 100)"),
    (C("born").is_null(), "born IS NULL"),
    ((C("price") <= Decimal("10.50")) & ((C("code") == "a1") | (C("code") == "b1")),
     "price <= 10.50 AND code IN ('a1', 'b1')"),
]


@pytest.mark.parametrize("where,sql", CRITERIA, ids=[s for _, s in CRITERIA])
def test_criteria_select_what_the_server_selects(shop, where, sql):
    db, cat = shop
    got = sorted(r[0] for r in cat.rows("item", where=where, columns=["code"]))
    want = sorted(r[0] for r in db.run(f"SELECT code FROM item WHERE {sql}"))
    assert got == want and got  # every case selects something


def test_columns_and_chunks(shop):
    _, cat = shop
    rows = cat.rows("item", columns=["qty", "code"], chunk=2)
    assert rows.columns == ["code", "qty"] or rows.columns == ["qty", "code"]
    data = list(rows)
    assert len(data) == 5 and all(len(r) == 2 for r in data)
    assert list(rows) == []  # an ended walk stays ended


def test_bad_requests_fail_instead_of_selecting_everything(shop):
    _, cat = shop
    cases = [
        (lambda: cat.rows("item", where=C("nope") > 1), zolsdk.InvalidCall, "no column nope"),
        (lambda: cat.rows("item", where=C("photo") == "x"), zolsdk.InvalidCall, "photo"),
        (lambda: cat.rows("item", columns=["code", "nope"]), zolsdk.InvalidCall, "no column nope"),
        (lambda: cat.rows("item", where=C("qty") > "many"), zolsdk.TypeMismatch, ""),
        (lambda: cat.rows("item", where=C("title") < "b"), zolsdk.InvalidOperator, ""),
    ]
    for call, kind, words in cases:
        with pytest.raises(kind) as info:
            list(call())
        e = info.value
        assert isinstance(e, zolsdk.DbError) and words in e.description and e.number != 0
    with pytest.raises(TypeError):
        cat.rows("item", where="price > 10")  # type: ignore[arg-type]
    with pytest.raises(TypeError):
        bool(C("a") > 1)


def test_binary_columns_are_read_only_when_asked(shop):
    db, cat = shop
    db.run("INSERT INTO item (code, photo) VALUES ('p1', X'00FF10')")
    for read in (lambda **kw: list(cat.rows("item", **kw)), lambda **kw: cat.to_arrow("item", **kw)):
        with pytest.raises(zolsdk.InvalidCall, match="photo"):
            read()
    assert len(list(cat.rows("item", columns=["code", "title"]))) == 6
    photo = [r for r in cat.rows("item", where=C("code") == "p1", lossy_binary=True)][0][-1]
    assert isinstance(photo, bytes) and len(photo) == 3


def test_failures_carry_the_chain(scratch):
    with zolsdk.Catalog(scratch.attrs) as cat:
        with pytest.raises(zolsdk.DbError) as info:
            list(cat.rows("no_such_table"))
    e = info.value
    assert e.number != 0 and e.description and "=>" in e.source
    with pytest.raises(zolsdk.NotInitialized) as info:
        zolsdk.Catalog("dbtype=oracle;dbname=x").tables
    assert info.value.number == 91
    cat = zolsdk.Catalog(scratch.attrs)
    cat.close()
    with pytest.raises(zolsdk.NotInitialized):
        cat.tables


def test_wrong_login_fails_with_connect_error(scratch):
    attrs = scratch.attrs.replace("password=", "password=wrong")
    with pytest.raises(zolsdk.ConnectFailed) as info:
        zolsdk.Catalog(attrs).tables
    assert "=>" in info.value.source
