#include "zolsdk/data/data_columns.hpp"

#include <cstdio>

#include "schema/rowset_shapes.hpp"
#include "support/split.hpp"
#include "support/string_builder.hpp"
#include "zolsdk/schema/column.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

void DbDataColumn::Init(const String& psColumnName, int32_t plDataTypeGroup, int32_t plPosition) {
    m_sColumnName = psColumnName;
    m_lDataTypeGroup = plDataTypeGroup;
    m_lListOrder = plPosition;
}

String DbDataColumn::GetString(const String& d) const {
    CStringBuilder sb;
    sb.Append(m_sColumnName).Append(d).Append(IntText(m_lDataTypeGroup)).Append(d).Append(IntText(m_lListOrder));
    return sb.ToString();
}

DbDataColumns::DbDataColumns() : SchemaCollection(u"DbDataColumns", u"column_name") {}

namespace {
struct Computed {
    String name;
    int32_t group;
    String expression;
};

bool StartsWith(StringView s, StringView p) { return s.substr(0, p.size()) == p; }

// "WORD(" + anything + ") AS " + anything, on the upper-cased item.
bool MatchesAlias(StringView upper, StringView word) {
    if (!StartsWith(upper, word)) return false;
    size_t close = upper.find(u") AS ", word.size());
    return close != StringView::npos;
}

// COUNT(...) and MAX(...) items; nothing for any other text.
bool ComputedColumn(const String& item, int32_t position, Computed& out) {
    String upper = UCase(item);
    struct Pattern {
        const char16_t* word;
        int32_t group;
    };
    for (Pattern p : {Pattern{u"COUNT(", 3}, Pattern{u"MAX(", 1}}) {
        if (!StartsWith(upper, p.word)) continue;
        out.group = p.group;
        if (MatchesAlias(upper, p.word)) {
            // Alias from the last blank, expression up to the first one, both
            // cut from the item as the client wrote it.
            size_t last = item.rfind(u' ');
            size_t first = item.find(u' ');
            out.name = Trim(StringView(item).substr(last));
            out.expression = Trim(StringView(item).substr(0, first + 1));
        } else {
            out.name = u"Column" + IntText(position);
            out.expression = item;
        }
        return true;
    }
    return false;
}

void AddRecord(ado::Recordset& rs, const String& name, int32_t group, int32_t position, int32_t type,
               const String& expression) {
    rs.AddNew();
    rs.Value(u"column_name", Variant(name));
    rs.Value(u"data_type_group", Variant(group));
    rs.Value(u"ordinal_position", Variant(position));
    rs.Value(u"column_type", Variant(type));
    rs.Value(u"column_expression", Variant(expression));
    rs.Update();
}
} // namespace

void DbDataColumns::Init(const Ref<DbColumns>& poColumns, const String& psColumnSet) {
    ZOL_ROUTINE(u"DbDataColumns:Init Ln ");
    try {
        ZOL_LN; m_oRS = DataColumnRS();
        ado::Recordset& rs = *m_oRS;
        if (!psColumnSet.empty()) {
            // No trimming: a blank after a comma belongs to the name.
            std::vector<String> items = Split(psColumnSet, u",");
            for (size_t i = 0; i < items.size(); ++i) {
                int32_t position = static_cast<int32_t>(i) + 1;
                ZOL_LN; Ref<DbColumn> col = poColumns->Item(Variant(items[i]));
                if (col) {
                    ZOL_LN; AddRecord(rs, col->ColumnName(), col->DataTypeGroup(), position, 0, u"");
                    continue;
                }
                Computed c;
                if (ComputedColumn(items[i], position, c)) {
                    ZOL_LN; AddRecord(rs, c.name, c.group, position, 1, c.expression);
                }
            }
        } else {
            ZOL_LN; int32_t n = poColumns->Count();
            for (int32_t i = 0; i < n; ++i) {
                ZOL_LN; Ref<DbColumn> col = poColumns->Item(Variant(i));
                ZOL_LN; AddRecord(rs, col->ColumnName(), col->DataTypeGroup(), i + 1, 0, u"");
            }
        }
    } catch (...) {
        // A failed Init leaves no rowset behind.
        try {
            if (m_oRS && m_oRS->State() == ado::adStateOpen) m_oRS->Close();
        } catch (...) {
        }
        m_oRS.Release();
        zol_mark_.Reraise();
    }
}

String DbDataColumns::GetString(const String& psColumnDelimiter, const String& psRowDelimiter) {
    if (m_sColumnList.empty()) m_sColumnList = SchemaCollection::GetString(psColumnDelimiter, psRowDelimiter);
    return m_sColumnList;
}

void DbDataColumns::Fill(DbDataColumn& item) {
    ado::Recordset& rs = *m_oRS;
    item.Init(rs.Value(u"column_name").ToString(), rs.Value(u"data_type_group").ToLong(),
              rs.Value(u"ordinal_position").ToLong());
}

String ToRowColumnSet(const String& psColumnList) {
    String out;
    for (const String& item : Split(psColumnList, u";")) {
        std::vector<String> f = Split(item, u",");
        char two[16];
        std::snprintf(two, sizeof two, "%02d", Variant(Piece(f, 1)).ToLong());
        out += u",";
        out += Ascii(two);
        out += Piece(f, 0);
    }
    if (!out.empty()) out.erase(0, 1);
    return out;
}

} // namespace zolsdk
