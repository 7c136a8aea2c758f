#include "sessions/session_base.hpp"

#include "catalog/attributes.hpp"
#include "platform/failure_chain.hpp"
#include "zolsdk/platform/error.hpp"

namespace zolsdk {

SessionBase::SessionBase(int32_t dbTypeId, String className, SessionFeatures features)
    : msAttributes(u"dbtypeid=" + IntText(dbTypeId)), dbTypeId_(dbTypeId), className_(std::move(className)),
      features_(features) {
    literalAttributeValue_ = Literal(u"IDBSession_AttributeValue");
    literalDbReader_ = Literal(u"IDBSession_DbReader");
}

SessionBase::~SessionBase() = default;

String SessionBase::Literal(StringView routine) const {
    String s = className_;
    s += u":";
    s += routine;
    s += u" Ln ";
    return s;
}

void SessionBase::Connect(const String& psAttributes) {
    // New attributes stand in front: the reader takes the first match.
    if (!psAttributes.empty()) msAttributes = psAttributes + u";" + msAttributes;
    msConnectionString = GetConnectionString(false);
    mbConnected = true;
}

void SessionBase::BeginTransaction() {
    if (mlOpenDepth == 0) OpenConnection();
    ++mlOpenDepth;
}

void SessionBase::EndTransaction() {
    if (mlOpenDepth >= 2) {
        --mlOpenDepth;
    } else if (mlOpenDepth == 1) {
        mlOpenDepth = 0;
        CloseConnection();
    }
}

void SessionBase::RollbackTransaction() {
    // A connection scope only: nothing is undone in the engine.
    if (mlOpenDepth > 0) {
        mlOpenDepth = 0;
        CloseConnection();
    }
}

String SessionBase::AttributeValue(const String& psAttribute) {
    ZOL_ROUTINE(literalAttributeValue_);
    try {
        ZOL_LN; return SessionAttributeValue(msAttributes, psAttribute);
    } ZOL_RERAISE
}

void SessionBase::CheckWholeAttributes() const {
    for (const char16_t* key : {u"dbname", u"dblocation", u"username", u"password"})
        CheckWholeAttribute(msAttributes, key);
}

String SessionBase::DatabaseFile() {
    CheckWholeAttributes();
    const String name = AttributeValue(u"dbname");
    if (name == u"." || name == u".." || name.find_first_of(u"/\\") != String::npos)
        RaisePlatform(err::InvalidCall, u"The database name '" + name +
                                            u"' names no file inside dblocation: give the file's name alone");
    return AttributeValue(u"dblocation") + u"\\" + name;
}

bool SessionBase::IsFeatureSupported(const String& psFeature) {
    String f = LCase(psFeature);
    if (f == u"full_text_search" || f == u"fts") return FullTextSearchSupported();
    if (f == u"connection_pooling") return features_.connectionPooling;
    if (f == u"create_index_in_create_table") return features_.createIndexInCreateTable;
    if (f == u"multi_row_insert") return features_.multiRowInsert;
    return false;
}

Ref<IDBReader> SessionBase::DbReader() {
    ZOL_ROUTINE(literalDbReader_);
    try {
        if (!moReader) {
            ZOL_LN; moReader = MakeReader();
            ZOL_LN; moReader->Init(SelfRef<IDBSession>(this));
        }
        return moReader;
    } ZOL_RERAISE
}

} // namespace zolsdk
