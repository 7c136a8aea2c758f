#pragma once
// Order-independent checksums of a table's rows over normalised values,
// and the search for the first row that differs when two sums do not agree.
#include "transfer/endpoint.hpp"

namespace zolsdk::transfer {

struct TableSum {
    int64_t rows = 0;
    uint64_t sum = 0;
    bool byText = false; // summed over the server's text (text_road.hpp)
};

// Streams the table (or key range) once.
TableSum Checksum(ado::Connection& c, Engine e, const TablePlan& t, const KeyRange& range,
                  const std::atomic<bool>* cancel);

// The first source row that the target does not hold as it is: "key
// (id=7), column title", "key (id=7) missing on the target", or the first
// row the target has that the source has not.
String FirstDifference(ado::Connection& source, Engine se, ado::Connection& target, Engine te, const TablePlan& t,
                       const KeyRange& range);

// The row's hash from its values, as Checksum sums it.
uint64_t RowHash(const TablePlan& t, const std::vector<Variant>& row, std::vector<uint64_t>* columns = nullptr);

} // namespace zolsdk::transfer
