#pragma once
// What zol prints of the lossless road: the plan before any row moves.
#include <ostream>

#include "zolsdk/transfer/transfer.hpp"

namespace zol {

// "plan: N tables from MariaDB into Access", then every forced change.
void PrintPlan(const zolsdk::transfer::Plan& plan, std::ostream& out);

} // namespace zol
