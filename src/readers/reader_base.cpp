#include "readers/reader_base.hpp"

#include "schema/rowset_shapes.hpp"
#include "platform/failure_chain.hpp"

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

Ref<ado::Recordset> ReaderBase::KeysFromForeignKeyRowset(ado::Recordset& native, RoutineMark& zol_mark_) {
    ZOL_LN; Ref<ado::Recordset> rs = KeyRS();
    if (!(native.Eof() && native.Bof())) {
        // The first column of each key.
        ZOL_LN; native.Filter(Variant(u"ORDINAL = 1"));
        while (!native.Eof()) {
            ZOL_LN; rs->AddNew();
            ZOL_LN; rs->Value(u"pk_table_name", native.Value(u"PK_TABLE_NAME"));
            ZOL_LN; rs->Value(u"pk_column_name", native.Value(u"PK_COLUMN_NAME"));
            ZOL_LN; rs->Value(u"fk_table_name", native.Value(u"FK_TABLE_NAME"));
            ZOL_LN; rs->Value(u"fk_column_name", native.Value(u"FK_COLUMN_NAME"));
            ZOL_LN; rs->Value(u"ordinal", native.Value(u"ORDINAL"));
            ZOL_LN; rs->Value(u"update_rule", native.Value(u"UPDATE_RULE"));
            ZOL_LN; rs->Value(u"delete_rule", native.Value(u"DELETE_RULE"));
            ZOL_LN; rs->Value(u"pk_name", native.Value(u"PK_NAME"));
            ZOL_LN; rs->Value(u"fk_name", native.Value(u"FK_NAME"));
            ZOL_LN; native.MoveNext();
        }
    }
    return rs;
}

} // namespace zolsdk
