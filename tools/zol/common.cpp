#include <cstdio>
#include <iostream>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zol {

namespace {
// The value of `key` in an attribute string, for messages only.
zolsdk::String SessionAttributeOf(zolsdk::StringView attrs, zolsdk::StringView key) {
    using namespace zolsdk;
    String k = String(key) + u"=";
    int32_t at = InStr(1, attrs, k, true);
    if (at == 0) return {};
    size_t from = static_cast<size_t>(at - 1) + k.size();
    size_t end = attrs.find(u';', from);
    return String(attrs.substr(from, end == StringView::npos ? StringView::npos : end - from));
}
} // namespace


int Usage(std::ostream& out, int code) {
    out << "usage:\n"
           "  zol migrate --from ATTRS --to ATTRS [--table NAME ...] [--schema-only] [--replace]\n"
           "              [--keep-failed] [--lock-timeout SECONDS] [--compat]\n"
           "                           recreate tables of one catalog in another, copy their rows and verify them;\n"
           "                           --compat takes the library's compatible road instead\n"
           "  zol verify --from ATTRS --to ATTRS [--table NAME ...]\n"
           "                           compare the rows of two catalogs' tables by count and checksum\n"
           "  zol schema ATTRS [--save FILE]\n"
           "                           print the tables, columns and indexes of a catalog, or write them\n"
           "                           into an XML schema file\n"
           "  zol create ATTRS         create the database that ATTRS names\n"
           "  zol drop ATTRS           drop it\n"
           "  zol demo [--dir DIR] [--scale N]  build a sample Access database and migrate it; no server needed\n"
           "\n"
           "ATTRS is an attribute string, for example\n"
           "  \"dbtype=msxml;dbname=shop.xml;dblocation=/tmp\"\n"
           "  \"dbtype=mysql;dbname=shop;dblocation=127.0.0.1;username=u;password=p\"\n";
    return code;
}

zolsdk::Ref<zolsdk::DbCatalog> OpenCatalog(const std::string& attrs) {
    using namespace zolsdk;
    auto cat = Ref<DbCatalog>::New();
    try {
        cat->Init(FromUtf8(attrs));
    } catch (DbError& e) {
        // The library's answers are terse here (91, 13): say what to change.
        String type = LCase(SessionAttributeOf(FromUtf8(attrs), u"dbtype"));
        if (e.Number() == err::ObjectNotSet) {
            String known;
            for (const String& name : EngineTypeNames()) known += (known.empty() ? u"" : u", ") + name;
            e.Description(e.Description() + u" (the attribute string names no engine: dbtype '" + type +
                          u"' is none of " + known + u")");
        } else if (e.Number() == err::TypeMismatch && type == u"mssql")
            e.Description(e.Description() + u" (a SQL Server attribute string needs protocol=1 for TCP/IP)");
        throw;
    }
    return cat;
}

int ReportFailure(std::ostream& err, const std::exception& e) {
    if (auto* d = dynamic_cast<const zolsdk::DbError*>(&e)) {
        char num[16];
        std::snprintf(num, sizeof num, "0x%08X", static_cast<unsigned>(d->Number()));
        err << "zol: failed (" << num << ", " << d->Number() << "): " << zolsdk::ToUtf8(d->Description()) << "\n"
            << "  at: " << zolsdk::ToUtf8(d->Source()) << "\n";
    } else {
        err << "zol: failed: " << e.what() << "\n";
    }
    return 1;
}

} // namespace zol
