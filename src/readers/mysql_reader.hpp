#pragma once
// The schema reader of the MySQL engine. Tables, columns and keys come from
// the provider's schema rowsets over a connection of the reader's own;
// indexes come from the server's SHOW INDEX, whose form depends on the
// first character of the server's version text. The table and column
// rowsets are kept until Refresh.
#include "readers/reader_base.hpp"

namespace zolsdk {

class DbMySQLReader : public ReaderBase {
public:
    ~DbMySQLReader() override;

    Ref<ado::Recordset> Tables() override;
    Ref<ado::Recordset> TableColumns(const String& psTableName) override;
    Ref<ado::Recordset> IndexColumns(const String& psIndexName, const String& psTableName) override;
    Ref<ado::Recordset> Indexes(const String& psTableName) override;
    Ref<ado::Recordset> Keys(const String& psTableName) override;
    Variant Refresh() override;

    // The portable type group of a native ADO type number, with the size
    // (precision or length) and scale that decide between neighbours.
    static int32_t GetDataTypeGroup(int32_t plDataType, int32_t plSize, int32_t plScale);
    // The major version as the reader takes it: the first character alone.
    static int32_t MajorVersion(const String& version);
    // Bytes as text, cut before the first zero.
    static String BytesToString(const Variant& pvBytes);

private:
    Ref<ado::Recordset> moTablesRS;
    Ref<ado::Recordset> moColumnsRS;
    String msVersion;

    String PrimaryKeyIndex(const String& psTableName);
    String GetVersion();
    // A schema rowset read over a connection of its own, detached.
    Ref<ado::Recordset> FetchSchema(int32_t schema, const std::vector<Variant>& criteria);
};

} // namespace zolsdk
