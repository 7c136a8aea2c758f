#pragma once
// Criteria trees from Python, rendered by the library's own criteria code:
// the tree becomes a DbQuery whose conditions carry each column's type group,
// and the catalog exports the rows it selects (ExportDataByQuery).
#include <vector>

#include "binding.hpp"

namespace zolsdk::py {

// The tree as Python hands it over, copied out while the GIL is held:
// ("cond", column, operator, value) or ("and" | "or", [children]).
struct CriteriaNode {
    bool leaf = false;
    String column;
    int32_t op = 0;
    Variant value;
    DbLogicalOperatorEnum logic = dloAnd;
    std::vector<CriteriaNode> children;
};

CriteriaNode ReadCriteria(nb::handle tree);
Variant ToVariant(nb::handle value);

struct ExportRequest {
    String table;
    std::vector<String> columns;   // empty: every column
    bool hasCriteria = false;
    // Binary columns come through the library's data sets altered (the last
    // byte as 0, an empty value as NULL): read only when the caller says so.
    bool lossyBinary = false;
    CriteriaNode criteria;
};

ExportRequest ReadRequest(const std::string& table, nb::handle columns, nb::handle where, bool lossyBinary);

// Without the GIL, under the catalog's lock. A condition on a column the
// table lacks, or on one that no predicate can test, fails here instead of
// selecting every row.
Ref<DbDataSet> Export(DbCatalog& catalog, const ExportRequest& request);

} // namespace zolsdk::py
