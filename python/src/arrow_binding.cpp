// catalog.to_arrow: the stream goes to pyarrow as a PyCapsule
// (__arrow_c_stream__), so any Arrow-aware library can read it too.
#include <nanobind/stl/shared_ptr.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/unique_ptr.h>

#include "arrow_stream.hpp"

namespace zolsdk::py {

namespace {

void FreeCapsule(PyObject* capsule) {
    auto* s = static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule, "arrow_array_stream"));
    if (!s) {
        PyErr_Clear();
        return;
    }
    if (s->release) s->release(s);
    delete s;
}

// One stream, handed out once.
class ArrowRows {
public:
    explicit ArrowRows(std::unique_ptr<RowCursor> c, int64_t batch) : cursor_(std::move(c)), batch_(batch) {}

    nb::object Capsule(nb::handle requested) {
        if (!requested.is_none())
            Fail(err::InvalidCall, u"the rows come in the table's own types; a requested schema is not supported");
        if (!cursor_) Fail(err::InvalidCall, u"these rows were already read");
        auto* s = new ArrowArrayStream;
        ExportArrowStream(std::move(cursor_), batch_, s);
        return nb::steal(PyCapsule_New(s, "arrow_array_stream", &FreeCapsule));
    }

private:
    std::unique_ptr<RowCursor> cursor_;
    int64_t batch_;
};

std::unique_ptr<ArrowRows> OpenArrow(CatalogPtr h, const std::string& table, nb::handle columns, nb::handle where,
                                     int64_t batchRows, bool lossyBinary) {
    ExportRequest request = ReadRequest(table, columns, where, lossyBinary);
    nb::gil_scoped_release nogil;
    std::lock_guard<std::mutex> g(h->lock);
    return std::make_unique<ArrowRows>(std::make_unique<RowCursor>(h, request), batchRows);
}

} // namespace

void BindArrow(nb::module_& m) {
    nb::class_<ArrowRows>(m, "ArrowRows")
        .def("__arrow_c_stream__", &ArrowRows::Capsule, nb::arg("requested_schema").none() = nb::none());
    m.def("open_arrow", &OpenArrow, nb::arg("catalog"), nb::arg("table"), nb::arg("columns").none() = nb::none(),
          nb::arg("where").none() = nb::none(), nb::arg("batch_rows") = 65536, nb::arg("lossy_binary") = false);
}

} // namespace zolsdk::py
