// Running a plan on several workers: each table is made (or found made by
// an earlier run), cut into key ranges when it is large, and its ranges are
// copied and verified by whichever worker is free; the foreign keys come
// last, once every table has arrived.
#include "zolsdk/transfer/parallel_run.hpp"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "catalog/attributes.hpp"
#include "transfer/ddl.hpp"
#include "transfer/endpoint.hpp"
#include "transfer/key_ranges.hpp"
#include "transfer/run_steps.hpp"
#include "transfer/resume_state.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk::transfer {

namespace {

using Clock = std::chrono::steady_clock;

double Since(Clock::time_point t) { return std::chrono::duration<double>(Clock::now() - t).count(); }

String Describe(const std::exception& e) {
    if (auto* d = dynamic_cast<const DbError*>(&e)) return d->Description();
    return FromUtf8(e.what());
}

// One table of the run and what has become of its ranges.
struct TableWork {
    const TablePlan* plan = nullptr;
    int64_t rows = -1;
    std::vector<KeyRange> ranges;       // one whole range when not cut
    bool split = false;
    std::vector<bool> clearFirst;       // a range an earlier run may have half-copied
    std::vector<std::optional<TableResult>> done; // per range; set when verified earlier or finished now
    std::vector<int64_t> rowsSoFar;     // per range, for progress
    size_t pending = 0;                 // ranges not yet verified
    size_t unstarted = 0;               // ranges no worker has taken yet
    size_t uncopied = 0;                // ranges not yet copied
    bool copyFailed = false;            // a range did not arrive
    bool lateIndexes = false;           // indexes to build once the rows are in
    // The late indexes built while the last ranges are verified.
    enum class Build { NotYet, Running, Failed, Done } build = Build::NotYet;
    Clock::time_point started;
    TableResult made;                   // the table's making (its changes)
};

class Scheduler {
public:
    Scheduler(const Plan& plan, const Options& o, const ParallelOptions& p, ResumeState* state)
        : plan_(plan), o_(o), p_(p), state_(state), tables_(plan.tables.size()), held_(plan.tables.size()) {
        for (size_t i = 0; i < plan.tables.size(); ++i) {
            tables_[i].plan = &plan.tables[i];
            waiting_.push_back(i);
        }
    }

    // With `oneAtATime` (an engine that takes one connection at work at a
    // time) a worker verifies what it copied itself, before copying on.
    Report Run(int32_t jobs, bool oneAtATime) {
        // Otherwise each worker has a verifier behind it: a range's target
        // is read again while the worker copies the next one.
        verifyInline_ = oneAtATime;
        std::vector<std::thread> workers, verifiers;
        for (int32_t i = 0; i < jobs; ++i) workers.emplace_back([this] { Work(); });
        for (int32_t i = 0; i < (oneAtATime ? 0 : jobs); ++i) verifiers.emplace_back([this] { VerifyWork(); });
        for (auto& w : workers) w.join();
        {
            std::lock_guard lock(mutex_);
            workersDone_ = true;
        }
        wake_.notify_all();
        for (auto& v : verifiers) v.join();
        for (auto& b : builders_) b.join();
        for (TableWork& t : tables_) report_.tables.push_back(std::move(t.made));
        return std::move(report_);
    }

private:
    struct Task {
        size_t table;
        size_t range;
    };
    // A range copied, waiting for its verification.
    struct Check {
        Task task;
        TableResult result;
        TableSum sent;
        Clock::time_point notBefore{}; // lets an index build take its locks first
    };
    // How long the last checks of a table wait after its index build is
    // sent: the build takes its exclusive lock first and the reads then go
    // on beside it, instead of the build waiting for every read.
    static constexpr std::chrono::milliseconds kBuildLead{100};

    bool Cancelled() const { return o_.cancel && o_.cancel->load(); }

    void Work() {
        for (;;) {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return !ranges_.empty() || !waiting_.empty() || preparing_ == 0; });
            if (!ranges_.empty()) {
                Task task = ranges_.front();
                ranges_.pop_front();
                --tables_[task.table].unstarted;
                lock.unlock();
                CopyRange(task);
            } else if (!waiting_.empty()) {
                size_t table = waiting_.front();
                waiting_.pop_front();
                ++preparing_;
                lock.unlock();
                Prepare(table);
                lock.lock();
                --preparing_;
                wake_.notify_all();
            } else {
                return; // nothing queued and nobody preparing more
            }
        }
    }

    // Makes the table (or finds it made), cuts it, and queues its ranges.
    void Prepare(size_t index) {
        TableWork& w = tables_[index];
        const TablePlan& t = *w.plan;
        w.started = Clock::now();
        TableState earlier = state_ ? state_->Table(t.name) : TableState{};
        if (earlier.verifiedRows) {
            TableResult r;
            r.table = t.name;
            r.changes = t.changes;
            r.outcome = o_.schemaOnly ? Outcome::Created : Outcome::Verified;
            r.rowsRead = r.rowsWritten = *earlier.verifiedRows;
            r.verification.done = r.verification.equal = true;
            r.verification.sourceRows = r.verification.targetRows = *earlier.verifiedRows;
            Finish(w, std::move(r), true);
            return;
        }
        if (Cancelled()) {
            w.made.table = t.name;
            w.made.outcome = Outcome::Cancelled;
            w.made.failure = u"cancelled before it started";
            Finish(w, w.made, false);
            return;
        }
        try {
            if (earlier.bounds) {
                // Cut by an earlier run: only its unverified ranges are copied again.
                w.made.table = t.name;
                w.made.changes = t.changes;
                w.made.outcome = Outcome::Created;
                w.split = true;
                w.ranges = RangesBetween(*earlier.bounds);
                w.clearFirst.assign(w.ranges.size(), true);
                w.done.resize(w.ranges.size());
                for (auto [i, rows] : earlier.rangesVerified) {
                    if (i < 0 || static_cast<size_t>(i) >= w.ranges.size()) continue;
                    TableResult r;
                    r.outcome = Outcome::Verified;
                    r.rowsRead = r.rowsWritten = rows;
                    w.done[static_cast<size_t>(i)] = r;
                }
            } else {
                Options make = o_;
                make.replace = o_.replace || earlier.created; // ours from an earlier run
                w.made = CreateForRows(plan_, t, make);
                if (w.made.outcome != Outcome::Created) {
                    Finish(w, w.made, false);
                    return;
                }
                if (o_.schemaOnly) {
                    if (state_) state_->TableVerified(t.name, 0);
                    Finish(w, w.made, false);
                    return;
                }
                Cut(w);
            }
        } catch (const std::exception& e) {
            w.made.table = t.name;
            w.made.outcome = Outcome::Failed;
            w.made.failure = Describe(e);
            Finish(w, w.made, false);
            return;
        }
        w.rowsSoFar.assign(w.ranges.size(), 0);
        if (p_.tableStarted) {
            std::lock_guard lock(callback_);
            p_.tableStarted(t.name, w.rows);
        }
        std::unique_lock lock(mutex_);
        w.lateIndexes = !verifyInline_ && HasLateIndexes(plan_.target, t);
        // Ranges wait in the plan's order of tables, whichever was made first.
        auto at = std::find_if(ranges_.begin(), ranges_.end(), [&](const Task& x) { return x.table > index; });
        for (size_t i = 0; i < w.ranges.size(); ++i)
            if (!w.done[i]) {
                at = std::next(ranges_.insert(at, {index, i}));
                ++w.pending;
            }
        w.unstarted = w.uncopied = w.pending;
        wake_.notify_all();
        if (w.pending == 0) {
            lock.unlock();
            Arrived(w);
        }
    }

    // Counts a freshly made table's rows and cuts it when it is large and keyed.
    void Cut(TableWork& w) {
        const TablePlan& t = *w.plan;
        w.ranges = {KeyRange{}};
        std::optional<Kind> kind = RangeKeyKind(plan_, t);
        std::vector<Variant> bounds;
        if (plan_.source != Engine::Xml && plan_.target != Engine::Xml) {
            Endpoint src = OpenEndpoint(plan_.from);
            Ref<ado::Connection> c = Connect(src, o_.lockTimeoutSeconds);
            w.rows = RowsAbout(*c, src.engine, t, p_.splitAbove);
            if (kind && w.rows > p_.splitAbove) {
                int64_t want = std::max<int64_t>(p_.jobs, (w.rows + p_.rangeRows - 1) / std::max<int64_t>(1, p_.rangeRows));
                bounds = CutPoints(*c, src.engine, t, *kind, w.rows, static_cast<int32_t>(std::min<int64_t>(want, 4096)));
            }
            c->Close();
        }
        if (!bounds.empty()) {
            w.split = true;
            w.ranges = RangesBetween(bounds);
            if (state_) state_->Split(t.name, *kind, bounds);
        } else if (state_) {
            state_->Created(t.name);
        }
        w.clearFirst.assign(w.ranges.size(), false);
        w.done.assign(w.ranges.size(), std::nullopt);
    }

    void CopyRange(const Task& task) {
        TableWork& w = tables_[task.table];
        const TablePlan& t = *w.plan;
        const KeyRange& range = w.ranges[task.range];
        TableResult r;
        TableSum sent;
        if (Cancelled()) {
            r.outcome = Outcome::Cancelled;
            r.failure = u"cancelled";
        } else {
            Options o = o_;
            o.progress = [this, &w, task](const Progress& p) { Rows(w, task.range, p.rows); };
            bool cleared = true;
            if (w.clearFirst[task.range]) {
                try {
                    Endpoint dst = OpenEndpoint(plan_.to);
                    Ref<ado::Connection> c = Connect(dst, o_.lockTimeoutSeconds);
                    ClearRange(*c, dst.engine, t, range);
                    c->Close();
                } catch (const std::exception& e) {
                    cleared = false;
                    r.outcome = Outcome::Failed;
                    r.failure = u"the rows of an earlier try could not be cleared: " + Describe(e);
                }
            }
            if (cleared) r = CopyUnverified(plan_, t, o, range, sent);
        }
        bool toVerify = ToVerify(plan_, o_, r);
        bool arrived = r.outcome == Outcome::Created || r.outcome == Outcome::Mismatch;
        std::unique_lock lock(mutex_);
        --w.uncopied;
        if (!arrived) w.copyFailed = true;
        if (toVerify && !verifyInline_) {
            // Verified by a verifier while this worker copies on; the last
            // ones of a table with indexes to build wait for the build.
            Check c{task, std::move(r), sent};
            if (w.lateIndexes && !w.copyFailed && w.build == TableWork::Build::NotYet && w.unstarted == 0)
                held_[task.table].push_back(std::move(c));
            else
                checks_.push_back(std::move(c));
        }
        if (w.uncopied == 0 && w.build == TableWork::Build::NotYet) {
            if (w.lateIndexes && !w.copyFailed) {
                w.build = TableWork::Build::Running;
                ++building_;
                builders_.emplace_back([this, index = task.table] { BuildLateIndexes(index); });
            } else {
                ReleaseHeld(task.table, Clock::now());
            }
        }
        wake_.notify_all();
        if (toVerify && !verifyInline_) return;
        lock.unlock();
        if (toVerify) VerifyCopy(plan_, t, o_, range, sent, r);
        RangeDone(task, std::move(r));
    }

    // The held checks of a table go to the verifiers. mutex_ is held.
    void ReleaseHeld(size_t table, Clock::time_point notBefore) {
        for (Check& c : held_[table]) {
            c.notBefore = notBefore;
            checks_.push_back(std::move(c));
        }
        held_[table].clear();
        wake_.notify_all();
    }

    // Builds a table's late indexes once its last range is copied, while
    // its last ranges are verified.
    void BuildLateIndexes(size_t index) {
        TableWork& w = tables_[index];
        auto release = [this, index] {
            std::lock_guard lock(mutex_);
            ReleaseHeld(index, Clock::now() + kBuildLead);
        };
        String failure = AddLateIndexes(plan_, *w.plan, o_, release);
        release(); // nothing to build, or a failure before the build
        std::unique_lock lock(mutex_);
        // A failure here (a lock the reads held too long, say) is tried
        // again once the rows are verified.
        w.build = failure.empty() ? TableWork::Build::Done : TableWork::Build::Failed;
        --building_;
        wake_.notify_all();
        if (w.pending != 0) return;
        lock.unlock();
        Arrived(w);
    }

    void VerifyWork() {
        for (;;) {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return !checks_.empty() || (workersDone_ && building_ == 0); });
            if (checks_.empty()) return;
            Check c = std::move(checks_.front());
            checks_.pop_front();
            lock.unlock();
            std::this_thread::sleep_until(c.notBefore);
            TableWork& w = tables_[c.task.table];
            VerifyCopy(plan_, *w.plan, o_, w.ranges[c.task.range], c.sent, c.result);
            RangeDone(c.task, std::move(c.result));
        }
    }

    void RangeDone(const Task& task, TableResult r) {
        TableWork& w = tables_[task.table];
        if (r.outcome == Outcome::Verified && state_ && w.split)
            state_->RangeVerified(w.plan->name, static_cast<int32_t>(task.range), r.rowsWritten);
        std::unique_lock lock(mutex_);
        w.done[task.range] = std::move(r);
        if (--w.pending != 0 || w.build == TableWork::Build::Running) return;
        lock.unlock();
        Arrived(w);
    }

    // Every range has an end: the indexes left for after the rows are
    // built (without holding up the other workers) unless built already,
    // then the table's result.
    void Arrived(TableWork& w) {
        bool allIn = true;
        for (const auto& d : w.done)
            allIn = allIn && (d->outcome == Outcome::Verified || d->outcome == Outcome::Created);
        String failure;
        if (allIn && w.build != TableWork::Build::Done) failure = AddLateIndexes(plan_, *w.plan, o_);
        std::lock_guard lock(mutex_);
        Complete(w, failure);
    }

    void Rows(TableWork& w, size_t range, int64_t rows) {
        std::lock_guard lock(callback_);
        w.rowsSoFar[range] = rows;
        if (!o_.progress) return;
        int64_t total = 0;
        for (int64_t n : w.rowsSoFar) total += n;
        o_.progress({w.plan->name, total});
    }

    // The table's result from its ranges' (and `failure`, of its indexes).
    // Called with mutex_ held.
    void Complete(TableWork& w, const String& failure) {
        TableResult r = w.made;
        r.rowsRead = r.rowsWritten = 0;
        bool verified = true, failed = false, counted = false;
        for (const auto& d : w.done) {
            counted = counted || d->rowsRead >= 0;
            r.rowsRead += std::max<int64_t>(0, d->rowsRead);
            r.rowsWritten += std::max<int64_t>(0, d->rowsWritten);
            r.verification.sourceRows += d->verification.sourceRows;
            r.verification.targetRows += d->verification.targetRows;
            if (d->outcome != Outcome::Verified) verified = false;
            if (d->outcome == Outcome::Failed || d->outcome == Outcome::Cancelled) failed = true;
            if (r.failure.empty() && !d->failure.empty()) r.failure = d->failure;
            if (r.verification.firstDifference.empty()) r.verification.firstDifference = d->verification.firstDifference;
        }
        if (!failure.empty()) {
            verified = false;
            failed = true;
            r.failure = failure;
        }
        r.verification.done = verified;
        r.verification.equal = verified;
        if (verified) {
            r.outcome = Outcome::Verified;
            if (state_) state_->TableVerified(r.table, r.rowsWritten);
        } else if (failed) {
            // Without keepFailed the table goes, as on the one-table road; one
            // that cannot be dropped (its server went away) stays for --resume.
            r.outcome = Outcome::HalfMade;
            if (!o_.keepFailed && DropFailed(*w.plan)) {
                r.outcome = Outcome::Failed;
                if (state_) state_->Forget(r.table);
            }
        } else {
            bool created = true;
            for (const auto& d : w.done) created = created && d->outcome == Outcome::Created;
            r.outcome = created && r.rowsRead == r.rowsWritten ? Outcome::Created : Outcome::Mismatch;
        }
        if (!counted) r.rowsRead = r.rowsWritten = -1;
        Finish(w, std::move(r), false);
    }

    bool DropFailed(const TablePlan& t) {
        try {
            Endpoint dst = OpenEndpoint(plan_.to);
            if (dst.engine == Engine::Xml) return false;
            Ref<ado::Connection> c = Connect(dst, o_.lockTimeoutSeconds);
            transfer::Run(*c, DropTableSql(dst.engine, t.name));
            c->Close();
            return true;
        } catch (const std::exception&) {
            return false;
        }
    }

    void Finish(TableWork& w, TableResult r, bool earlier) {
        r.seconds = Since(w.started);
        w.made = std::move(r);
        if (p_.tableDone) {
            std::lock_guard lock(callback_);
            p_.tableDone(w.made, earlier);
        }
    }

    const Plan& plan_;
    const Options& o_;
    const ParallelOptions& p_;
    ResumeState* state_;
    std::vector<TableWork> tables_;
    Report report_;

    std::mutex mutex_;             // the queues and each table's ranges
    std::recursive_mutex callback_; // the caller's callbacks, one at a time
    std::condition_variable wake_;
    std::deque<size_t> waiting_;   // tables not yet prepared
    std::deque<Task> ranges_;      // ranges ready to copy
    std::deque<Check> checks_;     // ranges copied, to verify
    std::vector<std::vector<Check>> held_; // per table: checks waiting for its index build
    std::vector<std::thread> builders_;    // index builds beside the verifiers
    int building_ = 0;                     // builds at work
    bool workersDone_ = false;     // no more ranges will be copied
    bool verifyInline_ = false;    // workers verify their own copies
    int preparing_ = 0;
};

// Providers that write one file take one writer at a time.
bool OneAtATime(const Plan& plan) {
    for (Engine e : {plan.source, plan.target})
        if (e == Engine::Access || e == Engine::Xml) return true;
    return false;
}

} // namespace

String DefaultStateFile(const String& to) {
    String type = LCase(SessionAttributeValue(to, u"dbtype"));
    String name = SessionAttributeValue(to, u"dbname"), place = SessionAttributeValue(to, u"dblocation");
    if (type == u"msaccess" || type == u"msxml") return (place.empty() ? String(u".") : place) + u"/" + name + u".zol-state";
    String file = name + u"@" + (place.empty() ? String(u"localhost") : place) + u".zol-state";
    for (char16_t& c : file)
        if (c == u'/' || c == u'\\' || c == u':') c = u'_';
    return file;
}

Report RunParallel(const Plan& plan, const Options& options, const ParallelOptions& parallel) {
    std::optional<ResumeState> state;
    if (!parallel.stateFile.empty()) state.emplace(parallel.stateFile, plan, parallel.resume);
    Scheduler scheduler(plan, options, parallel, state ? &*state : nullptr);
    bool one = OneAtATime(plan);
    Report report = scheduler.Run(one ? 1 : std::max<int32_t>(1, parallel.jobs), one);

    bool allArrived = true;
    for (const TableResult& r : report.tables) allArrived = allArrived && r.Ok();
    if (options.schemaOnly || (options.cancel && options.cancel->load())) return report;
    if (state && state->ForeignKeysAdded()) return report;
    if (!allArrived) {
        report.notes.push_back(u"foreign keys are added once every table has arrived");
        return report;
    }
    try {
        size_t before = report.notes.size();
        AddForeignKeys(plan, options, report);
        if (state && report.notes.size() == before) {
            // Nothing is left to resume: the record goes.
            state.reset();
            std::remove(ToUtf8(parallel.stateFile).c_str());
        }
    } catch (const std::exception& e) {
        report.notes.push_back(u"foreign keys not added: " + Describe(e));
    }
    return report;
}

} // namespace zolsdk::transfer
