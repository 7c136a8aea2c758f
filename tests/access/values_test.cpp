// Values that reach an Access file exactly as given, judged twice: read
// back through the library, and read by mdbtools' mdb-export, a reader that
// shares nothing with the provider. Also: Jet 3 files read in their code
// page, Singles as their shortest text, primary keys keep their names, and
// rows written beside the driver are what its statements see next.
#include <cstdio>
#include <map>

#include "access/access_fixture.hpp"
#include "platform/ado/connection.hpp"

namespace zolsdk::accesstest {
namespace {

std::string N(const String& s) { return ToUtf8(s); }

// Texts that a rewriting of statement text would change: operators, words
// of Jet's SQL, quotes, brackets, wildcards, and every character from
// U+0080 to U+07FF in slices that fit a VARCHAR(255).
std::vector<String> Texts() {
    std::vector<String> v = {u"AA^AA", u"2 ^ 3 ^ 4", u"Any Colour You Like", u"Like", u"7 Mod 2", u"Mod",
                             u"a\\b", u"2 \\ 3", u"ends in \\", u"it's", u"''", u"say \"hi\"", u"[t]", u"]x[",
                             u"#1/2/2003#", u"100%", u"*.*", u"why?", u"R&D", u"a & b", u"&H10",
                             u"SELECT * FROM t WHERE 1=1; DROP TABLE t", u"NULL", u"TRUE", u"-1", u"LIKE 'x%'",
                             u"{fn NOW()}", u"x IS NULL OR", u"  blanks  ", u""};
    String all;
    for (char16_t c = 0x80; c <= 0x7FF; ++c) all += c;
    for (size_t i = 0; i < all.size(); i += 240) v.push_back(all.substr(i, 240));
    return v;
}

// Rows of (id, s, t): each text is followed in its row by another one, as
// "Like" must be to show the rewriting.
struct Row {
    int32_t id;
    String s, t;
};

std::vector<Row> Rows() {
    std::vector<String> texts = Texts();
    std::vector<Row> rows;
    for (size_t i = 0; i < texts.size(); ++i)
        rows.push_back({static_cast<int32_t>(i + 1), texts[i], texts[texts.size() - 1 - i]});
    return rows;
}

String Literal(const String& s) {
    String out = u"'";
    for (char16_t c : s) {
        out += c;
        if (c == u'\'') out += u'\'';
    }
    return out + u"'";
}

const char16_t* const kCreate = u"CREATE TABLE [x] ([id] INTEGER, [s] VARCHAR(255), [t] VARCHAR(255))";

// mdb-export's CSV of a table: rows of fields, quotes doubled inside "...".
std::vector<std::vector<String>> Exported(const std::filesystem::path& file, const std::string& table) {
    std::string cmd = "mdb-export -H -q '\"' '" + file.string() + "' '" + table + "' 2>&1";
    FILE* p = ::popen(cmd.c_str(), "r");
    std::string out;
    char buf[4096];
    size_t n;
    while (p && (n = std::fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
    int rc = p ? ::pclose(p) : -1;
    EXPECT_EQ(rc, 0) << out;
    std::vector<std::vector<String>> rows(1);
    std::string field;
    bool quoted = false, any = false;
    for (size_t i = 0; i < out.size(); ++i) {
        char c = out[i];
        if (quoted) {
            if (c == '"' && i + 1 < out.size() && out[i + 1] == '"') { field += '"'; ++i; }
            else if (c == '"') quoted = false;
            else field += c;
        } else if (c == '"') {
            quoted = any = true;
        } else if (c == ',') {
            rows.back().push_back(FromUtf8(field));
            field.clear();
        } else if (c == '\n') {
            rows.back().push_back(FromUtf8(field));
            field.clear();
            rows.emplace_back();
        } else {
            field += c;
        }
    }
    rows.pop_back();
    return rows;
}

// The table read back three ways (the file's own cursor, a statement through
// the driver, mdb-export) equals what was written.
// The library's import roads carry a row as text in which an empty text
// and the text "NULL" both stand for a null (`emptyAsNull`): those arrive
// as null on every engine.
void ExpectRowsArrived(const Workspace& w, const std::string& file, const std::vector<Row>& want, bool emptyAsNull = false) {
    auto text = [&](const Variant& v) { return emptyAsNull && v.IsNull() ? String() : v.ToString(); };
    std::vector<Row> wanted = want;
    if (emptyAsNull)
        for (Row& r : wanted) {
            if (r.s == u"NULL") r.s.clear();
            if (r.t == u"NULL") r.t.clear();
        }
    auto c = Ref<ado::Connection>::New();
    c->Open(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + FromUtf8(w.File(file).string()));
    for (const char16_t* sql : {u"SELECT * FROM [x]", u"SELECT [id], [s], [t] FROM [x] WHERE [id] > 0 ORDER BY [id]"}) {
        SCOPED_TRACE(N(sql));
        std::map<int32_t, Row> got;
        for (Ref<ado::Recordset> rs = c->Execute(sql); !rs->Eof(); rs->MoveNext())
            got[rs->Value(u"id").ToLong()] = {rs->Value(u"id").ToLong(), text(rs->Value(u"s")), text(rs->Value(u"t"))};
        ASSERT_EQ(got.size(), wanted.size());
        for (const Row& r : wanted) {
            EXPECT_EQ(got[r.id].s, r.s) << "row " << r.id;
            EXPECT_EQ(got[r.id].t, r.t) << "row " << r.id;
        }
    }
    // A value found by a literal: the literal is compared, not rewritten.
    for (const Row& r : wanted) {
        if (r.s.empty() || r.t.empty()) continue;
        Ref<ado::Recordset> rs = c->Execute(u"SELECT [id] FROM [x] WHERE [s] = " + Literal(r.s) + u" AND [t] = " + Literal(r.t));
        ASSERT_FALSE(rs->Eof()) << N(r.s);
        EXPECT_EQ(rs->Value(u"id").ToLong(), r.id);
    }
    c->Close();
    std::map<int32_t, std::vector<String>> exported;
    for (auto& row : Exported(w.File(file), "x")) exported[std::stoi(N(row.at(0)))] = row;
    ASSERT_EQ(exported.size(), wanted.size());
    for (const Row& r : wanted) {
        ASSERT_EQ(exported[r.id].size(), 3u);
        EXPECT_EQ(exported[r.id][1], r.s) << "mdb-export, row " << r.id;
        EXPECT_EQ(exported[r.id][2], r.t) << "mdb-export, row " << r.id;
    }
}

TEST(AccessValues, TextArrivesExactlyByEveryRoad) {
    Workspace w;
    const std::vector<Row> rows = Rows();
    auto connect = [&](const std::string& file) {
        auto cat = Catalog(w.Attrs(file));
        cat->Create();
        cat->Session()->ExecuteNoQuery(kCreate);
        return cat;
    };
    // Statement by statement with literals, and bound.
    auto text = connect("text.mdb");
    auto bound = connect("bound.mdb");
    for (const Row& r : rows) {
        text->Session()->ExecuteNoQuery(u"INSERT INTO [x] ([id], [s], [t]) VALUES (" + IntText(r.id) + u", " +
                                        Literal(r.s) + u", " + Literal(r.t) + u")");
        auto params = Ref<Collection>::New();
        params->Add(Variant(Ref<ado::Parameter>::New(u"s", ado::adType::VarWChar, 1, 255, Variant(r.s))));
        params->Add(Variant(Ref<ado::Parameter>::New(u"t", ado::adType::VarWChar, 1, 255, Variant(r.t))));
        bound->Session()->ExecuteNoQueryEx(u"INSERT INTO [x] ([id], [s], [t]) VALUES (" + IntText(r.id) + u", ?, ?)", params);
    }
    // Many rows in one statement.
    auto batch = connect("batch.mdb");
    String many = u"INSERT INTO [x] ([id], [s], [t]) VALUES ";
    for (size_t i = 0; i < rows.size(); ++i)
        many += (i ? u", (" : u"(") + IntText(rows[i].id) + u", " + Literal(rows[i].s) + u", " + Literal(rows[i].t) + u")";
    EXPECT_EQ(batch->Session()->ExecuteNoQuery(many), static_cast<int32_t>(rows.size()));
    for (const char* file : {"text.mdb", "bound.mdb", "batch.mdb"}) {
        SCOPED_TRACE(file);
        ExpectRowsArrived(w, file, rows);
    }
    // The library's import roads from that file into new ones: text
    // statements (ExportData), bound rows (fill mode 1), one row at a time.
    auto source = Catalog(w.Attrs("bound.mdb"));
    auto table = source->Tables()->Item(Variant(u"x"));
    auto copy = [&](const std::string& file) {
        auto cat = Catalog(w.Attrs(file));
        cat->Create();
        cat->ImportTable(table); // false on Access: CREATE TABLE touches no rows
        return cat;
    };
    copy("import_text.mdb")->ImportData(u"x", source->ExportData(u"x"));
    auto boundSet = Ref<DbDataSet>::New();
    boundSet->Init(source, u"x", u"", u"", 1);
    copy("import_bound.mdb")->ImportData(u"x", boundSet);
    auto single = copy("import_rows.mdb");
    auto rowSet = source->ExportData(u"x");
    for (auto row : rowSet->Rows()) EXPECT_TRUE(single->ImportDataRow(u"x", rowSet, row));
    for (const char* file : {"import_text.mdb", "import_bound.mdb", "import_rows.mdb"}) {
        SCOPED_TRACE(file);
        ExpectRowsArrived(w, file, rows, true);
    }
}

// Rows written by the file's own row calls and rows changed through the
// driver: each side sees what the other did, and a failing row says why.
TEST(AccessValues, DirectRowsAndDriverStatementsSeeEachOther) {
    Workspace w;
    auto cat = Catalog(w.Attrs("mixed.mdb"));
    cat->Create();
    auto s = cat->Session();
    s->ExecuteNoQuery(u"CREATE TABLE [m] ([id] INTEGER NOT NULL, [n] VARCHAR(5), [v] DOUBLE, [d] DATETIME, [c] MONEY, [b] BIT)");
    s->ExecuteNoQuery(u"ALTER TABLE [m] ADD CONSTRAINT [idx_m] PRIMARY KEY ([id])");
    EXPECT_EQ(s->ExecuteNoQuery(u"INSERT INTO [m] ([id], [n], [v], [d], [c], [b]) VALUES "
                                u"(1, 'a', 0.1, #02/29/2024 13:45:10#, 12345.6789, -1), (2, 'b', -2.5E+300, #1/1/1900#, -0.5, 0)"),
              2);
    EXPECT_EQ(s->ExecuteNoQuery(u"UPDATE [m] SET [n] = 'x' WHERE [id] = 2"), 1);
    EXPECT_EQ(s->ExecuteNoQuery(u"INSERT INTO [m] ([id], [n]) VALUES (3, NULL)"), 1);
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT COUNT(*) FROM [m]", u"")), "3");
    Ref<ado::Recordset> rs = s->Execute(u"SELECT * FROM [m]");
    std::vector<std::string> got;
    for (; !rs->Eof(); rs->MoveNext()) {
        std::string line;
        for (const char16_t* f : {u"id", u"n", u"v", u"d", u"c", u"b"})
            line += (rs->Value(f).IsNull() ? std::string("NULL") : N(rs->Value(f).ToString())) + "|";
        got.push_back(line);
    }
    EXPECT_EQ(got, (std::vector<std::string>{"1|a|0.1|2024-02-29 13:45:10|12345.6789|True|",
                                             "2|x|-2.5E+300|1900-01-01|-0.5|False|", "3|NULL|NULL|NULL|NULL|False|"}));
    // A duplicate key, a text too long and a null key fail, and name the reason.
    DbError dup = Failure([&] { s->ExecuteNoQuery(u"INSERT INTO [m] ([id]) VALUES (1)"); });
    DbError tooLong = Failure([&] { s->ExecuteNoQuery(u"INSERT INTO [m] ([id], [n]) VALUES (9, '123456')"); });
    DbError nullKey = Failure([&] { s->ExecuteNoQuery(u"INSERT INTO [m] ([id], [n]) VALUES (NULL, 'z')"); });
    EXPECT_TRUE(Contains(tooLong.Description(), u"too small")) << N(tooLong.Description());
    EXPECT_FALSE(dup.Description().empty());
    EXPECT_FALSE(nullKey.Description().empty());
    EXPECT_EQ(N(s->ExecuteScalar(u"SELECT COUNT(*) FROM [m] WHERE [id] > 0", u"")), "3");
    // The primary key keeps the name it was given.
    auto c = Ref<ado::Connection>::New();
    c->Open(u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=" + FromUtf8(w.File("mixed.mdb").string()));
    Ref<ado::Recordset> pk = c->OpenSchema(ado::adSchemaPrimaryKeys, {Variant(), Variant(), Variant(u"m")});
    ASSERT_FALSE(pk->Eof());
    EXPECT_EQ(N(pk->Value(u"PK_NAME").ToString()), "idx_m");
    c->Close();
}

// Singles read back as the shortest text that gives the same float.
TEST(AccessValues, SinglesReadAsTheirShortestText) {
    Workspace w;
    auto cat = Catalog(w.Attrs("single.mdb"));
    cat->Create();
    auto s = cat->Session();
    s->ExecuteNoQuery(u"CREATE TABLE [f] ([id] INTEGER, [r] REAL)");
    const std::vector<std::pair<float, const char*>> values = {
        {-0.00035134f, "-0.00035134"}, {0.000345134f, "0.000345134"}, {3.4028235e38f, "3.4028235E+38"},
        {0.1f, "0.1"}, {16777216.0f, "1.6777216E+07"}, {1.17549435e-38f, "1.1754944E-38"}};
    for (size_t i = 0; i < values.size(); ++i) {
        auto params = Ref<Collection>::New();
        params->Add(Variant(Ref<ado::Parameter>::New(u"r", ado::adType::Single, 1, 0, Variant(values[i].first))));
        s->ExecuteNoQueryEx(u"INSERT INTO [f] ([id], [r]) VALUES (" + IntText(static_cast<int32_t>(i)) + u", ?)", params);
    }
    s->ExecuteNoQuery(u"INSERT INTO [f] ([id], [r]) VALUES (100, 1.5E-10), (101, 2.5E-10)");
    // Whole-table reads come from the file, the others through the driver.
    for (const char16_t* sql : {u"SELECT * FROM [f]", u"SELECT [id], [r] FROM [f]", u"SELECT * FROM [f] WHERE [id] < 100",
                                u"SELECT [id], [r] FROM [f] WHERE [r] < 1E+39 ORDER BY [r]"}) {
        SCOPED_TRACE(N(sql));
        Ref<ado::Recordset> rs = s->Execute(sql);
        for (; !rs->Eof(); rs->MoveNext()) {
            if (rs->Value(u"id").ToLong() >= 100) continue;
            const auto& want = values.at(static_cast<size_t>(rs->Value(u"id").ToLong()));
            EXPECT_EQ(rs->Value(u"r").Type(), VarType::Single);
            EXPECT_EQ(N(rs->Value(u"r").ToString()), want.second);
            EXPECT_EQ(rs->Value(u"r").ToSingle(), want.first);
        }
    }
    // A criterion on a Single matches the value as stored, and tiny values
    // keep their order. (The driver's copy holds the JVM's text of a float,
    // which for the smallest normal float has a digit more than the
    // shortest: that one is left out.)
    for (const auto& [value, text] : std::vector(values.begin(), values.end() - 1)) {
        EXPECT_EQ(N(s->ExecuteScalar(u"SELECT COUNT(*) FROM [f] WHERE [r] = " + FromUtf8(text), u"")), "1") << text;
    }
    Ref<ado::Recordset> tiny = s->Execute(u"SELECT [id], [r] FROM [f] WHERE [r] > 0 AND [r] < 1E-9 AND [id] >= 100 ORDER BY [r] DESC");
    std::vector<std::string> order;
    for (; !tiny->Eof(); tiny->MoveNext()) order.push_back(N(tiny->Value(u"r").ToString()));
    EXPECT_EQ(order, (std::vector<std::string>{"2.5E-10", "1.5E-10"}));
}

// A Jet 3 (Access 97) file holds text in its code page (1252 here): row N of
// Table14 holds "a", the character of byte N, "a". mdb-export judges the
// letters; the five bytes that 1252 leaves unassigned read as the control
// character of the same number, as Windows reads them.
TEST(AccessValues, Jet3TextReadsInItsCodePage) {
    Workspace w;
    const std::string file = "indexCodesV1997.mdb";
    std::filesystem::copy_file(std::string(ZOLSDK_SOURCE_DIR) + "/tests/access/data/" + file, w.File(file));
    std::filesystem::permissions(w.File(file), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    std::map<String, String> exported;
    for (auto& row : Exported(w.File(file), "Table14")) exported[row.at(0)] = row.at(1);
    auto s = Session(w.Attrs(file));
    std::map<String, String> read;
    for (const char16_t* sql : {u"SELECT * FROM [Table14]", u"SELECT [name], [data] FROM [Table14] WHERE [name] LIKE 'row%'"}) {
        SCOPED_TRACE(N(sql));
        Ref<ado::Recordset> rs = s->Execute(sql);
        for (; !rs->Eof(); rs->MoveNext()) read[rs->Value(u"name").ToString()] = rs->Value(u"data").ToString();
        int checked = 0;
        for (int b = 128; b < 256; ++b) {
            String name = u"row" + IntText(b);
            ASSERT_EQ(read.count(name), 1u) << b;
            const String& got = read[name];
            ASSERT_EQ(got.size(), 3u) << b;
            if (b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D) {
                EXPECT_EQ(got[1], static_cast<char16_t>(b));
            } else {
                EXPECT_EQ(got, exported[name]) << "byte " << b;
                EXPECT_NE(got[1], u'\uFFFD');
                ++checked;
            }
        }
        EXPECT_EQ(checked, 123);
    }
    EXPECT_EQ(read[u"row233"], u"a\u00E9a");
    EXPECT_EQ(read[u"row128"], u"a\u20ACa");
    // The file library cannot write Jet 3: a write fails and says so.
    DbError e = Failure([&] { s->ExecuteNoQuery(u"INSERT INTO [Table14] ([name], [data]) VALUES ('new', 'x')"); });
    EXPECT_TRUE(Contains(e.Description(), u"Jet 3")) << N(e.Description());
}

} // namespace
} // namespace zolsdk::accesstest
