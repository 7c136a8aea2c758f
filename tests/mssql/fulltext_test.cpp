// The full-text routines of the SQL Server session: the exact statements
// they send, in order, for each answer the server can give.
#include "mssql_support.hpp"

namespace zolsdk::mssqltest {
namespace {

const String kInstalled = u" SELECT fulltextserviceproperty('IsFulltextInstalled') AS IsInstalled ";
const String kEnabledShop = u" SELECT DATABASEPROPERTY('shop', 'IsFulltextEnabled') AS IsEnabled ";
const String kCatalogs = u" EXEC sp_help_fulltext_catalogs ";
const String kColumns = u" EXEC sp_help_fulltext_columns 'notes', 'body'";

Ref<RecordingSession> Session() {
    auto s = Ref<RecordingSession>::New();
    s->Connect(u"protocol=1;dbname=shop;dblocation=db1");
    return s;
}

using Sent = std::vector<String>;

TEST(MsSqlFullText, WithoutFullTextOnTheServerOnlyTheServerIsAsked) {
    auto s = Session();
    EXPECT_FALSE(s->IsFTSEnabled(u"Main", u"notes", u"body")) << "the catalog's name is not even looked at";
    EXPECT_TRUE(s->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_TRUE(s->DisableFTS(u"Main", u"notes", u"body"));
    EXPECT_FALSE(s->IsFeatureSupported(u"FTS"));
    EXPECT_FALSE(s->IsFeatureSupported(u"full_text_search"));
    EXPECT_EQ(s->sent, Sent(5, kInstalled));
    // Names with a fixed answer ask nothing.
    EXPECT_TRUE(s->IsFeatureSupported(u"connection_pooling"));
    EXPECT_FALSE(s->IsFeatureSupported(u"multi_row_insert"));
    EXPECT_EQ(s->sent.size(), 5u);

    auto on = Session();
    on->scalars.push_back({u"IsFulltextInstalled", u"1"});
    EXPECT_TRUE(on->IsFeatureSupported(u"Full_Text_Search"));
    on->scalars.front().second = u"yes";
    EXPECT_EQ(Failure([&] { on->IsFeatureSupported(u"fts"); }).Number(), err::TypeMismatch);
}

TEST(MsSqlFullText, DisableFtsPutsAColumnIntoANewCatalog) {
    auto s = Session();
    s->FullTextServer(/*databaseEnabled=*/false);
    s->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"Other", u"Archive"}}});
    EXPECT_TRUE(s->DisableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, u" EXEC sp_fulltext_database 'enable' ", kCatalogs,
                             u" EXEC sp_fulltext_catalog 'Main', 'create' ",
                             u" EXEC sp_fulltext_table 'notes', 'create', 'Main', 'PK_notes' ",
                             u" EXEC sp_fulltext_column 'notes', 'body', 'add' ",
                             u" EXEC sp_fulltext_table 'notes', 'activate' ",
                             u" EXEC sp_fulltext_table 'notes', 'start_change_tracking' ",
                             u" EXEC sp_fulltext_table 'notes', 'start_background_updateindex' "}));
}

TEST(MsSqlFullText, DisableFtsOnAnExistingCatalogAddsOnlyAColumnAlreadyThere) {
    // The catalog exists (names compare case-blind) and the column is in it:
    // it is added again, and the server is the judge of that.
    auto s = Session();
    s->FullTextServer(/*databaseEnabled=*/true);
    s->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"MAIN"}}});
    s->rowsets.push_back({u"sp_help_fulltext_columns", {u"FULLTEXT_COLUMN_NAME", {u"title", u"BODY"}}});
    EXPECT_TRUE(s->DisableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, kCatalogs, kColumns,
                             u" EXEC sp_fulltext_table 'notes', 'create', 'Main', 'PK_notes' ",
                             u" EXEC sp_fulltext_column 'notes', 'body', 'add' ",
                             u" EXEC sp_fulltext_table 'notes', 'activate' ",
                             u" EXEC sp_fulltext_table 'notes', 'start_change_tracking' ",
                             u" EXEC sp_fulltext_table 'notes', 'start_background_updateindex' "}));

    // The column not in it: nothing is added, the table is still activated.
    auto t = Session();
    t->FullTextServer(/*databaseEnabled=*/true);
    t->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"Main"}}});
    EXPECT_TRUE(t->DisableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(t->sent, (Sent{kInstalled, kEnabledShop, kCatalogs, kColumns,
                             u" EXEC sp_fulltext_table 'notes', 'activate' ",
                             u" EXEC sp_fulltext_table 'notes', 'start_change_tracking' ",
                             u" EXEC sp_fulltext_table 'notes', 'start_background_updateindex' "}));
}

TEST(MsSqlFullText, EnableFtsTakesAColumnOutWhenEverythingIsInPlace) {
    auto s = Session();
    s->FullTextServer(/*databaseEnabled=*/true);
    s->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"main"}}});
    s->rowsets.push_back({u"sp_help_fulltext_columns", {u"FULLTEXT_COLUMN_NAME", {u"body"}}});
    EXPECT_TRUE(s->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, kCatalogs, kColumns,
                             u" EXEC sp_fulltext_table 'notes', 'stop_background_updateindex' ",
                             u" EXEC sp_fulltext_table 'notes', 'stop_change_tracking' ",
                             u" EXEC sp_fulltext_table 'notes', 'deactivate' "}));

    // Each missing piece ends the questions there, and the answer is still true.
    auto noDb = Session();
    noDb->FullTextServer(/*databaseEnabled=*/false);
    EXPECT_TRUE(noDb->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(noDb->sent, (Sent{kInstalled, kEnabledShop}));
    auto noCatalog = Session();
    noCatalog->FullTextServer(/*databaseEnabled=*/true);
    noCatalog->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"Mainly"}}});
    EXPECT_TRUE(noCatalog->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(noCatalog->sent, (Sent{kInstalled, kEnabledShop, kCatalogs}));
    auto noColumn = Session();
    noColumn->FullTextServer(/*databaseEnabled=*/true);
    noColumn->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"Main"}}});
    EXPECT_TRUE(noColumn->EnableFTS(u"Main", u"notes", u"body"));
    EXPECT_EQ(noColumn->sent, (Sent{kInstalled, kEnabledShop, kCatalogs, kColumns}));
}

TEST(MsSqlFullText, IsFtsEnabledSwitchesTheDatabaseByTheCatalogName) {
    auto s = Session();
    s->FullTextServer(/*databaseEnabled=*/true);
    s->rowsets.push_back({u"sp_help_fulltext_columns", {u"FULLTEXT_COLUMN_NAME", {u"Body"}}});
    EXPECT_TRUE(s->IsFTSEnabled(u"True", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, u" EXEC sp_fulltext_database 'enable' ", kColumns}));

    s->sent.clear();
    s->rowsets.clear();
    EXPECT_FALSE(s->IsFTSEnabled(u"0", u"notes", u"body"));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop, u" EXEC sp_fulltext_database 'disable' ", kColumns}));

    // A catalog name that is no boolean fails, after the questions.
    s->sent.clear();
    DbError e = Failure([&] { s->IsFTSEnabled(u"Main", u"notes", u"body"); });
    EXPECT_EQ(e.Number(), err::TypeMismatch);
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSqlDB:IsFTSEnabled Ln "));
    EXPECT_EQ(s->sent, (Sent{kInstalled, kEnabledShop}));

    // A database without full-text search: false, and nothing switched.
    auto off = Session();
    off->FullTextServer(/*databaseEnabled=*/false);
    EXPECT_FALSE(off->IsFTSEnabled(u"Main", u"notes", u"body"));
    EXPECT_EQ(off->sent, (Sent{kInstalled, kEnabledShop}));
    // The database is the session's dbname, read fresh each time.
    off->Connect(u"dbname=o'brien");
    off->sent.clear();
    off->IsFTSEnabled(u"1", u"t", u"c");
    EXPECT_EQ(off->sent.at(1), u" SELECT DATABASEPROPERTY('o'brien', 'IsFulltextEnabled') AS IsEnabled ");
}

TEST(MsSqlFullText, RoutinesNoOperationCallsSendTheirOwnStatements) {
    auto s = Session();
    for (int32_t mode = 0; mode <= 5; ++mode) s->PopulateFTSCatalog(u"Main", mode);
    EXPECT_EQ(s->sent, (Sent{u" sp_fulltext_catalog 'Main', 'start_full' ",
                             u" sp_fulltext_catalog 'Main', 'start_incremental' ",
                             u" sp_fulltext_catalog 'Main', 'Rebuild' ", u" sp_fulltext_catalog 'Main', 'stop' "}));

    s->sent.clear();
    EXPECT_EQ(s->GetFTSPopulateStatus(u"Main"), 0) << "no row gives 0";
    s->scalars.push_back({u"populatestatus", u"-7"});
    EXPECT_EQ(s->GetFTSPopulateStatus(u"Main"), -7);
    EXPECT_EQ(s->sent.at(0), u" SELECT fulltextcatalogproperty('Main', 'populatestatus') AS Status ");

    // The table's name carries a closing quote and no opening one.
    s->sent.clear();
    s->rowsets.push_back({u"sp_help_fulltext_tables", {u"TABLE_NAME", {u"Notes"}}});
    EXPECT_TRUE(s->FTSCatalogTableExists(u"Main", u"notes"));
    EXPECT_FALSE(s->FTSCatalogTableExists(u"Main", u"note"));
    EXPECT_EQ(s->sent.at(0), u" EXEC sp_help_fulltext_tables 'Main',notes'");

    s->sent.clear();
    EXPECT_TRUE(s->SetFTSChangeTracking(u"notes", 3));
    EXPECT_TRUE(s->SetFTSChangeTracking(u"notes", 0));
    EXPECT_TRUE(s->sent.empty());
    EXPECT_TRUE(s->CreateFTSCatalog(u"x y"));
    EXPECT_TRUE(s->EnableDisableFTSForDB(false));
    EXPECT_EQ(s->sent, (Sent{u" EXEC sp_fulltext_catalog 'x y', 'create' ", u" EXEC sp_fulltext_database 'disable' "}));
}

TEST(MsSqlFullText, FailuresNameTheRoutinesTheyPassed) {
    // A refused statement inside DisableFTS: the routine that sent it adds
    // its line, DisableFTS itself adds none.
    auto s = Session();
    s->FullTextServer(/*databaseEnabled=*/true);
    s->failOn = u"sp_fulltext_column";
    DbError e = Failure([&] { s->DisableFTS(u"Main", u"notes", u"body"); });
    EXPECT_EQ(e.Number(), errnum::Unexpected);
    EXPECT_TRUE(Contains(e.Source(), u" => \r\nDbMsSqlDB:AddToCatalog Ln "));
    EXPECT_FALSE(Contains(e.Source(), u"DisableFTS"));
    EXPECT_TRUE(Contains(e.Description(), u"sp_fulltext_column 'notes', 'body', 'add'"));
    EXPECT_EQ(s->sent.back(), u" EXEC sp_fulltext_column 'notes', 'body', 'add' ") << "nothing after the refusal";

    // Change tracking reports under the name of the routine before it.
    auto t = Session();
    t->FullTextServer(/*databaseEnabled=*/true);
    t->rowsets.push_back({u"sp_help_fulltext_catalogs", {u"NAME", {u"Main"}}});
    t->rowsets.push_back({u"sp_help_fulltext_columns", {u"FULLTEXT_COLUMN_NAME", {u"body"}}});
    t->failOn = u"stop_change_tracking";
    e = Failure([&] { t->EnableFTS(u"Main", u"notes", u"body"); });
    String source = e.Source();
    size_t tracking = source.find(u" => \r\nDbMsSqlDB:GetFTSPopulateStatus Ln ");
    size_t enable = source.find(u" => \r\nDbMsSqlDB:EnableFTS Ln ");
    ASSERT_NE(tracking, String::npos);
    ASSERT_NE(enable, String::npos);
    EXPECT_LT(tracking, enable);
    EXPECT_FALSE(Contains(source, u"SetFTSChangeTracking"));

    auto u = Session();
    u->failOn = u"sp_help_fulltext_catalogs";
    EXPECT_TRUE(Contains(Failure([&] { u->FTSCatalogExists(u"Main"); }).Source(), u"DbMsSqlDB:FTSCatalogExists Ln "));
}

} // namespace
} // namespace zolsdk::mssqltest
