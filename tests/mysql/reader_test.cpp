// The MySQL schema reader over the Sakila sample and over small tables of
// its own: canonical rowsets, type groups, indexes by server version, keys,
// caching, and failures.
#include <set>

#include "mysql_fixture.hpp"
#include "readers/mysql_reader.hpp"
#include "zolsdk/schema/enums.hpp"

namespace zolsdk::mysqltest {
namespace {

[[maybe_unused]] ::testing::Environment* const kSakila = ::testing::AddGlobalTestEnvironment(new Sakila);

// The reader holds its session weakly, as the catalog owns the session:
// the session is kept here for the whole program.
Ref<IDBReader> SakilaReader() {
    static Ref<DbMySqlDB> session = NewSession(u"dbname=" + Sakila::Name());
    return session->DbReader();
}

int32_t ServerMajor() {
    auto s = NewSession(u"dbname=mysql");
    return DbMySQLReader::MajorVersion(s->ExecuteScalar(u"SELECT VERSION()", u""));
}

// One column's row of a ColumnRS, by name.
struct Col {
    int32_t ordinal, dataType, group, precision, scale, length;
    bool nullable, hasDefault;
    String def;
};
Col Column(const Ref<ado::Recordset>& rs, const String& name) {
    rs->MoveFirst();
    rs->Find(u"column_name = '" + name + u"'");
    if (rs->Eof()) {
        ADD_FAILURE() << "no column " << ToUtf8(name);
        return {};
    }
    return {rs->Value(u"ordinal_position").ToLong(), rs->Value(u"data_type").ToLong(),
            rs->Value(u"data_type_group").ToLong(), rs->Value(u"numeric_precision").ToLong(),
            rs->Value(u"numeric_scale").ToLong(), rs->Value(u"character_maximum_length").ToLong(),
            rs->Value(u"is_nullable").ToBoolean(), rs->Value(u"has_default").ToBoolean(),
            rs->Value(u"column_default").ToString()};
}

std::vector<String> Strings(const Ref<ado::Recordset>& rs, const char16_t* field) {
    std::vector<String> out;
    if (rs->RecordCount() == 0) return out;
    rs->MoveFirst();
    while (!rs->Eof()) {
        out.push_back(rs->Value(field).ToString());
        rs->MoveNext();
    }
    return out;
}

TEST(MySqlReader, SakilaTablesAreTheBaseTablesOnly) {
    Ref<ado::Recordset> rs = SakilaReader()->Tables();
    std::vector<String> names = Strings(rs, u"table_name");
    std::set<String> got(names.begin(), names.end());
    std::set<String> want = {u"actor",     u"address",       u"category", u"city",   u"country", u"customer",
                             u"film",      u"film_actor",    u"film_category", u"film_text", u"inventory",
                             u"language",  u"payment",       u"rental",   u"staff",  u"store"};
    EXPECT_EQ(got, want) << "views such as film_list stay out";
    rs->MoveFirst();
    EXPECT_EQ(rs->Value(u"type").ToString(), u"TABLE");
    EXPECT_EQ(rs->Fields().Count(), 2);
}

TEST(MySqlReader, SakilaColumnsFoldIntoTheirTypeGroups) {
    Ref<IDBReader> reader = SakilaReader();
    Ref<ado::Recordset> film = reader->TableColumns(u"film");
    EXPECT_EQ(film->RecordCount(), 13);
    std::vector<String> order = Strings(film, u"column_name");
    ASSERT_EQ(order.size(), 13u);
    EXPECT_EQ(order.front(), u"film_id");
    EXPECT_EQ(order.back(), u"last_update");

    Col id = Column(film, u"film_id");
    EXPECT_EQ(id.ordinal, 1);
    EXPECT_EQ(id.dataType, ado::adType::UnsignedSmallInt);
    EXPECT_EQ(id.group, dtUnsignedInteger);
    EXPECT_FALSE(id.nullable);
    Col title = Column(film, u"title");
    EXPECT_EQ(title.dataType, ado::adType::WChar);
    EXPECT_EQ(title.length, 128) << "the declared length, whatever the server counts in";
    EXPECT_EQ(title.group, dtVarChar);
    Col description = Column(film, u"description");
    EXPECT_EQ(description.group, dtCharBLOB);
    EXPECT_TRUE(description.nullable);
    Col rate = Column(film, u"rental_rate");
    EXPECT_EQ(rate.dataType, ado::adType::Numeric);
    EXPECT_EQ(rate.group, dtDecimal);
    EXPECT_EQ(rate.precision, 4);
    EXPECT_EQ(rate.scale, 2);
    EXPECT_TRUE(rate.hasDefault);
    EXPECT_EQ(rate.def, u"4.99");
    Col duration = Column(film, u"rental_duration");
    EXPECT_EQ(duration.dataType, ado::adType::UnsignedTinyInt);
    EXPECT_EQ(duration.group, dtUnsignedInteger);
    EXPECT_EQ(duration.def, u"3");
    Col year = Column(film, u"release_year");
    EXPECT_EQ(year.group, dtInteger);
    Col rating = Column(film, u"rating");
    EXPECT_EQ(rating.group, dtVarChar);
    EXPECT_EQ(rating.def, u"G") << "text defaults lose their quotes";
    Col lastUpdate = Column(film, u"last_update");
    EXPECT_EQ(lastUpdate.dataType, ado::adType::DBTimeStamp);
    EXPECT_EQ(lastUpdate.group, dtDateTime);
    EXPECT_TRUE(lastUpdate.hasDefault);
    EXPECT_FALSE(lastUpdate.def.empty());
    Col original = Column(film, u"original_language_id");
    EXPECT_FALSE(original.hasDefault);
    EXPECT_EQ(original.def, u"");

    Ref<ado::Recordset> payment = reader->TableColumns(u"payment");
    EXPECT_EQ(payment->RecordCount(), 7);
    EXPECT_EQ(Column(payment, u"amount").group, dtDecimal);
    EXPECT_EQ(Column(payment, u"payment_date").group, dtDateTime);
    EXPECT_TRUE(Column(payment, u"rental_id").nullable);
    EXPECT_EQ(Column(payment, u"customer_id").group, dtUnsignedInteger);

    Ref<ado::Recordset> staff = reader->TableColumns(u"staff");
    EXPECT_EQ(staff->RecordCount(), 11);
    Col picture = Column(staff, u"picture");
    EXPECT_EQ(picture.dataType, ado::adType::Binary);
    EXPECT_EQ(picture.group, dtBinaryBLOB);
    Col active = Column(staff, u"active");
    EXPECT_EQ(active.dataType, ado::adType::TinyInt);
    EXPECT_EQ(active.precision, 1);
    EXPECT_EQ(active.group, dtBoolean);
    EXPECT_EQ(Column(staff, u"staff_id").group, dtUnsignedInteger);

    EXPECT_EQ(reader->TableColumns(u"no_such_table")->RecordCount(), 0);
}

TEST(MySqlReader, SakilaIndexesAndKeysOfRental) {
    Ref<IDBReader> reader = SakilaReader();
    Ref<ado::Recordset> ix = reader->Indexes(u"rental");
    std::vector<String> names = Strings(ix, u"index_name");
    ASSERT_EQ(names.size(), 5u);
    EXPECT_EQ(names[0], u"PRIMARY");
    std::set<String> rest(names.begin() + 1, names.end());
    EXPECT_EQ(rest, (std::set<String>{u"rental_date", u"idx_fk_inventory_id", u"idx_fk_customer_id", u"idx_fk_staff_id"}));
    ix->MoveFirst();
    while (!ix->Eof()) {
        String n = ix->Value(u"index_name").ToString();
        EXPECT_EQ(ix->Value(u"primary_key").ToBoolean(), n == u"PRIMARY") << ToUtf8(n);
        EXPECT_EQ(ix->Value(u"unique").ToBoolean(), n == u"PRIMARY" || n == u"rental_date") << ToUtf8(n);
        EXPECT_EQ(ix->Value(u"table_name").ToString(), u"rental");
        ix->MoveNext();
    }

    Ref<ado::Recordset> cols = reader->IndexColumns(u"rental_date", u"rental");
    EXPECT_EQ(Strings(cols, u"column_name"), (std::vector<String>{u"rental_date", u"inventory_id", u"customer_id"}));
    cols->MoveFirst();
    EXPECT_EQ(cols->Value(u"ordinal_position").ToLong(), 1);
    EXPECT_EQ(cols->Value(u"sort_order").ToLong(), 1);
    EXPECT_EQ(cols->Value(u"index_name").ToString(), u"rental_date");
    EXPECT_EQ(reader->IndexColumns(u"no_such_index", u"rental")->RecordCount(), 0);

    Ref<ado::Recordset> keys = reader->Keys(u"rental");
    std::vector<String> fks = Strings(keys, u"fk_name");
    EXPECT_EQ(std::set<String>(fks.begin(), fks.end()),
              (std::set<String>{u"fk_rental_customer", u"fk_rental_inventory", u"fk_rental_staff"}));
    keys->MoveFirst();
    keys->Find(u"fk_name = 'fk_rental_customer'");
    ASSERT_FALSE(keys->Eof());
    EXPECT_EQ(keys->Value(u"pk_table_name").ToString(), u"customer");
    EXPECT_EQ(keys->Value(u"pk_column_name").ToString(), u"customer_id");
    EXPECT_EQ(keys->Value(u"fk_table_name").ToString(), u"rental");
    EXPECT_EQ(keys->Value(u"fk_column_name").ToString(), u"customer_id");
    EXPECT_EQ(keys->Value(u"ordinal").ToLong(), 1);
    EXPECT_EQ(keys->Value(u"update_rule").ToString(), u"CASCADE");
    EXPECT_EQ(keys->Value(u"delete_rule").ToString(), u"NO ACTION");
    EXPECT_EQ(keys->Value(u"pk_name").ToString(), u"PRIMARY");
    EXPECT_EQ(reader->Keys(u"language")->RecordCount(), 0);

    // Servers whose version text starts below 5 (MariaDB's "10." among
    // them) keep full-text indexes in the list; newer ones leave them out.
    std::vector<String> ft = Strings(reader->Indexes(u"film_text"), u"index_name");
    bool listed = std::find(ft.begin(), ft.end(), u"idx_title_description") != ft.end();
    EXPECT_EQ(listed, ServerMajor() < 5);
}

TEST(MySqlReader, TypeGroupEdgesAndTablesWithoutKeys) {
    ScratchDb db("groups");
    db.Run(u"CREATE TABLE g (b1 TINYINT(1), b4 TINYINT(4), ub1 TINYINT(1) UNSIGNED, cur DECIMAL(19,4), "
           u"dec18 DECIMAL(18,4), v255 VARCHAR(255), v256 VARCHAR(256), f FLOAT, d DOUBLE, dt DATE, tm TIME, "
           u"bits BIT(1), vb VARBINARY(10), big BIGINT, ubig BIGINT UNSIGNED, UNIQUE KEY u_b4 (b4), KEY k_f (f))");
    Ref<DbMySqlDB> session = db.Session();
    Ref<IDBReader> reader = session->DbReader();
    Ref<ado::Recordset> cols = reader->TableColumns(u"g");
    struct Want {
        const char16_t* column;
        int32_t group;
    };
    for (Want w : std::vector<Want>{{u"b1", dtBoolean},      {u"b4", dtInteger},        {u"ub1", dtBoolean},
                                    {u"cur", dtCurrency},     {u"dec18", dtDecimal},     {u"v255", dtVarChar},
                                    {u"v256", dtCharBLOB},    {u"f", dtSingle},          {u"d", dtDouble},
                                    {u"dt", dtDate},          {u"tm", dtTime},           {u"bits", dtBoolean},
                                    {u"vb", dtBinaryBLOB},    {u"big", dtInteger},       {u"ubig", dtUnsignedInteger}})
        EXPECT_EQ(Column(cols, w.column).group, w.group) << ToUtf8(w.column);
    EXPECT_EQ(Column(cols, u"v256").length, 256);

    // No primary key: the first index listed is taken for one all the same,
    // and no column loses its nullability.
    Ref<ado::Recordset> ix = reader->Indexes(u"g");
    ASSERT_EQ(ix->RecordCount(), 2);
    ix->MoveFirst();
    EXPECT_EQ(ix->Value(u"index_name").ToString(), u"u_b4");
    EXPECT_TRUE(ix->Value(u"primary_key").ToBoolean());
    EXPECT_TRUE(ix->Value(u"unique").ToBoolean());
    ix->MoveNext();
    EXPECT_FALSE(ix->Value(u"primary_key").ToBoolean());
    EXPECT_TRUE(Column(cols, u"b4").nullable);

    // The table and column lists are kept until Refresh.
    EXPECT_EQ(reader->Tables()->RecordCount(), 1);
    db.Run(u"CREATE TABLE later (id INT PRIMARY KEY)");
    EXPECT_EQ(reader->Tables()->RecordCount(), 1);
    EXPECT_EQ(reader->TableColumns(u"later")->RecordCount(), 0);
    EXPECT_TRUE(reader->Refresh().IsEmpty());
    EXPECT_EQ(reader->Tables()->RecordCount(), 2);
    Ref<ado::Recordset> later = reader->TableColumns(u"later");
    ASSERT_EQ(later->RecordCount(), 1);
    EXPECT_FALSE(Column(later, u"id").nullable);
}

TEST(MySqlReader, VersionTextAndByteNames) {
    EXPECT_EQ(DbMySQLReader::MajorVersion(u"5.1.73"), 5);
    EXPECT_EQ(DbMySQLReader::MajorVersion(u"10.4.1"), 1) << "the first character alone";
    EXPECT_EQ(DbMySQLReader::MajorVersion(u"4.1"), 4);
    EXPECT_EQ(DbMySQLReader::BytesToString(Variant(Bytes{'a', 'b', 0, 'c'})), u"ab");
    EXPECT_EQ(DbMySQLReader::BytesToString(Variant(Bytes{'k', 'e', 'y'})), u"key");
}

TEST(MySqlReader, FailuresNameTheirRoutines) {
    // A reader nobody initialised.
    auto lone = Ref<DbMySQLReader>::New();
    DbError e = Failure([&] { lone->Indexes(u"t"); });
    EXPECT_EQ(e.Number(), err::ObjectNotSet);
    const String tail = u" (DBSession).";
    EXPECT_EQ(e.Description().substr(e.Description().size() - tail.size()), tail);
    EXPECT_TRUE(Contains(e.Source(), u"DbMySQLReader:GetVersion Ln "));
    EXPECT_TRUE(Contains(e.Source(), u"DbMySQLReader:IDBReader_Indexes Ln "));

    // A session whose database is gone: the connection failure names it.
    auto s = NewSession(u"dbname=zt_no_such_database");
    Ref<IDBReader> reader = s->DbReader();
    DbError gone = Failure([&] { reader->Tables(); });
    EXPECT_EQ(gone.Number(), static_cast<int32_t>(0x8004F001));
    EXPECT_TRUE(Contains(gone.Description(), u"Failed to connect to database 'zt_no_such_database'"));
    EXPECT_TRUE(Contains(gone.Source(), u"OpenConnection_DB Ln "));
    EXPECT_TRUE(Contains(gone.Source(), u"DbMySQLReader:IDBReader_Tables Ln "));
    // SHOW INDEX of a missing table: the server's refusal through the session.
    ScratchDb db("readfail");
    Ref<DbMySqlDB> session = db.Session();
    DbError missing = Failure([&] { session->DbReader()->IndexColumns(u"PRIMARY", u"missing"); });
    EXPECT_EQ(missing.Number(), static_cast<int32_t>(0x8004FFFF));
    EXPECT_TRUE(Contains(missing.Source(), u"DbMySQLReader:IDBReader_IndexColumns Ln "));
}

} // namespace
} // namespace zolsdk::mysqltest
