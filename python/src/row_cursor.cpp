#include "row_cursor.hpp"

namespace zolsdk::py {

RowCursor::RowCursor(CatalogPtr handle, const ExportRequest& request) : handle_(std::move(handle)) {
    DbCatalog& catalog = handle_->Get();
    set_ = Export(catalog, request);
    std::vector<ColumnInfo> schema = ReadColumns(SelfRef(&catalog), request.table);
    for (auto c : set_->Columns()) {
        CursorColumn col{c->ColumnName(), c->DataTypeGroup(), 0, 0};
        for (const auto& s : schema)
            if (EqualsNoCase(s.name, col.name)) {
                col.precision = s.precision;
                col.scale = s.scale;
            }
        columns_.push_back(std::move(col));
    }
}

DbDataRow* RowCursor::Next() {
    if (done_) return nullptr;
    if (!started_) {
        started_ = true;
        rows_ = set_->Rows()->NewEnum();
        it_ = rows_->begin();
    } else {
        ++it_;
    }
    if (it_ == rows_->end()) {
        done_ = true;
        rows_.Release();
        set_.Release();   // lets the engine's result go as soon as the walk ends
        return nullptr;
    }
    return it_->get();
}

} // namespace zolsdk::py
