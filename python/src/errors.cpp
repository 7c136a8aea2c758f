// Library failures become instances of zolsdk.errors classes, chosen there
// by number; the failure chain travels as the exception's `source`.
#include "binding.hpp"

namespace zolsdk::py {

nb::str PyText(StringView s) {
    const std::string utf8 = ToUtf8(s);
    return nb::str(utf8.data(), utf8.size());
}

void Fail(int32_t number, const String& description) {
    throw DbError(number, u"zolsdk.python", description);
}

DbCatalog& CatalogHandle::Get() {
    if (!catalog) Fail(err::ObjectNotSet, u"the catalog is closed");
    return *catalog;
}

namespace {

void RaiseDbError(const DbError& e) {
    nb::object errors = nb::module_::import_("zolsdk.errors");
    nb::object exc = errors.attr("from_failure")(e.Number(), PyText(e.Description()), PyText(e.Source()));
    PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(exc.ptr())), exc.ptr());
}

} // namespace

void BindErrors(nb::module_&) {
    nb::register_exception_translator([](const std::exception_ptr& p, void*) {
        try {
            std::rethrow_exception(p);
        } catch (const DbError& e) {
            RaiseDbError(e);
        } catch (const std::bad_alloc&) {
            throw;   // nanobind's own MemoryError
        } catch (const nb::python_error&) {
            throw;
        } catch (const nb::builtin_exception&) {
            throw;
        } catch (const std::exception&) {
            // Whatever else escapes the library is still one of its failures.
            RaiseDbError(CurrentFailure());
        }
    });
}

} // namespace zolsdk::py
