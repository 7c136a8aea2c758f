#pragma once
// The providers' side of the in-memory rowset: filling it a whole row at a
// time and streaming rows into it from a background fetch. Clients only read
// rowsets; these hooks stay inside the library.
#include <cstdint>
#include <functional>
#include <vector>

#include "zolsdk/platform/ado/recordset.hpp"

namespace zolsdk::ado {

class RowsetFeed {
public:
    // Fast path for providers: a whole row, in field order, made final.
    static void AppendRow(Recordset& rs, std::vector<Variant> cells) { rs.AppendRow(std::move(cells)); }

    // Providers that fetch in the background implement this: it is asked to
    // make at least `rows` rows available (blocking until they are, or the
    // result is complete) and reports whether more may still come.
    using RowFeed = Recordset::RowFeed;
    static void SetRowFeed(Recordset& rs, RowFeed feed, int32_t extraState) {
        rs.SetRowFeed(std::move(feed), extraState);
    }
    // The last row has been moved in: the extra state is lifted.
    static void FeedComplete(Recordset& rs) { rs.FeedComplete(); }

    // For a reader that walks once from the first row to the last while the
    // rows stream in: rows the cursor has left behind are dropped, so memory
    // holds what lies ahead, not the whole result. Going back to a dropped
    // row (MoveFirst, Move from the first, an old bookmark) then fails with
    // 3021. Has no effect under a filter or a sort.
    static void ReleasePassedRows(Recordset& rs, bool on) { rs.ReleasePassedRows(on); }
};

} // namespace zolsdk::ado
