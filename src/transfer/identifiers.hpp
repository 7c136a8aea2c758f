#pragma once
// Names in this road's statements: always between the target's quotes,
// a closing quote inside a name doubled.
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

String QuoteName(Engine e, StringView name);
// "a", "b" quoted and joined by ", ".
String QuoteList(Engine e, const std::vector<String>& names);
// A name of at most `limit` characters for an index or key the target
// must name (Access and MariaDB limit names to 64 characters).
String FitName(StringView name, size_t limit = 64);

} // namespace zolsdk::transfer
