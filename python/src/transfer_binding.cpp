// migrate / verify over the lossless copy road. The road runs on a thread
// of its own while the calling thread waits with the GIL released, waking
// to look for Ctrl-C: a signal sets the road's cancel flag, the road stops
// at its next progress point, and KeyboardInterrupt is raised once it has.
#include "query_build.hpp"

#if __has_include(<zolsdk/transfer/transfer.hpp>)
#include <zolsdk/transfer/transfer.hpp>

#include <nanobind/stl/optional.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <thread>

namespace zolsdk::py {

namespace {

namespace tr = zolsdk::transfer;

nb::list Texts(const std::vector<String>& v) {
    nb::list out;
    for (const auto& s : v) out.append(PyText(s));
    return out;
}

nb::dict VerificationDict(const tr::Verification& v) {
    nb::dict d;
    d["done"] = v.done;
    d["equal"] = v.equal;
    d["source_rows"] = v.sourceRows;
    d["target_rows"] = v.targetRows;
    d["source_checksum"] = v.sourceSum;
    d["target_checksum"] = v.targetSum;
    d["first_difference"] = PyText(v.firstDifference);
    d["failure"] = PyText(v.failure);
    return d;
}

// Outcomes as Python names them (the road's own names are display text).
const char* OutcomeKey(tr::Outcome o) {
    switch (o) {
    case tr::Outcome::Verified: return "verified";
    case tr::Outcome::Created: return "created";
    case tr::Outcome::Mismatch: return "mismatch";
    case tr::Outcome::Failed: return "failed";
    case tr::Outcome::HalfMade: return "half_made";
    case tr::Outcome::Cancelled: return "cancelled";
    }
    return "failed";
}

nb::dict TableDict(const tr::TableResult& r) {
    nb::dict d;
    d["table"] = PyText(r.table);
    d["outcome"] = OutcomeKey(r.outcome);
    d["ok"] = r.Ok();
    d["rows_read"] = r.rowsRead;
    d["rows_written"] = r.rowsWritten;
    d["verification"] = VerificationDict(r.verification);
    d["changes"] = Texts(r.changes);
    d["failure"] = PyText(r.failure);
    d["seconds"] = r.seconds;
    return d;
}

nb::dict ReportDict(const tr::Report& r) {
    nb::list tables;
    for (const auto& t : r.tables) tables.append(TableDict(t));
    nb::dict d;
    d["tables"] = tables;
    d["notes"] = Texts(r.notes);
    d["ok"] = r.Ok();
    d["text"] = PyText(r.Text());
    return d;
}

struct Request {
    String from, to;
    std::vector<String> tables;
    bool verify = true, schemaOnly = false, replace = false;
    int jobs = 1;
    int64_t progressEvery = 50000;
    nb::object progress;
    Variant rangeFrom, rangeTo;
};

Request ReadRequest(nb::handle src, nb::handle dst, nb::handle tables, nb::handle options) {
    Request q;
    q.from = Text(nb::cast<std::string>(src));
    q.to = Text(nb::cast<std::string>(dst));
    if (!tables.is_none())
        for (nb::handle t : tables) q.tables.push_back(Text(nb::cast<std::string>(t)));
    nb::dict o = nb::cast<nb::dict>(options);
    if (o.contains("verify")) q.verify = nb::cast<bool>(o["verify"]);
    if (o.contains("schema_only")) q.schemaOnly = nb::cast<bool>(o["schema_only"]);
    if (o.contains("replace")) q.replace = nb::cast<bool>(o["replace"]);
    if (o.contains("jobs")) q.jobs = std::max(1, nb::cast<int>(o["jobs"]));
    if (o.contains("progress_every")) q.progressEvery = std::max<int64_t>(1, nb::cast<int64_t>(o["progress_every"]));
    if (o.contains("progress") && !o["progress"].is_none()) q.progress = o["progress"];
    if (o.contains("key_from") && !o["key_from"].is_none()) q.rangeFrom = ToVariant(o["key_from"]);
    if (o.contains("key_to") && !o["key_to"].is_none()) q.rangeTo = ToVariant(o["key_to"]);
    return q;
}

// Runs `work` on its own thread; the caller's thread waits without the GIL
// and looks for signals every tenth of a second. A progress callback that
// raises stops the road like Ctrl-C does, and its exception is re-raised.
class Runner {
public:
    explicit Runner(const Request& q) {
        options_.tables = q.tables;
        options_.verify = q.verify;
        options_.schemaOnly = q.schemaOnly;
        options_.replace = q.replace;
        options_.progressEvery = q.progressEvery;
        options_.cancel = &cancel_;
        if (q.progress.is_valid()) {
            // The road may copy its options on any thread: the callback they
            // carry holds no Python reference of its own.
            progress_ = q.progress;
            options_.progress = [this](const tr::Progress& p) {
                nb::gil_scoped_acquire gil;
                if (callbackError_) return;
                try {
                    progress_(PyText(p.table), p.rows);
                } catch (nb::python_error& e) {
                    callbackError_ = std::make_unique<nb::python_error>(std::move(e));
                    cancel_ = true;
                }
            };
        }
    }

    const tr::Options& Options() const { return options_; }

    template <class F>
    void Run(F&& work) {
        std::exception_ptr failure;
        bool finished = false;
        std::mutex mu;
        std::condition_variable cv;
        std::thread worker([&] {
            try {
                work();
            } catch (...) {
                failure = std::current_exception();
            }
            std::lock_guard<std::mutex> g(mu);
            finished = true;
            cv.notify_all();
        });
        bool interrupted = false;
        for (;;) {
            {
                nb::gil_scoped_release nogil;
                std::unique_lock<std::mutex> l(mu);
                if (cv.wait_for(l, std::chrono::milliseconds(100), [&] { return finished; })) break;
            }
            if (!interrupted && PyErr_CheckSignals() != 0) {
                interrupted = true;   // KeyboardInterrupt is now pending; let the road stop first
                cancel_ = true;
            }
        }
        {
            nb::gil_scoped_release nogil;
            worker.join();
        }
        if (interrupted) throw nb::python_error();
        if (callbackError_) {
            auto e = std::move(callbackError_);
            throw nb::python_error(std::move(*e));
        }
        if (failure) std::rethrow_exception(failure);
    }

private:
    tr::Options options_;
    nb::object progress_;
    std::atomic<bool> cancel_{false};
    std::unique_ptr<nb::python_error> callbackError_;
};

// Every table, `jobs` at a time, each copy on connections of its own; the
// report keeps the plan's order. As the road's own Run: tables not started
// when the run is cancelled say so, and foreign keys come last.
tr::Report RunParallel(const tr::Plan& plan, const tr::Options& options, int jobs) {
    if (jobs <= 1 || plan.tables.size() <= 1) return tr::Run(plan, options);
    auto cancelled = [&] { return options.cancel && options.cancel->load(); };
    tr::Report report;
    report.tables.resize(plan.tables.size());
    std::atomic<size_t> next{0};
    std::vector<std::thread> pool;
    for (int j = 0; j < jobs; ++j)
        pool.emplace_back([&] {
            for (size_t i; (i = next++) < plan.tables.size();) {
                tr::TableResult& r = report.tables[i];
                if (cancelled()) {
                    r.table = plan.tables[i].name;
                    r.outcome = tr::Outcome::Cancelled;
                    r.failure = u"cancelled before it started";
                    continue;
                }
                r = tr::CopyTable(plan, plan.tables[i], options);
            }
        });
    for (auto& t : pool) t.join();
    if (!cancelled()) {
        try {
            tr::AddForeignKeys(plan, options, report);
        } catch (const DbError& e) {
            report.notes.push_back(u"foreign keys not added: " + e.Description());
        }
    }
    return report;
}

const tr::TablePlan& FindTable(const tr::Plan& plan, const String& name) {
    const tr::TablePlan* t = plan.Find(name);
    if (!t) Fail(err::InvalidCall, u"the source has no table " + name);
    return *t;
}

nb::dict Migrate(nb::handle src, nb::handle dst, nb::handle tables, nb::handle options) {
    Request q = ReadRequest(src, dst, tables, options);
    Runner runner(q);
    tr::Report report;
    runner.Run([&] {
        tr::Plan plan = tr::MakePlan(q.from, q.to, runner.Options());
        report = RunParallel(plan, runner.Options(), q.jobs);
    });
    return ReportDict(report);
}

nb::dict VerifyAll(nb::handle src, nb::handle dst, nb::handle tables, nb::handle options) {
    Request q = ReadRequest(src, dst, tables, options);
    Runner runner(q);
    tr::Report report;
    runner.Run([&] {
        tr::Plan plan = tr::MakePlan(q.from, q.to, runner.Options());
        report = tr::VerifyAll(plan, runner.Options());
    });
    return ReportDict(report);
}

// The worker entry points: one table, or one key range of it, planned again
// from the two attribute strings.
nb::dict CopyTable(nb::handle src, nb::handle dst, const std::string& table, nb::handle options) {
    Request q = ReadRequest(src, dst, nb::make_tuple(table), options);
    const bool create = nb::cast<nb::dict>(options).contains("create") &&
                        nb::cast<bool>(nb::cast<nb::dict>(options)["create"]);
    Runner runner(q);
    tr::TableResult result;
    runner.Run([&] {
        tr::Plan plan = tr::MakePlan(q.from, q.to, runner.Options());
        const tr::TablePlan& t = FindTable(plan, Text(table));
        if (create) {
            result = tr::CopyTable(plan, t, runner.Options());
        } else {
            result = tr::CopyRows(plan, t, runner.Options(), tr::KeyRange{q.rangeFrom, q.rangeTo});
        }
    });
    return TableDict(result);
}

nb::dict VerifyTable(nb::handle src, nb::handle dst, const std::string& table, nb::handle options) {
    Request q = ReadRequest(src, dst, nb::make_tuple(table), options);
    Runner runner(q);
    tr::Verification v;
    runner.Run([&] {
        tr::Plan plan = tr::MakePlan(q.from, q.to, runner.Options());
        v = tr::Verify(plan, FindTable(plan, Text(table)), runner.Options(), tr::KeyRange{q.rangeFrom, q.rangeTo});
    });
    return VerificationDict(v);
}

nb::list PlanTables(nb::handle src, nb::handle dst, nb::handle tables) {
    Request q = ReadRequest(src, dst, tables, nb::dict());
    tr::Options o;
    o.tables = q.tables;
    tr::Plan plan;
    {
        nb::gil_scoped_release nogil;
        plan = tr::MakePlan(q.from, q.to, o);
    }
    nb::list out;
    for (const auto& t : plan.tables) {
        nb::list cols;
        for (const auto& c : t.columns)
            cols.append(nb::make_tuple(PyText(c.name), tr::KindName(c.kind), PyText(c.targetType), c.nullable));
        out.append(nb::make_tuple(PyText(t.name), cols, Texts(t.keyColumns), Texts(t.changes)));
    }
    return out;
}

} // namespace

void BindTransfer(nb::module_& m) {
    m.attr("HAS_TRANSFER") = true;
    m.def("migrate", &Migrate, nb::arg("src"), nb::arg("dst"), nb::arg("tables").none(), nb::arg("options"));
    m.def("verify", &VerifyAll, nb::arg("src"), nb::arg("dst"), nb::arg("tables").none(), nb::arg("options"));
    m.def("copy_table", &CopyTable, nb::arg("src"), nb::arg("dst"), nb::arg("table"), nb::arg("options"));
    m.def("verify_table", &VerifyTable, nb::arg("src"), nb::arg("dst"), nb::arg("table"), nb::arg("options"));
    m.def("plan", &PlanTables, nb::arg("src"), nb::arg("dst"), nb::arg("tables").none());
}

} // namespace zolsdk::py

#else

namespace zolsdk::py {

// Built without the copy road: zolsdk.migrate says so when called.
void BindTransfer(nb::module_& m) { m.attr("HAS_TRANSFER") = false; }

} // namespace zolsdk::py

#endif
