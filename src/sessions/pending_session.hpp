#pragma once
// A session for an engine that this build cannot reach yet: it takes its
// attributes like any session, and every statement fails with the library's
// connection failure, saying which engine is missing.
#include "catalog/raise_error.hpp"
#include "sessions/session_base.hpp"

namespace zolsdk {

class PendingSession : public SessionBase {
public:
    PendingSession(int32_t id, String className, String engine)
        : SessionBase(id, std::move(className), {}), engine_(std::move(engine)) {}

    Ref<ado::Recordset> Execute(const String&) override { Fail(); }
    int32_t ExecuteNoQueryEx(const String&, const Ref<Collection>&) override { Fail(); }
    int32_t ExecuteNoQuery(const String&) override { Fail(); }
    String ExecuteScalar(const String&, const String&) override { Fail(); }
    void Disconnect() override { mbConnected = false; mlOpenDepth = 0; }
    bool IsFTSEnabled(const String&, const String&, const String&) override { return false; }
    bool EnableFTS(const String&, const String&, const String&) override { return false; }
    bool DisableFTS(const String&, const String&, const String&) override { return false; }
    bool CreateDB() override { Fail(); }
    bool DropDB() override { Fail(); }

protected:
    void OpenConnection() override { Fail(); }
    void CloseConnection() override {}
    String GetConnectionString(bool) override { return {}; }
    Ref<IDBReader> MakeReader() override { Fail(); }

private:
    String engine_;
    [[noreturn]] void Fail() {
        RaiseError(errnum::ErrConnect, ClassName(),
                   {Variant(AttributeValue(u"dbname")),
                    Variant(u"ErrNo:" + IntText(errnum::ConnectFailed) + u"\r\n Details:the " + engine_ +
                            u" engine is not part of this build")});
    }
};

} // namespace zolsdk
