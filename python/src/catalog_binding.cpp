// The catalog and its schema as plain tuples; zolsdk/catalog.py turns them
// into the package's table, column and index objects.
#include <nanobind/stl/shared_ptr.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>

#include "binding.hpp"

namespace zolsdk::py {

std::vector<ColumnInfo> ReadColumns(const Ref<DbCatalog>& catalog, const String& table) {
    auto t = Ref<DbTable>::New();
    t->Init(catalog, table);
    std::vector<ColumnInfo> out;
    for (auto col : t->Columns())
        out.push_back({col->ColumnName(), col->DataTypeGroup(), col->NumericPrecision(), col->NumericScale()});
    return out;
}

namespace {

using Guard = std::lock_guard<std::mutex>;

CatalogPtr Open(const std::string& attributes) {
    auto h = std::make_shared<CatalogHandle>();
    h->attributes = Text(attributes);
    h->catalog = Ref<DbCatalog>::New();
    h->catalog->Init(h->attributes);
    return h;
}

nb::list TableNames(CatalogHandle& h) {
    std::vector<String> names;
    {
        nb::gil_scoped_release nogil;
        Guard g(h.lock);
        for (auto t : h.Get().Tables()) names.push_back(t->TableName());
    }
    nb::list out;
    for (const auto& n : names) out.append(PyText(n));
    return out;
}

struct ColumnRow {
    String name, def;
    int32_t position, type, group, precision, scale, size;
    bool hasDefault, nullable;
};

nb::list Columns(CatalogHandle& h, const std::string& table) {
    std::vector<ColumnRow> rows;
    {
        nb::gil_scoped_release nogil;
        Guard g(h.lock);
        auto t = Ref<DbTable>::New();
        t->Init(SelfRef(&h.Get()), Text(table));
        for (auto c : t->Columns())
            rows.push_back({c->ColumnName(), c->Default(), c->ListOrder(), c->DataType(), c->DataTypeGroup(),
                            c->NumericPrecision(), c->NumericScale(), c->MaxCharLength(), c->HasDefault(),
                            c->IsNullable() != 0});
    }
    nb::list out;
    for (const auto& r : rows)
        out.append(nb::make_tuple(PyText(r.name), r.position, r.type, r.group, r.size, r.precision, r.scale,
                                  r.nullable, r.hasDefault, r.hasDefault ? nb::object(PyText(r.def)) : nb::none()));
    return out;
}

struct IndexRow {
    String name;
    bool primary, unique;
    std::vector<std::pair<int32_t, String>> columns;   // position, name
};

nb::list Indexes(CatalogHandle& h, const std::string& table) {
    std::vector<IndexRow> rows;
    {
        nb::gil_scoped_release nogil;
        Guard g(h.lock);
        auto t = Ref<DbTable>::New();
        t->Init(SelfRef(&h.Get()), Text(table));
        for (auto ix : t->Indexes()) {
            IndexRow r{ix->IndexName(), ix->PrimaryKey(), ix->Unique(), {}};
            for (auto c : ix->Columns()) r.columns.emplace_back(c->Position(), c->ColumnName());
            std::stable_sort(r.columns.begin(), r.columns.end(),
                             [](const auto& a, const auto& b) { return a.first < b.first; });
            rows.push_back(std::move(r));
        }
    }
    nb::list out;
    for (const auto& r : rows) {
        nb::list cols;
        for (const auto& c : r.columns) cols.append(PyText(c.second));
        out.append(nb::make_tuple(PyText(r.name), r.primary, r.unique, nb::tuple(cols)));
    }
    return out;
}

// A call on the catalog with the GIL released and the catalog's lock held.
template <class F>
auto Locked(CatalogHandle& h, F&& f) {
    nb::gil_scoped_release nogil;
    Guard g(h.lock);
    return f(h.Get());
}

} // namespace

void BindCatalog(nb::module_& m) {
    nb::class_<CatalogHandle>(m, "NativeCatalog")
        .def_static("open", &Open, nb::arg("attributes"))
        .def("close", [](CatalogHandle& h) {
            nb::gil_scoped_release nogil;
            Guard g(h.lock);
            h.catalog.Release();
        })
        .def_prop_ro("closed", [](CatalogHandle& h) { return h.catalog.IsNothing(); })
        .def_prop_ro("attributes", [](CatalogHandle& h) { return PyText(h.attributes); })
        .def("name", [](CatalogHandle& h) { return PyText(Locked(h, [](DbCatalog& c) { return c.Name(); })); })
        .def("catalog_type",
             [](CatalogHandle& h) { return PyText(Locked(h, [](DbCatalog& c) { return c.CatalogType(); })); })
        .def("location", [](CatalogHandle& h) { return PyText(Locked(h, [](DbCatalog& c) { return c.Location(); })); })
        .def("create", [](CatalogHandle& h) { return Locked(h, [](DbCatalog& c) { return c.Create(); }); })
        .def("drop", [](CatalogHandle& h) { return Locked(h, [](DbCatalog& c) { return c.Drop(); }); })
        .def("execute",
             [](CatalogHandle& h, const std::string& sql) {
                 return Locked(h, [&](DbCatalog& c) { return c.PassThroughQuery(Text(sql)); });
             })
        .def("row_count",
             [](CatalogHandle& h, const std::string& table) {
                 return Locked(h, [&](DbCatalog& c) { return c.GetDataRowCount(Text(table)); });
             })
        .def("table_names", &TableNames)
        .def("columns", &Columns)
        .def("indexes", &Indexes);
}

} // namespace zolsdk::py
