#include "transfer/ddl.hpp"

#include "transfer/identifiers.hpp"
#include "transfer/type_map.hpp"
#include "transfer/values.hpp"

namespace zolsdk::transfer {

namespace {

const ColumnPlan* ColumnNamed(const TablePlan& t, StringView name) {
    for (const auto& c : t.columns)
        if (EqualsNoCase(c.name, name)) return &c;
    return nullptr;
}

String ColumnSql(Engine e, const ColumnPlan& c) {
    String s = QuoteName(e, c.name) + u" ";
    if (e == Engine::Access && c.autoIncrement) {
        s += u"COUNTER";
    } else {
        s += c.targetType;
    }
    if (e == Engine::MySql && !c.targetExtra.empty() && c.targetExtra.rfind(u"ON UPDATE", 0) != 0) {
        // The character set goes right after the type; ON UPDATE after the default.
        String extra = c.targetExtra;
        auto at = extra.find(u" ON UPDATE");
        s += u" " + extra.substr(0, at);
    }
    if (e == Engine::SqlServer && c.autoIncrement) s += u" IDENTITY(1,1)";
    s += c.nullable ? (e == Engine::Access ? u"" : u" NULL") : u" NOT NULL";
    if (c.targetDefault) s += u" DEFAULT " + *c.targetDefault;
    if (e == Engine::MySql) {
        if (c.autoIncrement) s += u" AUTO_INCREMENT";
        auto at = c.targetExtra.find(u"ON UPDATE");
        if (at != String::npos) s += u" " + c.targetExtra.substr(at);
    }
    return s;
}

String IndexColumnsSql(Engine e, const IndexPlan& x) {
    String s;
    for (const auto& c : x.columns) {
        if (!s.empty()) s += u", ";
        s += QuoteName(e, c.name);
        if (e == Engine::MySql && c.prefix > 0) s += u"(" + IntText(c.prefix) + u")";
        if (c.descending) s += u" DESC";
    }
    return s;
}

// InnoDB keeps a row within half a 16 KiB page; a VARCHAR of at most 255
// bytes always stays in the row, longer texts and blobs may leave a
// 20-byte pointer. A table whose full row may pass the limit is refused by
// InnoDB's strict check even when its rows are small.
constexpr int64_t kInnoDbRowBytes = 8126;

int64_t InlineBytes(const ColumnPlan& c) {
    switch (c.kind) {
    case Kind::Text: {
        int64_t bytes = int64_t{c.length > 0 ? c.length : 255} * 4; // utf8mb4
        return bytes <= 255 ? bytes + 1 : 20;
    }
    case Kind::LongText: case Kind::LongBinary: return 20;
    case Kind::Binary: return c.length > 0 && c.length <= 255 ? c.length + 1 : 20;
    case Kind::Decimal: return c.precision / 2 + 1;
    case Kind::Guid: return 39;
    default: return 8;
    }
}

bool TooWideForInnoDb(const TablePlan& t) {
    int64_t bytes = 0;
    for (const auto& c : t.columns) bytes += InlineBytes(c);
    return bytes > kInnoDbRowBytes;
}

bool HasDescending(const IndexPlan& x) {
    for (const auto& c : x.columns)
        if (c.descending) return true;
    return false;
}

} // namespace

void FitIndexes(Engine target, TablePlan& t) {
    if (target == Engine::MySql && TooWideForInnoDb(t))
        t.changes.push_back(u"a full row may pass InnoDB's " + IntText(kInnoDbRowBytes) +
                            u" bytes: the table is made without InnoDB's strict row-size check (a row that "
                            u"does not fit fails when it is written)");
    std::vector<IndexPlan> kept;
    for (IndexPlan x : t.indexes) {
        bool keep = true;
        for (auto& ic : x.columns) {
            const ColumnPlan* c = ColumnNamed(t, ic.name);
            if (!c) { keep = false; break; }
            String type = LCase(c->targetType);
            bool longOnTarget = type.find(u"text") != String::npos || type.find(u"blob") != String::npos ||
                                type == u"memo" || type == u"image" || type.find(u"(max)") != String::npos;
            if (target == Engine::MySql && longOnTarget && ic.prefix == 0 && !x.fullText && !x.spatial) {
                ic.prefix = 255;
                t.changes.push_back(u"index " + x.name + u": indexes the first 255 characters of " + ic.name);
            }
            if ((target == Engine::Access || target == Engine::SqlServer) && longOnTarget) {
                t.changes.push_back(u"index " + x.name + u" left out: " + ic.name + u" is a long column there");
                keep = false;
                break;
            }
            if (target != Engine::MySql) ic.prefix = 0;
        }
        if (keep && (x.fullText || x.spatial) && target != Engine::MySql && target != Engine::Xml) {
            t.changes.push_back(u"index " + x.name + (x.fullText ? u": a full-text" : u": a spatial") +
                                u" index made as a plain index");
            x.fullText = x.spatial = false;
        }
        // An Access relationship brings its own index: it comes back with
        // the foreign key.
        if (keep && target == Engine::Access && !x.primaryKey) {
            for (const auto& fk : t.foreignKeys)
                if (EqualsNoCase(fk.name, x.name)) keep = false;
            if (!keep) continue;
        }
        // Access names the key of a table PrimaryKey.
        if (keep && x.primaryKey && target == Engine::Access && x.name == u"PRIMARY") x.name = u"PrimaryKey";
        if (keep) kept.push_back(std::move(x));
    }
    t.indexes = std::move(kept);
    if (target == Engine::MySql) {
        // An auto-increment column must lead some key.
        for (const auto& c : t.columns) {
            if (!c.autoIncrement) continue;
            bool leads = false;
            for (const auto& x : t.indexes)
                if (!x.columns.empty() && EqualsNoCase(x.columns[0].name, c.name)) leads = true;
            if (!leads) t.indexes.push_back({u"ai_" + c.name, false, false, false, false, {{c.name, false, 0}}});
        }
    }
}

bool IndexAfterRows(Engine e, const TablePlan& t, const IndexPlan& x) {
    if (e != Engine::MySql || x.primaryKey || x.fullText || x.spatial || x.columns.empty()) return false;
    const ColumnPlan* lead = ColumnNamed(t, x.columns.front().name);
    return !(lead && lead->autoIncrement);
}

String AddIndexesSql(Engine e, const TablePlan& t, const std::vector<String>& existing) {
    String adds;
    for (const auto& x : t.indexes) {
        if (!IndexAfterRows(e, t, x)) continue;
        String name = FitName(x.name);
        bool there = false;
        for (const String& n : existing) there = there || EqualsNoCase(n, name);
        if (there) continue;
        adds += (adds.empty() ? u" ADD " : u", ADD ") + String(x.unique ? u"UNIQUE KEY " : u"KEY ") +
                QuoteName(e, name) + u" (" + IndexColumnsSql(e, x) + u")";
    }
    return adds.empty() ? adds : u"ALTER TABLE " + QuoteName(e, t.name) + adds;
}

std::vector<String> CreateTableSql(Engine e, const TablePlan& t, bool indexesLater) {
    std::vector<String> out;
    String sql = u"CREATE TABLE " + QuoteName(e, t.name) + u" (";
    bool first = true;
    for (const auto& c : t.columns) {
        sql += (first ? u"" : u", ") + ColumnSql(e, c);
        first = false;
    }
    for (const auto& x : t.indexes) {
        if (x.primaryKey) {
            // The Access provider names every key PrimaryKey itself and wants
            // constraint names unique in the whole file: the key goes unnamed.
            if (e == Engine::Access && HasDescending(x)) continue; // added below, in the file
            if (e == Engine::MySql || e == Engine::Access) sql += u", PRIMARY KEY (" + IndexColumnsSql(e, x) + u")";
            else
                sql += u", CONSTRAINT " + QuoteName(e, FitName(e == Engine::SqlServer ? u"PK_" + t.name : x.name)) +
                       u" PRIMARY KEY (" + IndexColumnsSql(e, x) + u")";
        } else if (e == Engine::MySql && !(indexesLater && IndexAfterRows(e, t, x))) {
            String kind = x.fullText ? u"FULLTEXT KEY " : x.spatial ? u"SPATIAL KEY " : x.unique ? u"UNIQUE KEY " : u"KEY ";
            sql += u", " + kind + QuoteName(e, FitName(x.name)) + u" (" + IndexColumnsSql(e, x) + u")";
        }
    }
    sql += u")";
    if (e == Engine::MySql && !t.tableOptions.empty()) sql += u" " + t.tableOptions;
    if (e == Engine::MySql && TooWideForInnoDb(t)) {
        // Made without the check that looks at the widest possible row: a
        // row that does not fit still fails aloud when it is written.
        out.push_back(u"SET SESSION innodb_strict_mode = OFF");
        out.push_back(sql);
        out.push_back(u"SET SESSION innodb_strict_mode = ON");
    } else {
        out.push_back(sql);
    }
    if (e == Engine::Access) {
        // A key with a descending column is made by the provider in the file
        // itself: a key inside CREATE TABLE would be all ascending.
        for (const auto& x : t.indexes)
            if (x.primaryKey && HasDescending(x))
                out.push_back(u"ALTER TABLE " + QuoteName(e, t.name) + u" ADD CONSTRAINT " + QuoteName(e, FitName(x.name)) +
                              u" PRIMARY KEY (" + IndexColumnsSql(e, x) + u")");
        // The Access provider forgets NOT NULL on a column that has a
        // default: it is set again on its own.
        for (const auto& c : t.columns)
            if (!c.nullable && c.targetDefault && !c.autoIncrement)
                out.push_back(u"ALTER TABLE " + QuoteName(e, t.name) + u" ALTER COLUMN " + QuoteName(e, c.name) +
                              u" NOT NULL");
    }
    if (e != Engine::MySql) {
        for (const auto& x : t.indexes) {
            if (x.primaryKey) continue;
            out.push_back(String(u"CREATE ") + (x.unique ? u"UNIQUE " : u"") + u"INDEX " + QuoteName(e, FitName(x.name)) +
                          u" ON " + QuoteName(e, t.name) + u" (" + IndexColumnsSql(e, x) + u")");
        }
    }
    return out;
}

String DropTableSql(Engine e, StringView table) { return u"DROP TABLE " + QuoteName(e, table); }

String ForeignKeySql(Engine e, const ForeignKeyPlan& fk) {
    std::vector<String> cols(fk.columns.begin(), fk.columns.end());
    std::vector<String> refs(fk.referencedColumns.begin(), fk.referencedColumns.end());
    String sql = u"ALTER TABLE " + QuoteName(e, fk.table) + u" ADD CONSTRAINT " + QuoteName(e, FitName(fk.name)) +
                 u" FOREIGN KEY (" + QuoteList(e, cols) + u") REFERENCES " + QuoteName(e, fk.referencedTable) + u" (" +
                 QuoteList(e, refs) + u")";
    auto rule = [&](const String& r) -> String {
        if (r == u"CASCADE" || r == u"SET NULL") return r;
        if (r == u"SET DEFAULT" && e != Engine::Access) return r;
        return String();
    };
    if (String d = rule(fk.onDelete); !d.empty()) sql += u" ON DELETE " + d;
    if (String u = rule(fk.onUpdate); !u.empty()) sql += u" ON UPDATE " + u;
    return sql;
}

String TableExistsSql(Engine e, StringView table) {
    if (e == Engine::MySql)
        return u"SELECT 1 FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_SCHEMA = DATABASE() AND TABLE_NAME = " +
               TextLiteral(e, table);
    if (e == Engine::SqlServer) return u"SELECT 1 FROM sys.tables WHERE name = " + TextLiteral(e, table);
    return String(); // Access: asked through the schema rowset
}

} // namespace zolsdk::transfer
