// The Access dialect's statements, run on a real file and read back through
// the Access reader: each type group, keys and indexes, rows in and out,
// criteria.
#include <map>

#include "access/access_fixture.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/platform/datetime.hpp"

namespace zolsdk::accesstest {
namespace {

std::string N(const String& s) { return ToUtf8(s); }

class AccessDialectOnFile : public ::testing::Test {
protected:
    void SetUp() override {
        db = Catalog(w.Attrs("dialect.mdb"));
        db->Create();
        s = db->Session();
        sql = NewSqlBuilder(DbMsAccessDBId);
    }
    Workspace w;
    Ref<DbCatalog> db;
    Ref<IDBSession> s;
    Ref<IDbSqlBuilder> sql;
};

// One column of every type group: what the file makes of it and what the
// reader says it is.
TEST_F(AccessDialectOnFile, EveryTypeGroupMakesAColumn) {
    const String columns = u"T,txt,1,202,1,False,,0,0,40,True;"
                           u"T,memo,2,203,2,False,,0,0,0,True;"
                           u"T,int,3,3,3,False,,10,0,0,False;"
                           u"T,small,4,2,3,False,,5,0,0,True;"
                           u"T,tiny,5,17,3,False,,3,0,0,True;"
                           u"T,uint,6,19,4,False,,10,0,0,True;"
                           u"T,day,7,133,5,False,,0,0,0,True;"
                           u"T,stamp,8,135,7,False,,0,0,0,True;"
                           u"T,flag,9,11,8,False,,0,0,0,True;"
                           u"T,dbl,10,5,9,False,,15,0,0,True;"
                           u"T,bin,11,205,10,False,,0,0,0,True;"
                           u"T,sng,12,4,11,False,,7,0,0,True;"
                           u"T,dec,13,131,12,False,,12,3,0,True;"
                           u"T,cur,14,6,13,False,,19,4,0,True";
    s->ExecuteNoQuery(sql->CreateTableSql(u"T", columns, u""));
    s->ExecuteNoQuery(sql->CreateIndexSql(u"pk", u"T", u"int<", 1));
    db->ClearData(u"");
    struct Got {
        int32_t dataType, group, precision, scale, length;
        bool nullable;
    };
    std::map<std::string, Got> got;
    for (auto c : db->Tables()->Item(Variant(u"T"))->Columns())
        got[N(c->ColumnName())] = {c->DataType(), c->DataTypeGroup(), c->NumericPrecision(), c->NumericScale(),
                                   c->MaxCharLength(), c->IsNullable() == -1};
    ASSERT_EQ(got.size(), 14u);
    auto expect = [&](const char* name, int32_t dataType, int32_t group) {
        EXPECT_EQ(got[name].dataType, dataType) << name;
        EXPECT_EQ(got[name].group, group) << name;
    };
    expect("txt", 130, dtVarChar);
    EXPECT_EQ(got["txt"].length, 40);
    expect("memo", 130, dtCharBLOB);
    expect("int", 3, dtInteger);
    EXPECT_FALSE(got["int"].nullable);
    expect("small", 2, dtInteger);
    // TINYINT is a Byte on this engine, which has no sign: it reads back as
    // an unsigned integer.
    expect("tiny", 17, dtUnsignedInteger);
    // An unsigned integer is widened to a Long, which reads back signed.
    expect("uint", 3, dtInteger);
    // Dates alone and dates with times are one Date/Time type.
    expect("day", 7, dtDateTime);
    expect("stamp", 7, dtDateTime);
    expect("flag", 11, dtBoolean); // not the Byte that BIT would make
    expect("dbl", 5, dtDouble);
    expect("bin", 128, dtBinaryBLOB);
    expect("sng", 4, dtSingle); // not the Double that REAL would make
    expect("dec", 131, dtDecimal);
    EXPECT_EQ(got["dec"].precision, 12);
    EXPECT_EQ(got["dec"].scale, 3);
    expect("cur", 6, dtCurrency);
    EXPECT_EQ(got["cur"].scale, 4);
}

TEST_F(AccessDialectOnFile, KeysIndexesAndColumnChanges) {
    s->ExecuteNoQuery(sql->CreateTableSql(u"Orders",
                                          u"Orders,Id,1,3,3,False,,10,0,0,False;"
                                          u"Orders,Name,2,202,1,False,,0,0,50,True;"
                                          u"Orders,Placed,3,135,7,False,,0,0,0,True",
                                          u""));
    s->ExecuteNoQuery(sql->CreateIndexSql(u"PK_Orders", u"Orders", u"Id<", 1));
    s->ExecuteNoQuery(sql->CreateIndexSql(u"UX_Name", u"Orders", u"Name<", 2));
    s->ExecuteNoQuery(sql->CreateIndexSql(u"IX_Newest", u"Orders", u"Placed>,Name<", 0));
    s->ExecuteNoQuery(sql->AddColumnSql(u"Orders", u"Orders,Total,4,6,13,False,,19,4,0,True"));
    // A second table may use the same index name, as Jet allows.
    s->ExecuteNoQuery(sql->CreateTableSql(u"Other", u"Other,Name,1,202,1,False,,0,0,50,True", u""));
    s->ExecuteNoQuery(sql->CreateIndexSql(u"IX_Newest", u"Other", u"Name<", 0));

    Ref<IDBReader> reader = s->DbReader();
    Ref<ado::Recordset> ix = reader->Indexes(u"Orders");
    std::map<std::string, std::pair<bool, bool>> indexes;
    for (ix->MoveFirst(); !ix->Eof(); ix->MoveNext())
        indexes[N(ix->Value(u"index_name").ToString())] = {ix->Value(u"primary_key").ToBoolean(),
                                                          ix->Value(u"unique").ToBoolean()};
    // The key keeps the name the statement gave it.
    EXPECT_EQ(indexes.size(), 3u);
    EXPECT_EQ(indexes["idx_Orders"], std::make_pair(true, true));
    EXPECT_EQ(indexes["UX_Name"], std::make_pair(false, true));
    EXPECT_EQ(indexes["IX_Newest"], std::make_pair(false, false));
    Ref<ado::Recordset> cols = reader->IndexColumns(u"IX_Newest", u"Orders");
    ASSERT_EQ(cols->RecordCount(), 2);
    cols->MoveFirst();
    EXPECT_EQ(N(cols->Value(u"column_name").ToString()), "Placed");
    EXPECT_EQ(cols->Value(u"sort_order").ToLong(), 2);
    cols->MoveNext();
    EXPECT_EQ(cols->Value(u"sort_order").ToLong(), 1);
    EXPECT_EQ(reader->Indexes(u"Other")->RecordCount(), 1);
    EXPECT_EQ(reader->TableColumns(u"Orders")->RecordCount(), 4);

    // The unique index holds in the file.
    s->ExecuteNoQuery(sql->InsertSql(u"Orders", u"03Id,01Name", u"1,a", u"="));
    DbError dup = Failure([&] { s->ExecuteNoQuery(sql->InsertSql(u"Orders", u"03Id,01Name", u"2,a", u"=")); });
    EXPECT_EQ(dup.Number(), errnum::Unexpected);

    s->ExecuteNoQuery(sql->DropTableSql(u"Other"));
    reader->Refresh();
    EXPECT_EQ(reader->Tables()->RecordCount(), 1);
}

TEST_F(AccessDialectOnFile, RowsInUpdatedSelectedCountedDeleted) {
    s->ExecuteNoQuery(sql->CreateTableSql(u"P",
                                          u"P,Id,1,3,3,False,,10,0,0,False;"
                                          u"P,Name,2,202,1,False,,0,0,50,True;"
                                          u"P,Amount,3,131,12,False,,18,4,0,True;"
                                          u"P,Created,4,135,7,False,,0,0,0,True;"
                                          u"P,Active,5,11,8,False,,0,0,0,True;"
                                          u"P,Flags,6,3,3,False,,10,0,0,True",
                                          u""));
    const String set = u"03Id,01Name,12Amount,07Created,08Active,03Flags";
    s->ExecuteNoQuery(sql->InsertSql(u"P", set, u"1,O'Brien%2C Ltd,1234.5,20240229T134510,-1,5", u"="));
    s->ExecuteNoQuery(sql->InsertSql(u"P", set, u"2,Smith,10.25,20240105T000000,0,4", u"="));
    s->ExecuteNoQuery(sql->InsertSql(u"P", set, u"3,NULL,NULL,NULL,NULL,NULL", u"="));
    EXPECT_EQ(N(s->ExecuteScalar(sql->CountSql(u"P"), u"")), "3");

    Ref<ado::Recordset> rs = s->Execute(sql->SelectByAttributeSql(u"P", u"", u"03Id", u"1"));
    ASSERT_EQ(rs->RecordCount(), 1);
    EXPECT_EQ(N(rs->Value(u"Name").ToString()), "O'Brien, Ltd");
    EXPECT_EQ(N(rs->Value(u"Amount").ToDecimal().ToText(u'.')), "1234.5");
    EXPECT_EQ(N(DateText(rs->Value(u"Created").ToDate())), "2024-02-29 13:45:10");
    EXPECT_TRUE(rs->Value(u"Active").ToBoolean());

    EXPECT_EQ(s->ExecuteNoQuery(sql->UpdateByAttributeSql(u"P", u"01Name,12Amount", u"Jones,99.5", u"=",
                                                          u"03Id,07Created", u"2,20240105T000000")),
              1);
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT [Name] FROM [P] WHERE [Id] = 2", u"")), "Jones");
    EXPECT_EQ(s->ExecuteNoQuery(sql->UpdateByAttributeSql(u"P", u"01Name", u"nobody", u"=", u"01Name", u"NULL")), 1);
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT [Id] FROM [P] WHERE [Name] = 'nobody'", u"")), "3");

    // Flag tests are written "(Flags \ v) mod 2 = v" (or "= 0"): integer
    // division, then the lowest bit. Flags are 5, 4 and Null.
    String odd = sql->CriteriaClause(u"P", u"Flags", dtInteger, dcoContains, u"1");
    Ref<ado::Recordset> flagged = s->Execute(sql->SelectSql(u"P", u"[Id]", odd));
    ASSERT_EQ(flagged->RecordCount(), 1) << N(odd);
    EXPECT_EQ(flagged->Value(u"Id").ToLong(), 1);
    // 5 \ 2 and 4 \ 2 are both 2, an even number: divided as whole numbers.
    String even = sql->CriteriaClause(u"P", u"Flags", dtInteger, dcoDoesNotContain, u"2");
    EXPECT_EQ(N(s->ExecuteScalar(sql->SelectSql(u"P", u"COUNT(*)", even), u"")), "2") << N(even);
    // With any other flag than 1 the bit (0 or 1) never equals the flag.
    String four = sql->CriteriaClause(u"P", u"Flags", dtInteger, dcoContains, u"4");
    EXPECT_EQ(N(s->ExecuteScalar(sql->SelectSql(u"P", u"COUNT(*)", four), u"")), "0") << N(four);

    EXPECT_EQ(s->ExecuteNoQuery(sql->DeleteSql(u"P")), 3);
    EXPECT_EQ(N(s->ExecuteScalar(sql->CountSql(u"P"), u"")), "0");
}

} // namespace
} // namespace zolsdk::accesstest
