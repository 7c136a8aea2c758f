// A first program against the library: an XML catalog made, read and
// broken on purpose. Prints what it sees; exits 1 if anything is not as
// a user is told it will be.
#include <zolsdk/zolsdk.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>

using namespace zolsdk;

static int failures = 0;

static void Check(bool ok, const char* what) {
    std::cout << (ok ? "ok   " : "FAIL ") << what << "\n";
    if (!ok) ++failures;
}

static DbError Catch(const std::function<void()>& f) {
    try {
        f();
    } catch (const DbError& e) {
        return e;
    }
    return DbError(0, u"", u"no failure");
}

int main() {
    namespace fs = std::filesystem;
    fs::path dir = fs::temp_directory_path() / ("zolsdk-client-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    String where = FromUtf8(dir.string());

    // A new XML catalog, then the same again.
    auto cat = Ref<DbCatalog>::New();
    cat->Init(u"dbtype=msxml;dbname=new.xml;dblocation=" + where);
    Check(cat->Create(), "Create makes a new XML catalog");
    DbError again = Catch([&] { cat->Create(); });
    std::cout << "     " << ToUtf8(again.Description()) << "\n     " << ToUtf8(again.Source()) << "\n";
    Check(again.Number() == static_cast<int32_t>(0x8004F000), "a second Create fails with 0x8004F000");
    Check(again.Source().rfind(u"ZolSDK => \r\nDbMsXML:CreateDB Ln ", 0) == 0 &&
              again.Source().find(u" => \r\nDbCatalog:Create Ln ") != String::npos,
          "its Source carries the chain of both routines");

    // A schema written by hand.
    std::ofstream(dir / "shop.xml") << R"(<?xml version="1.0" encoding="utf-8"?><schema><catalog>
<tables><table table_name="Orders"/><table table_name="Lines"/></tables>
<columns>
<column table_name="Orders" column_name="id" ordinal_position="1" data_type="3" column_hasdefault="0" column_default="" numeric_precision="10" numeric_scale="0" character_maximum_length="0" is_nullable="1"/>
<column table_name="Orders" column_name="note" ordinal_position="2" data_type="1" column_hasdefault="0" column_default="" numeric_precision="0" numeric_scale="0" character_maximum_length="80" is_nullable="1"/>
<column table_name="Lines" column_name="qty" ordinal_position="1" data_type="3" column_hasdefault="1" column_default="1" numeric_precision="10" numeric_scale="0" character_maximum_length="0" is_nullable="0"/>
</columns>
<indexes><index table_name="Orders" index_name="PK_Orders" primary_key="1" unique="1"><index_name>PK_Orders</index_name><idx_column column_name="id" ordinal_position="1" collation="1"/></index></indexes>
<keys/></catalog></schema>)";
    auto shop = Ref<DbCatalog>::New();
    shop->Init(u"dbtype=msxml;dbname=shop.xml;dblocation=" + where);
    int tables = 0;
    for (auto t : shop->Tables()) {
        ++tables;
        std::cout << "     table " << ToUtf8(t->TableName()) << "\n";
        for (auto c : t->Columns()) std::cout << "       " << ToUtf8(c->GetString(u"|")) << "\n";
        for (auto i : t->Indexes()) std::cout << "       index " << ToUtf8(i->GetString(u",")) << "\n";
    }
    Check(tables == 2, "two tables are walked");
    Ref<DbTable> orders = shop->Tables()->Item(Variant(u"ORDERS"));
    Check(orders && orders->TableName() == u"Orders", "Item(\"ORDERS\") finds Orders");
    Check(orders && orders->Columns()->Item(Variant(u"id"))->GetString(u"|") == u"Orders|id|1|3|3|0||10|0|0|0",
          "the key column is reported not nullable, in the eleven-field form");

    // Failures a user runs into.
    Check(Catch([] { Ref<DbCatalog>::New()->Init(u"dbname=x;dblocation=/tmp"); }).Number() == 91,
          "an attribute string without an engine fails with 91");
    Check(Catch([] { Ref<DbCatalog>::New()->Tables(); }).Number() == 91, "a catalog never initialised fails with 91");
    auto missing = Ref<DbCatalog>::New();
    missing->Init(u"dbtype=msxml;dbname=x.xml;dblocation=/no/such/folder");
    DbError m = Catch([&] { missing->Create(); });
    std::cout << "     " << ToUtf8(m.Description()) << "\n";
    Check(m.Number() != 0, "a catalog in a missing folder cannot be created");
    std::ofstream(dir / "notxml.xml") << "this is not XML";
    auto broken = Ref<DbCatalog>::New();
    broken->Init(u"dbtype=msxml;dbname=notxml.xml;dblocation=" + where);
    Check(broken->Tables()->Count() == 0, "a file that is not XML has no tables");
    DbError b = Catch([&] { broken->Session()->ExecuteScalar(u"//table[", u""); });
    std::cout << "     " << ToUtf8(b.Description()) << "\n";
    Check(b.Number() != 0, "a bad expression on it fails with a readable text");

    fs::remove_all(dir);
    std::cout << (failures ? "some checks failed\n" : "all checks passed\n");
    return failures ? 1 : 0;
}
