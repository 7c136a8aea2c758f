// Every byte through the MySQL engine: text holding every two-byte
// character, samples of three- and four-byte ones, NULs, quotes and
// back-slashes, and binary values at the sizes where lengths go wrong,
// written with bound parameters, read back through the library and copied
// table to table. What reached the server is judged by the command-line
// client, from HEX() and SHA2() computed by the server itself.
#include <openssl/evp.h>

#include <cstdio>

#include "dataflow/dataflow_fixture.hpp"

namespace zolsdk::mysqltest {
namespace {

using dataflowtest::Catalog;

// Lines the `mariadb` client prints for a statement (tabs between fields).
std::vector<std::string> ClientLines(const ScratchDb& db, const std::string& sql) {
    std::string port = ToUtf8(Attr(u"port"));
    std::string cmd = "mariadb --protocol=tcp -N -B -h'" + ToUtf8(Attr(u"dblocation")) + "' -P" +
                      (port.empty() ? std::string("3306") : port) + " -u'" + ToUtf8(Attr(u"username")) + "' -p'" +
                      ToUtf8(Attr(u"password")) + "' '" + ToUtf8(db.Name()) + "' -e \"" + sql + "\" 2>&1";
    std::vector<std::string> lines;
    if (FILE* p = ::popen(cmd.c_str(), "r")) {
        std::string line;
        for (int c; (c = std::fgetc(p)) != EOF;) {
            if (c == '\n') lines.push_back(std::exchange(line, {}));
            else line += static_cast<char>(c);
        }
        EXPECT_EQ(::pclose(p), 0) << sql;
    }
    return lines;
}

std::string Hex(std::string_view bytes) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char b : bytes) {
        out += kDigits[b >> 4];
        out += kDigits[b & 15];
    }
    return out;
}

std::string Sha256Hex(const Bytes& b) {
    unsigned char md[EVP_MAX_MD_SIZE];
    unsigned int n = 0;
    EVP_Digest(b.data(), b.size(), md, &n, EVP_sha256(), nullptr);
    std::string hex = Hex(std::string_view(reinterpret_cast<const char*>(md), n));
    for (char& c : hex) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return hex;
}

bool HasFourByteCharacter(const String& s) {
    for (char16_t c : s)
        if (c >= 0xD800 && c <= 0xDFFF) return true;
    return false;
}

// The texts under test, one a row. Rows 0..29 hold U+0080..U+07FF, 64
// characters each, so every two-byte character is there (among them those
// whose code ends in D8..DB, which a driver once cut the next character off).
std::vector<String> Texts() {
    std::vector<String> t;
    for (char16_t first = 0x80; first < 0x800; first += 64) {
        String s;
        for (char16_t c = first; c < first + 64; ++c) s += c;
        t.push_back(s);
    }
    t.push_back(u"Último Pau-De-Arara");
    t.push_back(u"ØÙÚÛ טיךכ Әә");
    t.push_back(u"\u0800\u20AC\u4E2D\u6587\uD7FF\uE000\uFFFD");      // three bytes each
    t.push_back(u"\U00010000 \U0001F600 \U00020BB7 \U0010FFFF end"); // four bytes each
    t.push_back(String(u"a\0b\0", 4));                                 // NULs inside and last
    t.push_back(u"it's \"quoted\" `named` ''doubled''");
    t.push_back(u"\\ \\\\ \\' \\n \\0 ends in \\");
    t.push_back(u"row;mark %3B %3%B ;");
    t.push_back(u"  blanks kept  ");
    t.push_back(u"");
    return t;
}

Ref<Collection> Params(std::initializer_list<std::pair<int32_t, Variant>> values) {
    auto list = Ref<Collection>::New();
    for (const auto& [type, value] : values) {
        auto p = Ref<ado::Parameter>::New();
        p->Type(type);
        p->Value(value);
        list->Add(Variant(p));
    }
    return list;
}

// The rows whose digests differ, shortened; empty when all agree.
std::string Differences(const std::vector<std::string>& got, const std::vector<std::string>& want) {
    std::string out;
    if (got.size() != want.size()) out += std::to_string(got.size()) + " rows, not " + std::to_string(want.size()) + "; ";
    for (size_t i = 0; i < std::min(got.size(), want.size()); ++i)
        if (got[i] != want[i]) out += got[i].substr(0, 48) + " is not " + want[i].substr(0, 48) + "; ";
    return out;
}

// HEX of each row's column as the server holds it, by id.
std::vector<std::string> ServerHex(const ScratchDb& db, const std::string& table, const std::string& column) {
    return ClientLines(db, "SELECT CONCAT(id, ':', COALESCE(HEX(" + column + "), 'null')) FROM " + table + " ORDER BY id");
}

TEST(MySqlValues, TextOfEveryTwoByteCharacterAndSamplesPassesWhole) {
    ScratchDb src("txt_src"), dst("txt_dst");
    const std::vector<String> texts = Texts();
    const std::string ddl = "(id INT PRIMARY KEY, v VARCHAR(255), s LONGTEXT) DEFAULT CHARSET utf8mb4";
    src.Run(FromUtf8("CREATE TABLE t " + ddl));
    auto writer = src.Session();
    for (size_t i = 0; i < texts.size(); ++i)
        writer->ExecuteNoQueryEx(u"INSERT INTO t VALUES (?, ?, ?)",
                                 Params({{ado::adType::Integer, Variant(static_cast<int32_t>(i))},
                                         {ado::adType::VarWChar, Variant(texts[i])},
                                         {ado::adType::LongVarChar, Variant(texts[i])}}));

    // What the server holds is the UTF-8 of each text, byte for byte.
    std::vector<std::string> expected;
    for (size_t i = 0; i < texts.size(); ++i) expected.push_back(std::to_string(i) + ":" + Hex(ToUtf8(texts[i])));
    ASSERT_EQ(Differences(ServerHex(src, "t", "v"), expected), "");
    ASSERT_EQ(Differences(ServerHex(src, "t", "s"), expected), "");

    // Read back through the library: the same UTF-16, field types of a
    // short and a long text.
    Ref<ado::Recordset> rs = writer->Execute(u"SELECT id, v, s FROM t ORDER BY id");
    EXPECT_EQ(rs->Fields().Item(1).Type(), ado::adType::VarWChar);
    EXPECT_EQ(rs->Fields().Item(2).Type(), ado::adType::LongVarWChar);
    size_t seen = 0;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext(), ++seen) {
        const String& want = texts[static_cast<size_t>(rs->Fields().Item(0).Value().ToLong())];
        EXPECT_EQ(rs->Fields().Item(1).Value().ToString(), want) << "row " << seen;
        EXPECT_EQ(rs->Fields().Item(2).Value().ToString(), want) << "row " << seen;
    }
    EXPECT_EQ(seen, texts.size());

    // Copied by the catalog: the batched text road (ExportData) and the
    // bound road (a data set of fill mode 1), into a utf8mb4 table the test
    // makes, which holds every text. Where a value travels inside statement
    // text the library's documented literal rules apply and the digests show
    // them: a NUL is written as the two characters \0 (every road but a bound
    // long text), and a value that really holds %3%B loses its % in a batch
    // (the batch's own escape). A data row keeps an empty long text as a null.
    enum Road { Batched, Bound };
    auto expect = [&](Road road, bool longColumn) {
        std::vector<std::string> out;
        for (size_t i = 0; i < texts.size(); ++i) {
            String t = texts[i];
            if (longColumn && t.empty()) {
                out.push_back(std::to_string(i) + ":null");
                continue;
            }
            if (!(road == Bound && longColumn))
                for (size_t at = t.find(u'\0'); at != String::npos; at = t.find(u'\0', at + 2)) t.replace(at, 1, u"\\0");
            if (road == Batched)
                for (size_t at = t.find(u"%3%B"); at != String::npos; at = t.find(u"%3%B", at + 3)) t.replace(at, 4, u"%3B");
            out.push_back(std::to_string(i) + ":" + Hex(ToUtf8(t)));
        }
        return out;
    };
    Ref<DbCatalog> from = Catalog(src), to = Catalog(dst);
    dst.Run(FromUtf8("CREATE TABLE batched " + ddl));
    dst.Run(FromUtf8("CREATE TABLE bound " + ddl));
    EXPECT_TRUE(to->ImportData(u"batched", from->ExportData(u"t")));
    auto ds = Ref<DbDataSet>::New();
    ds->Init(from, u"t", u"", u"", 1);
    EXPECT_TRUE(to->ImportData(u"bound", ds));
    EXPECT_EQ(Differences(ServerHex(dst, "batched", "v"), expect(Batched, false)), "");
    EXPECT_EQ(Differences(ServerHex(dst, "batched", "s"), expect(Batched, true)), "");
    EXPECT_EQ(Differences(ServerHex(dst, "bound", "v"), expect(Bound, false)), "");
    EXPECT_EQ(Differences(ServerHex(dst, "bound", "s"), expect(Bound, true)), "");

    // A table the session makes itself (ImportTable) is utf8 of up to three
    // bytes a character: it holds every text but the one with four-byte
    // characters, and those are the rows copied into it.
    to->ImportTable(from->Tables()->Item(Variant(u"t")));
    std::vector<std::string> holdable, batched = expect(Batched, true);
    for (size_t i = 0; i < texts.size(); ++i) {
        if (HasFourByteCharacter(texts[i])) src.Run(u"DELETE FROM t WHERE id = " + IntText(static_cast<int64_t>(i)));
        else holdable.push_back(batched[i]);
    }
    EXPECT_TRUE(to->ImportData(u"t", from->ExportData(u"t")));
    EXPECT_EQ(Differences(ServerHex(dst, "t", "s"), holdable), "");
}

TEST(MySqlValues, BinaryValuesPassWholeWhereTheLibraryKeepsThem) {
    ScratchDb src("bin_src"), dst("bin_dst");
    src.Run(u"CREATE TABLE b (id INT PRIMARY KEY, v LONGBLOB)");
    dst.Run(u"CREATE TABLE b (id INT PRIMARY KEY, v LONGBLOB)");
    const size_t sizes[] = {0, 1, 255, 256, size_t{1} << 20};
    std::vector<Bytes> values;
    for (size_t n : sizes) {
        Bytes v(n);
        // Every byte value, NUL and 0xFF included, in an order that differs
        // from row to row; a value of one byte is a lone NUL.
        for (size_t i = 0; i < n; ++i) v[i] = static_cast<uint8_t>((i * 7 + n) & 0xFF);
        if (n == 1) v[0] = 0;
        values.push_back(std::move(v));
    }
    auto writer = src.Session();
    for (size_t i = 0; i < values.size(); ++i)
        writer->ExecuteNoQueryEx(u"INSERT INTO b VALUES (?, ?)",
                                 Params({{ado::adType::Integer, Variant(static_cast<int32_t>(i))},
                                         {ado::adType::LongVarBinary, Variant(values[i])}}));
    // Small values by their HEX, the MiB one by its SHA-256, computed by
    // the server and, for the expectation, here.
    auto digest = [](const Bytes& b) {
        return std::to_string(b.size()) + ":" +
               (b.size() > 256 ? Sha256Hex(b) : Hex(std::string_view(reinterpret_cast<const char*>(b.data()), b.size())));
    };
    auto serverDigests = [](const ScratchDb& db) {
        return ClientLines(db, "SELECT CONCAT(LENGTH(v), ':', IF(LENGTH(v) > 256, SHA2(v, 256), HEX(v))) FROM b ORDER BY id");
    };
    std::vector<std::string> written = serverDigests(src);
    ASSERT_EQ(written.size(), values.size());
    for (size_t i = 0; i < values.size(); ++i) EXPECT_EQ(written[i], digest(values[i])) << "row " << i;

    // A recordset holds the bytes whole (a long binary field).
    Ref<ado::Recordset> rs = writer->Execute(u"SELECT v FROM b ORDER BY id");
    EXPECT_EQ(rs->Fields().Item(0).Type(), ado::adType::LongVarBinary);
    size_t row = 0;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext(), ++row)
        EXPECT_TRUE(rs->Fields().Item(0).Value().ToBytes() == values[row]) << "row " << row;
    EXPECT_EQ(row, values.size());

    // A data set's blob keeps one byte fewer than it was given: the last
    // byte arrives as 0 (that is how the library's blobs are made), so a
    // copy through bound rows carries exactly that; a blob of no bytes or
    // one counts as empty, and an empty blob is a null in a data row.
    auto ds = Ref<DbDataSet>::New();
    ds->Init(Catalog(src), u"b", u"", u"", 1);
    EXPECT_TRUE(Catalog(dst)->ImportData(u"b", ds));
    std::vector<std::string> copied = serverDigests(dst);
    ASSERT_EQ(copied.size(), values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        Bytes want = values[i];
        if (want.size() <= 1) {
            EXPECT_EQ(copied[i], "NULL") << "row " << i;
            continue;
        }
        want.back() = 0;
        EXPECT_EQ(copied[i], digest(want)) << "row " << i;
    }
}

// The reader makes a text column long by its length (above 255 characters),
// not by its server type: VARCHAR(300) is long text, TINYTEXT short. Rows
// must carry both, and copies must hold them.
TEST(MySqlValues, WideVarcharsCopyLikeLongText) {
    ScratchDb src("wide_src"), dst("wide_dst");
    const String ddl = u"(id INT PRIMARY KEY, v VARCHAR(300), c CHAR(255), t TINYTEXT, x TEXT) DEFAULT CHARSET=utf8mb4";
    src.Run(u"CREATE TABLE w " + ddl);
    dst.Run(u"CREATE TABLE w " + ddl);
    src.Run(u"INSERT INTO w VALUES (1, REPEAT('\u00e9', 300), REPEAT('c', 255), 'tiny', REPEAT('x', 1000)),"
            u" (2, '', '', '', ''), (3, NULL, NULL, NULL, NULL), (4, 'short, with a comma', 'c', 't', 'x')");
    // The reader's sizes on a "10.x" server (the old-server rule of the
    // version's first digit): declared lengths for the short types, the
    // type's maximum divided by 3 for the long ones.
    Ref<ado::Recordset> cols = src.Session()->DbReader()->TableColumns(u"w");
    std::vector<std::string> got;
    for (cols->MoveFirst(); !cols->Eof(); cols->MoveNext())
        got.push_back(ToUtf8(cols->Value(u"column_name").ToString()) + ":" +
                      ToUtf8(cols->Value(u"character_maximum_length").ToString()) + ":" +
                      ToUtf8(cols->Value(u"data_type_group").ToString()));
    EXPECT_EQ(got, (std::vector<std::string>{"id:0:3", "v:300:2", "c:255:1", "t:85:1", "x:21845:2"}));

    std::string c255;
    for (int i = 0; i < 255; ++i) c255 += "63";
    // An empty long text arrives as a null (a data row keeps it so).
    const std::string want = "1:600:0:" + c255 + ":74696E79:1000|2:NULL:NULL:::NULL|3:NULL:NULL:NULL:NULL:NULL|4:19:15:63:74:1";
    auto lines = [](const ScratchDb& db) {
        std::string all;
        for (const std::string& l : ClientLines(db, "SELECT CONCAT_WS(':', id, IFNULL(LENGTH(v), 'NULL'), "
                                                    "IFNULL(LOCATE('comma', v), 'NULL'), IFNULL(HEX(c), 'NULL'), "
                                                    "IFNULL(HEX(t), 'NULL'), IFNULL(LENGTH(x), 'NULL')) FROM w ORDER BY id"))
            all += (all.empty() ? "" : "|") + l;
        return all;
    };
    // Both roads: the batched text of ExportData and bound rows (fill mode 1).
    EXPECT_TRUE(Catalog(dst)->ImportData(u"w", Catalog(src)->ExportData(u"w")));
    EXPECT_EQ(lines(dst), want);
    dst.Run(u"DELETE FROM w");
    auto ds = Ref<DbDataSet>::New();
    ds->Init(Catalog(src), u"w", u"", u"", 1);
    EXPECT_TRUE(Catalog(dst)->ImportData(u"w", ds));
    EXPECT_EQ(lines(dst), want);
}

} // namespace
} // namespace zolsdk::mysqltest
