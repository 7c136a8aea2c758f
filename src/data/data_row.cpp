#include "zolsdk/data/data_row.hpp"

#include "data/codecs.hpp"
#include "support/split.hpp"
#include "support/string_builder.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

DbDataRow::DbDataRow() = default;
DbDataRow::~DbDataRow() = default;

void DbDataRow::Init(const String& psColumnSet) {
    m_oIndex.Release();
    cells_.clear();
    if (psColumnSet.empty()) return;
    std::vector<String> items = Split(psColumnSet, u",");
    m_oIndex = Ref<Collection>::New();
    cells_.resize(items.size());
    m_lHighIndex += static_cast<int32_t>(items.size()) - 1;
    for (size_t i = 0; i < items.size(); ++i) {
        RowCell& c = cells_[i];
        c.group = Variant(items[i].substr(0, 2)).ToLong();
        c.name = items[i].size() > 2 ? items[i].substr(2) : String();
        c.isNull = true;
        if (c.group == 2 || c.group == 10) m_bHasBlob = true;
        m_oIndex->Add(Variant(static_cast<int32_t>(i)), c.name); // a duplicate name fails here
    }
}

DbDataRow::RowCell& DbDataRow::Cell(size_t i) {
    if (i >= cells_.size()) RaisePlatform(err::SubscriptOutOfRange);
    return cells_[i];
}

size_t DbDataRow::GetIndex(const Variant& key) {
    ZOL_ROUTINE(u"DbDataRow:GetIndex Ln ");
    try {
        // A key that reads as a number is a position, even if a column has
        // that name.
        double d;
        if (key.IsNumeric() || (key.IsString() && TryParseNumber(key.ToString(), d))) {
            ZOL_LN; int32_t i = key.ToLong();
            if (i < 0) RaisePlatform(err::SubscriptOutOfRange);
            return static_cast<size_t>(i);
        }
        ZOL_LN; return static_cast<size_t>(m_oIndex->Item(Variant(key.ToString())).ToLong());
    } ZOL_RERAISE
}

bool DbDataRow::IsNullValue(const Variant& psIndexKey) { return Cell(GetIndex(psIndexKey)).isNull; }

Variant DbDataRow::Item(const Variant& psIndexKey) {
    RowCell& c = Cell(GetIndex(psIndexKey));
    switch (c.group) {
    case 1: return Variant(c.text);
    case 2: case 10: return Variant(c.blob);
    case 3: case 4: return Variant(c.integer);
    case 5: case 6: case 7: return Variant::FromDate(c.date);
    case 8: return Variant(c.boolean);
    case 9: return Variant(c.dbl);
    case 11: return Variant(c.sng);
    case 12: return c.decimal;
    case 13: return Variant(c.currency);
    default: return Variant::Null();
    }
}

void DbDataRow::Assign(RowCell& c, const Variant& value, bool asObject) {
    if (value.IsNull() || value.IsEmpty()) {
        c.isNull = true;
        switch (c.group) {
        case 1: c.text.clear(); break;
        case 2: case 10: if (asObject) c.blob.Release(); break;
        case 3: case 4: c.integer = 0; break;
        case 5: case 6: case 7: c.date = 0; break;
        case 8: c.boolean = false; break;
        case 9: c.dbl = 0; break;
        case 11: c.sng = 0; break;
        case 12: c.decimal = Variant(int16_t{0}); break;
        case 13: c.currency = Currency(); break;
        default: break;
        }
        return;
    }
    c.isNull = false;
    switch (c.group) {
    case 1: c.text = value.ToString(); break;
    case 2: case 10:
        if (asObject) {
            c.blob = value.As<DbBlob>();
            c.isNull = !c.blob;
        }
        break;
    case 3: case 4: c.integer = value.ToLong(); break;
    case 5: case 6: case 7: c.date = value.ToDate(); break;
    case 8: c.boolean = value.ToBoolean(); break;
    case 9: c.dbl = value.ToDouble(); break;
    case 11: c.sng = value.ToSingle(); break;
    case 12: c.decimal = Variant(value.ToDecimal()); break;
    case 13: c.currency = value.ToCurrency(); break;
    default: break;
    }
}

void DbDataRow::LetItem(const Variant& psIndexKey, const Variant& value) {
    Assign(Cell(GetIndex(psIndexKey)), value, false);
}

void DbDataRow::SetItem(const Variant& psIndexKey, const Variant& value) {
    ZOL_ROUTINE(u"DbDataRow:Item Ln ");
    try {
        ZOL_LN; Assign(Cell(GetIndex(psIndexKey)), value, true);
    } ZOL_RERAISE
}

String DbDataRow::GetString(const String& d, const String& sub) {
    ZOL_ROUTINE(u"DbDataRow:GetString Ln ");
    try {
        DbGenericEncoder enc;
        CStringBuilder sb;
        bool inlineBlobs = sub == u"=";
        for (int32_t i = 0; i <= m_lHighIndex; ++i) {
            ZOL_LN; RowCell& c = Cell(static_cast<size_t>(i));
            sb.Append(d);
            if (c.isNull) {
                sb.Append((c.group == 2 || c.group == 10) && !inlineBlobs ? StringView(sub) : StringView(u"NULL"));
                continue;
            }
            switch (c.group) {
            case 1:
                // A text without the delimiter or its escape is its own encoding.
                if (!d.empty() && c.text.find(d) == String::npos && c.text.find(u"%2C") == String::npos) {
                    sb.Append(c.text);
                    break;
                }
                ZOL_LN; sb.Append(enc.EncodeString(c.text, d, u"%2C"));
                break;
            case 3: case 4: sb.Append(IntText(c.integer)); break;
            case 5: case 6: case 7: ZOL_LN; sb.Append(enc.EncodeDate(c.date)); break;
            case 8: sb.Append(enc.EncodeBoolean(c.boolean)); break;
            case 9: sb.Append(enc.EncodeDouble(c.dbl)); break;
            case 11: sb.Append(enc.EncodeSingle(c.sng)); break;
            case 12: ZOL_LN; sb.Append(enc.EncodeDecimal(c.decimal)); break;
            case 13: sb.Append(enc.EncodeCurrency(c.currency)); break;
            default:
                if (!inlineBlobs) sb.Append(sub);
                else if (c.group == 2) { ZOL_LN; sb.Append(enc.EncodeString(c.blob->text(), d, u"%2C")); }
                else sb.Append(u"NULL");
            }
        }
        ZOL_LN; sb.Remove(0, static_cast<int32_t>(d.size()));
        return sb.ToString();
    } ZOL_RERAISE
}

} // namespace zolsdk
