#include "row_cursor.hpp"

namespace zolsdk::py {

RowCursor::RowCursor(CatalogPtr handle, const ExportRequest& request) : handle_(std::move(handle)) {
    DbCatalog& catalog = handle_->Get();
    // Large exports fetch in the background on the connection this scope
    // keeps open; it ends with the walk.
    catalog.BeginTransaction();
    scoped_ = true;
    try {
        set_ = Export(catalog, request);
        std::vector<ColumnInfo> schema = ReadColumns(SelfRef(&catalog), request.table);
        String binary;
        for (auto c : set_->Columns()) {
            CursorColumn col{c->ColumnName(), c->DataTypeGroup(), 0, 0};
            for (const auto& s : schema)
                if (EqualsNoCase(s.name, col.name)) {
                    col.precision = s.precision;
                    col.scale = s.scale;
                }
            if (col.group == dtBinaryBLOB) binary += (binary.empty() ? u"" : u", ") + col.name;
            columns_.push_back(std::move(col));
        }
        if (!binary.empty() && !request.lossyBinary)
            Fail(err::InvalidCall, u"binary columns (" + binary +
                                       u") do not come through the library's data sets whole: the last byte "
                                       u"arrives as 0 and an empty value as NULL. Leave them out with "
                                       u"columns=[...], pass lossy_binary=True to read them so, or copy with "
                                       u"zolsdk.migrate");
    } catch (...) {
        End();
        throw;
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
        End();   // lets the engine's result go as soon as the walk ends
        return nullptr;
    }
    return it_->get();
}

void RowCursor::End() {
    rows_.Release();
    it_ = {};
    set_.Release();
    if (scoped_ && handle_->catalog) {
        scoped_ = false;
        handle_->catalog->EndTransaction();
    }
}

RowCursor::~RowCursor() {
    try {
        End();
    } catch (...) {
        // Closing a connection that already failed has nothing left to say.
    }
}

} // namespace zolsdk::py
