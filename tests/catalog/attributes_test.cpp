#include <gtest/gtest.h>

#include <typeinfo>
#include <utility>

#include "catalog/adaptor_factory.hpp"
#include "zolsdk/dialects/sql_builder.hpp"
#include "catalog/attributes.hpp"

using namespace zolsdk;

TEST(AttributeValue, FactoryReaderFindsTheFirstOccurrenceAnywhere) {
    EXPECT_EQ(FactoryAttributeValue(u"", u"dbtype"), u"");
    // The case of the value stays; keys match case-blind.
    EXPECT_EQ(FactoryAttributeValue(u"DbType=MySQL;dbname=x", u"dbtype"), u"MySQL");
    EXPECT_EQ(FactoryAttributeValue(u"dbtype=msxml;dbname=a b ;x=1", u"DBNAME"), u"a b ");
    EXPECT_EQ(FactoryAttributeValue(u"dbname=", u"dbname"), u"");
    EXPECT_EQ(FactoryAttributeValue(u"dbname", u"dbname"), u"");
    // A match inside a longer key counts, and only the first hit is looked at.
    EXPECT_EQ(FactoryAttributeValue(u"xdbname=a;dbname=b", u"dbname"), u"a");
    EXPECT_EQ(FactoryAttributeValue(u"dbname=a;dbname=b", u"dbname"), u"a");
    // The second "=" ends the value.
    EXPECT_EQ(FactoryAttributeValue(u"password=a=b", u"password"), u"a");
    // A blank before "=" makes the item unreadable.
    EXPECT_EQ(FactoryAttributeValue(u"dbname =x", u"dbname"), u"");
    // The key inside a value is found first: that piece has no "=".
    EXPECT_EQ(FactoryAttributeValue(u"dbname=dbtype;dbtype=mysql", u"dbtype"), u"");
    EXPECT_EQ(FactoryAttributeValue(u"a=1;port=3306", u"port"), u"3306");
}

TEST(AttributeValue, SessionReaderLooksForKeyAndEqualsFirst) {
    EXPECT_EQ(SessionAttributeValue(u"dbname=dbtype;dbtype=mysql", u"dbtype"), u"mysql");
    EXPECT_EQ(SessionAttributeValue(u"", u"dbname"), u"");
    EXPECT_EQ(SessionAttributeValue(u"dbname =x", u"dbname"), u"");
    EXPECT_EQ(SessionAttributeValue(u"xdbname=a;dbname=b", u"dbname"), u"a");
    EXPECT_EQ(SessionAttributeValue(u"DBNAME=Shop", u"dbname"), u"Shop");
    EXPECT_EQ(SessionAttributeValue(u"dbname=x;dbtypeid=3", u"dbtypeid"), u"3");
    EXPECT_EQ(SessionAttributeValue(u"user=a", u"password"), u"");
}

TEST(AdaptorFactory, ChoosesTheSessionByLowerCasedType) {
    DbAdaptorFactory f;
    // Each engine's session, named in any case, speaks that engine's dialect.
    const std::pair<const char16_t*, DbTypeId> cases[] = {
        {u"dbtype=MSXML;dbname=a", DbMsXMLId}, {u"dbtype=mysql", DbMySqlDBId},
        {u"dbtype=MsSql", DbMsSqlDBId},        {u"dbtype=msaccess", DbMsAccessDBId}};
    for (auto [attrs, id] : cases) {
        Ref<IDBSession> s = f.GetDbSessionAdaptor(attrs);
        ASSERT_TRUE(s) << ToUtf8(attrs);
        EXPECT_EQ(typeid(*s->DbSqlBuilder().get()), typeid(*NewSqlBuilder(id).get())) << ToUtf8(attrs);
    }
    EXPECT_FALSE(f.GetDbSessionAdaptor(u"dbname=a"));
    EXPECT_FALSE(f.GetDbSessionAdaptor(u"dbtype=oracle"));
    EXPECT_FALSE(f.GetDbSessionAdaptor(u"dbtype =msxml"));
}

namespace zolsdk {
namespace {

// Values the readers would hand out shortened are refused before they reach
// an engine; whole values, and keys that are absent, pass.
TEST(WholeAttributes, ValuesTheReaderWouldShortenAreRefused) {
    const struct {
        String attributes;
        const char16_t* key;
        const char* refusal; // nullptr: accepted
    } cases[] = {
        {u"dbname=shop;password=s3cret", u"password", nullptr},
        {u"dbname=shop;password=", u"password", nullptr},
        {u"dbname=shop;;", u"dbname", nullptr},
        {u"dbname=shop", u"password", nullptr},
        {u"password=a=b;dbname=x", u"password", "holds \"=\""},
        {u"password=ab;cd;dbname=x", u"password", "a \";\" inside the value"},
        {String(u"dbname=sh\0op;x=1", 16), u"dbname", "character 0"},
    };
    for (const auto& c : cases) {
        const String& attrs = c.attributes;
        try {
            CheckWholeAttribute(attrs, c.key);
            EXPECT_EQ(c.refusal, nullptr) << ToUtf8(attrs);
        } catch (const DbError& e) {
            ASSERT_NE(c.refusal, nullptr) << ToUtf8(attrs);
            EXPECT_EQ(e.Number(), err::InvalidCall);
            EXPECT_NE(ToUtf8(e.Description()).find(c.refusal), std::string::npos) << ToUtf8(e.Description());
        }
    }
}

} // namespace
} // namespace zolsdk
