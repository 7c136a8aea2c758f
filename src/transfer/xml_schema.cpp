#include "transfer/xml_schema.hpp"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <sys/stat.h>

#include "platform/xml/dom.hpp"
#include "transfer/type_map.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

bool Exists(const String& path) {
    struct stat st {};
    return ::stat(ToUtf8(path).c_str(), &st) == 0;
}

Ref<xml::DOMDocument> Load(const String& path) {
    auto doc = Ref<xml::DOMDocument>::New();
    doc->setProperty(u"SelectionLanguage", Variant(u"XPath"));
    if (!doc->load(path))
        throw DbError(err::InvalidCall, u"zolsdk.transfer",
                      u"the XML schema file " + path + u" cannot be read: " + doc->parseError()->reason());
    return doc;
}

String Attr(const Ref<xml::DOMNode>& node, StringView name) {
    Ref<xml::DOMNode> a = node->attributes()->getNamedItem(name);
    return a ? a->text() : String();
}

int32_t Num(const String& s) { return s.empty() ? 0 : Variant(s).ToLong(); }

// An XPath literal of a name: between the quote it does not hold.
String XLit(const String& s) {
    if (s.find(u'"') == String::npos) return u"\"" + s + u"\"";
    if (s.find(u'\'') == String::npos) return u"'" + s + u"'";
    throw DbError(err::InvalidCall, u"zolsdk.transfer", u"a table name holding both quote kinds: " + s);
}

std::string Esc(StringView s) {
    std::string out;
    for (char c : ToUtf8(s)) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '"': out += "&quot;"; break;
        case '\n': out += "&#10;"; break;
        case '\r': out += "&#13;"; break;
        case '\t': out += "&#9;"; break;
        default: out += c;
        }
    }
    return out;
}

Kind KindNamed(const String& name, Kind fallback) {
    for (int k = 0; k <= static_cast<int>(Kind::Guid); ++k)
        if (Ascii(KindName(static_cast<Kind>(k))) == name) return static_cast<Kind>(k);
    return fallback;
}

std::string Bool(bool b) { return b ? "1" : "0"; }

bool IsExpression(const String& def) { return !def.empty() && def.front() == kXmlExpression; }
String Bare(const String& def) { return IsExpression(def) ? def.substr(1) : def; }

} // namespace

std::vector<String> XmlTableNames(const String& path) {
    std::vector<String> names;
    auto doc = Load(path);
    auto nodes = doc->selectNodes(u"//schema/catalog/tables/table");
    for (int32_t i = 0; i < nodes->length(); ++i) names.push_back(Attr(nodes->item(i), u"table_name"));
    return names;
}

TablePlan ReadXmlTable(const String& path, const String& name) {
    TablePlan t;
    t.name = name;
    auto doc = Load(path);
    auto cols = doc->selectNodes(u"//schema/catalog/columns/column[@table_name=" + XLit(name) + u"]");
    std::vector<std::pair<int32_t, ColumnPlan>> positions;
    for (int32_t i = 0; i < cols->length(); ++i) {
        auto n = cols->item(i);
        ColumnPlan c;
        c.name = Attr(n, u"column_name");
        c.group = Num(Attr(n, u"data_type"));
        c.sourceType = Num(Attr(n, u"source_type"));
        c.sourceNative = Attr(n, u"native_type");
        c.length = Num(Attr(n, u"character_maximum_length"));
        c.precision = Num(Attr(n, u"numeric_precision"));
        c.scale = Num(Attr(n, u"numeric_scale"));
        String nullable = Attr(n, u"is_nullable");
        c.nullable = nullable.empty() || Variant(nullable).ToBoolean();
        c.autoIncrement = Attr(n, u"auto_increment") == u"1";
        c.fixedLength = Attr(n, u"fixed_length") == u"1";
        if (Variant(Attr(n, u"column_hasdefault").empty() ? String(u"0") : Attr(n, u"column_hasdefault")).ToBoolean())
            c.sourceDefault = (Attr(n, u"default_form") == u"expression" ? String(1, kXmlExpression) : String()) +
                              Attr(n, u"column_default");
        c.kind = KindNamed(Attr(n, u"kind"), KindOf(0, c.group, u"", c.length));
        c.targetExtra = Attr(n, u"native_extra");
        positions.push_back({Num(Attr(n, u"ordinal_position")), std::move(c)});
    }
    std::stable_sort(positions.begin(), positions.end(), [](auto& a, auto& b) { return a.first < b.first; });
    for (auto& [pos, c] : positions) t.columns.push_back(std::move(c));
    if (auto table = doc->selectSingleNode(u"//schema/catalog/tables/table[@table_name=" + XLit(name) + u"]"))
        t.tableOptions = Attr(table, u"options");

    auto idx = doc->selectNodes(u"//schema/catalog/indexes/index[@table_name=" + XLit(name) + u"]");
    for (int32_t i = 0; i < idx->length(); ++i) {
        auto n = idx->item(i);
        IndexPlan x;
        x.name = Attr(n, u"index_name");
        x.primaryKey = Variant(Attr(n, u"primary_key").empty() ? String(u"0") : Attr(n, u"primary_key")).ToBoolean();
        x.unique = x.primaryKey || Variant(Attr(n, u"unique").empty() ? String(u"0") : Attr(n, u"unique")).ToBoolean();
        x.fullText = Attr(n, u"fulltext") == u"1";
        x.spatial = Attr(n, u"spatial") == u"1";
        auto ics = doc->selectNodes(u"//schema/catalog/indexes/index[@table_name=" + XLit(name) +
                                    u" and @index_name=" + XLit(x.name) + u"]/idx_column");
        std::vector<std::pair<int32_t, IndexColumnPlan>> ordered;
        for (int32_t j = 0; j < ics->length(); ++j) {
            auto ic = ics->item(j);
            ordered.push_back({Num(Attr(ic, u"ordinal_position")),
                               {Attr(ic, u"column_name"), Attr(ic, u"collation") == u"2", Num(Attr(ic, u"prefix"))}});
        }
        std::stable_sort(ordered.begin(), ordered.end(), [](auto& a, auto& b) { return a.first < b.first; });
        for (auto& [pos, ic] : ordered) x.columns.push_back(ic);
        t.indexes.push_back(std::move(x));
    }

    auto keys = doc->selectNodes(u"//schema/catalog/keys/key[@fk_table_name=" + XLit(name) + u"]");
    for (int32_t i = 0; i < keys->length(); ++i) {
        auto n = keys->item(i);
        String fkName = Attr(n, u"fk_name");
        ForeignKeyPlan* fk = nullptr;
        for (auto& f : t.foreignKeys)
            if (f.name == fkName) fk = &f;
        if (!fk) {
            ForeignKeyPlan f;
            f.name = fkName;
            f.table = name;
            f.referencedTable = Attr(n, u"pk_table_name");
            f.onUpdate = Attr(n, u"update_rule");
            f.onDelete = Attr(n, u"delete_rule");
            t.foreignKeys.push_back(std::move(f));
            fk = &t.foreignKeys.back();
        }
        fk->columns.push_back(Attr(n, u"fk_column_name"));
        fk->referencedColumns.push_back(Attr(n, u"pk_column_name"));
    }
    return t;
}

void WriteXmlSchema(const String& path, const std::vector<TablePlan>& tables) {
    std::vector<TablePlan> all;
    if (Exists(path)) {
        for (const String& n : XmlTableNames(path)) {
            bool replaced = std::any_of(tables.begin(), tables.end(), [&](const TablePlan& t) { return EqualsNoCase(t.name, n); });
            if (!replaced) all.push_back(ReadXmlTable(path, n));
        }
    }
    all.insert(all.end(), tables.begin(), tables.end());

    std::string out = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<schema><catalog>\n<tables>\n";
    for (const auto& t : all)
        out += "  <table table_name=\"" + Esc(t.name) + "\" type=\"TABLE\"" +
               (t.tableOptions.empty() ? std::string() : " options=\"" + Esc(t.tableOptions) + "\"") + "/>\n";
    out += "</tables>\n<columns>\n";
    for (const auto& t : all) {
        int pos = 0;
        for (const auto& c : t.columns) {
            bool num = IsNumber(c.kind);
            // A planned table carries the default in the file's neutral form;
            // a table kept from the file carries it as it was read.
            std::optional<String> def = c.targetDefault ? c.targetDefault : c.sourceDefault;
            bool hasDef = def.has_value();
            out += "  <column table_name=\"" + Esc(t.name) + "\" column_name=\"" + Esc(c.name) +
                   "\" ordinal_position=\"" + std::to_string(++pos) + "\" data_type=\"" +
                   std::to_string(c.group ? c.group : Variant(c.targetType.empty() ? String(u"0") : c.targetType).ToLong()) +
                   "\" column_hasdefault=\"" + Bool(hasDef) + "\" column_default=\"" + (hasDef ? Esc(Bare(*def)) : "") +
                   "\" default_form=\"" + (hasDef && IsExpression(*def) ? "expression" : "constant") +
                   "\" numeric_precision=\"" + (num && c.precision ? std::to_string(c.precision) : "") +
                   "\" numeric_scale=\"" + (c.kind == Kind::Decimal ? std::to_string(c.scale) : "") +
                   "\" character_maximum_length=\"" + (num ? "" : std::to_string(IsLong(c.kind) ? 0 : c.length)) +
                   "\" is_nullable=\"" + Bool(c.nullable) + "\" kind=\"" + KindName(c.kind) + "\" source_type=\"" +
                   std::to_string(c.sourceType) + "\" native_type=\"" + Esc(c.sourceNative) + "\" native_extra=\"" + Esc(c.targetExtra) +
                   "\" auto_increment=\"" +
                   Bool(c.autoIncrement) + "\" fixed_length=\"" + Bool(c.fixedLength) + "\"/>\n";
        }
    }
    out += "</columns>\n<indexes>\n";
    for (const auto& t : all) {
        for (const auto& x : t.indexes) {
            // The reader finds an index's columns by an index_name child.
            out += "  <index table_name=\"" + Esc(t.name) + "\" index_name=\"" + Esc(x.name) + "\" primary_key=\"" +
                   Bool(x.primaryKey) + "\" unique=\"" + Bool(x.unique) + "\" fulltext=\"" + Bool(x.fullText) +
                   "\" spatial=\"" + Bool(x.spatial) + "\"><index_name>" + Esc(x.name) + "</index_name>\n";
            int pos = 0;
            for (const auto& c : x.columns)
                out += "    <idx_column column_name=\"" + Esc(c.name) + "\" ordinal_position=\"" + std::to_string(++pos) +
                       "\" collation=\"" + (c.descending ? "2" : "1") + "\" prefix=\"" + std::to_string(c.prefix) + "\"/>\n";
            out += "  </index>\n";
        }
    }
    out += "</indexes>\n<keys>\n";
    for (const auto& t : all) {
        for (const auto& f : t.foreignKeys) {
            for (size_t i = 0; i < f.columns.size(); ++i)
                out += "  <key table_name=\"" + Esc(t.name) + "\" fk_name=\"" + Esc(f.name) + "\" fk_table_name=\"" +
                       Esc(t.name) + "\" fk_column_name=\"" + Esc(f.columns[i]) + "\" pk_name=\"\" pk_table_name=\"" +
                       Esc(f.referencedTable) + "\" pk_column_name=\"" + Esc(f.referencedColumns[i]) +
                       "\" ordinal=\"" + std::to_string(i + 1) + "\" update_rule=\"" + Esc(f.onUpdate) +
                       "\" delete_rule=\"" + Esc(f.onDelete) + "\"/>\n";
        }
    }
    out += "</keys>\n</catalog></schema>\n";

    std::string file = ToUtf8(path);
    std::string temp = file + ".part";
    {
        std::ofstream f(temp, std::ios::binary | std::ios::trunc);
        f << out;
        if (!f.flush()) throw DbError(75, u"zolsdk.transfer", u"cannot write " + path);
    }
    if (std::rename(temp.c_str(), file.c_str()) != 0) throw DbError(75, u"zolsdk.transfer", u"cannot write " + path);
}

void RemoveXmlTables(const String& path, const std::vector<String>& tables) {
    if (!Exists(path)) return;
    std::vector<TablePlan> keep;
    for (const String& n : XmlTableNames(path)) {
        bool drop = std::any_of(tables.begin(), tables.end(), [&](const String& t) { return EqualsNoCase(t, n); });
        if (!drop) keep.push_back(ReadXmlTable(path, n));
    }
    std::remove(ToUtf8(path).c_str());
    WriteXmlSchema(path, keep);
}

} // namespace zolsdk::transfer
