#pragma once
// A statement as the server gets it: UTF-8, with each "?" mark replaced by
// its parameter as a literal (the text protocol has no bound values).
#include <mysql.h>

#include <string>
#include <vector>

#include "platform/ado/connection.hpp"

namespace zolsdk::ado::detail {

// Raises ProviderFailure when a value has no literal (a number that is not
// finite) or marks and parameters do not match.
std::string StatementText(MYSQL* db, StringView sql, const std::vector<Ref<Parameter>>& params);

} // namespace zolsdk::ado::detail
