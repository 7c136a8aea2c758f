// What the lossless road composes and compares without a server: SQL Server
// statements (no server runs here), and the normal forms that decide
// whether two engines hold the same value.
#include <gtest/gtest.h>

#include "transfer/ddl.hpp"
#include "transfer/type_map.hpp"
#include "transfer/values.hpp"

using namespace zolsdk;
using namespace zolsdk::transfer;

namespace {

ColumnPlan Column(const char16_t* name, Kind kind, int32_t length = 0) {
    ColumnPlan c;
    c.name = name;
    c.kind = kind;
    c.length = length;
    return c;
}

std::string Normal(Kind k, const Variant& v) {
    std::string s;
    Normalise(k, v, s);
    return s;
}

} // namespace

TEST(TransferStatements, SqlServerQuotesEveryNameAndKeepsKeysAndCounters) {
    TablePlan t;
    t.name = u"19 MB 01 BEZAHLT ???";
    t.columns = {Column(u"Table", Kind::Int32), Column(u"a]b", Kind::Text, 5000), Column(u"rid", Kind::Guid),
                 Column(u"n", Kind::UInt64)};
    t.columns[0].autoIncrement = true;
    t.columns[0].nullable = false;
    for (auto& c : t.columns) MapType(Engine::SqlServer, c, t.changes);
    t.indexes = {{u"PRIMARY", true, true, false, false, {{u"Table", true, 0}}},
                 {u"ix a]b", false, true, false, false, {{u"a]b", false, 0}, {u"rid", true, 0}}}};
    FitIndexes(Engine::SqlServer, t);
    std::vector<String> sql = CreateTableSql(Engine::SqlServer, t);
    ASSERT_EQ(sql.size(), 1u); // the index over a long text is left out, and said
    EXPECT_EQ(sql[0], u"CREATE TABLE [19 MB 01 BEZAHLT ???] ([Table] int IDENTITY(1,1) NOT NULL, [a]]b] "
                      u"nvarchar(max) NULL, [rid] uniqueidentifier NULL, [n] decimal(20,0) NULL, "
                      u"CONSTRAINT [PK_19 MB 01 BEZAHLT ???] PRIMARY KEY ([Table] DESC))");
    ASSERT_EQ(t.changes.size(), 2u);
    EXPECT_EQ(t.changes[0], u"n: type 0 -> unsigned 64-bit integer kept as decimal(20,0)");
    EXPECT_EQ(t.changes[1], u"index ix a]b left out: a]b is a long column there");

    ForeignKeyPlan fk{u"fk x", u"Order", u"Table", {u"a id"}, {u"id"}, u"CASCADE", u"NO ACTION"};
    EXPECT_EQ(ForeignKeySql(Engine::SqlServer, fk),
              u"ALTER TABLE [Order] ADD CONSTRAINT [fk x] FOREIGN KEY ([a id]) REFERENCES [Table] ([id]) ON UPDATE CASCADE");
    EXPECT_EQ(DropTableSql(Engine::MySql, u"we`ird"), u"DROP TABLE `we``ird`");
}

// Literals carry the value whole: nothing cut, nothing escaped twice.
TEST(TransferStatements, LiteralsKeepEveryCharacterAndByte) {
    using namespace std::string_literals;
    String text = u"a'b\\c\0d\"e\U0001F600"s;
    EXPECT_EQ(Literal(Engine::MySql, Kind::Text, Variant(text)), u"'a\\'b\\\\c\\0d\"e\U0001F600'");
    EXPECT_EQ(Literal(Engine::SqlServer, Kind::Text, Variant(String(u"it's"))), u"N'it''s'");
    EXPECT_EQ(Literal(Engine::MySql, Kind::LongBinary, Variant(Bytes{0x00, 0xAB, 0x7F})), u"X'00AB7F'");
    EXPECT_EQ(Literal(Engine::MySql, Kind::Double, Variant(0.1)), u"0.1");
    EXPECT_EQ(Literal(Engine::MySql, Kind::Single, Variant(0.1f)), u"0.1");
    EXPECT_EQ(Literal(Engine::MySql, Kind::UInt64, Variant(Decimal::FromUInt64(18446744073709551615ull))),
              u"18446744073709551615");
    EXPECT_EQ(Literal(Engine::MySql, Kind::DateTime, Variant::FromDate(36526.5)), u"'2000-01-01 12:00:00'");
    EXPECT_EQ(Literal(Engine::MySql, Kind::Guid, Variant(String(u"6f9619ff-8b86-d011-b42d-00c04fc964ff"))),
              u"'{6F9619FF-8B86-D011-B42D-00C04FC964FF}'");
}

// The same value as two engines hand it out compares equal; a value that
// changed does not.
TEST(TransferStatements, NormalFormsCompareValuesNotTheirCarriers) {
    struct Same {
        Kind kind;
        Variant a, b;
    };
    const Same same[] = {
        {Kind::Int64, Variant(int32_t{5}), Variant(Decimal::FromInt64(5))},
        {Kind::Decimal, Variant(Decimal::FromParts(1250, 3, false)), Variant(Decimal::FromParts(125, 2, false))},
        {Kind::Currency, Variant(Currency::FromRaw(35000)), Variant(Decimal::FromParts(35, 1, false))},
        {Kind::Boolean, Variant(true), Variant(int16_t{1})},
        {Kind::Single, Variant(0.1f), Variant(static_cast<double>(0.1f))},
        {Kind::DateTime, Variant::FromDate(36526.5), Variant::FromDate(36526.5 + 0.4 / 86400)},
        {Kind::Time, Variant::FromDate(0.25), Variant::FromDate(36526.25)},
        {Kind::Guid, Variant(String(u"{ab}")), Variant(String(u"AB"))},
    };
    for (const auto& s : same) EXPECT_EQ(Normal(s.kind, s.a), Normal(s.kind, s.b)) << KindName(s.kind);

    const Same differ[] = {
        {Kind::LongBinary, Variant(Bytes{1, 2, 3}), Variant(Bytes{1, 2, 0})},
        {Kind::Text, Variant(String(u"abc")), Variant(String(u"abc "))},
        {Kind::Text, Variant(String(u"")), Variant::Null()},
        {Kind::Double, Variant(0.1), Variant(static_cast<double>(0.1f))},
        {Kind::DateTime, Variant::FromDate(36526.5), Variant::FromDate(36526.5 + 1.0 / 86400)},
        {Kind::Int32, Variant(int32_t{0}), Variant::Null()},
    };
    for (const auto& d : differ) EXPECT_NE(Normal(d.kind, d.a), Normal(d.kind, d.b)) << KindName(d.kind);
}

TEST(TransferStatements, LoadTextEscapesEachSpecialByteWhereverItStands) {
    // Each byte the load reads specially (backslash, tab, newline, NUL), and
    // bytes next to them that it does not (0x5B, 0x08, 0x0B, 0x01, 0xDC),
    // at every place of texts around the eight bytes looked at a step.
    const std::string specials("\\\t\n\0\x5B\x08\x0B\x01\xDC", 9);
    for (size_t length = 1; length <= 20; ++length)
        for (size_t at = 0; at < length; ++at)
            for (char special : specials) {
                std::string text(length, 'a');
                text[at] = special;
                std::string want;
                for (char c : text) {
                    if (c == '\\' || c == '\t' || c == '\n' || c == '\0') want += '\\';
                    want += c == '\t' ? 't' : c == '\n' ? 'n' : c == '\0' ? '0' : c;
                }
                std::string got = "x";
                AppendLoadEscaped(text, got);
                ASSERT_EQ(got, "x" + want) << "length " << length << ", byte " << int(special) << " at " << at;
            }
    std::string all;
    AppendLoadEscaped(std::string("\\\\\t\t\n\n\0\0", 8), all);
    EXPECT_EQ(all, "\\\\\\\\\\t\\t\\n\\n\\0\\0");
}

TEST(Values, ARowHashTellsApartWhereOneValueEndsAndNullFromEmpty) {
    auto hash = [](std::initializer_list<const char*> values) {
        RowHasher h;
        for (const char* v : values) v ? h.Add(v) : h.AddNull();
        return h.Finish();
    };
    // Values of every length around a word, moved from one cell to the next.
    std::string long_text(23, 'q');
    EXPECT_NE(hash({"ab", "c"}), hash({"a", "bc"}));
    EXPECT_NE(hash({long_text.c_str(), ""}), hash({long_text.substr(0, 15).c_str(), long_text.substr(15).c_str()}));
    EXPECT_NE(hash({nullptr, "x"}), hash({"", "x"}));
    EXPECT_NE(hash({"x", nullptr}), hash({nullptr, "x"}));
    EXPECT_NE(hash({"12345678"}), hash({"1234567", "8"}));
    EXPECT_EQ(hash({"same", nullptr, ""}), hash({"same", nullptr, ""}));
    // A single byte changed anywhere in a long value changes the hash.
    std::string base(100, 'a');
    for (size_t at = 0; at < base.size(); ++at) {
        std::string changed = base;
        changed[at] = 'b';
        ASSERT_NE(hash({changed.c_str()}), hash({base.c_str()})) << at;
    }
}
