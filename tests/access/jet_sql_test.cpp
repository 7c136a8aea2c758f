// The rewriting of Jet statements for the driver, the exchange format with
// the Java half, and the figures of Access types: all without a JVM.
#include <gtest/gtest.h>

#include "platform/ado/backend.hpp"
#include "platform/ado/jet/jet_schema.hpp"
#include "platform/ado/jet/jet_sql.hpp"
#include "platform/ado/jet/jet_types.hpp"
#include "platform/ado/jet/jet_wire.hpp"
#include "readers/access_reader.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk::ado::detail::jet {
namespace {

std::string N(const String& s) { return ToUtf8(s); }

TEST(JetSql, ColumnTypesAreRewrittenOnlyWhereATypeStands) {
    // The Access dialect's own type words, as CreateTableSql writes them.
    EXPECT_EQ(N(TranslateJetSql(u" CREATE TABLE [T] (  [a] LONGTEXT NULL, [b] IMAGE NULL, [c] MONEY NOT NULL,"
                                u" [d] LONG INTEGER NULL, [e] BIT NULL, [f] INTEGER NULL, [g] REAL NULL,"
                                u" [h] VARCHAR(20) NULL, [i] TINYINT NULL )")),
              " CREATE TABLE [T] (  [a] MEMO NULL, [b] OLE NULL, [c] CURRENCY NOT NULL, [d] LONG NULL,"
              " [e] YESNO NULL, [f] LONG NULL, [g] SINGLE NULL, [h] VARCHAR(20) NULL, [i] TINYINT NULL )");
    // Names that are type words stay, bracketed or not; so does a table
    // constraint.
    EXPECT_EQ(N(TranslateJetSql(u"CREATE TABLE money ( image BIT, [Real] REAL, CONSTRAINT pk PRIMARY KEY (image))")),
              "CREATE TABLE money ( image YESNO, [Real] SINGLE, CONSTRAINT pk PRIMARY KEY (image))");
    // Columns added or altered; the dialect writes no blank after the name.
    EXPECT_EQ(N(TranslateJetSql(u" ALTER TABLE money ADD [a]MONEY NULL, ADD [b]LONG INTEGER NOT NULL")),
              " ALTER TABLE money ADD [a]CURRENCY NULL, ADD [b]LONG NOT NULL");
    EXPECT_EQ(N(TranslateJetSql(u"ALTER TABLE t ADD COLUMN x INTEGER")), "ALTER TABLE t ADD COLUMN x LONG");
    // Outside definitions nothing is a type.
    EXPECT_EQ(N(TranslateJetSql(u"SELECT [bit], money, 'INTEGER' FROM [REAL] WHERE image = 1")),
              "SELECT [bit], money, 'INTEGER' FROM [REAL] WHERE image = 1");
}

TEST(JetSql, IntegerDivisionAndModGetTheDriversForms) {
    // The flag tests of the criteria renderer.
    EXPECT_EQ(N(TranslateJetSql(u"SELECT * FROM [T] WHERE ([Flags]\\4) mod 2 = 4")),
              "SELECT * FROM [T] WHERE MOD(((CAST(FLOOR([Flags] + 0.5) AS BIGINT) / 4)), 2) = 4");
    EXPECT_EQ(N(TranslateJetSql(u"SELECT 7 \\ 2")), "SELECT (7 / 2)");
    // Operands bind as Jet binds them: * and / before \, \ before Mod,
    // Mod before + and -; a sign belongs to its operand.
    EXPECT_EQ(N(TranslateJetSql(u"SELECT a * b \\ c + 1")),
              "SELECT (CAST(FLOOR(a * b + 0.5) AS BIGINT) / CAST(FLOOR(c + 0.5) AS BIGINT)) + 1");
    EXPECT_EQ(N(TranslateJetSql(u"SELECT -x mod 3 - 1")), "SELECT MOD(CAST(FLOOR(-x + 0.5) AS BIGINT), 3) - 1");
    EXPECT_EQ(N(TranslateJetSql(u"SELECT a \\ b \\ 2")),
              "SELECT ((CAST(FLOOR(a + 0.5) AS BIGINT) / CAST(FLOOR(b + 0.5) AS BIGINT)) / 2)");
    EXPECT_EQ(N(TranslateJetSql(u"SELECT Abs(t.n) mod [t].[m]")),
              "SELECT MOD(CAST(FLOOR(Abs(t.n) + 0.5) AS BIGINT), CAST(FLOOR([t].[m] + 0.5) AS BIGINT))");
    // Inside texts, names and dates nothing changes; Mod as a function and a
    // column called mod are left alone.
    EXPECT_EQ(N(TranslateJetSql(u"SELECT 'a\\b mod c', [x\\y], #1/2/2003#, Mod(7, 2), mod FROM t")),
              "SELECT 'a\\b mod c', [x\\y], #1/2/2003#, Mod(7, 2), mod FROM t");
}

TEST(JetSql, StatementsTheDriverRefusesAreRoutedOrRefused) {
    JetStatement drop = PrepareJetStatement(u" DROP INDEX [ix] ON t");
    EXPECT_EQ(drop.kind, JetStatement::Kind::Refused);
    EXPECT_EQ(N(drop.refusal), "DROP INDEX is not possible on an Access file through this provider: its file layer "
                               "cannot remove an index");
    EXPECT_EQ(PrepareJetStatement(u" ALTER TABLE [t] DROP PRIMARY KEY ").kind, JetStatement::Kind::Refused);
    JetStatement column = PrepareJetStatement(u"ALTER TABLE [t] DROP COLUMN a, DROP COLUMN b");
    EXPECT_EQ(column.kind, JetStatement::Kind::Refused);
    EXPECT_NE(N(column.refusal).find("DROP COLUMN"), std::string::npos);

    // Indexes: the columns and their directions, the statement for the
    // driver beside them.
    JetStatement idx = PrepareJetStatement(u" CREATE  UNIQUE  INDEX [ix] ON Orders ([a] ASC,[b] DESC,c)");
    ASSERT_EQ(idx.kind, JetStatement::Kind::CreateIndex);
    EXPECT_TRUE(idx.unique);
    EXPECT_TRUE(idx.descending);
    EXPECT_TRUE(idx.changesTables);
    EXPECT_EQ(N(idx.table), "Orders");
    EXPECT_EQ(N(idx.name), "ix");
    ASSERT_EQ(idx.columns.size(), 3u);
    EXPECT_EQ(N(idx.columns[1]), "b");
    EXPECT_EQ(idx.ascending, (std::vector<bool>{true, false, true}));
    EXPECT_FALSE(PrepareJetStatement(u"CREATE INDEX ix ON t (a)").descending);
    // An index with options behind its list goes to the driver as it is.
    EXPECT_EQ(PrepareJetStatement(u"CREATE INDEX ix ON t (a DESC) WITH PRIMARY").kind, JetStatement::Kind::Plain);

    // ALTER COLUMN: the wanted type in the file's words and the null mark.
    JetStatement alter = PrepareJetStatement(u" ALTER TABLE [t] ALTER COLUMN [name] VARCHAR(40) NOT NULL");
    ASSERT_EQ(alter.kind, JetStatement::Kind::AlterColumn);
    EXPECT_EQ(N(alter.table), "t");
    EXPECT_EQ(N(alter.name), "name");
    EXPECT_EQ(N(alter.fileType), "TEXT:40:0:0");
    EXPECT_EQ(alter.required, 1);
    JetStatement nullable = PrepareJetStatement(u" ALTER TABLE [t] ALTER COLUMN [n] DECIMAL(10,2) NULL");
    EXPECT_EQ(N(nullable.fileType), "NUMERIC:0:10:2");
    EXPECT_EQ(nullable.required, 0);
    EXPECT_EQ(PrepareJetStatement(u" ALTER TABLE [t] ALTER COLUMN [n] WIDGET NULL").kind, JetStatement::Kind::Refused);

    JetStatement create = PrepareJetStatement(u" CREATE TABLE [t] ( [a] BIT NULL )");
    EXPECT_EQ(create.kind, JetStatement::Kind::Plain);
    EXPECT_TRUE(create.changesTables);
    EXPECT_EQ(N(create.sql), " CREATE TABLE [t] ( [a] YESNO NULL )");
    EXPECT_FALSE(PrepareJetStatement(u"INSERT INTO t VALUES (1)").changesTables);
}

// Statements that read or write rows reach the driver without a text
// literal in them; plain INSERTs, whole-table SELECTs and named primary
// keys are recognised for the file's own calls, anything else is not.
TEST(JetSql, LiteralsAreCutAndRowStatementsRecognised) {
    JetStatement upd = PrepareJetStatement(u"UPDATE [t] SET [a] = 'AA^AA', [b] = ? WHERE [c] LIKE 'x ''Like'' %' AND d = \"q\"");
    ASSERT_EQ(upd.kind, JetStatement::Kind::Plain);
    EXPECT_EQ(N(upd.sql), "UPDATE [t] SET [a] = ?, [b] = ? WHERE [c] LIKE ? AND d = ?");
    ASSERT_EQ(upd.bound.size(), 4u);
    EXPECT_EQ(N(upd.bound[0].text), "AA^AA");
    EXPECT_EQ(upd.bound[1].kind, JetValue::Kind::Param);
    EXPECT_EQ(upd.bound[1].param, 0);
    EXPECT_EQ(N(upd.bound[2].text), "x 'Like' %");
    EXPECT_EQ(N(upd.bound[3].text), "q");
    // Definitions keep their texts; a statement without texts stays as it is.
    EXPECT_EQ(N(PrepareJetStatement(u"CREATE TABLE t (a VARCHAR(5) DEFAULT 'x')").sql), "CREATE TABLE t (a VARCHAR(5) DEFAULT 'x')");
    EXPECT_TRUE(PrepareJetStatement(u"DELETE FROM [t] WHERE [a] = ?").bound.empty());

    JetStatement ins = PrepareJetStatement(
        u"INSERT INTO [t] ([a], b, [c d]) VALUES ('it''s', -1.5E+3, ?), (NULL, True, #02/29/2024 13:45:10#);");
    ASSERT_EQ(ins.kind, JetStatement::Kind::InsertRows);
    EXPECT_EQ(N(ins.table), "t");
    ASSERT_EQ(ins.columns.size(), 3u);
    EXPECT_EQ(N(ins.columns[2]), "c d");
    ASSERT_EQ(ins.rows.size(), 2u);
    EXPECT_EQ(N(ins.rows[0][0].text), "it's");
    EXPECT_EQ(ins.rows[0][1].kind, JetValue::Kind::Number);
    EXPECT_EQ(N(ins.rows[0][1].text), "-1.5E+3");
    EXPECT_EQ(ins.rows[0][2].param, 0);
    EXPECT_EQ(ins.rows[1][0].kind, JetValue::Kind::Null);
    EXPECT_TRUE(ins.rows[1][1].truth);
    EXPECT_EQ(ins.rows[1][2].kind, JetValue::Kind::Date);
    EXPECT_EQ(PrepareJetStatement(u"INSERT INTO t VALUES (1, 'a')").kind, JetStatement::Kind::InsertRows);
    for (const char16_t* other : {u"INSERT INTO t (a) SELECT b FROM u", u"INSERT INTO t (a, b) VALUES (1)",
                                  u"INSERT INTO t (a) VALUES (1 + 2)", u"INSERT INTO t (a) VALUES (Now())",
                                  u"INSERT INTO t (a) VALUES (#someday#)", u"INSERT INTO t (a) VALUES (1), (1, 2)"}) {
        JetStatement p = PrepareJetStatement(other);
        EXPECT_EQ(p.kind, JetStatement::Kind::Plain) << N(other);
    }

    JetStatement all = PrepareJetStatement(u" SELECT * FROM [Order Details] ");
    EXPECT_EQ(all.kind, JetStatement::Kind::SelectRows);
    EXPECT_EQ(N(all.table), "Order Details");
    EXPECT_TRUE(all.columns.empty());
    JetStatement some = PrepareJetStatement(u"SELECT [a], b FROM t");
    EXPECT_EQ(some.kind, JetStatement::Kind::SelectRows);
    EXPECT_EQ(some.columns.size(), 2u);
    EXPECT_EQ(PrepareJetStatement(u"SELECT COUNT(*) FROM [t]").kind, JetStatement::Kind::CountRows);
    for (const char16_t* other : {u"SELECT * FROM t WHERE a = 1", u"SELECT a AS b FROM t", u"SELECT * FROM t, u",
                                  u"SELECT COUNT(a) FROM t", u"SELECT DISTINCT a FROM t", u"SELECT * FROM t ORDER BY a"})
        EXPECT_EQ(PrepareJetStatement(other).kind, JetStatement::Kind::Plain) << N(other);

    JetStatement pk = PrepareJetStatement(u" ALTER TABLE [t] ADD CONSTRAINT [idx_t] PRIMARY KEY ([a] DESC, [b] ASC, c) ");
    ASSERT_EQ(pk.kind, JetStatement::Kind::PrimaryKey);
    EXPECT_EQ(N(pk.name), "idx_t");
    EXPECT_EQ(pk.columns.size(), 3u);
    EXPECT_EQ(pk.ascending, (std::vector<bool>{false, true, true}));
    EXPECT_EQ(PrepareJetStatement(u"ALTER TABLE t ADD CONSTRAINT k PRIMARY KEY (a DESC DESC)").kind,
              JetStatement::Kind::Plain);

    DateParts d;
    ASSERT_TRUE(ParseJetDate(u" 2/29/2024 13:45:10 ", d));
    EXPECT_EQ((std::vector<int>{d.year, d.month, d.day, d.hour, d.minute, d.second}),
              (std::vector<int>{2024, 2, 29, 13, 45, 10}));
    ASSERT_TRUE(ParseJetDate(u"1999-12-31", d));
    EXPECT_EQ(d.year * 10000 + d.month * 100 + d.day, 19991231);
    ASSERT_TRUE(ParseJetDate(u"07:05", d));
    EXPECT_EQ((std::vector<int>{d.year, d.month, d.day, d.hour, d.minute}), (std::vector<int>{1899, 12, 30, 7, 5}));
    for (const char16_t* bad : {u"someday", u"13/45/2020", u"1/2/2020 25:00", u"1/2/2020 3 PM", u"1/2"})
        EXPECT_FALSE(ParseJetDate(bad, d)) << N(bad);
}

TEST(JetSql, ParameterMarksAndFileTypes) {
    // A date between "#" marks and a back-slash at the end of a text do not
    // hide the marks behind them; marks in texts and names do not count.
    EXPECT_EQ(CountJetParameterMarks(u"INSERT INTO [t] ([d],[p],[q?]) VALUES ( #01/02/2020# ,?,'C:\\',?,'?')"), 2);
    EXPECT_EQ(CountJetParameterMarks(u"UPDATE t SET a = 'it''s ?', b = \"?\" WHERE c = ?"), 1);

    EXPECT_EQ(N(JetFileType(u"VARCHAR")), "TEXT:255:0:0");
    EXPECT_EQ(N(JetFileType(u"LONG INTEGER")), "LONG:0:0:0");
    EXPECT_EQ(N(JetFileType(u"REAL")), "FLOAT:0:0:0");
    EXPECT_EQ(N(JetFileType(u"MONEY")), "MONEY:0:0:0");
    EXPECT_EQ(N(JetFileType(u"IMAGE")), "OLE:0:0:0");
    EXPECT_EQ(N(JetFileType(u"BINARY(16)")), "BINARY:16:0:0");
    EXPECT_EQ(N(JetFileType(u"sprocket")), "");
}

TEST(JetWire, ParametersAndValuesCrossUnchanged) {
    auto param = [](int32_t type, Variant v) { return Ref<ado::Parameter>::New(u"p", type, 1, 0, std::move(v)); };
    double when = JoinDate({2024, 2, 29, 13, 45, 10});
    std::vector<uint8_t> bytes = EncodeParameters(
        {param(adType::LongVarBinary, Variant(Bytes{0, 1, 255})), param(adType::LongVarChar, Variant(u"Zoë \u6e21")),
         param(adType::Integer, Variant(int32_t{-7})), param(adType::Currency, Variant(Currency::FromRaw(123456))),
         param(adType::Date, Variant::FromDate(when)), param(adType::Boolean, Variant(true)),
         param(adType::VarWChar, Variant::Null())});
    WireReader r(bytes);
    EXPECT_EQ(r.Int(), 7);
    EXPECT_EQ(r.Value().ToBytes(), (Bytes{0, 1, 255}));
    EXPECT_EQ(N(r.Value().ToString()), "Zoë 渡");
    EXPECT_EQ(r.Value().ToLong(), -7); // sent as a 64-bit integer
    Variant money = r.Value();
    EXPECT_EQ(money.Type(), VarType::Decimal);
    EXPECT_EQ(N(money.ToDecimal().ToText(u'.')), "12.3456");
    EXPECT_EQ(r.Value().ToDate(), when);
    EXPECT_TRUE(r.Value().ToBoolean());
    EXPECT_TRUE(r.Value().IsNull());
    EXPECT_TRUE(r.AtEnd());

    // A value cut short is refused, not read past its end.
    std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + 9);
    WireReader broken(cut);
    broken.Int();
    EXPECT_THROW(broken.Value(), ProviderFailure);
}

TEST(JetWire, ValuesFitTheirFields) {
    EXPECT_EQ(FitToField(Variant(int32_t{200}), adType::UnsignedTinyInt).Type(), VarType::Byte);
    EXPECT_EQ(FitToField(Variant(int32_t{-3}), adType::SmallInt).Type(), VarType::Integer);
    Variant cur = FitToField(Variant(Decimal::FromInt64(35).Div(Decimal::FromInt64(10))), adType::Currency);
    EXPECT_EQ(cur.Type(), VarType::Currency);
    EXPECT_EQ(cur.ToCurrency().raw, 35000);
    EXPECT_EQ(FitToField(Variant(u"{AB}"), adType::GUID).Type(), VarType::String);
    EXPECT_TRUE(FitToField(Variant::Null(), adType::Integer).IsNull());
    EXPECT_EQ(FitToField(Variant(int32_t{0}), adType::Boolean).Type(), VarType::Boolean);
}

TEST(AccessTypes, FiguresOfEveryAccessField) {
    struct Case {
        const char16_t* type;
        int32_t length, dataType, fieldType;
        Variant precision, maxLength;
    };
    const Variant none = Variant::Null();
    for (const Case& c : std::initializer_list<Case>{
             {u"TEXT", 50, 130, 202, none, Variant(int32_t{50})},
             {u"MEMO", 0, 130, 203, none, Variant(int32_t{0})},
             {u"BYTE", 1, 17, 17, Variant(int32_t{3}), none},
             {u"INT", 2, 2, 2, Variant(int32_t{5}), none},
             {u"LONG", 4, 3, 3, Variant(int32_t{10}), none},
             {u"FLOAT", 4, 4, 4, Variant(int32_t{7}), none},
             {u"DOUBLE", 8, 5, 5, Variant(int32_t{15}), none},
             {u"MONEY", 8, 6, 6, Variant(int32_t{19}), none},
             {u"SHORT_DATE_TIME", 8, 7, 7, none, none},
             {u"BOOLEAN", 1, 11, 11, none, none},
             {u"OLE", 0, 128, 205, none, Variant(int32_t{0})},
             {u"BINARY", 16, 128, 204, none, Variant(int32_t{16})},
             {u"GUID", 16, 72, 72, none, none}}) {
        SCOPED_TRACE(N(c.type));
        AccessFigures f = FiguresOfFileType(c.type, c.length, 0, 0);
        EXPECT_EQ(f.dataType, c.dataType);
        EXPECT_EQ(f.fieldType, c.fieldType);
        EXPECT_TRUE(f.precision == c.precision);
        EXPECT_TRUE(f.maxLength == c.maxLength);
        EXPECT_TRUE(f.scale.IsNull());
    }
    AccessFigures dec = FiguresOfFileType(u"NUMERIC", 17, 12, 3);
    EXPECT_EQ(dec.dataType, 131);
    EXPECT_EQ(dec.precision.ToLong(), 12);
    EXPECT_EQ(dec.scale.ToLong(), 3);
    // Computed columns by the driver's SQL type: COUNT(*) is a big integer.
    EXPECT_EQ(FiguresOfSqlType(-5, 20, 64, 0).fieldType, 20);
    EXPECT_EQ(FiguresOfSqlType(12, 40, 40, 0).fieldType, 202);
    EXPECT_EQ(FiguresOfSqlType(12, 16777216, 0, 0).fieldType, 203);
}

TEST(AccessSchema, RowsetsFollowTheirRestrictions) {
    FactRows relationships = {
        {Variant(u"AB"), Variant(u"A"), Variant(u"id"), Variant(u"B"), Variant(u"a_id"), Variant(int32_t{1}),
         Variant(false), Variant(true), Variant(false), Variant(u"PrimaryKey")},
        {Variant(u"AC"), Variant(u"A"), Variant(u"id"), Variant(u"C"), Variant(u"a_id"), Variant(int32_t{1}),
         Variant(true), Variant(false), Variant(true), Variant::Null()}};
    Ref<Recordset> rs = ForeignKeysRowset(relationships, {Variant(), Variant(), Variant(), Variant(), Variant(),
                                                          Variant(u"c")});
    ASSERT_EQ(rs->RecordCount(), 1);
    EXPECT_EQ(N(rs->Value(u"FK_NAME").ToString()), "AC");
    EXPECT_EQ(N(rs->Value(u"UPDATE_RULE").ToString()), "CASCADE");
    EXPECT_EQ(N(rs->Value(u"DELETE_RULE").ToString()), "SET NULL");
    Ref<Recordset> all = ForeignKeysRowset(relationships, {});
    EXPECT_EQ(all->RecordCount(), 2);
    EXPECT_EQ(N(all->Value(u"DELETE_RULE").ToString()), "CASCADE");
    EXPECT_EQ(N(all->Value(u"UPDATE_RULE").ToString()), "NO ACTION");

    FactRows columns = {{Variant(u"T"), Variant(u"link"), Variant(int32_t{1}), Variant(u"MEMO"), Variant(int32_t{0}),
                         Variant(int32_t{0}), Variant(int32_t{0}), Variant(false), Variant(true), Variant(true),
                         Variant(u"\"x\"")}};
    Ref<Recordset> c = ColumnsRowset(columns, {Variant(), Variant(), Variant(u"t")});
    ASSERT_EQ(c->RecordCount(), 1);
    EXPECT_FALSE(c->Value(u"IS_NULLABLE").ToBoolean());
    EXPECT_TRUE(c->Value(u"COLUMN_HASDEFAULT").ToBoolean());
    EXPECT_EQ(N(c->Value(u"COLUMN_DEFAULT").ToString()), "\"x\"");
    EXPECT_EQ(ColumnsRowset(columns, {Variant(), Variant(), Variant(u"other")})->RecordCount(), 0);
}

} // namespace
} // namespace zolsdk::ado::detail::jet
