// Rows as Python tuples, read in chunks: the library is walked with the GIL
// released, then the chunk's values become Python objects.
#include <nanobind/stl/shared_ptr.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/unique_ptr.h>

#include "row_cursor.hpp"

namespace zolsdk::py {

namespace {

// The Python classes values become, looked up once per reader.
struct PyTypes {
    nb::object date, time, datetime, decimal;
    PyTypes() {
        nb::module_ dt = nb::module_::import_("datetime");
        date = dt.attr("date");
        time = dt.attr("time");
        datetime = dt.attr("datetime");
        decimal = nb::module_::import_("decimal").attr("Decimal");
    }
};

nb::object ToPython(const Variant& v, int32_t group, const PyTypes& t) {
    switch (group) {
    case dtVarChar: return PyText(v.ToString());
    case dtCharBLOB:
    case dtBinaryBLOB: {
        Ref<DbBlob> blob = v.As<DbBlob>();
        if (!blob) return nb::none();
        if (group == dtCharBLOB && !blob->IsBinary()) return PyText(blob->text());
        Bytes b = blob->DataBytes();
        return nb::bytes(reinterpret_cast<const char*>(b.data()), b.size());
    }
    case dtInteger:
    case dtUnsignedInteger: return nb::int_(v.ToLong());
    case dtDate: case dtTime: case dtDateTime: {
        DateParts p = SplitDate(v.ToDate());
        if (group == dtDate) return t.date(p.year, p.month, p.day);
        if (group == dtTime) return t.time(p.hour, p.minute, p.second);
        return t.datetime(p.year, p.month, p.day, p.hour, p.minute, p.second);
    }
    case dtBoolean: return nb::bool_(v.ToBoolean());
    case dtDouble: return nb::float_(v.ToDouble());
    case dtSingle: return nb::float_(static_cast<double>(v.ToSingle()));
    case dtDecimal: return t.decimal(PyText(v.ToDecimal().ToText(u'.')));
    case dtCurrency: return t.decimal(PyText(CurrencyText(v.ToCurrency(), u'.')));
    default: return nb::none();
    }
}

class RowReader {
public:
    explicit RowReader(std::unique_ptr<RowCursor> c) : cursor_(std::move(c)) {}
    ~RowReader() {
        // An abandoned walk ends its scope on the catalog like any other use.
        CatalogPtr h = cursor_->Shared();
        std::lock_guard<std::mutex> g(h->lock);
        cursor_.reset();
    }

    nb::list Columns() const {
        nb::list out;
        for (const auto& c : cursor_->Columns()) out.append(nb::make_tuple(PyText(c.name), c.group));
        return out;
    }

    // Up to `count` rows; an empty list at the end.
    nb::list Fetch(int count) {
        const auto& cols = cursor_->Columns();
        const int32_t width = static_cast<int32_t>(cols.size());
        std::vector<Variant> cells;
        std::vector<char> nulls;
        int rows = 0;
        {
            nb::gil_scoped_release nogil;
            std::lock_guard<std::mutex> g(cursor_->Handle().lock);
            for (; rows < count; ++rows) {
                DbDataRow* row = cursor_->Next();
                if (!row) break;
                for (int32_t i = 0; i < width; ++i) {
                    const bool isNull = RowCursor::IsNull(*row, i);
                    nulls.push_back(isNull);
                    cells.push_back(isNull ? Variant() : RowCursor::Value(*row, i));
                }
            }
        }
        if (!types_) types_ = std::make_unique<PyTypes>();
        nb::list out;
        for (int r = 0; r < rows; ++r) {
            nb::object tup = nb::steal(PyTuple_New(width));
            for (int32_t i = 0; i < width; ++i) {
                const size_t k = static_cast<size_t>(r) * width + i;
                nb::object v = nulls[k] ? nb::none() : ToPython(cells[k], cols[i].group, *types_);
                PyTuple_SET_ITEM(tup.ptr(), i, v.release().ptr());
            }
            out.append(tup);
        }
        return out;
    }

private:
    std::unique_ptr<RowCursor> cursor_;
    std::unique_ptr<PyTypes> types_;
};

std::unique_ptr<RowReader> OpenRows(CatalogPtr h, const std::string& table, nb::handle columns, nb::handle where,
                                    bool lossyBinary) {
    ExportRequest request = ReadRequest(table, columns, where, lossyBinary);
    nb::gil_scoped_release nogil;
    std::lock_guard<std::mutex> g(h->lock);
    return std::make_unique<RowReader>(std::make_unique<RowCursor>(h, request));
}

// The yardstick of the Arrow benchmark: the library alone reading every
// cell of a table (ExportData, then each row's null mark and value), with
// no Python and no Arrow in the loop.
nb::tuple WalkRows(CatalogPtr h, const std::string& table) {
    int64_t rows = 0, cells = 0;
    {
        nb::gil_scoped_release nogil;
        std::lock_guard<std::mutex> g(h->lock);
        DbCatalog& cat = h->Get();
        cat.BeginTransaction();   // large exports fetch in the background on this scope's connection
        Ref<DbDataSet> set = cat.ExportData(Text(table));
        const int32_t width = set->Columns()->Count();
        for (auto row : set->Rows()) {
            for (int32_t i = 0; i < width; ++i) {
                Variant key(i);
                if (!row->IsNullValue(key)) {
                    Variant v = row->Item(key);
                    cells += !v.IsEmpty();
                }
            }
            ++rows;
        }
        set.Release();
        cat.EndTransaction();
    }
    return nb::make_tuple(rows, cells);
}

} // namespace

void BindRows(nb::module_& m) {
    nb::class_<RowReader>(m, "RowReader")
        .def_prop_ro("columns", &RowReader::Columns)
        .def("fetch", &RowReader::Fetch, nb::arg("count") = 4096);
    m.def("walk_rows", &WalkRows, nb::arg("catalog"), nb::arg("table"));
    m.def("open_rows", &OpenRows, nb::arg("catalog"), nb::arg("table"), nb::arg("columns").none() = nb::none(),
          nb::arg("where").none() = nb::none(), nb::arg("lossy_binary") = false);
}

} // namespace zolsdk::py
