#include <cstdio>
#include <iostream>

#include "commands.hpp"
#include "zolsdk/zolsdk.hpp"

namespace zol {

int Usage(std::ostream& out, int code) {
    out << "usage:\n"
           "  zol migrate --from ATTRS --to ATTRS [--table NAME ...] [--schema-only]\n"
           "                           recreate tables of one catalog in another and copy their rows\n"
           "  zol schema ATTRS         print the tables, columns and indexes of a catalog\n"
           "  zol create ATTRS         create the database that ATTRS names\n"
           "  zol drop ATTRS           drop it\n"
           "  zol demo [--dir DIR] [--scale N]  build a sample Access database and migrate it; no server needed\n"
           "\n"
           "ATTRS is an attribute string, for example\n"
           "  \"dbtype=msxml;dbname=shop.xml;dblocation=/tmp\"\n"
           "  \"dbtype=mysql;dbname=shop;dblocation=127.0.0.1;username=u;password=p\"\n";
    return code;
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
