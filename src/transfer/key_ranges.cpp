#include "transfer/key_ranges.hpp"

#include <algorithm>

#include "transfer/identifiers.hpp"
#include "transfer/values.hpp"

namespace zolsdk::transfer {

namespace {

bool IsInteger(Kind k) { return k >= Kind::Int8 && k <= Kind::UInt64; }

const ColumnPlan* ColumnOf(const TablePlan& t, StringView name) {
    for (const ColumnPlan& c : t.columns)
        if (EqualsNoCase(c.name, name)) return &c;
    return nullptr;
}

// The first value of a one-row, one-column answer.
Variant Scalar(ado::Connection& c, const String& sql) {
    Ref<ado::Recordset> rs = c.Execute(sql);
    if (!rs || rs->State() == ado::adStateClosed || rs->Eof()) return Variant::Null();
    return rs->Fields().Item(int32_t{0}).Value();
}

int64_t Int64Of(const Variant& v) { return std::stoll(ToUtf8(v.ToString())); }

} // namespace

std::optional<Kind> RangeKeyKind(const Plan& plan, const TablePlan& t) {
    // An Access file is read whole by the file library; a key range or a
    // MIN/MAX would go through the driver, which first copies the whole file
    // into memory.
    if (plan.source == Engine::Access) return std::nullopt;
    if (t.keyColumns.empty()) return std::nullopt;
    const String& key = t.keyColumns.front();
    bool keyed = false;
    for (const IndexPlan& i : t.indexes)
        if ((i.primaryKey || i.unique) && !i.columns.empty() && EqualsNoCase(i.columns.front().name, key))
            keyed = true;
    const ColumnPlan* c = ColumnOf(t, key);
    if (!keyed || !c || c->nullable) return std::nullopt;
    if (IsInteger(c->kind)) return c->kind;
    if (c->kind == Kind::Text && plan.source == Engine::MySql && plan.target == Engine::MySql) return c->kind;
    return std::nullopt;
}

std::vector<Variant> CutPoints(ado::Connection& source, Engine e, const TablePlan& t, Kind k, int64_t rows,
                               int32_t ranges) {
    std::vector<Variant> bounds;
    if (ranges < 2 || rows < 2) return bounds;
    String key = QuoteName(e, t.keyColumns.front()), table = QuoteName(e, t.name);
    if (IsInteger(k)) {
        Variant lo = Scalar(source, u"SELECT MIN(" + key + u") FROM " + table);
        Variant hi = Scalar(source, u"SELECT MAX(" + key + u") FROM " + table);
        if (lo.IsNull() || hi.IsNull()) return bounds;
        // Unsigned keys above the signed range stay whole rather than wrap.
        int64_t a = Int64Of(lo), b = Int64Of(hi);
        if (b <= a) return bounds;
        long double step = (static_cast<long double>(b) - static_cast<long double>(a) + 1) / ranges;
        for (int32_t i = 1; i < ranges; ++i) {
            auto bound = static_cast<int64_t>(static_cast<long double>(a) + step * i);
            if (bound > a && (bounds.empty() || bound > Int64Of(bounds.back()))) bounds.push_back(Variant::FromInt64(bound));
        }
        return bounds;
    }
    // Text: the key at every rows/ranges-th place in the source's order.
    for (int32_t i = 1; i < ranges; ++i) {
        int64_t offset = rows * i / ranges;
        Variant v = Scalar(source, u"SELECT " + key + u" FROM " + table + u" ORDER BY " + key + u" LIMIT 1 OFFSET " +
                                       IntText(offset));
        if (v.IsNull()) break;
        if (bounds.empty() || Variant::Compare(bounds.back(), v) != 0) bounds.push_back(Variant(v.ToString()));
    }
    return bounds;
}

std::vector<KeyRange> RangesBetween(const std::vector<Variant>& bounds) {
    std::vector<KeyRange> ranges;
    Variant from;
    for (const Variant& b : bounds) {
        ranges.push_back({from, b});
        from = b;
    }
    ranges.push_back({from, Variant()});
    return ranges;
}

int64_t CountRows(ado::Connection& c, Engine e, const TablePlan& t) {
    return Int64Of(Scalar(c, u"SELECT COUNT(*) FROM " + QuoteName(e, t.name)));
}

int64_t RowsAbout(ado::Connection& c, Engine e, const TablePlan& t, int64_t near) {
    if (e == Engine::MySql) {
        // The server keeps an estimate; a count reads the whole table
        // (seconds at ten million rows) before a row could move. The
        // estimate of a table just filled can be far too low, and near
        // `near` it could fall on either side: only one well above is taken.
        Variant v = Scalar(c, u"SELECT TABLE_ROWS FROM INFORMATION_SCHEMA.TABLES WHERE TABLE_SCHEMA = "
                              u"DATABASE() AND TABLE_NAME = " + TextLiteral(e, t.name));
        int64_t about = v.IsNull() || v.IsEmpty() ? 0 : Int64Of(v);
        if (about >= near * 2) return about;
    }
    return CountRows(c, e, t);
}

void ClearRange(ado::Connection& target, Engine e, const TablePlan& t, const KeyRange& range) {
    String sql = u"DELETE FROM " + QuoteName(e, t.name);
    if (!range.IsWhole()) {
        const String& key = t.keyColumns.front();
        const ColumnPlan* c = ColumnOf(t, key);
        Kind k = c ? c->kind : Kind::Text;
        String where;
        if (!range.from.IsEmpty()) where = QuoteName(e, key) + u" >= " + Literal(e, k, range.from);
        if (!range.to.IsEmpty())
            where += (where.empty() ? u"" : u" AND ") + QuoteName(e, key) + u" < " + Literal(e, k, range.to);
        sql += u" WHERE " + where;
    }
    Run(target, sql);
}

} // namespace zolsdk::transfer
