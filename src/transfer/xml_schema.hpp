#pragma once
// The XML schema file both ways: the tables, columns, indexes and keys in
// the form the XML catalog reads, plus what the reader does not look at
// (each column's kind and the source's own type, auto-increment, index
// prefixes) so that a schema read back from the file is the one written.
#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// A default read from the file that is an expression of its source engine
// starts with this mark (the file says so in default_form).
inline constexpr char16_t kXmlExpression = u'\x01';

std::vector<String> XmlTableNames(const String& path);
TablePlan ReadXmlTable(const String& path, const String& table);

// Writes `tables` into the file, keeping the tables it holds already that
// are not among them (the file is made when it does not exist).
void WriteXmlSchema(const String& path, const std::vector<TablePlan>& tables);
// Takes the tables out of the file again.
void RemoveXmlTables(const String& path, const std::vector<String>& tables);

} // namespace zolsdk::transfer
