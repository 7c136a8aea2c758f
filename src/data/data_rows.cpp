#include "zolsdk/data/data_rows.hpp"

#include <chrono>
#include <cstdio>
#include <thread>

#include "data/codecs.hpp"
#include "support/replace_text.hpp"
#include "support/split.hpp"
#include "support/string_builder.hpp"
#include "zolsdk/catalog/catalog.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/index.hpp"
#include "zolsdk/schema/table.hpp"
#include "zolsdk/sessions/session.hpp"
#include "platform/failure_chain.hpp"
#include "platform/ado/rowset_feed.hpp"

namespace zolsdk {

using namespace ado;

// ---- data set ------------------------------------------------------------------

void DbDataSet::Init(const Ref<DbCatalog>& poDB, const String& psTableName, const String& psColumnSet,
                     const String& psFilter, int32_t plFillMode) {
    m_oColumns = Ref<DbDataColumns>::New();
    m_oColumns->Init(poDB->Tables()->Item(Variant(psTableName))->Columns(), psColumnSet);
    int32_t mode = plFillMode;
    if (mode == -1) {
        // Rows with large values are re-read one by one.
        mode = 0;
        for (auto c : m_oColumns) {
            if (c->DataTypeGroup() == 10 || c->DataTypeGroup() == 2) {
                mode = 1;
                break;
            }
        }
    }
    m_oRows = Ref<DbDataRows>::New();
    m_oRows->Init(poDB, psTableName, m_oColumns->GetString(u",", u";"), psFilter, mode);
}

Ref<DbDataRow> DbDataSet::NewRow() {
    auto row = Ref<DbDataRow>::New();
    row->Init(ToRowColumnSet(m_oColumns->GetString(u",", u";")));
    return row;
}

// ---- rows ------------------------------------------------------------------------

DbDataRows::DbDataRows() = default;

DbDataRows::~DbDataRows() {
    try {
        if (m_oRS && (m_oRS->State() & adStateOpen)) m_oRS->Close();
    } catch (...) {
    }
}

void DbDataRows::BuildColumnLists(const String& psColumnList, String& rowColumnSet, String& selectList) {
    String first, second;
    for (const String& item : Split(psColumnList, u";")) {
        std::vector<String> f = Split(item, u",");
        char two[16];
        std::snprintf(two, sizeof two, "%02d", Variant(Piece(f, 1)).ToLong());
        first += u",";
        first += Ascii(two);
        first += Piece(f, 0);
        if (Variant(Piece(f, 3)).ToLong() == 1) {
            second += u"," + Piece(f, 4) + u" AS [" + Piece(f, 0) + u"]";
        } else {
            second += u",[" + Piece(f, 0) + u"]";
        }
    }
    if (!first.empty()) first.erase(0, 1);
    if (!second.empty()) second.erase(0, 1);
    rowColumnSet = first;
    selectList = second;
}

void DbDataRows::Init(const Ref<DbCatalog>& poDB, const String& lsTableName, const String& psDataColumnSet,
                      const String& psFilter, int32_t plMode) {
    m_sTableName = lsTableName;
    m_sFilter = psFilter;
    m_lMode = plMode;
    m_oSession = poDB->Session();
    m_bHasPrimaryKey = false;
    BuildColumnLists(psDataColumnSet, m_sRowColumnSet, m_sSelectList);
    if (m_lMode == 1) {
        m_oKeyColumns = GetPrimaryKeyDataColumn(poDB, lsTableName);
        BuildColumnLists(m_oKeyColumns->GetString(u",", u";"), m_sKeyAttributes, m_sKeySelectList);
    }
    m_oRow = Ref<DbDataRow>::New();
    m_oRow->Init(m_sRowColumnSet);
    m_bLoaded = false;
}

Ref<DbDataColumns> DbDataRows::GetPrimaryKeyDataColumn(const Ref<DbCatalog>& poDB, const String& psTableName) {
    ZOL_ROUTINE(u"DbDataRows:GetPrimaryKeyDataColumn Ln ");
    try {
        ZOL_LN; Ref<DbTable> table = poDB->Tables()->Item(Variant(psTableName));
        String names;
        ZOL_LN;
        for (auto index : table->Indexes()) {
            if (!index->PrimaryKey()) continue;
            ZOL_LN;
            for (auto col : index->Columns()) names += u"," + col->ColumnName();
            m_bHasPrimaryKey = true;
            break;
        }
        if (!names.empty()) names.erase(0, 1);
        auto cols = Ref<DbDataColumns>::New();
        ZOL_LN; cols->Init(table->Columns(), names);
        return cols;
    } ZOL_RERAISE
}

void DbDataRows::DropRecordset() {
    m_fieldCells.clear();
    if (!m_oRS) return;
    try {
        if (m_oRS->State() & adStateOpen) m_oRS->Close();
    } catch (...) {
    }
    m_oRS.Release();
    m_bFetching = false;
}

void DbDataRows::Load() {
    ZOL_ROUTINE(u"DbDataRows:Load Ln ");
    try {
        DropRecordset();
        ZOL_LN; Ref<IDbSqlBuilder> builder = m_oSession->DbSqlBuilder();
        ZOL_LN; String sql = builder->SelectSql(m_sTableName, m_sSelectList, m_sFilter);
        if (m_lMode == 3) {
            ZOL_LN; m_oRS = m_oSession->Execute(u"!" + sql);
            // Wait until the background fetch has started. A fetch that ended
            // before the first look shows plain "open": that ends the wait too.
            while (m_oRS && m_oRS->State() != (adStateOpen | adStateFetching) && m_oRS->State() != adStateOpen)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            m_bFetching = m_oRS && m_oRS->State() == (adStateOpen | adStateFetching);
            // Read once from first to last: what has been read need not stay.
            if (m_oRS) ado::RowsetFeed::ReleasePassedRows(*m_oRS, true);
        } else {
            ZOL_LN; m_oRS = m_oSession->Execute(sql);
        }
        if (m_oRS) {
            ZOL_LN; m_bIsEmpty = m_oRS->Eof() && m_oRS->Bof();
            if (!m_bIsEmpty) {
                ZOL_LN; String countSql = builder->SelectSql(m_sTableName, u"", m_sFilter);
                int32_t one = 1;
                countSql = ReplaceText(countSql, u"*", u"COUNT(*)", 1, one, false);
                ZOL_LN; m_lRowCount = Variant(m_oSession->ExecuteScalar(countSql, u"0")).ToLong();
            } else {
                m_lRowCount = 0;
                if (m_lMode == 3 && m_bFetching) {
                    ado::RowsetFeed::FeedComplete(*m_oRS);
                    m_bFetching = false;
                }
            }
        } else {
            m_bIsEmpty = true;
        }
        m_bLoaded = true;
    } catch (...) {
        // The next use loads again.
        DropRecordset();
        m_bLoaded = false;
        zol_mark_.Reraise();
    }
}

void DbDataRows::InitRow(Ref<DbDataRow>& row) {
    ZOL_ROUTINE(u"DbDataRows:InitRow Ln ");
    try {
        Ref<Recordset> source = m_oRS;
        bool closeAfter = false;
        if (m_lMode == 1 && m_bHasPrimaryKey) {
            // Re-read this record by its key, so that large values come from a
            // select of one row.
            DbGenericEncoder enc;
            String key;
            ZOL_LN;
            for (auto col : m_oKeyColumns) {
                key += u",";
                const Variant& v = m_oRS->Value(col->ColumnName());
                if (v.IsNull()) { key += u"NULL"; continue; }
                switch (col->DataTypeGroup()) {
                case 1: ZOL_LN; key += enc.EncodeString(v.ToString(), u",", u"%2C"); break;
                case 3: case 4: key += IntText(v.ToLong()); break;
                case 5: case 6: case 7: key += enc.EncodeDate(v.ToDate()); break;
                case 8: key += enc.EncodeBoolean(v.ToBoolean()); break;
                case 9: key += enc.EncodeDouble(v.ToDouble()); break;
                case 11: key += enc.EncodeSingle(v.ToSingle()); break;
                case 12: key += enc.EncodeDecimal(v); break;
                case 13: key += enc.EncodeCurrency(v.ToCurrency()); break;
                default: break;
                }
            }
            if (!key.empty()) key.erase(0, 1);
            ZOL_LN; String sql = m_oSession->DbSqlBuilder()->SelectByAttributeSql(m_sTableName, m_sSelectList,
                                                                                 m_sKeyAttributes, key);
            ZOL_LN; source = m_oSession->Execute(sql);
            if (!source || (source->Eof() && source->Bof())) {
                row.Release();
                return;
            }
            ZOL_LN; source->MoveFirst();
            closeAfter = true;
        }
        ado::Fields& fields = source->Fields();
        // The main rowset's fields keep their cells from row to row: they are
        // looked up by name once, and then addressed by position (a key that
        // is a number is a position). A name that is not there fails by name,
        // on every row, as before.
        const bool mainRowset = source.get() == m_oRS.get();
        if (mainRowset && m_fieldCells.empty()) {
            m_fieldCells.assign(static_cast<size_t>(fields.Count()), -1);
            for (int32_t i = 0; i < fields.Count(); ++i) {
                try {
                    m_fieldCells[static_cast<size_t>(i)] = row->CellIndex(Variant(fields.Item(i).Name()));
                } catch (const DbError&) {
                }
            }
        }
        for (int32_t i = 0; i < fields.Count(); ++i) {
            ado::Field& f = fields.Item(i);
            const Variant& v = f.Value();
            int32_t t = f.Type();
            bool longText = t == adType::LongVarChar || t == adType::LongVarWChar;
            bool longBytes = t == adType::VarBinary || t == adType::LongVarBinary;
            const int32_t cell = mainRowset ? m_fieldCells[static_cast<size_t>(i)] : -1;
            Variant key = cell >= 0 ? Variant(cell) : Variant(f.Name());
            if (longText || longBytes) {
                if (v.IsNull()) {
                    ZOL_LN; row->SetItem(key, Variant(nullptr));
                    continue;
                }
                auto blob = Ref<DbBlob>::New();
                if (longText) blob->text(v.ToString());
                else blob->DataBytes(v.ToBytes());
                // An empty large value is a null in the row.
                ZOL_LN; row->SetItem(key, blob->size() != 0 ? Variant(blob) : Variant(nullptr));
            } else {
                ZOL_LN; row->LetItem(key, v);
            }
        }
        if (closeAfter) source->Close();
    } ZOL_RERAISE
}

Ref<DbDataRow> DbDataRows::Item(int32_t plIndex) {
    ZOL_ROUTINE(u"DbDataRows:Item Ln");
    try {
        if (!m_bLoaded) { ZOL_LN; Load(); }
        Ref<DbDataRow> result;
        if (!m_oRS) return result;
        Recordset& rs = *m_oRS;
        ZOL_LN; if (rs.Eof() && rs.Bof()) return result;
        ZOL_LN; if (rs.Eof() || rs.Bof()) rs.MoveFirst();
        ZOL_LN; Variant mark = rs.Bookmark();
        ZOL_LN; rs.Move(plIndex, Variant(adBookmarkFirst));
        if (!rs.Eof()) {
            result = Ref<DbDataRow>::New();
            result->Init(m_sRowColumnSet);
            ZOL_LN; InitRow(result);
        }
        ZOL_LN; rs.Bookmark(mark);
        return result;
    } ZOL_RERAISE
}

bool DbDataRows::Exist(int32_t plIndex) {
    ZOL_ROUTINE(u"DbDataRows:Exist Ln ");
    try {
        ZOL_LN; return static_cast<bool>(Item(plIndex));
    } catch (const DbError& e) {
        if (e.Number() == err::InvalidCall || e.Number() == err::SubscriptOutOfRange) return false;
        zol_mark_.Reraise();
    } ZOL_RERAISE
}

int32_t DbDataRows::Count() {
    if (!m_bLoaded) Load();
    return m_lRowCount;
}

Ref<DbEnumerator<DbDataRow>> DbDataRows::NewEnum() {
    ZOL_ROUTINE(u"DbDataRows:NewEnum Ln ");
    try {
        if (!m_bLoaded) { ZOL_LN; Load(); }
        ZOL_LN; int32_t status = Reset();
        return Ref<DbEnumerator<DbDataRow>>::New(SelfRef<IVBEnumerable>(this), status);
    } ZOL_RERAISE
}

String DbDataRows::GetString(const String& psColumnDelimiter, const String& psRowDelimiter,
                             const String& psBlobValueSubstibute) {
    ZOL_ROUTINE(u"DbDataRows:GetString Ln ");
    try {
        if (!m_bLoaded) { ZOL_LN; Load(); }
        if (m_bIsEmpty) return {};
        CStringBuilder sb;
        int32_t n = Count();
        for (int32_t i = 0; i < n; ++i) {
            ZOL_LN; Ref<DbDataRow> row = Item(i);
            sb.Append(psRowDelimiter);
            ZOL_LN; sb.Append(row->GetString(psColumnDelimiter, psBlobValueSubstibute));
        }
        if (sb.Length() > 0) { ZOL_LN; sb.Remove(0, static_cast<int32_t>(psRowDelimiter.size())); }
        return sb.ToString();
    } ZOL_RERAISE
}

int32_t DbDataRows::GetNext(Variant& value) {
    ZOL_ROUTINE(u"DbDataRows:GetNext Ln ");
    try {
        value = Variant(int32_t{0});
        m_lStatus = -1;
        if (m_oRS && (m_oRS->State() & adStateOpen)) {
            // The background fetch has ended once the state is plain "open".
            if (m_lMode == 3 && m_bFetching && m_oRS->State() == adStateOpen) m_bFetching = false;
            ZOL_LN;
            if (!m_oRS->Eof()) {
                ZOL_LN; InitRow(m_oRow);
                value = Variant(m_oRow);
                ZOL_LN; m_oRS->MoveNext();
                m_bWalked = true;
                ++m_lStatus;
            }
        }
        return m_lStatus;
    } ZOL_RERAISE
}

int32_t DbDataRows::Reset() {
    ZOL_ROUTINE(u"DbDataRows:Reset Ln ");
    try {
        m_lStatus = -1;
        if (m_lMode == 3 && m_bWalked) {
            // The rows behind the last walk are gone from the rowset: the new
            // walk starts from a new select.
            ZOL_LN; Load();
            m_bWalked = false;
        }
        ZOL_LN;
        if (m_oRS && (m_oRS->State() & adStateOpen) && !(m_oRS->Eof() && m_oRS->Bof())) {
            ZOL_LN; m_oRS->MoveFirst();
            m_lStatus = 1;
        }
        return m_lStatus;
    } ZOL_RERAISE
}

int32_t DbDataRows::Skip(int32_t count) {
    ZOL_ROUTINE(u"DbDataRows:IVBEnumerable_Skip Ln ");
    try {
        if (m_oRS && (m_oRS->State() & adStateOpen)) {
            int32_t steps = 0;
            while (!(m_oRS->Eof() && steps > count)) {
                ZOL_LN; m_oRS->MoveNext();
                m_bWalked = true;
                ++steps;
                ++m_lStatus;
            }
            if (m_oRS->Eof()) m_lStatus = -1;
        }
        return m_lStatus;
    } ZOL_RERAISE
}

} // namespace zolsdk
