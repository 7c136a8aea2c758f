// Text values built to leave their literal, and names built to leave their
// quotes, through every road into the real server. What arrived is read by
// the mariadb command-line client, not by the library.
#include <array>
#include <cstdio>
#include <map>

#include "common/hostile_values.hpp"
#include "data/data_fixture.hpp"
#include "dialects/sql_dialect.hpp"
#include "support/replace_text.hpp"

namespace zolsdk::datatest {
namespace {

std::string HexOf(const String& text) {
    std::string hex;
    char buf[4];
    for (unsigned char b : ToUtf8(text)) {
        std::snprintf(buf, sizeof buf, "%02X", b);
        hex += buf;
    }
    return hex;
}

// The output of one statement through the mariadb client, tab-separated.
std::string Client(const ScratchDb& db, const std::string& sql) {
    const std::string attrs = ToUtf8(mysqltest::ServerAttributes());
    auto attr = [&](const char* key) { return ToUtf8(SessionAttributeValue(FromUtf8(attrs), FromUtf8(key))); };
    const std::string port = attr("port").empty() ? "3306" : attr("port");
    const std::string cmd = "mariadb -N -B -h" + attr("dblocation") + " -P" + port + " -u" + attr("username") +
                            " -p" + attr("password") + " " + ToUtf8(db.Name()) + " -e \"" + sql + "\" 2>&1";
    std::string out;
    FILE* p = ::popen(cmd.c_str(), "r");
    if (!p) return "(no client)";
    std::array<char, 4096> buf{};
    while (size_t n = std::fread(buf.data(), 1, buf.size(), p)) out.append(buf.data(), n);
    ::pclose(p);
    return out;
}

// id -> HEX(txt) of every row of `table`.
std::map<int, std::string> Stored(const ScratchDb& db, const std::string& table) {
    std::map<int, std::string> rows;
    const std::string out = Client(db, "SELECT id, HEX(txt) FROM " + table + " ORDER BY id");
    size_t at = 0;
    while (at < out.size()) {
        const size_t end = out.find('\n', at);
        const std::string line = out.substr(at, end - at);
        at = end == std::string::npos ? out.size() : end + 1;
        const size_t tab = line.find('\t');
        if (tab == std::string::npos) {
            ADD_FAILURE() << "client said: " << line;
            continue;
        }
        rows[std::stoi(line.substr(0, tab))] = line.substr(tab + 1);
    }
    return rows;
}

class HostileValuesOnMariaDb : public ::testing::Test {
protected:
    void SetUp() override {
        db_ = std::make_unique<ScratchDb>("hostile");
        for (const char* t : {"src", "dst", "byrow", "bound"})
            db_->Run(u"CREATE TABLE " + FromUtf8(t) +
                     u" (id INT PRIMARY KEY, txt VARCHAR(255), memo LONGTEXT) CHARACTER SET utf8mb4");
        values_ = zoltest::HostileValues();
        // The source holds the values of at most 255 characters (a plain
        // text column; a longer one would be large text, never cut). They go
        // in as hex, past the code under test.
        for (size_t i = 0; i < values_.size(); ++i) {
            size_t characters = 0;
            for (char16_t c : values_[i]) characters += !(c >= 0xDC00 && c <= 0xDFFF);
            if (characters <= 255) sourced_.push_back(i);
        }
        for (size_t first = 0; first < sourced_.size(); first += 100) {
            String sql = u"INSERT INTO src (id, txt, memo) VALUES ";
            for (size_t k = first; k < std::min(sourced_.size(), first + 100); ++k)
                sql += (k > first ? u"," : u"") + String(u"(") + IntText(static_cast<int32_t>(sourced_[k])) +
                       u", CONVERT(0x" + FromUtf8(HexOf(values_[sourced_[k]])) + u" USING utf8mb4), 'm')";
            db_->Run(sql);
        }
        cat_ = Catalog(*db_);
    }

    // Every row of `table` holds the head of its value that the cut keeps,
    // and no other row is there.
    void ExpectHeads(const std::string& table, const std::vector<size_t>& ids) {
        const std::map<int, std::string> rows = Stored(*db_, table);
        size_t expected = 0;
        for (size_t i : ids) {
            ++expected;
            auto it = rows.find(static_cast<int>(i));
            ASSERT_NE(it, rows.end()) << table << " lacks row " << i;
            EXPECT_EQ(it->second, HexOf(zoltest::ExpectedHead(values_[i], true))) << table << " row " << i;
        }
        EXPECT_EQ(rows.size(), expected) << table << " holds rows that were never sent";
    }

    Ref<DbDataRow> Row(const Ref<DbDataSet>& ds, size_t i, const String& text) {
        Ref<DbDataRow> row = ds->NewRow();
        row->LetItem(Variant(u"id"), Variant(static_cast<int32_t>(i)));
        row->LetItem(Variant(u"txt"), Variant(text));
        row->SetItem(Variant(u"memo"), Variant(TextBlob(u"m")));
        return row;
    }

    std::unique_ptr<ScratchDb> db_;
    Ref<DbCatalog> cat_;
    std::vector<String> values_;
    std::vector<size_t> sourced_; // the values the source table holds
};

TEST_F(HostileValuesOnMariaDb, BatchedRowAndBoundRoadsLeaveExactlyTheIntendedRows) {
    ASSERT_GT(values_.size(), 400u);
    ASSERT_GT(sourced_.size(), 300u);
    // Batched: the data set of ExportData, many rows to a statement.
    EXPECT_TRUE(cat_->ImportData(u"dst", cat_->ExportData(u"src")));
    ExpectHeads("dst", sourced_);
    // One statement a row, as text (mode 0) and with the large column bound (mode 1).
    for (const auto& [table, mode] : {std::pair{u"byrow", 0}, std::pair{u"bound", 1}}) {
        auto ds = Ref<DbDataSet>::New();
        ds->Init(cat_, table, u"", u"", mode);
        for (size_t i = 0; i < values_.size(); i += 3) EXPECT_TRUE(cat_->ImportDataRow(table, ds, Row(ds, i, values_[i])));
    }
    std::vector<size_t> everyThird;
    for (size_t i = 0; i < values_.size(); i += 3) everyThird.push_back(i);
    ExpectHeads("byrow", everyThird);
    ExpectHeads("bound", everyThird);
}

TEST_F(HostileValuesOnMariaDb, UpdatesAndCriteriaMatchOnlyTheRowsTheyMean) {
    ASSERT_TRUE(cat_->ImportData(u"dst", cat_->ExportData(u"src")));
    Ref<IDbSqlBuilder> builder = cat_->Session()->DbSqlBuilder();
    auto ds = Ref<DbDataSet>::New();
    ds->Init(cat_, u"dst", u"txt,memo", u"", 0); // the key stays as it is
    for (size_t k = 0; k < sourced_.size(); k += 13) {
        const size_t i = sourced_[k];
        const String head = zoltest::ExpectedHead(values_[i], true);
        size_t sameHead = 0;
        for (size_t j : sourced_) sameHead += zoltest::ExpectedHead(values_[j], true) == head;
        // Criteria: the value's rows and no other.
        auto found = Ref<DbDataSet>::New();
        found->Init(cat_, u"dst", u"", builder->CriteriaClause(u"dst", u"txt", dtVarChar, dcoEqualto,
                                                             ReplaceAll(values_[i], u",", u"%2C")), 0);
        EXPECT_EQ(found->Rows()->Count(), static_cast<int32_t>(sameHead)) << "value " << i;
        // Update matched on the hostile text: only those rows take the new memo.
        Ref<DbDataRow> row = ds->NewRow();
        row->LetItem(Variant(u"txt"), Variant(values_[i]));
        row->SetItem(Variant(u"memo"), Variant(TextBlob(u"hit " + IntText(static_cast<int32_t>(i)))));
        EXPECT_TRUE(cat_->UpdateDataByAttribute(u"dst", ds, row, u"txt", ReplaceAll(values_[i], u",", u"%2C")));
        EXPECT_EQ(Client(*db_, "SELECT COUNT(*) FROM dst WHERE memo = 'hit " + std::to_string(i) + "'"),
                  std::to_string(sameHead) + "\n");
    }
    EXPECT_EQ(Client(*db_, "SELECT COUNT(*) FROM dst"), std::to_string(sourced_.size()) + "\n");
}

TEST_F(HostileValuesOnMariaDb, NamesThatCloseTheirQuotesReachOnlyTheirOwnTable) {
    // A table whose name ends the back-tick early, next to the one it names.
    const String canary = u"canary";
    const String hostile = u"canary` -- x";
    db_->Run(u"CREATE TABLE canary (id INT PRIMARY KEY, txt VARCHAR(10))");
    db_->Run(u"INSERT INTO canary VALUES (1, 'keep'), (2, 'keep')");
    db_->Run(u"CREATE TABLE `canary`` -- x` (id INT PRIMARY KEY, txt VARCHAR(10))");
    db_->Run(u"INSERT INTO `canary`` -- x` VALUES (1, 'own')");
    EXPECT_EQ(cat_->GetDataRowCount(hostile), 1);
    EXPECT_EQ(cat_->GetDataRowCount(canary), 2);
    cat_->ClearData(hostile);
    EXPECT_EQ(Client(*db_, "SELECT COUNT(*) FROM canary"), "2\n");
    EXPECT_EQ(Client(*db_, "SELECT COUNT(*) FROM \\`canary\\`\\` -- x\\`"), "0\n");
    // The database of the same kind: dropping the hostile name leaves the other.
    const String other = db_->Name() + u"_canary";
    mysqltest::RunOnServer(u"CREATE DATABASE `" + other + u"`");
    auto hostileDb = Ref<DbCatalog>::New();
    hostileDb->Init(u"dbname=" + other + u"` -- x;" + mysqltest::ServerAttributes());
    hostileDb->Drop();
    EXPECT_EQ(Client(*db_, "SHOW DATABASES LIKE '" + ToUtf8(other) + "'"), ToUtf8(other) + "\n");
    mysqltest::RunOnServer(u"DROP DATABASE `" + other + u"`");
}

} // namespace
} // namespace zolsdk::datatest
