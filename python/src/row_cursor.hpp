#pragma once
// A walk over the rows of an exported data set, one reused row at a time,
// with each cell read as the library hands it out (null mark, then value).
#include <vector>

#include "query_build.hpp"

namespace zolsdk::py {

struct CursorColumn {
    String name;
    int32_t group = 0;
    int32_t precision = 0;
    int32_t scale = 0;
};

class RowCursor {
public:
    // Opens the data set; call without the GIL, under the catalog's lock.
    RowCursor(CatalogPtr handle, const ExportRequest& request);
    ~RowCursor();
    RowCursor(const RowCursor&) = delete;
    RowCursor& operator=(const RowCursor&) = delete;

    const std::vector<CursorColumn>& Columns() const { return columns_; }
    CatalogHandle& Handle() { return *handle_; }
    const CatalogPtr& Shared() const { return handle_; }
    // The next row, or nothing at the end.
    DbDataRow* Next();
    // Cell i of the current row: null, or the library's value.
    static bool IsNull(DbDataRow& row, int32_t i) { return row.IsNullValue(Variant(i)); }
    static Variant Value(DbDataRow& row, int32_t i) { return row.Item(Variant(i)); }

private:
    CatalogPtr handle_;
    Ref<DbDataSet> set_;
    Ref<DbEnumerator<DbDataRow>> rows_;
    DbEnumerator<DbDataRow>::iterator it_;
    bool started_ = false, done_ = false, scoped_ = false;

    void End();
    std::vector<CursorColumn> columns_;
};

} // namespace zolsdk::py
