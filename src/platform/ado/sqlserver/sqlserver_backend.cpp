// The SQL Server provider: the OLE DB connection text is translated for the
// FreeTDS ODBC driver, statements run on the ODBC backend, and schema
// rowsets come from the driver's catalog calls.
#include "platform/ado/sqlserver/freetds_text.hpp"
#include "platform/ado/sqlserver/sqlserver_schema.hpp"
#include "platform/ado/sqlserver/tsql_marks.hpp"

namespace zolsdk::ado::detail {

namespace {

class SqlServerBackend final : public Backend {
public:
    SqlServerBackend() : odbc_(MakeOdbcBackend({/*countsBeforeRows=*/true})) {}

    void Open(const String& connectionText, int32_t loginTimeout) override {
        FreeTdsConnection c = TranslateToFreeTds(connectionText);
        const int32_t seconds = c.loginTimeout >= 0 ? c.loginTimeout : loginTimeout;
        ProbeTdsServer(c, seconds);
        try {
            odbc_->Open(c.text, seconds);
        } catch (const ProviderFailure& refusal) {
            throw ExplainConnectRefusal(refusal, c);
        }
    }
    void Close() override { odbc_->Close(); }
    bool IsOpen() const override { return odbc_->IsOpen(); }
    std::unique_ptr<Cursor> Execute(const String& sql, const std::vector<Ref<Parameter>>& params, int64_t& affected,
                                    int32_t timeout) override {
        return odbc_->Execute(sql, params, affected, timeout);
    }
    Ref<Recordset> OpenSchema(int32_t schema, const std::vector<Variant>& criteria) override {
        return SqlServerOpenSchema(*odbc_, schema, criteria);
    }
    int32_t ParameterMarks(StringView sql) const override { return CountTSqlParameterMarks(sql); }

private:
    std::shared_ptr<Backend> odbc_;
};

} // namespace

std::shared_ptr<Backend> MakeSqlServerBackend() { return std::make_shared<SqlServerBackend>(); }

} // namespace zolsdk::ado::detail
