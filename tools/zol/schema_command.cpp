#include <iostream>

#include "commands.hpp"
#include "zolsdk/transfer/transfer.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace zol {

namespace {
const char* GroupName(int32_t g) {
    static const char* names[] = {"unknown", "varchar", "text",   "integer", "unsigned", "date",   "time",
                                  "datetime", "boolean", "double", "binary", "single",  "decimal", "currency"};
    return g >= 0 && g <= 13 ? names[g] : "?";
}

Ref<DbCatalog> Open(const std::string& attrs) { return OpenCatalog(attrs); }
} // namespace

int SchemaCommand(const Args& args, std::ostream& out) {
    if (args.size() == 3 && args[1] == "--save") {
        // The same schema the lossless road writes into an XML catalog.
        transfer::SaveSchema(FromUtf8(args[0]), FromUtf8(args[2]));
        out << "saved the schema of " << args[0] << " into " << args[2] << "\n";
        return 0;
    }
    if (args.size() != 1) return Usage(std::cerr, 2);
    auto cat = Open(args[0]);
    auto tables = cat->Tables();
    out << "catalog " << ToUtf8(cat->Name()) << " (" << ToUtf8(cat->CatalogType()) << "): " << tables->Count()
        << " tables\n";
    // Names first: the enumeration hands out one reused item.
    std::vector<String> names;
    for (auto t : tables) names.push_back(t->TableName());
    for (const String& name : names) {
        auto table = tables->Item(Variant(name));
        out << "\ntable " << ToUtf8(name) << "\n";
        for (auto c : table->Columns()) {
            out << "  " << ToUtf8(c->ColumnName()) << "  " << GroupName(c->DataTypeGroup()) << " (type "
                << c->DataType();
            if (c->MaxCharLength()) out << ", length " << c->MaxCharLength();
            if (c->NumericPrecision()) out << ", precision " << c->NumericPrecision() << "," << c->NumericScale();
            out << ")" << (c->IsNullable() ? "" : " not null");
            if (c->HasDefault()) out << " default " << ToUtf8(c->Default());
            out << "\n";
        }
        for (auto i : table->Indexes()) {
            out << "  index " << ToUtf8(i->IndexName()) << (i->PrimaryKey() ? " primary key" : "")
                << (i->Unique() ? " unique" : "") << " (";
            bool first = true;
            for (auto ic : i->Columns()) {
                out << (first ? "" : ", ") << ToUtf8(ic->ColumnName()) << (ic->SortOrder() == 2 ? " desc" : "");
                first = false;
            }
            out << ")\n";
        }
    }
    return 0;
}

int CreateCommand(const Args& args, std::ostream& out) {
    if (args.size() != 1) return Usage(std::cerr, 2);
    auto cat = Open(args[0]);
    cat->Create();
    out << "created " << ToUtf8(cat->Name()) << "\n";
    return 0;
}

int DropCommand(const Args& args, std::ostream& out) {
    if (args.size() != 1) return Usage(std::cerr, 2);
    auto cat = Open(args[0]);
    cat->Drop();
    out << "dropped " << ToUtf8(cat->Name()) << "\n";
    return 0;
}

} // namespace zol
