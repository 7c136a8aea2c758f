#include "platform/ado/jet/jet_schema.hpp"

#include "platform/ado/schema_rowsets.hpp"
#include "platform/ado/jet/jet_types.hpp"
#include "platform/ado/jet/jet_wire.hpp"
#include "zolsdk/platform/ado/types.hpp"
#include "platform/ado/rowset_feed.hpp"

namespace zolsdk::ado::detail::jet {

namespace {

// OLE DB column flags.
constexpr int32_t kFlagWriteUnknown = 0x8, kFlagFixed = 0x10, kFlagNullable = 0x20, kFlagMaybeNull = 0x40,
                  kFlagLong = 0x80, kFlagRowId = 0x100;

void Rewind(Recordset& rs) {
    if (rs.RecordCount() > 0) rs.MoveFirst();
}

String Text(const Variant& v) { return v.IsNull() || v.IsEmpty() ? String() : v.ToString(); }

// A restriction: empty restricts nothing; names compare as Jet compares them.
bool Passes(const std::vector<Variant>& criteria, size_t i, const Variant& value) {
    if (i >= criteria.size() || criteria[i].IsEmpty() || criteria[i].IsNull()) return true;
    String wanted = criteria[i].ToString();
    return wanted.empty() || EqualsNoCase(wanted, Text(value));
}

} // namespace

FactRows DecodeFacts(const std::vector<uint8_t>& bytes) {
    WireReader r(bytes);
    int32_t rows = r.Int();
    int32_t width = r.Int();
    FactRows out;
    out.reserve(static_cast<size_t>(rows > 0 ? rows : 0));
    for (int32_t i = 0; i < rows; ++i) {
        std::vector<Variant> row;
        row.reserve(static_cast<size_t>(width));
        for (int32_t c = 0; c < width; ++c) row.push_back(r.Value());
        out.push_back(std::move(row));
    }
    return out;
}

Ref<Recordset> TablesRowset(const FactRows& tables, const std::vector<Variant>& criteria) {
    auto rs = TablesSchemaRowset();
    for (const auto& t : tables) {
        if (!Passes(criteria, 2, t[0]) || !Passes(criteria, 3, t[1])) continue;
        RowsetFeed::AppendRow(*rs, {Variant::Null(), Variant::Null(), t[0], t[1], Variant::Null(), Variant::Null(), Variant::Null(),
                       t[2], t[3]});
    }
    Rewind(*rs);
    return rs;
}

Ref<Recordset> ColumnsRowset(const FactRows& columns, const std::vector<Variant>& criteria) {
    auto rs = ColumnsSchemaRowset();
    for (const auto& c : columns) {
        if (!Passes(criteria, 2, c[0]) || !Passes(criteria, 3, c[1])) continue;
        AccessFigures f = FiguresOfFileType(Text(c[3]), c[4].ToLong(), c[5].ToLong(), c[6].ToLong());
        if (c[8].ToBoolean()) f = FiguresOfFileType(u"MEMO", 0, 0, 0); // a hyperlink is a memo
        bool nullable = !c[9].ToBoolean();
        String def = Text(c[10]);
        int32_t flags = kFlagWriteUnknown | (f.fixedLength ? kFlagFixed : 0) | (f.isLong ? kFlagLong : 0) |
                        (nullable ? kFlagNullable | kFlagMaybeNull : 0) |
                        // An AutoNumber: the row's own number, given by the file.
                        (c[7].ToBoolean() ? kFlagRowId : 0);
        bool isDate = f.dataType == adType::Date;
        RowsetFeed::AppendRow(*rs, {Variant::Null(), Variant::Null(), c[0], c[1], Variant::Null(), Variant::Null(), c[2],
                       Variant(!def.empty()), def.empty() ? Variant::Null() : Variant(def), Variant(flags),
                       Variant(nullable), Variant(f.dataType), Variant::Null(), f.maxLength, f.octetLength,
                       f.precision, f.scale, isDate ? Variant(int32_t{0}) : Variant::Null(), Variant::Null(),
                       Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null(),
                       Variant::Null(), Variant::Null(), Variant::Null(), Variant::Null()});
    }
    Rewind(*rs);
    return rs;
}

Ref<Recordset> IndexesRowset(const FactRows& indexes, const std::vector<Variant>& criteria) {
    auto rs = IndexesSchemaRowset();
    for (const auto& x : indexes) {
        if (!Passes(criteria, 2, x[1]) || !Passes(criteria, 4, x[0])) continue;
        // NULLS: 1 nulls refused, 2 entries with nulls left out.
        int32_t nulls = x[4].ToBoolean() ? 2 : 1;
        RowsetFeed::AppendRow(*rs, {Variant::Null(), Variant::Null(), x[0], Variant::Null(), Variant::Null(), x[1],
                       Variant(x[2].ToBoolean()), Variant(x[3].ToBoolean()), Variant(false), Variant(int32_t{1}),
                       Variant::Null(), Variant::Null(), Variant(nulls), Variant(false), Variant(true),
                       Variant(int32_t{4}), x[5], x[6], Variant::Null(), Variant::Null(),
                       Variant(int32_t{x[7].ToBoolean() ? 1 : 2}), Variant::Null(), Variant::Null(), Variant::Null(),
                       Variant(true)});
    }
    Rewind(*rs);
    return rs;
}

Ref<Recordset> PrimaryKeysRowset(const FactRows& indexes, const std::vector<Variant>& criteria) {
    auto rs = PrimaryKeysSchemaRowset();
    for (const auto& x : indexes) {
        if (!x[2].ToBoolean() || !Passes(criteria, 2, x[0])) continue;
        RowsetFeed::AppendRow(*rs, {Variant::Null(), Variant::Null(), x[0], x[6], Variant::Null(), Variant::Null(), x[5], x[1]});
    }
    Rewind(*rs);
    return rs;
}

Ref<Recordset> ForeignKeysRowset(const FactRows& relationships, const std::vector<Variant>& criteria) {
    auto rs = ForeignKeysSchemaRowset();
    for (const auto& r : relationships) {
        if (!Passes(criteria, 2, r[1]) || !Passes(criteria, 5, r[3])) continue;
        String update = r[6].ToBoolean() ? u"CASCADE" : u"NO ACTION";
        String remove = r[7].ToBoolean() ? u"CASCADE" : r[8].ToBoolean() ? u"SET NULL" : u"NO ACTION";
        RowsetFeed::AppendRow(*rs, {Variant::Null(), Variant::Null(), r[1], r[2], Variant::Null(), Variant::Null(), Variant::Null(),
                       Variant::Null(), r[3], r[4], Variant::Null(), Variant::Null(), r[5], Variant(update),
                       Variant(remove), r[9], r[0], Variant(int16_t{3})});
    }
    Rewind(*rs);
    return rs;
}

} // namespace zolsdk::ado::detail::jet
