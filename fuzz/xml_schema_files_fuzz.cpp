// XML schema files as they may be found on disk: whatever the bytes, opening
// the catalog and walking its tables, columns and indexes either works or
// fails with a DbError.
#include <unistd.h>

#include <cstdio>
#include <string>

#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string dir = [] {
        char tmpl[] = "/tmp/zol-fuzz-xml-XXXXXX";
        return std::string(::mkdtemp(tmpl));
    }();
    const std::string file = dir + "/schema.xml";
    if (FILE* f = std::fopen(file.c_str(), "wb")) {
        std::fwrite(data, 1, size, f);
        std::fclose(f);
    }
    try {
        auto cat = Ref<DbCatalog>::New();
        cat->Init(u"dbtype=msxml;dbname=schema.xml;dblocation=" + FromUtf8(dir));
        auto tables = cat->Tables();
        std::vector<String> names;
        for (auto t : tables) names.push_back(t->TableName());
        for (const String& name : names) {
            try {
                auto table = tables->Item(Variant(name));
                for (auto c : table->Columns()) (void)c->ColumnName();
                for (auto i : table->Indexes())
                    for (auto ic : i->Columns()) (void)ic->ColumnName();
            } catch (const DbError&) {
            }
        }
    } catch (const DbError&) {
    }
    return 0;
}
