#pragma once
// What every schema reader shares: the owning session (held weakly, since
// the session keeps its reader), the failure handler that names a missing
// session, and the rule that primary key columns are never nullable.
#include <memory>

#include "zolsdk/readers/reader.hpp"
#include "zolsdk/sessions/session.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

class ReaderBase : public IDBReader {
public:
    void Init(const Ref<IDBSession>& poSession) override { session_ = poSession.shared(); }

protected:
    // The session; a reader used before Init (or after its session ended)
    // fails with 91.
    Ref<IDBSession> Session() const { return Ref<IDBSession>(session_.lock()); }
    bool HasSession() const { return !session_.expired(); }

    // Re-raises the failure being handled with this routine's trace line;
    // a 91 without a session says what is missing.
    [[noreturn]] void Reraise(const RoutineMark& mark) const;

    // Sets is_nullable to false on the rows of `columns` (a ColumnRS) whose
    // column belongs to the table's primary key.
    void ApplyPrimaryKeyRule(ado::Recordset& columns, const String& psTableName, const String& pkIndexName);

    // The first column of each key of a FOREIGN_KEYS schema rowset, as a
    // KeyRS; lines are marked on the caller's routine.
    static Ref<ado::Recordset> KeysFromForeignKeyRowset(ado::Recordset& native, RoutineMark& zol_mark_);

private:
    std::weak_ptr<IDBSession> session_;
};

} // namespace zolsdk

#define ZOL_READER_RERAISE catch (...) { Reraise(zol_mark_); }
