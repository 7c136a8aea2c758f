// zol schema: the tables, columns and indexes of a catalog, as its reader sees them.
#include <iostream>

#include "commands.hpp"
#include "engines.hpp"
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

int PrintSchema(const std::string& attrs, std::ostream& out) {
    auto cat = OpenCatalog(attrs);
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
} // namespace

Command AddSchemaCommand(CLI::App& zol) {
    struct Options {
        std::string attrs, save;
    };
    auto o = std::make_shared<Options>();
    CLI::App* app = zol.add_subcommand("schema", "Print the tables, columns and indexes of a catalog, or write them "
                                                 "into an XML schema file.");
    AddAttributeString(*app, "ATTRS", o->attrs, "the catalog to read")->required();
    app->add_option("--save", o->save, "write the schema into this XML schema file instead of printing it")
        ->type_name("FILE");
    return {app, [o] {
                if (o->save.empty()) return PrintSchema(o->attrs, std::cout);
                // The same schema the lossless road writes into an XML catalog.
                transfer::SaveSchema(FromUtf8(o->attrs), FromUtf8(o->save));
                std::cout << "saved the schema of " << WithoutPassword(o->attrs) << " into " << o->save << "\n";
                return 0;
            }};
}

} // namespace zol
