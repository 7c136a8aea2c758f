#pragma once
// What the sessions over a provider connection (MySQL, SQL Server, Access)
// share: the connection held for one statement or for a BeginTransaction
// bracket, the statement family with its handlers, and the wording of a
// failure that comes from outside the library.
//
// An engine derives from AdoSession, names itself in the constructor (the
// class name prefixes every trace literal) and adjusts the two hooks:
// PrepareConnection for settings a new connection needs before it opens,
// BeforeStatement for settings applied right before a statement runs.
#include "platform/ado/connection.hpp"
#include "sessions/session_base.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

// A failure from outside the library, as the statement family and the
// database routines report it: number 0x8004FFFF, "ZolSDK" in front of the
// source, the original text kept inside the description, and the statement
// behind "ErrSQL: " when one is given. A library failure comes back as it is.
DbError WrapForeignFailure(DbError failure, const String* statement);

class AdoSession : public SessionBase {
public:
    AdoSession(int32_t dbTypeId, String className, SessionFeatures features);
    ~AdoSession() override;

    // Rows of a statement as a disconnected rowset. Inside a bracket a
    // statement written with a leading "!" is opened asynchronously and
    // stays bound to the open connection while its rows arrive.
    Ref<ado::Recordset> Execute(const String& psSQL) override;
    int32_t ExecuteNoQueryEx(const String& psSQL, const Ref<Collection>& poParameters) override;
    int32_t ExecuteNoQuery(const String& psSQL) override;
    String ExecuteScalar(const String& psSQL, const String& psDefault) override;
    void Disconnect() override;

    // The connection held open by a bracket (nothing outside one).
    const Ref<ado::Connection>& ActiveConnection() const { return moConnection; }

protected:
    // The statements that BeforeStatement is told about.
    enum class StatementKind {
        Rows,           // Execute, synchronous
        AsyncRows,      // Execute with the "!" prefix inside a bracket
        NoRows,         // ExecuteNoQuery, and ExecuteNoQueryEx without parameters
        BoundParameters,// ExecuteNoQueryEx with parameters, before the command runs
        Scalar          // ExecuteScalar
    };

    void OpenConnection() override;
    void CloseConnection() override;

    // Settings of a new connection besides the client-side cursor location
    // and the connection text; nothing by default.
    virtual void PrepareConnection(ado::Connection&) {}
    // Runs on the open connection right before a statement; nothing by default.
    virtual void BeforeStatement(StatementKind, ado::Connection&) {}

    // The handler of the statement family: the routine's chain line, a
    // foreign failure wrapped with `statement`, the connection closed
    // (outside a bracket), then raised.
    [[noreturn]] void WrapAndReraise(const RoutineMark& mark, const String& statement);

    Ref<ado::Connection> moConnection;

private:
    String litExecute_, litExecuteNoQuery_, litExecuteNoQueryEx_, litExecuteScalar_, litOpenConnection_,
        routineOpenConnection_;
};

} // namespace zolsdk
