#pragma once
// What the data-path tests share: catalogs on scratch databases of the
// real server, reading back what reached a table through a connection of
// the tests' own, and the state of a catalog's connection scope.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/failure.hpp"
#include "migration/row_compare.hpp"
#include "mysql/mysql_fixture.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zolsdk::datatest {

using mysqltest::Contains;
using mysqltest::Failure;
using mysqltest::ScratchDb;

inline Ref<DbCatalog> Catalog(const ScratchDb& db) {
    auto c = Ref<DbCatalog>::New();
    c->Init(u"dbname=" + db.Name() + u";" + mysqltest::ServerAttributes());
    return c;
}

// The first value of a statement run on the test's own connection, as text
// ("NULL" for a null).
inline std::string Scalar(const ScratchDb& db, const String& sql) {
    auto c = mysqltest::ServerConnection(db.Name());
    Ref<ado::Recordset> rs = c->Execute(sql);
    std::string out = "(no row)";
    if (!(rs->Eof() && rs->Bof())) {
        rs->MoveFirst();
        out = migrationtest::Canonical(rs->Fields().Item(0).Value());
    }
    c->Close();
    return out;
}

// One column of a statement's rows, in the statement's order.
inline std::vector<std::string> Column(const ScratchDb& db, const String& sql) {
    auto c = mysqltest::ServerConnection(db.Name());
    Ref<ado::Recordset> rs = c->Execute(sql);
    std::vector<std::string> out;
    if (!(rs->Eof() && rs->Bof())) {
        rs->MoveFirst();
        for (; !rs->Eof(); rs->MoveNext()) out.push_back(migrationtest::Canonical(rs->Fields().Item(0).Value()));
    }
    c->Close();
    return out;
}

inline int64_t RowCount(const ScratchDb& db, const String& table) {
    return std::stoll(Scalar(db, u"SELECT COUNT(*) FROM `" + table + u"`"));
}

// True while a BeginTransaction bracket holds the catalog's connection open.
inline bool BracketOpen(const Ref<DbCatalog>& catalog) {
    return !catalog->Session().As<DbMySqlDB>()->ActiveConnection().IsNothing();
}

using zoltest::HasTrace;

inline Ref<DbBlob> TextBlob(const String& text) {
    auto b = Ref<DbBlob>::New();
    b->text(text);
    return b;
}

inline Ref<DbBlob> ByteBlob(const Bytes& bytes) {
    auto b = Ref<DbBlob>::New();
    b->DataBytes(bytes);
    return b;
}

inline Bytes Pattern(size_t n, uint8_t seed) {
    Bytes b(n);
    for (size_t i = 0; i < n; ++i) b[i] = static_cast<uint8_t>(seed + i * 7);
    return b;
}

// The bytes as the tests' canonical text: "0x" and lower-case hex.
inline std::string Hex(const Bytes& b) { return migrationtest::Canonical(Variant(b)); }

} // namespace zolsdk::datatest
