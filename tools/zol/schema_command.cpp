// zol schema: the tables, columns and indexes of a catalog, as its reader sees them.
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <filesystem>
#include <fstream>
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

// The library reads a missing or broken XML file as a catalog without
// tables; a person asking for the schema is told what is wrong with the file.
// "" when the file reads as a schema file.
std::string XmlFileProblem(const Ref<DbCatalog>& cat) {
    if (LCase(cat->DBProperty(u"dbtype")) != u"msxml") return {};
    std::string location = ToUtf8(cat->DBProperty(u"dblocation"));
    for (char& c : location)
        if (c == '\\') c = '/';
    const std::filesystem::path path = std::filesystem::path(location) / ToUtf8(cat->DBProperty(u"dbname"));
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) return "the XML file " + path.string() + " is missing";
    if (std::filesystem::is_directory(path, ec)) return path.string() + " is a folder, not an XML file";
    if (!std::ifstream(path).good()) return "the XML file " + path.string() + " cannot be read";
    xmlDocPtr doc = xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
    if (!doc) {
        const xmlError* e = xmlGetLastError();
        std::string why = e && e->message ? e->message : "not well-formed";
        while (!why.empty() && why.back() == '\n') why.pop_back();
        return "the XML file " + path.string() + " is broken (line " + std::to_string(e ? e->line : 0) + ": " + why + ")";
    }
    const xmlNode* root = xmlDocGetRootElement(doc);
    bool schema = root && xmlStrEqual(root->name, BAD_CAST "schema");
    bool catalog = false;
    for (const xmlNode* n = schema ? root->children : nullptr; n; n = n->next)
        catalog = catalog || (n->type == XML_ELEMENT_NODE && xmlStrEqual(n->name, BAD_CAST "catalog"));
    xmlFreeDoc(doc);
    if (!catalog) return "the XML file " + path.string() + " holds no schema (no <schema><catalog> element)";
    return {};
}
int PrintSchema(const std::string& attrs, std::ostream& out) {
    auto cat = OpenCatalog(attrs);
    if (const std::string problem = XmlFileProblem(cat); !problem.empty()) {
        std::cerr << "zol: " << problem << "\n";
        return 1;
    }
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
