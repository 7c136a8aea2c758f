// Planning: the source's tables read once, each given the target's types,
// defaults, keys and indexes, with every change the target forces said
// before a row moves.
#include "transfer/ddl.hpp"
#include "transfer/defaults.hpp"
#include "transfer/endpoint.hpp"
#include "transfer/identifiers.hpp"
#include "transfer/schema_read.hpp"
#include "transfer/text_road.hpp"
#include "transfer/type_map.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

bool IntegerKind(Kind k) {
    switch (k) {
    case Kind::Int8: case Kind::UInt8: case Kind::Int16: case Kind::UInt16: case Kind::Int32: case Kind::UInt32:
    case Kind::Int64: case Kind::UInt64:
        return true;
    default:
        return false;
    }
}

bool FitsLong(Kind k) {
    return k == Kind::Int8 || k == Kind::UInt8 || k == Kind::Int16 || k == Kind::UInt16 || k == Kind::Int32;
}

ColumnPlan* ColumnNamed(TablePlan& t, StringView name) {
    for (auto& c : t.columns)
        if (EqualsNoCase(c.name, name)) return &c;
    return nullptr;
}

// Access relates only columns of one type: a referencing column takes the
// type of the column it refers to (a wider integer holds its values).
void MatchKeyTypes(Engine target, Plan& plan) {
    if (target != Engine::Access) return;
    for (auto& t : plan.tables) {
        for (const auto& fk : t.foreignKeys) {
            TablePlan* ref = nullptr;
            for (auto& r : plan.tables)
                if (EqualsNoCase(r.name, fk.referencedTable)) ref = &r;
            if (!ref) continue;
            for (size_t i = 0; i < fk.columns.size() && i < fk.referencedColumns.size(); ++i) {
                ColumnPlan* c = ColumnNamed(t, fk.columns[i]);
                const ColumnPlan* r = ColumnNamed(*ref, fk.referencedColumns[i]);
                if (!c || !r || !IntegerKind(c->kind) || !IntegerKind(r->kind)) continue;
                String want = r->autoIncrement ? String(u"LONG") : r->targetType;
                if (c->targetType == want || !FitsLong(c->kind)) continue;
                t.changes.push_back(c->name + u": " + c->targetType + u" made " + want + u" like " + ref->name +
                                    u"." + r->name + u" (Access relates columns of one type)");
                c->targetType = want;
            }
        }
    }
}

// "datetime(3)", "time(6)", "timestamp(2)": a type that holds parts of a second.
bool HoldsFractions(StringView native) {
    auto open = native.find(u'(');
    return open != StringView::npos && open + 1 < native.size() && native[open + 1] >= u'1' &&
           native[open + 1] <= u'9';
}

void PlanColumns(Engine source, Engine target, TablePlan& t) {
    bool sameMySql = source == Engine::MySql && target == Engine::MySql;
    for (auto& c : t.columns) {
        // MariaDB's own type words (from MariaDB, or kept in an XML file
        // written from it) go back to MariaDB as they are, with their
        // character set and ON UPDATE.
        bool native = target == Engine::MySql && (source == Engine::MySql || source == Engine::Xml) &&
                      !c.sourceNative.empty();
        if (native) {
            c.targetType = c.sourceNative;
        } else {
            if (target != Engine::Xml) c.targetExtra.clear();
            MapType(target, c, t.changes);
        }
        if (c.sourceDefault) {
            if (sameMySql) {
                c.targetDefault = *c.sourceDefault;
            } else {
                DefaultValue d = ParseDefault(source, *c.sourceDefault);
                c.targetDefault = TargetDefault(target, c, d, t.changes);
            }
        }
        if (c.autoIncrement) {
            bool holds = target == Engine::Xml || target == Engine::MySql ||
                         (target == Engine::SqlServer && IntegerKind(c.kind)) ||
                         (target == Engine::Access && FitsLong(c.kind));
            if (!holds) {
                c.autoIncrement = false;
                t.changes.push_back(c.name + u": auto-increment dropped (an Access AutoNumber is a Long Integer)");
            } else if (target == Engine::Access && c.kind != Kind::Int32) {
                c.targetType = u"LONG";
                t.changes.push_back(c.name + u": an AutoNumber, a Long Integer");
            }
            if (target == Engine::Access) c.targetDefault.reset();
        }
    }
    // Values are carried to the second, except on the text road, where the
    // server's own text keeps every digit.
    if (target == Engine::Xml || GoesByText(source, target, t)) return;
    for (const auto& c : t.columns)
        if ((c.kind == Kind::DateTime || c.kind == Kind::Time) && HoldsFractions(c.sourceNative))
            t.changes.push_back(c.name + u": fractions of a second are dropped (dates are carried to the second)");
}

// MariaDB holds dates no other engine has ('0000-00-00', a zero month or
// day); they are read as Null (off the text road). How many each column holds is asked before
// a row moves, and a column that holds any takes Null on the target.
void PlanZeroDates(Engine source, Engine target, ado::Connection* c, TablePlan& t) {
    // The text road carries them as they are.
    if (source != Engine::MySql || target == Engine::Xml || GoesByText(source, target, t) || !c) return;
    std::vector<ColumnPlan*> dates;
    String sql;
    for (auto& col : t.columns) {
        if (col.kind != Kind::Date && col.kind != Kind::DateTime) continue;
        String q = QuoteName(Engine::MySql, col.name);
        sql += String(sql.empty() ? u"SELECT " : u", ") + u"COALESCE(SUM(MONTH(" + q + u") = 0 OR DAYOFMONTH(" + q + u") = 0), 0)";
        dates.push_back(&col);
    }
    if (dates.empty()) return;
    int32_t n = 0;
    Ref<ado::Recordset> rs = c->Execute(sql + u" FROM " + QuoteName(Engine::MySql, t.name), n);
    if (!rs || rs->State() == ado::adStateClosed || rs->Eof()) return;
    for (size_t i = 0; i < dates.size(); ++i) {
        int64_t zeros = static_cast<int64_t>(rs->Fields().Item(static_cast<int32_t>(i)).Value().ToDouble());
        if (zeros <= 0) continue;
        ColumnPlan& col = *dates[i];
        String what = col.name + u": " + IntText(zeros) + (zeros == 1 ? u" zero date arrives" : u" zero dates arrive") +
                      (target == Engine::MySql ? u" as Null ('0000-00-00' or a zero month or day)"
                                               : u" as Null ('0000-00-00' or a zero month or day: a date no other engine holds)");
        if (!col.nullable) {
            col.nullable = true;
            what += u"; the column takes Null";
        }
        t.changes.push_back(what);
    }
}

void PlanTableOptions(Engine source, Engine target, TablePlan& t) {
    if (target == Engine::Xml) return; // kept in the file for a later MariaDB target
    if (target != Engine::MySql) {
        t.tableOptions.clear();
        return;
    }
    if ((source != Engine::MySql && source != Engine::Xml) || t.tableOptions.empty()) {
        // Every character the source can hold (4-byte ones included), and
        // an engine that keeps foreign keys.
        t.tableOptions = u"ENGINE=InnoDB DEFAULT CHARSET=utf8mb4";
        return;
    }
    if (!t.foreignKeys.empty() && t.tableOptions.find(u"ENGINE=InnoDB") == String::npos) {
        String old = t.tableOptions.substr(0, t.tableOptions.find(u' '));
        t.tableOptions.replace(0, old.size(), u"ENGINE=InnoDB");
        t.changes.push_back(u"storage engine InnoDB instead of " + old.substr(7) + u" (it holds no foreign keys)");
    }
}

void PlanForeignKeys(Engine target, TablePlan& t) {
    for (auto& fk : t.foreignKeys) {
        if (target == Engine::Access && (fk.onDelete == u"SET DEFAULT" || fk.onUpdate == u"SET DEFAULT"))
            t.changes.push_back(u"foreign key " + fk.name + u": SET DEFAULT rule made NO ACTION (Access has none)");
        if (fk.name.empty()) fk.name = u"fk_" + t.name + u"_" + fk.referencedTable;
    }
}

} // namespace

const TablePlan* Plan::Find(StringView table) const {
    for (const auto& t : tables)
        if (EqualsNoCase(t.name, table)) return &t;
    return nullptr;
}

Plan MakePlan(const String& fromAttributes, const String& toAttributes, const Options& options) {
    Plan plan;
    plan.from = fromAttributes;
    plan.to = toAttributes;
    Endpoint src = OpenEndpoint(fromAttributes);
    Endpoint dst = OpenEndpoint(toAttributes);
    plan.source = src.engine;
    plan.target = dst.engine;

    Ref<ado::Connection> conn;
    if (src.engine != Engine::Xml) conn = Connect(src, options.lockTimeoutSeconds);
    std::vector<String> all = SourceTableNames(src);
    std::vector<String> names;
    if (options.tables.empty()) {
        names = all;
    } else {
        for (const String& want : options.tables) {
            const String* found = nullptr;
            for (const String& have : all)
                if (EqualsNoCase(have, want)) found = &have;
            if (!found)
                throw DbError(err::InvalidCall, u"zolsdk.transfer", u"the source has no table named '" + want + u"'");
            names.push_back(*found);
        }
    }
    for (const String& name : names) {
        TablePlan t = ReadTable(src, conn.get(), name);
        PlanColumns(src.engine, dst.engine, t);
        PlanZeroDates(src.engine, dst.engine, conn.get(), t);
        PlanTableOptions(src.engine, dst.engine, t);
        FitIndexes(dst.engine, t);
        PlanForeignKeys(dst.engine, t);
        plan.tables.push_back(std::move(t));
    }
    MatchKeyTypes(dst.engine, plan);
    if (conn) conn->Close();
    return plan;
}

} // namespace zolsdk::transfer
