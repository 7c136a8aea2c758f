#include "query_build.hpp"

#include <nanobind/stl/string.h>

#include <cmath>

namespace zolsdk::py {

namespace {

double DateOf(nb::handle v, bool withDate, bool withTime) {
    double d = 0;
    if (withDate)
        d = DateSerial(nb::cast<int>(v.attr("year")), nb::cast<int>(v.attr("month")), nb::cast<int>(v.attr("day")));
    if (withTime) {
        double t = TimeSerial(nb::cast<int>(v.attr("hour")), nb::cast<int>(v.attr("minute")),
                              nb::cast<int>(v.attr("second")));
        d = d < 0 ? d - t : d + t;   // before day 0 the fraction still runs forward
    }
    return d;
}

} // namespace

Variant ToVariant(nb::handle v) {
    if (v.is_none()) return Variant::Null();
    if (PyBool_Check(v.ptr())) return Variant(v.ptr() == Py_True);
    if (PyLong_Check(v.ptr())) {
        int overflow = 0;
        long long x = PyLong_AsLongLongAndOverflow(v.ptr(), &overflow);
        if (overflow) Fail(err::Overflow, u"an integer beyond 64 bits has no value here");
        return Variant::FromInt64(x);
    }
    if (PyFloat_Check(v.ptr())) return Variant(PyFloat_AsDouble(v.ptr()));
    if (PyUnicode_Check(v.ptr())) return Variant(Text(nb::cast<std::string>(v)));
    if (PyBytes_Check(v.ptr())) {
        const auto* p = reinterpret_cast<const uint8_t*>(PyBytes_AsString(v.ptr()));
        return Variant(Bytes(p, p + PyBytes_Size(v.ptr())));
    }
    nb::module_ dt = nb::module_::import_("datetime");
    if (nb::isinstance(v, dt.attr("datetime"))) return Variant::FromDate(DateOf(v, true, true));
    if (nb::isinstance(v, dt.attr("date"))) return Variant::FromDate(DateOf(v, true, false));
    if (nb::isinstance(v, dt.attr("time"))) return Variant::FromDate(DateOf(v, false, true));
    if (nb::isinstance(v, nb::module_::import_("decimal").attr("Decimal"))) {
        const String text = Text(nb::cast<std::string>(nb::str(v)));
        Decimal d;
        if (!Decimal::TryParse(text, u'.', d)) Fail(err::TypeMismatch, u"the decimal " + text + u" has no value here");
        return Variant(d);
    }
    const std::string type = nb::cast<std::string>(nb::type_name(v.type()));
    Fail(err::TypeMismatch, u"a value of type " + Text(type) + u" cannot be compared with a column");
}

CriteriaNode ReadCriteria(nb::handle tree) {
    nb::tuple t = nb::cast<nb::tuple>(tree);
    const std::string kind = nb::cast<std::string>(t[0]);
    CriteriaNode n;
    if (kind == "cond") {
        n.leaf = true;
        n.column = Text(nb::cast<std::string>(t[1]));
        n.op = nb::cast<int32_t>(t[2]);
        n.value = ToVariant(t[3]);
        return n;
    }
    if (kind != "and" && kind != "or") Fail(err::InvalidCall, u"unknown criteria node " + Text(kind));
    n.logic = kind == "and" ? dloAnd : dloOr;
    for (nb::handle child : t[1]) n.children.push_back(ReadCriteria(child));
    return n;
}

ExportRequest ReadRequest(const std::string& table, nb::handle columns, nb::handle where, bool lossyBinary) {
    ExportRequest r;
    r.lossyBinary = lossyBinary;
    r.table = Text(table);
    if (!columns.is_none())
        for (nb::handle c : columns) r.columns.push_back(Text(nb::cast<std::string>(c)));
    if (!where.is_none()) {
        r.hasCriteria = true;
        r.criteria = ReadCriteria(where);
    }
    return r;
}

namespace {

Ref<DbConditionExpression> Build(const CriteriaNode& n, const std::vector<ColumnInfo>& columns,
                                 const String& table) {
    auto expr = Ref<DbConditionExpression>::New();
    expr->LogicalOperator(n.logic);
    for (const auto& child : n.children) {
        if (!child.leaf) {
            expr->ConditionExpressions()->Add(Build(child, columns, table));
            continue;
        }
        const ColumnInfo* col = nullptr;
        for (const auto& c : columns)
            if (EqualsNoCase(c.name, child.column)) col = &c;
        if (!col) Fail(err::InvalidCall, u"the table " + table + u" has no column " + child.column);
        if (col->group == dtBinaryBLOB || col->group == dtUnknown)
            Fail(err::InvalidCall, u"the column " + child.column + u" holds values that criteria cannot compare");
        auto c = Ref<DbCondition>::New();
        c->AttributeName(col->name);
        c->AttributeDataType(static_cast<DataTypeGroupEnum>(col->group));
        c->Operator(static_cast<DbConditionOperatorEnum>(child.op));
        c->Value(child.value);
        expr->Conditions()->Add(c);
    }
    return expr;
}

} // namespace

Ref<DbDataSet> Export(DbCatalog& catalog, const ExportRequest& request) {
    Ref<DbCatalog> self = SelfRef(&catalog);
    auto q = Ref<DbQuery>::New();
    q->TableName(request.table);
    String set;
    for (const auto& c : request.columns) set += (set.empty() ? u"" : u",") + c;
    q->ColumnSet(set);
    if (!request.hasCriteria && request.columns.empty()) return catalog.ExportDataByQuery(q);
    // The library drops column names it does not know: here that is a failure.
    const std::vector<ColumnInfo> known = ReadColumns(self, request.table);
    for (const auto& name : request.columns) {
        bool found = false;
        for (const auto& c : known) found = found || EqualsNoCase(c.name, name);
        if (!found) Fail(err::InvalidCall, u"the table " + request.table + u" has no column " + name);
    }
    if (request.hasCriteria) q->Criteria(Build(request.criteria, known, request.table));
    return catalog.ExportDataByQuery(q);
}

} // namespace zolsdk::py
