#pragma once
// What the extension's pieces share: the catalog handle held by Python
// objects, text conversion at the Python edge, and the failure helpers.
#include <nanobind/nanobind.h>

#include <memory>
#include <mutex>
#include <string>

#include <zolsdk/zolsdk.hpp>

namespace zolsdk::py {

namespace nb = nanobind;

// One catalog as Python holds it. The library's objects are used by one
// thread at a time: whoever works with the catalog with the GIL released
// holds `lock` (readers and streams share the handle, and so the lock).
struct CatalogHandle {
    Ref<DbCatalog> catalog;
    String attributes;
    std::mutex lock;

    DbCatalog& Get();   // 91 once closed
};
using CatalogPtr = std::shared_ptr<CatalogHandle>;

inline String Text(const std::string& utf8) { return FromUtf8(utf8); }
nb::str PyText(StringView s);

// Raises a DbError from the binding itself (source "zolsdk.python").
[[noreturn]] void Fail(int32_t number, const String& description);

// The type group of each column of a table, by case-blind name.
struct ColumnInfo {
    String name;
    int32_t group = 0;
    int32_t precision = 0;
    int32_t scale = 0;
};
std::vector<ColumnInfo> ReadColumns(const Ref<DbCatalog>& catalog, const String& table);

void BindErrors(nb::module_& m);
void BindCatalog(nb::module_& m);
void BindRows(nb::module_& m);
void BindArrow(nb::module_& m);
void BindTransfer(nb::module_& m);

} // namespace zolsdk::py
