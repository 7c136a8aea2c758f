// Running a plan: each table made, filled, verified; the foreign keys last.
#include <chrono>

#include "transfer/ddl.hpp"
#include "transfer/endpoint.hpp"
#include "transfer/identifiers.hpp"
#include "transfer/run_steps.hpp"
#include "transfer/rows.hpp"
#include "transfer/text_road.hpp"
#include "transfer/verify.hpp"
#include "transfer/xml_schema.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point t) { return std::chrono::duration<double>(Clock::now() - t).count(); }

String Describe(const std::exception& e) {
    if (auto* d = dynamic_cast<const DbError*>(&e)) {
        String text = d->Description();
        while (!text.empty() && (text.back() == u'\n' || text.back() == u'\r')) text.pop_back();
        return text.empty() ? u"failure " + IntText(d->Number()) : text;
    }
    return FromUtf8(e.what());
}

bool Cancelled(const Options& o) { return o.cancel && o.cancel->load(); }

bool TableExists(ado::Connection& c, Engine e, const String& table) {
    if (e == Engine::Access) {
        Ref<ado::Recordset> rs = c.OpenSchema(ado::adSchemaTables, {Variant(), Variant(), Variant(table)});
        if (rs->RecordCount() > 0) rs->MoveFirst();
        while (!rs->Eof()) {
            if (EqualsNoCase(rs->Value(u"TABLE_NAME").ToString(), table)) return true;
            rs->MoveNext();
        }
        return false;
    }
    int32_t n = 0;
    Ref<ado::Recordset> rs = c.Execute(TableExistsSql(e, table), n);
    return rs && rs->State() != ado::adStateClosed && !rs->Eof();
}

// Drops what failed to arrive; the reason when it cannot, empty when done.
String DropFailed(ado::Connection& c, Engine e, const String& table) {
    try {
        Run(c, DropTableSql(e, table));
        return {};
    } catch (const std::exception& x) {
        return Describe(x);
    }
}

void CreateOn(ado::Connection& c, Engine e, const TablePlan& t, const Options& o, bool indexesLater) {
    if (TableExists(c, e, t.name)) {
        if (!o.replace)
            throw DbError(err::InvalidCall, u"zolsdk.transfer",
                          u"the table exists on the target already (replace drops and recreates it)");
        Run(c, DropTableSql(e, t.name));
    }
    std::vector<String> sql = CreateTableSql(e, t, indexesLater);
    try {
        for (const String& s : sql) Run(c, s);
    } catch (...) {
        if (!o.keepFailed) (void)DropFailed(c, e, t.name);
        throw;
    }
}

void CreateInXml(const Endpoint& dst, const TablePlan& t, const Options& o) {
    String path = dst.FilePath();
    std::vector<String> have;
    try {
        have = XmlTableNames(path);
    } catch (const DbError&) {
        // No readable file yet: it is made with this table.
    }
    for (const String& n : have)
        if (EqualsNoCase(n, t.name) && !o.replace)
            throw DbError(err::InvalidCall, u"zolsdk.transfer",
                          u"the table exists in the XML file already (replace writes it again)");
    WriteXmlSchema(path, {t});
}

TableResult Result(const TablePlan& t) {
    TableResult r;
    r.table = t.name;
    r.changes = t.changes;
    return r;
}

TableResult Create(const Plan& plan, const TablePlan& t, const Options& o, bool indexesLater) {
    TableResult r = Result(t);
    auto start = Clock::now();
    try {
        Endpoint dst = OpenEndpoint(plan.to);
        if (dst.engine == Engine::Xml) {
            CreateInXml(dst, t, o);
        } else {
            Ref<ado::Connection> c = Connect(dst, o.lockTimeoutSeconds);
            CreateOn(*c, dst.engine, t, o, indexesLater);
            c->Close();
        }
        r.outcome = Outcome::Created;
    } catch (const std::exception& e) {
        r.outcome = Outcome::Failed;
        r.failure = Describe(e);
    }
    r.seconds = Since(start);
    return r;
}

} // namespace

TableResult CreateTable(const Plan& plan, const TablePlan& t, const Options& o) { return Create(plan, t, o, false); }

TableResult CreateForRows(const Plan& plan, const TablePlan& t, const Options& o) {
    return Create(plan, t, o, !o.schemaOnly);
}

bool HasLateIndexes(Engine target, const TablePlan& t) {
    for (const IndexPlan& x : t.indexes)
        if (IndexAfterRows(target, t, x)) return true;
    return false;
}

String AddLateIndexes(const Plan& plan, const TablePlan& t, const Options& o, const std::function<void()>& starting) {
    try {
        Endpoint dst = OpenEndpoint(plan.to);
        if (!HasLateIndexes(dst.engine, t)) return {};
        Ref<ado::Connection> c = Connect(dst, o.lockTimeoutSeconds);
        std::vector<String> existing;
        int32_t n = 0;
        Ref<ado::Recordset> rs = c->Execute(u"SHOW INDEX FROM " + QuoteName(dst.engine, t.name), n);
        while (rs && rs->State() != ado::adStateClosed && !rs->Eof()) {
            existing.push_back(rs->Value(u"Key_name").ToString());
            rs->MoveNext();
        }
        String sql = AddIndexesSql(dst.engine, t, existing);
        if (!sql.empty()) {
            if (starting) starting();
            Run(*c, sql);
        }
        c->Close();
        return {};
    } catch (const std::exception& e) {
        return u"indexes not added: " + Describe(e);
    }
}


namespace {

// Compares the source's rows with the target's by their sums; the source's
// sum read now, or `known` (taken while the rows streamed for the copy).
// The target is always read anew.
Verification Compare(const Plan& plan, const TablePlan& t, const Options& o, const KeyRange& range,
                     const TableSum* known) {
    Verification v;
    try {
        Endpoint src = OpenEndpoint(plan.from), dst = OpenEndpoint(plan.to);
        if (src.engine == Engine::Xml || dst.engine == Engine::Xml) {
            v.failure = u"an XML catalog holds no rows to compare";
            return v;
        }
        Ref<ado::Connection> tc = Connect(dst, o.lockTimeoutSeconds);
        Ref<ado::Connection> sc;
        // Both sides are summed alike: over values, or over the server's text.
        bool byText = known ? known->byText : GoesByText(src.engine, dst.engine, t);
        auto sum = [&](ado::Connection& c, Engine e) {
            return byText ? TextChecksum(c, t, range, o.cancel) : Checksum(c, e, t, range, o.cancel);
        };
        TableSum a;
        if (known) {
            a = *known;
        } else {
            sc = Connect(src, o.lockTimeoutSeconds);
            a = sum(*sc, src.engine);
        }
        TableSum b = sum(*tc, dst.engine);
        if (Cancelled(o)) {
            v.failure = u"cancelled";
            return v;
        }
        v.done = true;
        v.sourceRows = a.rows;
        v.targetRows = b.rows;
        v.sourceSum = a.sum;
        v.targetSum = b.sum;
        v.equal = a.rows == b.rows && a.sum == b.sum;
        if (!v.equal) {
            if (!sc) sc = Connect(src, o.lockTimeoutSeconds);
            v.firstDifference = FirstDifference(*sc, src.engine, *tc, dst.engine, t, range);
        }
        if (sc) sc->Close();
        tc->Close();
    } catch (const std::exception& e) {
        v.failure = Describe(e);
    }
    return v;
}

} // namespace

Verification Verify(const Plan& plan, const TablePlan& t, const Options& o, const KeyRange& range) {
    return Compare(plan, t, o, range, nullptr);
}

TableResult CopyUnverified(const Plan& plan, const TablePlan& t, const Options& o, const KeyRange& range,
                           TableSum& sent) {
    TableResult r = Result(t);
    auto start = Clock::now();
    try {
        Endpoint src = OpenEndpoint(plan.from), dst = OpenEndpoint(plan.to);
        if (src.engine == Engine::Xml || dst.engine == Engine::Xml) {
            r.outcome = Outcome::Created;
            r.seconds = Since(start);
            return r;
        }
        Ref<ado::Connection> sc = Connect(src, o.lockTimeoutSeconds), tc = Connect(dst, o.lockTimeoutSeconds);
        int64_t read = 0, nextReport = o.progressEvery;
        bool stopped = false;
        // Progress now and then; false once the run is cancelled.
        auto tick = [&](int64_t rows) {
            if (rows < nextReport) return true;
            nextReport = rows + o.progressEvery;
            if (o.progress) o.progress({t.name, rows});
            stopped = Cancelled(o);
            return !stopped;
        };
        if (GoesByText(src.engine, dst.engine, t)) {
            r.rowsWritten = CopyByText(*sc, *tc, t, range, o.batchBytes, sent, tick);
            read = sent.rows;
        } else {
            RowReader reader(*sc, src.engine, t, range);
            std::unique_ptr<RowWriter> writer = MakeWriter(*tc, dst.engine, t, o.batchBytes);
            // The source's side of the verification is summed as its rows go by.
            sent = {};
            while (reader.Next()) {
                writer->Add(reader.Row());
                if (o.verify) sent.sum += RowHash(t, reader.Row());
                if (!tick(++read)) break;
            }
            r.rowsWritten = writer->Finish();
        }
        sent.rows = read;
        r.rowsRead = read;
        if (o.progress) o.progress({t.name, read});
        sc->Close();
        tc->Close();
        if (stopped) {
            r.outcome = Outcome::Cancelled;
            r.failure = u"cancelled";
        } else {
            r.outcome = r.rowsRead == r.rowsWritten ? Outcome::Created : Outcome::Mismatch;
        }
    } catch (const std::exception& e) {
        r.outcome = Outcome::Failed;
        r.failure = Describe(e);
    }
    r.seconds = Since(start);
    return r;
}

bool ToVerify(const Plan& plan, const Options& o, const TableResult& copied) {
    // An XML catalog holds no rows: nothing was copied to be verified.
    if (!o.verify || plan.source == Engine::Xml || plan.target == Engine::Xml) return false;
    return copied.outcome == Outcome::Created || copied.outcome == Outcome::Mismatch;
}

void VerifyCopy(const Plan& plan, const TablePlan& t, const Options& o, const KeyRange& range, const TableSum& sent,
                TableResult& r) {
    auto start = Clock::now();
    r.verification = Compare(plan, t, o, range, &sent);
    r.outcome = r.verification.done && r.verification.equal ? Outcome::Verified : Outcome::Mismatch;
    if (!r.verification.failure.empty()) r.failure = r.verification.failure;
    r.seconds += Since(start);
}

TableResult CopyRows(const Plan& plan, const TablePlan& t, const Options& o, const KeyRange& range) {
    TableSum sent;
    TableResult r = CopyUnverified(plan, t, o, range, sent);
    if (ToVerify(plan, o, r)) VerifyCopy(plan, t, o, range, sent, r);
    return r;
}

TableResult CopyTable(const Plan& plan, const TablePlan& t, const Options& o) {
    TableResult made = CreateForRows(plan, t, o);
    if (made.outcome != Outcome::Created || o.schemaOnly) return made;
    TableResult r = CopyRows(plan, t, o);
    r.seconds += made.seconds;
    if (r.outcome == Outcome::Verified || r.outcome == Outcome::Created) {
        String failure = AddLateIndexes(plan, t, o);
        if (!failure.empty()) {
            r.outcome = Outcome::Failed;
            r.failure = failure;
        }
    }
    if (r.outcome == Outcome::Failed || r.outcome == Outcome::Cancelled) {
        if (o.keepFailed) {
            if (r.outcome == Outcome::Failed) r.outcome = Outcome::HalfMade;
        } else {
            String why;
            try {
                Endpoint dst = OpenEndpoint(plan.to);
                if (dst.engine == Engine::Xml) {
                    RemoveXmlTables(dst.FilePath(), {t.name});
                } else {
                    Ref<ado::Connection> c = Connect(dst, o.lockTimeoutSeconds);
                    why = DropFailed(*c, dst.engine, t.name);
                }
            } catch (const std::exception& x) {
                why = Describe(x);
            }
            if (!why.empty()) {
                r.failure += u"; the half-made table could not be dropped: " + why;
                r.outcome = Outcome::HalfMade;
            }
        }
    }
    return r;
}

void AddForeignKeys(const Plan& plan, const Options& o, Report& report) {
    Endpoint dst = OpenEndpoint(plan.to);
    if (dst.engine == Engine::Xml) return; // written with their tables
    Ref<ado::Connection> c;
    for (const TablePlan& t : plan.tables) {
        TableResult* result = nullptr;
        for (auto& r : report.tables)
            if (r.table == t.name) result = &r;
        if (!result || !result->Ok() || t.foreignKeys.empty()) continue;
        if (!c) c = Connect(dst, o.lockTimeoutSeconds);
        for (const ForeignKeyPlan& fk : t.foreignKeys) {
            try {
                if (!c) c = Connect(dst, o.lockTimeoutSeconds);
                Run(*c, ForeignKeySql(dst.engine, fk));
            } catch (const std::exception& e) {
                // The Access provider closes its connection after a refusal.
                c.Release();
                String what = u"foreign key " + fk.name + u" to " + fk.referencedTable + u" not added: " + Describe(e);
                result->changes.push_back(what);
                report.notes.push_back(t.name + u": " + what);
            }
        }
    }
    if (c) c->Close();
}


Report Run(const Plan& plan, const Options& o) {
    Report report;
    for (const TablePlan& t : plan.tables) {
        if (Cancelled(o)) {
            TableResult r;
            r.table = t.name;
            r.outcome = Outcome::Cancelled;
            r.failure = u"cancelled before it started";
            report.tables.push_back(std::move(r));
            continue;
        }
        report.tables.push_back(CopyTable(plan, t, o));
    }
    if (!Cancelled(o)) {
        try {
            AddForeignKeys(plan, o, report);
        } catch (const std::exception& e) {
            report.notes.push_back(u"foreign keys not added: " + Describe(e));
        }
    }
    return report;
}

Report VerifyAll(const Plan& plan, const Options& o) {
    Report report;
    report.verifyOnly = true;
    for (const TablePlan& t : plan.tables) {
        TableResult r;
        r.table = t.name;
        auto start = Clock::now();
        r.verification = Verify(plan, t, o);
        r.rowsRead = r.verification.sourceRows;
        r.rowsWritten = r.verification.targetRows;
        r.failure = r.verification.failure;
        r.outcome = !r.verification.done ? Outcome::Failed
                    : r.verification.equal ? Outcome::Verified
                                           : Outcome::Mismatch;
        r.seconds = Since(start);
        report.tables.push_back(std::move(r));
    }
    return report;
}

void SaveSchema(const String& fromAttributes, const String& xmlFile) {
    String dir = xmlFile, name = xmlFile;
    auto slash = xmlFile.find_last_of(u"/\\");
    if (slash == String::npos) {
        dir = u".";
    } else {
        dir = xmlFile.substr(0, slash);
        name = xmlFile.substr(slash + 1);
    }
    std::remove(ToUtf8(xmlFile).c_str());
    Plan plan = MakePlan(fromAttributes, u"dbtype=msxml;dbname=" + name + u";dblocation=" + dir, {});
    std::vector<TablePlan> tables = plan.tables;
    WriteXmlSchema(xmlFile, tables);
}

} // namespace zolsdk::transfer
