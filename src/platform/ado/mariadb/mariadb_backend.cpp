// MySQL-family servers: statements run through the ODBC layer, schema
// rowsets come from INFORMATION_SCHEMA.
#include "platform/ado/backend.hpp"

namespace zolsdk::ado::detail {

namespace {

class MariaDbBackend final : public Backend {
public:
    MariaDbBackend() : odbc_(MakeOdbcBackend()) {}
    void Open(const String& connectionText, int32_t loginTimeout) override { odbc_->Open(connectionText, loginTimeout); }
    void Close() override { odbc_->Close(); }
    bool IsOpen() const override { return odbc_->IsOpen(); }
    std::unique_ptr<Cursor> Execute(const String& sql, const std::vector<Ref<Parameter>>& params, int64_t& affected,
                                    int32_t timeout) override {
        return odbc_->Execute(sql, params, affected, timeout);
    }
    Ref<Recordset> OpenSchema(int32_t schema, const std::vector<Variant>& criteria) override {
        return MySqlOpenSchema(*this, schema, criteria);
    }

private:
    std::shared_ptr<Backend> odbc_;
};

} // namespace

std::shared_ptr<Backend> MakeMariaDbBackend() { return std::make_shared<MariaDbBackend>(); }

} // namespace zolsdk::ado::detail
