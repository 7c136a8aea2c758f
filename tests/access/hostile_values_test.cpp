// Text values built to leave their literal, and names built to leave their
// brackets, written into a real Access file through the row, bound, update
// and criteria roads. What arrived is read by mdbtools' mdb-export, not by
// the library.
#include <array>
#include <cstdio>
#include <map>

#include "access/access_fixture.hpp"
#include "common/hostile_values.hpp"
#include "support/replace_text.hpp"
#include "zolsdk/dialects/sql_builder.hpp"

namespace zolsdk::accesstest {
namespace {

std::string Shell(const std::string& cmd) {
    std::string out;
    FILE* p = ::popen((cmd + " 2>&1").c_str(), "r");
    if (!p) return out;
    std::array<char, 4096> buf{};
    while (size_t n = std::fread(buf.data(), 1, buf.size(), p)) out.append(buf.data(), n);
    ::pclose(p);
    return out;
}

// id -> txt of every row, as mdb-export writes them ("|" between fields).
std::map<int, std::string> Exported(const std::filesystem::path& file, const std::string& table) {
    std::map<int, std::string> rows;
    const std::string out = Shell("mdb-export -H -Q -d '|' '" + file.string() + "' '" + table + "'");
    size_t at = 0;
    while (at < out.size()) {
        const size_t end = out.find('\n', at);
        const std::string line = out.substr(at, end - at);
        at = end == std::string::npos ? out.size() : end + 1;
        const size_t bar = line.find('|');
        if (bar == std::string::npos) {
            ADD_FAILURE() << "mdb-export said: " << line;
            continue;
        }
        const size_t bar2 = line.find('|', bar + 1);
        rows[std::stoi(line.substr(0, bar))] = line.substr(bar + 1, bar2 - bar - 1);
    }
    return rows;
}

String Encoded(const String& v) { return ReplaceAll(v, u",", u"%2C"); }

// What mdb-export prints for a text: it knows UCS-2 only and writes each
// half of a surrogate pair as "?".
std::string AsExported(const String& text) {
    String s = text;
    for (char16_t& c : s)
        if (c >= 0xD800 && c <= 0xDFFF) c = u'?';
    return ToUtf8(s);
}

class HostileValuesInAccess : public ::testing::Test {
protected:
    void SetUp() override {
        cat_ = Catalog(w_.Attrs("hostile.mdb"));
        cat_->Create();
        for (const char* t : {"byrow", "bound"})
            cat_->Session()->ExecuteNoQuery(u"CREATE TABLE " + FromUtf8(t) +
                                            u" (id INTEGER PRIMARY KEY, txt VARCHAR(255), memo LONGTEXT)");
        const std::vector<String> all = zoltest::HostileValues();
        for (size_t i = 0; i < all.size(); i += 7) values_.push_back(all[i]);
    }

    Ref<DbDataRow> Row(const Ref<DbDataSet>& ds, size_t i, const String& text, const String& memo) {
        Ref<DbDataRow> row = ds->NewRow();
        row->LetItem(Variant(u"id"), Variant(static_cast<int32_t>(i)));
        row->LetItem(Variant(u"txt"), Variant(text));
        auto blob = Ref<DbBlob>::New();
        blob->text(memo);
        row->SetItem(Variant(u"memo"), Variant(blob));
        return row;
    }

    Workspace w_;
    Ref<DbCatalog> cat_;
    std::vector<String> values_;
};

TEST_F(HostileValuesInAccess, RowBoundUpdateAndCriteriaRoadsKeepEveryValueInItsLiteral) {
    ASSERT_GT(values_.size(), 50u);
    for (const auto& [table, mode] : {std::pair{u"byrow", 0}, std::pair{u"bound", 1}}) {
        auto ds = Ref<DbDataSet>::New();
        ds->Init(cat_, table, u"", u"", mode);
        for (size_t i = 0; i < values_.size(); ++i)
            EXPECT_TRUE(cat_->ImportDataRow(table, ds, Row(ds, i, values_[i], u"m")));
    }
    Ref<IDbSqlBuilder> builder = cat_->Session()->DbSqlBuilder();
    auto ds = Ref<DbDataSet>::New();
    ds->Init(cat_, u"byrow", u"txt,memo", u"", 0); // the key stays as it is
    for (size_t i = 0; i < values_.size(); i += 5) {
        const String head = zoltest::ExpectedHead(values_[i], false);
        size_t sameHead = 0;
        for (const String& v : values_) sameHead += zoltest::ExpectedHead(v, false) == head;
        auto found = Ref<DbDataSet>::New();
        found->Init(cat_, u"byrow", u"", builder->CriteriaClause(u"byrow", u"txt", dtVarChar, dcoEqualto, Encoded(values_[i])), 0);
        EXPECT_EQ(found->Rows()->Count(), static_cast<int32_t>(sameHead)) << "value " << i;
        Ref<DbDataRow> row = ds->NewRow();
        row->LetItem(Variant(u"txt"), Variant(values_[i]));
        auto memo = Ref<DbBlob>::New();
        memo->text(u"hit " + IntText(static_cast<int32_t>(i)));
        row->SetItem(Variant(u"memo"), Variant(memo));
        EXPECT_TRUE(cat_->UpdateDataByAttribute(u"byrow", ds, row, u"txt", Encoded(values_[i])));
    }
    cat_.Release(); // the file is closed before another program reads it
    for (const char* table : {"byrow", "bound"}) {
        const std::map<int, std::string> rows = Exported(w_.File("hostile.mdb"), table);
        EXPECT_EQ(rows.size(), values_.size()) << table;
        for (size_t i = 0; i < values_.size(); ++i)
            EXPECT_EQ(rows.count(static_cast<int>(i)) ? rows.at(static_cast<int>(i)) : "(missing)",
                      AsExported(zoltest::ExpectedHead(values_[i], false)))
                << table << " row " << i;
    }
    const std::string memos = Shell("mdb-export -H -Q -d '|' '" + w_.File("hostile.mdb").string() + "' byrow");
    for (size_t i = 0; i < values_.size(); i += 5)
        EXPECT_NE(memos.find("|hit " + std::to_string(i) + "\n"), std::string::npos) << "row " << i;
}

TEST_F(HostileValuesInAccess, NamesJetCannotHoldAreRefusedBeforeAnyStatement) {
    Ref<IDbSqlBuilder> builder = cat_->Session()->DbSqlBuilder();
    for (const char16_t* name : {u"rows]; DROP TABLE bound; --", u"x`y", u"a.b", u"[rows"}) {
        DbError e = Failure([&] { cat_->ClearData(name); });
        EXPECT_EQ(e.Number(), err::InvalidCall) << ToUtf8(name);
        EXPECT_TRUE(Contains(e.Description(), u"Jet")) << ToUtf8(e.Description());
        EXPECT_THROW(builder->CountSql(name), DbError);
    }
    EXPECT_EQ(cat_->GetDataRowCount(u"bound"), 0);
    // A database name that would leave the folder is refused.
    auto outside = Ref<DbCatalog>::New();
    outside->Init(u"dbtype=msaccess;dbname=../escape.mdb;dblocation=" + w_.Dir().Location());
    DbError e = Failure([&] { outside->Create(); });
    EXPECT_TRUE(Contains(e.Description(), u"inside dblocation")) << ToUtf8(e.Description());
    EXPECT_FALSE(std::filesystem::exists(w_.File("hostile.mdb").parent_path().parent_path() / "escape.mdb"));
}

} // namespace
} // namespace zolsdk::accesstest
