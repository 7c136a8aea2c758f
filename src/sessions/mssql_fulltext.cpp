// Full-text search on SQL Server: the server's full-text catalogs, managed
// through its system procedures. Every statement goes through the session's
// own Execute family. Nothing waits for a population to finish. Names stand
// as text in the procedures' arguments, their quotes doubled.
#include "dialects/name_quoting.hpp"
#include "sessions/mssql_session.hpp"
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

String Text(const String& name) { return EscapedText(name, false); }

// One argument is written without its opening quote: there the name must be
// one word or bracketed whole.
const String& Bare(const String& name) {
    CheckBareName(name, kBracketQuotes, u"The table name");
    return name;
}

// The text of a field that may be Null.
String FieldText(ado::Recordset& rs, StringView field) {
    const Variant& v = rs.Value(field);
    return v.IsNull() || v.IsEmpty() ? String() : v.ToString();
}

// Whether a row of `rs` has `wanted` in `field`, compared case-blind. The
// rowset is closed afterwards.
bool AnyRowHas(const Ref<ado::Recordset>& rs, StringView field, const String& wanted) {
    bool found = false;
    if (rs->State() == ado::adStateClosed) return false;
    if (!(rs->Eof() && rs->Bof())) {
        rs->MoveFirst();
        while (!rs->Eof()) {
            if (EqualsNoCase(FieldText(*rs, field), wanted)) {
                found = true;
                break;
            }
            rs->MoveNext();
        }
    }
    rs->Close();
    return found;
}

} // namespace

bool DbMsSqlDB::IsFTSInstalledOnServer() {
    ZOL_ROUTINE(u"DbMsSqlDB:IsFTSInstalledOnServer Ln ");
    try {
        ZOL_LN; String installed =
            ExecuteScalar(u" SELECT fulltextserviceproperty('IsFulltextInstalled') AS IsInstalled ", u"0");
        ZOL_LN; return Variant(installed).ToInteger() != 0;
    } ZOL_RERAISE
}

bool DbMsSqlDB::IsFTSEnabledForDB(const String& psDatabaseName) {
    ZOL_ROUTINE(u"DbMsSqlDB:IsFTSEnabledForDB Ln ");
    try {
        ZOL_LN; String enabled = ExecuteScalar(
            u" SELECT DATABASEPROPERTY('" + Text(psDatabaseName) + u"', 'IsFulltextEnabled') AS IsEnabled ", u"0");
        ZOL_LN; return Variant(enabled).ToInteger() != 0;
    } ZOL_RERAISE
}

bool DbMsSqlDB::FTSCatalogExists(const String& psCatalogName) {
    ZOL_ROUTINE(u"DbMsSqlDB:FTSCatalogExists Ln ");
    try {
        ZOL_LN; Ref<ado::Recordset> rs = Execute(u" EXEC sp_help_fulltext_catalogs ");
        ZOL_LN; return AnyRowHas(rs, u"Name", psCatalogName);
    } ZOL_RERAISE
}

bool DbMsSqlDB::FTSCatalogTableExists(const String& psCatalogName, const String& psTableName) {
    ZOL_ROUTINE(u"DbMsSqlDB:FTSCatalogTableExists Ln ");
    try {
        // The table's name has a closing quote and no opening one; the
        // statement has always been sent so.
        ZOL_LN; Ref<ado::Recordset> rs =
            Execute(u" EXEC sp_help_fulltext_tables '" + Text(psCatalogName) + u"'," +
                    Bare(psTableName) + u"'");
        ZOL_LN; return AnyRowHas(rs, u"table_name", psTableName);
    } ZOL_RERAISE
}

bool DbMsSqlDB::FTSTableColumnExists(const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(u"DbMsSqlDB:FTSTableColumnExists Ln ");
    try {
        ZOL_LN; Ref<ado::Recordset> rs =
            Execute(u" EXEC sp_help_fulltext_columns '" + Text(psTableName) + u"', '" + Text(psColumnName) + u"'");
        ZOL_LN; return AnyRowHas(rs, u"FULLTEXT_COLUMN_NAME", psColumnName);
    } ZOL_RERAISE
}

bool DbMsSqlDB::EnableDisableFTSForDB(bool pbEnable) {
    ZOL_ROUTINE(u"DbMsSqlDB:EnableDisableFTSForDB Ln ");
    try {
        ZOL_LN; ExecuteNoQuery(pbEnable ? u" EXEC sp_fulltext_database 'enable' "
                                        : u" EXEC sp_fulltext_database 'disable' ");
        return true;
    } ZOL_RERAISE
}

bool DbMsSqlDB::CreateFTSCatalog(const String& psCatalogName) {
    ZOL_ROUTINE(u"DbMsSqlDB:CreateFTSCatalog Ln ");
    try {
        ZOL_LN; ExecuteNoQuery(u" EXEC sp_fulltext_catalog '" + Text(psCatalogName) + u"', 'create' ");
        return true;
    } ZOL_RERAISE
}

bool DbMsSqlDB::AddToCatalog(const String& psCatalogName, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(u"DbMsSqlDB:AddToCatalog Ln ");
    try {
        // The table's key index is taken to be "PK_" and the table's name.
        ZOL_LN; ExecuteNoQuery(u" EXEC sp_fulltext_table '" + Text(psTableName) + u"', 'create', '" + Text(psCatalogName) +
                               u"', 'PK_" + Text(psTableName) + u"' ");
        ZOL_LN; ExecuteNoQuery(u" EXEC sp_fulltext_column '" + Text(psTableName) + u"', '" + Text(psColumnName) + u"', 'add' ");
        return true;
    } ZOL_RERAISE
}

bool DbMsSqlDB::ActivateDeactivateFTSCatalog(const String& psTableName, bool pbActivate) {
    ZOL_ROUTINE(u"DbMsSqlDB:ActivateDeactivateFTSCatalog Ln ");
    try {
        ZOL_LN; ExecuteNoQuery(u" EXEC sp_fulltext_table '" + Text(psTableName) +
                               (pbActivate ? u"', 'activate' " : u"', 'deactivate' "));
        return true;
    } ZOL_RERAISE
}

bool DbMsSqlDB::PopulateFTSCatalog(const String& psCatalogName, int32_t plMode) {
    ZOL_ROUTINE(u"DbMsSqlDB:PopulateFTSCatalog Ln ");
    try {
        const char16_t* action = nullptr;
        switch (plMode) {
        case 1: action = u"', 'start_full' "; break;
        case 2: action = u"', 'start_incremental' "; break;
        case 3: action = u"', 'Rebuild' "; break;
        case 4: action = u"', 'stop' "; break;
        default: break;
        }
        if (action) {
            ZOL_LN; ExecuteNoQuery(u" sp_fulltext_catalog '" + Text(psCatalogName) + action);
        }
        return true;
    } ZOL_RERAISE
}

int32_t DbMsSqlDB::GetFTSPopulateStatus(const String& psCatalogName) {
    ZOL_ROUTINE(u"DbMsSqlDB:GetFTSPopulateStatus Ln ");
    try {
        ZOL_LN; String status = ExecuteScalar(
            u" SELECT fulltextcatalogproperty('" + Text(psCatalogName) + u"', 'populatestatus') AS Status ", u"0");
        ZOL_LN; return Variant(status).ToLong();
    } ZOL_RERAISE
}

bool DbMsSqlDB::SetFTSChangeTracking(const String& psTableName, int32_t plMode) {
    // This routine has always reported under the name of the one before it.
    ZOL_ROUTINE(u"DbMsSqlDB:GetFTSPopulateStatus Ln ");
    try {
        String head = u" EXEC sp_fulltext_table '" + Text(psTableName);
        if (plMode == 1) {
            ZOL_LN; ExecuteNoQuery(head + u"', 'start_change_tracking' ");
            ZOL_LN; ExecuteNoQuery(head + u"', 'start_background_updateindex' ");
        } else if (plMode == 2) {
            ZOL_LN; ExecuteNoQuery(head + u"', 'stop_background_updateindex' ");
            ZOL_LN; ExecuteNoQuery(head + u"', 'stop_change_tracking' ");
        }
        return true;
    } ZOL_RERAISE
}

// ---- the three operations of the session contract ------------------------------

bool DbMsSqlDB::IsFTSEnabled(const String& psCatalogName, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(u"DbMsSqlDB:IsFTSEnabled Ln ");
    try {
        ZOL_LN; if (!IsFeatureSupported(u"fts")) return false;
        ZOL_LN; if (!IsFTSEnabledForDB(AttributeValue(u"DBNAME"))) return false;
        // The catalog's name, read as a boolean, switches full-text search
        // for the whole database on or off: a name that is no boolean
        // fails here. That is what this operation has always done.
        ZOL_LN; bool enable = Variant(psCatalogName).ToBoolean();
        ZOL_LN; EnableDisableFTSForDB(enable);
        ZOL_LN; if (FTSTableColumnExists(psTableName, psColumnName)) return true;
        return false;
    } ZOL_RERAISE
}

bool DbMsSqlDB::EnableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) {
    ZOL_ROUTINE(u"DbMsSqlDB:EnableFTS Ln ");
    try {
        ZOL_LN; if (!IsFeatureSupported(u"fts")) return true;
        ZOL_LN; if (IsFTSEnabledForDB(AttributeValue(u"DBNAME")) && FTSCatalogExists(psCatalogName) &&
                    FTSTableColumnExists(psTableName, psColumnName)) {
            ZOL_LN; SetFTSChangeTracking(psTableName, 2);
            ZOL_LN; ActivateDeactivateFTSCatalog(psTableName, false);
        }
        return true;
    } ZOL_RERAISE
}

bool DbMsSqlDB::DisableFTS(const String& psCatalogName, const String& psTableName, const String& psColumnName) {
    if (!IsFeatureSupported(u"fts")) return true;
    if (!IsFTSEnabledForDB(AttributeValue(u"DBNAME"))) EnableDisableFTSForDB(true);
    if (FTSCatalogExists(psCatalogName)) {
        if (FTSTableColumnExists(psTableName, psColumnName)) AddToCatalog(psCatalogName, psTableName, psColumnName);
    } else {
        CreateFTSCatalog(psCatalogName);
        AddToCatalog(psCatalogName, psTableName, psColumnName);
    }
    ActivateDeactivateFTSCatalog(psTableName, true);
    SetFTSChangeTracking(psTableName, 1);
    return true;
}

} // namespace zolsdk
