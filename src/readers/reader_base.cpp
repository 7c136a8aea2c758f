#include "readers/reader_base.hpp"

namespace zolsdk {

void ReaderBase::Reraise(const RoutineMark& mark) const {
    DbError e = CurrentFailure();
    if (e.Number() == err::ObjectNotSet && !HasSession()) e.Description(e.Description() + u" (DBSession).");
    e.AppendTrace(mark.literal, mark.line);
    throw e;
}

void ReaderBase::ApplyPrimaryKeyRule(ado::Recordset& columns, const String& psTableName, const String& pkIndexName) {
    if (pkIndexName.empty() || columns.RecordCount() == 0) return;
    Ref<ado::Recordset> key = IndexColumns(pkIndexName, psTableName);
    if (key->RecordCount() == 0) return;
    key->MoveFirst();
    while (!key->Eof()) {
        String name = key->Value(u"column_name").ToString();
        columns.MoveFirst();
        columns.Find(u"column_name = '" + name + u"'");
        if (!columns.Eof() && columns.Value(u"is_nullable").ToBoolean()) columns.Value(u"is_nullable", Variant(false));
        key->MoveNext();
    }
}

} // namespace zolsdk
