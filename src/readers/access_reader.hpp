#pragma once
// The schema reader of the Access engine. All five reads come from the
// provider's schema rowsets, each over a connection of the reader's own
// that is closed before the rows are walked; only the table list is kept,
// until Refresh.
#include "readers/reader_base.hpp"

namespace zolsdk {

class DbMsAccessReader : public ReaderBase {
public:
    ~DbMsAccessReader() override;

    Ref<ado::Recordset> Tables() override;
    Ref<ado::Recordset> TableColumns(const String& psTableName) override;
    Ref<ado::Recordset> IndexColumns(const String& psIndexName, const String& psTableName) override;
    Ref<ado::Recordset> Indexes(const String& psTableName) override;
    Ref<ado::Recordset> Keys(const String& psTableName) override;
    Variant Refresh() override;

    // The portable type group of a native ADO type number and its size (the
    // precision, or the maximum length, 0 for the long types).
    static int32_t GetDataTypeGroup(int32_t plDataType, int32_t plSize);

private:
    Ref<ado::Recordset> moTablesRS;

    String PrimaryKeyIndex(const String& psTableName);
    // A schema rowset read over a connection of its own, detached.
    Ref<ado::Recordset> FetchSchema(int32_t schema, const std::vector<Variant>& criteria);
};

} // namespace zolsdk
