#include "transfer/schema_read.hpp"

#include <algorithm>
#include <map>

#include "transfer/type_map.hpp"
#include "transfer/values.hpp"
#include "transfer/xml_schema.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/enums.hpp"
#include "zolsdk/schema/index.hpp"
#include "zolsdk/schema/table.hpp"

namespace zolsdk::transfer {

namespace {

String Text(const Variant& v) { return v.IsNull() || v.IsEmpty() ? String() : v.ToString(); }

// Rows of a statement as texts by field name.
std::vector<std::map<String, Variant>> Rows(ado::Connection& c, const String& sql) {
    std::vector<std::map<String, Variant>> out;
    int32_t n = 0;
    Ref<ado::Recordset> rs = c.Execute(sql, n);
    if (!rs || rs->State() == ado::adStateClosed) return out;
    while (!rs->Eof()) {
        std::map<String, Variant> row;
        for (int32_t i = 0; i < rs->Fields().Count(); ++i) {
            auto& f = rs->Fields().Item(i);
            row[UCase(f.Name())] = f.Value();
        }
        out.push_back(std::move(row));
        rs->MoveNext();
    }
    return out;
}

void ReadCollections(const Endpoint& source, TablePlan& t) {
    Ref<DbTable> table = source.catalog->Tables()->Item(Variant(t.name));
    for (auto c : table->Columns()) {
        ColumnPlan p;
        p.name = c->ColumnName();
        p.group = c->DataTypeGroup();
        p.sourceType = c->DataType();
        p.length = c->MaxCharLength();
        p.precision = c->NumericPrecision();
        p.scale = c->NumericScale();
        p.nullable = c->IsNullable() != 0;
        if (c->HasDefault()) p.sourceDefault = c->Default();
        t.columns.push_back(std::move(p));
    }
    for (auto i : table->Indexes()) {
        IndexPlan x;
        x.name = i->IndexName();
        x.primaryKey = i->PrimaryKey();
        x.unique = i->Unique() || i->PrimaryKey();
        for (auto ic : i->Columns()) x.columns.push_back({ic->ColumnName(), ic->SortOrder() == soDescending, 0});
        t.indexes.push_back(std::move(x));
    }
}

// What MariaDB's catalog says beyond the collections: the exact column
// types, auto-increment, character sets, index kinds and prefixes, the
// table's storage engine.
void ReadMySqlDetails(ado::Connection& c, TablePlan& t) {
    String table = TextLiteral(Engine::MySql, t.name);
    auto cols = Rows(c, u"SELECT COLUMN_NAME, COLUMN_TYPE, EXTRA, CHARACTER_SET_NAME, COLLATION_NAME, "
                        u"COLUMN_DEFAULT, IS_NULLABLE FROM INFORMATION_SCHEMA.COLUMNS WHERE TABLE_SCHEMA = DATABASE() "
                        u"AND TABLE_NAME = " + table + u" ORDER BY ORDINAL_POSITION");
    std::vector<ColumnPlan> ordered;
    for (auto& r : cols) {
        String name = Text(r[u"COLUMN_NAME"]);
        ColumnPlan p;
        for (auto& have : t.columns)
            if (EqualsNoCase(have.name, name)) p = have;
        p.name = name;
        p.sourceNative = Text(r[u"COLUMN_TYPE"]);
        String extra = LCase(Text(r[u"EXTRA"]));
        p.autoIncrement = extra.find(u"auto_increment") != String::npos;
        p.nullable = Text(r[u"IS_NULLABLE"]) == u"YES";
        // MariaDB writes defaults as expressions: 'text', 12, NULL, current_timestamp().
        String def = Text(r[u"COLUMN_DEFAULT"]);
        if (r[u"COLUMN_DEFAULT"].IsNull() || def == u"NULL") p.sourceDefault.reset();
        else p.sourceDefault = def;
        String mysqlExtra;
        if (!Text(r[u"CHARACTER_SET_NAME"]).empty())
            mysqlExtra = u"CHARACTER SET " + Text(r[u"CHARACTER_SET_NAME"]) + u" COLLATE " + Text(r[u"COLLATION_NAME"]);
        if (auto at = extra.find(u"on update"); at != String::npos) mysqlExtra += u" " + UCase(extra.substr(at));
        if (extra.find(u"virtual") != String::npos || extra.find(u"stored") != String::npos)
            t.changes.push_back(p.name + u": a generated column, copied as a plain column with its values");
        p.targetExtra = Trim(mysqlExtra);
        ordered.push_back(std::move(p));
    }
    if (!ordered.empty()) t.columns = std::move(ordered);

    auto stats = Rows(c, u"SELECT INDEX_NAME, NON_UNIQUE, SEQ_IN_INDEX, COLUMN_NAME, COLLATION, SUB_PART, INDEX_TYPE "
                         u"FROM INFORMATION_SCHEMA.STATISTICS WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = " +
                         table + u" ORDER BY INDEX_NAME = 'PRIMARY' DESC, INDEX_NAME, SEQ_IN_INDEX");
    std::vector<IndexPlan> indexes;
    for (auto& r : stats) {
        String name = Text(r[u"INDEX_NAME"]);
        if (indexes.empty() || indexes.back().name != name) {
            IndexPlan x;
            x.name = name;
            x.primaryKey = name == u"PRIMARY";
            x.unique = r[u"NON_UNIQUE"].ToLong() == 0;
            String type = UCase(Text(r[u"INDEX_TYPE"]));
            x.fullText = type == u"FULLTEXT";
            x.spatial = type == u"SPATIAL";
            indexes.push_back(std::move(x));
        }
        indexes.back().columns.push_back({Text(r[u"COLUMN_NAME"]), Text(r[u"COLLATION"]) == u"D",
                                          r[u"SUB_PART"].IsNull() ? 0 : r[u"SUB_PART"].ToLong()});
    }
    // In the order the collections gave them (the catalog lists them by name).
    auto rank = [&](const IndexPlan& x) {
        for (size_t i = 0; i < t.indexes.size(); ++i)
            if (t.indexes[i].name == x.name) return i;
        return t.indexes.size();
    };
    std::stable_sort(indexes.begin(), indexes.end(),
                     [&](const IndexPlan& a, const IndexPlan& b) { return !a.primaryKey && !b.primaryKey ? rank(a) < rank(b) : a.primaryKey > b.primaryKey; });
    t.indexes = std::move(indexes);

    auto info = Rows(c, u"SELECT ENGINE, TABLE_COLLATION FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_SCHEMA = DATABASE() "
                        u"AND TABLE_NAME = " + table);
    if (!info.empty()) {
        String collation = Text(info[0][u"TABLE_COLLATION"]);
        String charset = collation.substr(0, collation.find(u'_'));
        t.tableOptions = u"ENGINE=" + Text(info[0][u"ENGINE"]);
        if (!charset.empty()) t.tableOptions += u" DEFAULT CHARSET=" + charset + u" COLLATE=" + collation;
    }
}

// Access: which column is an AutoNumber (the provider flags it as the row's
// own number in the column rowset).
void ReadAccessDetails(ado::Connection& c, TablePlan& t) {
    constexpr int32_t kRowIdFlag = 0x100;
    Ref<ado::Recordset> rs = c.OpenSchema(ado::adSchemaColumns, {Variant(), Variant(), Variant(t.name)});
    if (!rs || rs->State() == ado::adStateClosed) return;
    if (rs->RecordCount() > 0) rs->MoveFirst();
    while (!rs->Eof()) {
        String name = Text(rs->Value(u"COLUMN_NAME"));
        const Variant& flags = rs->Value(u"COLUMN_FLAGS");
        bool rowId = !flags.IsNull() && (flags.ToLong() & kRowIdFlag) != 0;
        // A Replication ID the file fills itself is copied as a value.
        for (auto& col : t.columns)
            if (EqualsNoCase(col.name, name)) col.autoIncrement = rowId && col.sourceType != ado::adType::GUID;
        rs->MoveNext();
    }
}

void ReadForeignKeys(ado::Connection& c, TablePlan& t) {
    Ref<ado::Recordset> rs = c.OpenSchema(ado::adSchemaForeignKeys,
                                          {Variant(), Variant(), Variant(), Variant(), Variant(), Variant(t.name)});
    if (!rs || rs->State() == ado::adStateClosed) return;
    if (rs->RecordCount() > 0) rs->MoveFirst();
    while (!rs->Eof()) {
        String fkTable = Text(rs->Value(u"FK_TABLE_NAME"));
        if (EqualsNoCase(fkTable, t.name)) {
            String name = Text(rs->Value(u"FK_NAME"));
            String refTable = Text(rs->Value(u"PK_TABLE_NAME"));
            ForeignKeyPlan* fk = nullptr;
            for (auto& f : t.foreignKeys)
                if (f.name == name && f.referencedTable == refTable) fk = &f;
            if (!fk) {
                ForeignKeyPlan f;
                f.name = name;
                f.table = t.name;
                f.referencedTable = refTable;
                f.onUpdate = UCase(Text(rs->Value(u"UPDATE_RULE")));
                f.onDelete = UCase(Text(rs->Value(u"DELETE_RULE")));
                t.foreignKeys.push_back(std::move(f));
                fk = &t.foreignKeys.back();
            }
            fk->columns.push_back(Text(rs->Value(u"FK_COLUMN_NAME")));
            fk->referencedColumns.push_back(Text(rs->Value(u"PK_COLUMN_NAME")));
        }
        rs->MoveNext();
    }
}

void ChooseKey(TablePlan& t) {
    const IndexPlan* best = nullptr;
    for (const auto& x : t.indexes) {
        if (x.primaryKey) { best = &x; break; }
        if (x.unique && !x.fullText && !best) best = &x;
    }
    if (best)
        for (const auto& c : best->columns) t.keyColumns.push_back(c.name);
    if (t.keyColumns.empty())
        for (const auto& c : t.columns) t.keyColumns.push_back(c.name);
}

} // namespace

std::vector<String> SourceTableNames(const Endpoint& source) {
    if (source.engine == Engine::Xml) return XmlTableNames(source.FilePath());
    std::vector<String> names;
    for (auto t : source.catalog->Tables()) names.push_back(t->TableName());
    return names;
}

TablePlan ReadTable(const Endpoint& source, ado::Connection* connection, const String& name) {
    TablePlan t;
    t.name = name;
    if (source.engine == Engine::Xml) {
        t = ReadXmlTable(source.FilePath(), name);
    } else {
        ReadCollections(source, t);
        if (source.engine == Engine::MySql && connection) ReadMySqlDetails(*connection, t);
        if (source.engine == Engine::Access && connection) ReadAccessDetails(*connection, t);
        if (connection) ReadForeignKeys(*connection, t);
    }
    for (auto& c : t.columns) {
        if (source.engine != Engine::Xml)
            c.kind = KindOf(c.sourceType, c.group, source.engine == Engine::MySql ? StringView(c.sourceNative) : u"",
                            c.length);
        String n = LCase(c.sourceNative);
        c.fixedLength = n.rfind(u"char(", 0) == 0 || n.rfind(u"binary(", 0) == 0;
        // An Access Yes/No column holds no Null, whatever its Required says.
        if (source.engine == Engine::Access && c.kind == Kind::Boolean) c.nullable = false;
    }
    ChooseKey(t);
    return t;
}

} // namespace zolsdk::transfer
