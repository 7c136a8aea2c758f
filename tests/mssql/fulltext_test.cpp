// The full-text routines of the SQL Server session: the exact statements
// they send, in order, for each answer the server can give.
#include "mssql_support.hpp"

namespace zolsdk::mssqltest {
namespace {

using Sent = std::vector<String>;
const String kInstalled = u" SELECT fulltextserviceproperty('IsFulltextInstalled') AS IsInstalled ";
const String kEnabledShop = u" SELECT DATABASEPROPERTY('shop', 'IsFulltextEnabled') AS IsEnabled ";
const String kCatalogs = u" EXEC sp_help_fulltext_catalogs ";
const String kColumns = u" EXEC sp_help_fulltext_columns 'notes', 'body'";
const String kTable = u" EXEC sp_fulltext_table 'notes', ";
const Sent kSwitchOn = {kTable + u"'activate' ", kTable + u"'start_change_tracking' ",
                        kTable + u"'start_background_updateindex' "};

// A session on a server with full-text search; `catalogs` and `columns`
// are what the server lists.
Ref<RecordingSession> Server(bool databaseEnabled, std::vector<String> catalogs, std::vector<String> columns) {
    auto s = Ref<RecordingSession>::New();
    s->Connect(u"protocol=1;dbname=shop;dblocation=db1");
    s->FullTextServer(databaseEnabled);
    s->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", std::move(catalogs)}});
    s->rowsets.push_back({u"sp_help_fulltext_columns", {u"FULLTEXT_COLUMN_NAME", std::move(columns)}});
    return s;
}

Sent Join(Sent a, const Sent& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(MsSqlFullText, WithoutFullTextOnTheServerOnlyTheServerIsAsked) {
    auto s = Ref<RecordingSession>::New();
    s->Connect(u"protocol=1;dbname=shop");
    EXPECT_FALSE(s->IsFTSEnabled(u"Main", u"notes", u"body")) << "the catalog's name is not even looked at";
    EXPECT_TRUE(s->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_TRUE(s->DisableFTS(u"Main", u"notes", u"body"));
    EXPECT_FALSE(s->IsFeatureSupported(u"FTS"));
    EXPECT_FALSE(s->IsFeatureSupported(u"full_text_search"));
    EXPECT_TRUE(s->IsFeatureSupported(u"connection_pooling")) << "asks nothing";
    EXPECT_EQ(s->sent, Sent(5, kInstalled));
    s->scalars.push_back({u"IsFulltextInstalled", u"yes"});
    EXPECT_EQ(Failure([&] { s->IsFeatureSupported(u"fts"); }).Number(), err::TypeMismatch);
}

TEST(MsSqlFullText, DisableFtsPutsAColumnIn) {
    // A new catalog on a database without full-text search yet.
    auto s = Server(false, {u"Other"}, {});
    EXPECT_TRUE(s->DisableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(s->sent, Join({kInstalled, kEnabledShop, u" EXEC sp_fulltext_database 'enable' ", kCatalogs,
                             u" EXEC sp_fulltext_catalog 'Main', 'create' ",
                             kTable + u"'create', 'Main', 'PK_notes' ", u" EXEC sp_fulltext_column 'notes', 'body', 'add' "},
                            kSwitchOn));
    // An existing catalog (names compare case-blind): the column is added
    // only when it is listed already.
    auto listed = Server(true, {u"MAIN"}, {u"title", u"BODY"});
    listed->DisableFTS(u"Main", u"notes", u"body");
    EXPECT_EQ(listed->sent, Join({kInstalled, kEnabledShop, kCatalogs, kColumns,
                                  kTable + u"'create', 'Main', 'PK_notes' ",
                                  u" EXEC sp_fulltext_column 'notes', 'body', 'add' "},
                                 kSwitchOn));
    auto unlisted = Server(true, {u"Main"}, {u"title"});
    unlisted->DisableFTS(u"Main", u"notes", u"body");
    EXPECT_EQ(unlisted->sent, Join({kInstalled, kEnabledShop, kCatalogs, kColumns}, kSwitchOn));
}

TEST(MsSqlFullText, EnableFtsTakesAColumnOutWhenEverythingIsInPlace) {
    auto s = Server(true, {u"main"}, {u"body"});
    EXPECT_TRUE(s->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, kCatalogs, kColumns, kTable + u"'stop_background_updateindex' ",
                             kTable + u"'stop_change_tracking' ", kTable + u"'deactivate' "}));
    // Each missing piece ends the questions there; the answer stays true.
    auto noDb = Server(false, {u"Main"}, {u"body"});
    EXPECT_TRUE(noDb->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(noDb->sent, (Sent{kInstalled, kEnabledShop}));
    auto noCatalog = Server(true, {u"Mainly"}, {u"body"});
    EXPECT_TRUE(noCatalog->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(noCatalog->sent, (Sent{kInstalled, kEnabledShop, kCatalogs}));
    auto noColumn = Server(true, {u"Main"}, {});
    EXPECT_TRUE(noColumn->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(noColumn->sent, (Sent{kInstalled, kEnabledShop, kCatalogs, kColumns}));
}

TEST(MsSqlFullText, IsFtsEnabledSwitchesTheDatabaseByTheCatalogName) {
    auto s = Server(true, {}, {u"Body"});
    EXPECT_TRUE(s->IsFTSEnabled(u"True", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, u" EXEC sp_fulltext_database 'enable' ", kColumns}));
    auto off = Server(true, {}, {});
    EXPECT_FALSE(off->IsFTSEnabled(u"0", u"notes", u"body"));
    EXPECT_EQ(off->sent, (Sent{kInstalled, kEnabledShop, u" EXEC sp_fulltext_database 'disable' ", kColumns}));
    // A catalog name that is no boolean fails, after the questions.
    off->sent.clear();
    DbError e = Failure([&] { off->IsFTSEnabled(u"Main", u"notes", u"body"); });
    EXPECT_EQ(e.Number(), err::TypeMismatch);
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSqlDB:IsFTSEnabled Ln "));
    EXPECT_EQ(off->sent, (Sent{kInstalled, kEnabledShop}));
    // A database without full-text search: false, nothing switched; the
    // database is the session's dbname as text, its quote doubled.
    auto none = Server(false, {}, {});
    none->Connect(u"dbname=o'brien");
    EXPECT_FALSE(none->IsFTSEnabled(u"1", u"notes", u"body"));
    EXPECT_EQ(none->sent,
              (Sent{kInstalled, u" SELECT DATABASEPROPERTY('o''brien', 'IsFulltextEnabled') AS IsEnabled "}));
}

TEST(MsSqlFullText, RoutinesNoOperationCallsSendTheirOwnStatements) {
    auto s = Server(true, {}, {});
    s->sent.clear();
    for (int32_t mode = 0; mode <= 5; ++mode) s->PopulateFTSCatalog(u"Main", mode);
    EXPECT_TRUE(s->SetFTSChangeTracking(u"notes", 3));
    EXPECT_EQ(s->sent, (Sent{u" sp_fulltext_catalog 'Main', 'start_full' ",
                             u" sp_fulltext_catalog 'Main', 'start_incremental' ",
                             u" sp_fulltext_catalog 'Main', 'Rebuild' ", u" sp_fulltext_catalog 'Main', 'stop' "}));
    EXPECT_EQ(s->GetFTSPopulateStatus(u"Main"), 0) << "no row gives 0";
    s->scalars.push_back({u"populatestatus", u"-7"});
    EXPECT_EQ(s->GetFTSPopulateStatus(u"Main"), -7);
    EXPECT_EQ(s->sent.back(), u" SELECT fulltextcatalogproperty('Main', 'populatestatus') AS Status ");
    // The table's name carries a closing quote and no opening one.
    s->rowsets.push_back({u"sp_help_fulltext_tables", {u"TABLE_NAME", {u"Notes"}}});
    EXPECT_TRUE(s->FTSCatalogTableExists(u"Main", u"notes"));
    EXPECT_EQ(s->sent.back(), u" EXEC sp_help_fulltext_tables 'Main',notes'");
    EXPECT_FALSE(s->FTSCatalogTableExists(u"Main", u"note"));
}

TEST(MsSqlFullText, FailuresNameTheRoutinesTheyPassed) {
    // DisableFTS adds no line of its own; the routine that sent the
    // statement does, and nothing is sent after the refusal.
    auto s = Server(true, {}, {});
    s->failOn = u"sp_fulltext_column";
    DbError e = Failure([&] { s->DisableFTS(u"Main", u"notes", u"body"); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSqlDB:AddToCatalog Ln "));
    EXPECT_FALSE(Contains(e.Source(), u"DisableFTS"));
    EXPECT_EQ(s->sent.back(), u" EXEC sp_fulltext_column 'notes', 'body', 'add' ");
    // Change tracking reports under the name of the routine before it.
    auto t = Server(true, {u"Main"}, {u"body"});
    t->failOn = u"stop_change_tracking";
    String source = Failure([&] { t->EnableFTS(u"Main", u"notes", u"body"); }).Source();
    size_t tracking = source.find(u" => \r\nDbMsSqlDB:GetFTSPopulateStatus Ln ");
    ASSERT_NE(tracking, String::npos);
    EXPECT_LT(tracking, source.find(u" => \r\nDbMsSqlDB:EnableFTS Ln "));
}

} // namespace
} // namespace zolsdk::mssqltest
