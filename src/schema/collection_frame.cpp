#include "zolsdk/schema/collection_frame.hpp"

#include "zolsdk/data/data_columns.hpp"
#include "zolsdk/schema/column.hpp"
#include "zolsdk/schema/index.hpp"
#include "zolsdk/schema/table.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

using ado::adBookmarkFirst;
using ado::adClipString;
using ado::adStateOpen;

template <class T>
SchemaCollection<T>::SchemaCollection(StringView className, StringView keyField)
    : m_oItem(Ref<T>::New()), keyField_(keyField) {
    String c(className);
    litExist_ = c + u":Exist Ln ";
    litItem_ = c + u":Item Ln"; // no blank: the number follows at once
    litNewEnum_ = c + u":NewEnum Ln ";
    litGetString_ = c + u":GetString Ln ";
    litGetNext_ = c + u":GetNext Ln ";
    litReset_ = c + u":Reset Ln ";
    litSkip_ = c + u":IVBEnumerable_Skip Ln ";
}

template <class T>
SchemaCollection<T>::~SchemaCollection() {
    try {
        if (m_oRS && m_oRS->State() == adStateOpen) m_oRS->Close();
    } catch (...) {
    }
}

template <class T>
Ref<T> SchemaCollection<T>::Item(const Variant& vntIndexKey) {
    ZOL_ROUTINE(litItem_);
    try {
        Ref<T> result;
        ado::Recordset& rs = *m_oRS;
        ZOL_LN;
        if (rs.Eof() && rs.Bof()) return result;
        ZOL_LN; if (rs.Eof() || rs.Bof()) rs.MoveFirst();
        ZOL_LN; Variant mark = rs.Bookmark();
        if (!vntIndexKey.IsString()) {
            ZOL_LN; rs.Move(vntIndexKey.ToLong(), Variant(adBookmarkFirst));
        } else {
            // The key goes into the filter as it is: an apostrophe breaks it.
            ZOL_LN; rs.Filter(Variant(keyField_ + u" = '" + vntIndexKey.ToString() + u"'"));
            ZOL_LN; if (!(rs.Eof() && rs.Bof())) rs.MoveFirst();
        }
        ZOL_LN;
        if (!rs.Eof()) {
            result = Ref<T>::New();
            ZOL_LN; Fill(*result);
        }
        // Put the cursor back where a running enumeration left it.
        ZOL_LN; rs.Filter(Variant(int32_t{0}));
        ZOL_LN; rs.Bookmark(mark);
        return result;
    } ZOL_RERAISE
}

template <class T>
bool SchemaCollection<T>::Exist(const Variant& pvIndexKey) {
    ZOL_ROUTINE(litExist_);
    try {
        ZOL_LN; return static_cast<bool>(Item(pvIndexKey));
    } catch (const DbError& e) {
        // "No such item" is an answer here, not a failure.
        if (e.Number() == err::InvalidCall || e.Number() == err::SubscriptOutOfRange) return false;
        zol_mark_.Reraise();
    } ZOL_RERAISE
}

template <class T>
Ref<DbEnumerator<T>> SchemaCollection<T>::NewEnum() {
    ZOL_ROUTINE(litNewEnum_);
    try {
        ZOL_LN; int32_t status = Reset();
        ZOL_LN; return Ref<DbEnumerator<T>>::New(SelfRef<IVBEnumerable>(this), status);
    } ZOL_RERAISE
}

template <class T>
String SchemaCollection<T>::GetString(const String& psColumnDelimiter, const String& psRowDelimiter) {
    ZOL_ROUTINE(litGetString_);
    try {
        ZOL_LN; if (m_oRS->RecordCount() == 0) return {};
        ZOL_LN; m_oRS->MoveFirst();
        ZOL_LN; String s = m_oRS->GetString(adClipString, -1, psColumnDelimiter, psRowDelimiter, u"");
        // One character goes, whatever the row delimiter's length.
        ZOL_LN; if (!s.empty()) s.pop_back();
        return s;
    } ZOL_RERAISE
}

template <class T>
int32_t SchemaCollection<T>::GetNext(Variant& value) {
    ZOL_ROUTINE(litGetNext_);
    try {
        value = Variant(int32_t{0});
        m_lStatus = -1;
        ZOL_LN;
        if (m_oRS && m_oRS->State() == adStateOpen && !m_oRS->Eof()) {
            ZOL_LN; Fill(*m_oItem);
            value = Variant(m_oItem);
            ZOL_LN; m_oRS->MoveNext();
            ++m_lStatus;
        }
        return m_lStatus;
    } ZOL_RERAISE
}

template <class T>
int32_t SchemaCollection<T>::Reset() {
    ZOL_ROUTINE(litReset_);
    try {
        m_lStatus = -1;
        ZOL_LN;
        if (m_oRS && m_oRS->State() == adStateOpen && m_oRS->RecordCount() > 0) {
            ZOL_LN; m_oRS->MoveFirst();
            m_lStatus = 1;
        }
        return m_lStatus;
    } ZOL_RERAISE
}

template <class T>
int32_t SchemaCollection<T>::Skip(int32_t count) {
    ZOL_ROUTINE(litSkip_);
    try {
        // Walks to the end of the rowset whatever `count` says; a count
        // beyond the rows fails at the end.
        if (m_oRS && m_oRS->State() == adStateOpen) {
            int32_t counter = 0;
            while (!m_oRS->Eof() || counter <= count) {
                ZOL_LN; m_oRS->MoveNext();
                ++counter;
                ++m_lStatus;
            }
            if (m_oRS->Eof()) m_lStatus = -1;
        }
        return m_lStatus;
    } ZOL_RERAISE
}

template class SchemaCollection<DbTable>;
template class SchemaCollection<DbColumn>;
template class SchemaCollection<DbIndex>;
template class SchemaCollection<DbIdxColumn>;
template class SchemaCollection<DbDataColumn>;

} // namespace zolsdk
