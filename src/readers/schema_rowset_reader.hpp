#pragma once
// The schema reader of the engines whose provider answers schema rowsets
// (tables, columns, indexes, foreign and primary keys) with the usual field
// names: the Access and SQL Server readers. All five reads come from those
// rowsets, each over a connection of the reader's own that is closed before
// the rows are walked; only the table list is kept, until Refresh. An engine
// brings its class name (for the trace lines) and its type groups.
#include <vector>

#include "readers/reader_base.hpp"

namespace zolsdk {

class SchemaRowsetReader : public ReaderBase {
public:
    ~SchemaRowsetReader() override;

    Ref<ado::Recordset> Tables() override;
    Ref<ado::Recordset> TableColumns(const String& psTableName) override;
    Ref<ado::Recordset> IndexColumns(const String& psIndexName, const String& psTableName) override;
    Ref<ado::Recordset> Indexes(const String& psTableName) override;
    Ref<ado::Recordset> Keys(const String& psTableName) override;
    Variant Refresh() override;

protected:
    explicit SchemaRowsetReader(StringView className);
    // The portable type group of a native type number and the size that
    // decides between text and long text (the precision, else the length).
    virtual int32_t TypeGroup(int32_t plDataType, int32_t plSize) const = 0;

private:
    Ref<ado::Recordset> moTablesRS;
    String litTables_;
    String litTableColumns_;
    String litIndexes_;
    String litIndexColumns_;
    String litKeys_;
    String litPrimaryKeyIndex_;

    String PrimaryKeyIndex(const String& psTableName);
    // A schema rowset read over a connection of its own, detached.
    Ref<ado::Recordset> FetchSchema(int32_t schema, const std::vector<Variant>& criteria);
};

} // namespace zolsdk
