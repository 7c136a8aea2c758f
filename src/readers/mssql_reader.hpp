#pragma once
// The schema reader of the SQL Server engine. All five reads come from the
// provider's schema rowsets, each over a connection of the reader's own
// that is closed before the rows are walked. Only the table list is kept,
// until Refresh.
#include "readers/reader_base.hpp"

namespace zolsdk {

class DbMsSQLReader : public ReaderBase {
public:
    ~DbMsSQLReader() override;

    Ref<ado::Recordset> Tables() override;
    Ref<ado::Recordset> TableColumns(const String& psTableName) override;
    Ref<ado::Recordset> IndexColumns(const String& psIndexName, const String& psTableName) override;
    Ref<ado::Recordset> Indexes(const String& psTableName) override;
    Ref<ado::Recordset> Keys(const String& psTableName) override;
    Variant Refresh() override;

    // The portable type group of a native ADO type number, with the size
    // (precision or length) that decides between text and long text.
    static int32_t GetDataTypeGroup(int32_t plDataType, int32_t plSize);
    // The server's product version, asked once; "8.00.2039" when the
    // server answers nothing. Nothing in the reader depends on it.
    String GetVersion();

private:
    Ref<ado::Recordset> moTablesRS;
    String msVersion;

    String PrimaryKeyIndex(const String& psTableName);
    Ref<ado::Recordset> FetchSchema(int32_t schema, const std::vector<Variant>& criteria);
};

} // namespace zolsdk
