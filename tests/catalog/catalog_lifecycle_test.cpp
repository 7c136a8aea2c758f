#include <gtest/gtest.h>

#include "common/failure.hpp"
#include "zolsdk/zolsdk.hpp"

using namespace zolsdk;

namespace {
using zoltest::FailureNumber;
} // namespace

TEST(CatalogLifecycle, InitSelectsTheSessionAndKeepsTheAttributes) {
    auto cat = Ref<DbCatalog>::New();
    cat->Init(u"dbtype=MSXML;dbname=a.xml;dblocation=/tmp;color=Blue");
    EXPECT_EQ(cat->CatalogType(), u"MSXML");
    EXPECT_EQ(cat->Name(), u"a.xml");
    EXPECT_EQ(cat->Location(), u"/tmp");
    EXPECT_EQ(cat->DBProperty(u"COLOR"), u"Blue");
    EXPECT_EQ(cat->DBProperty(u"dbtypeid"), u"3");
    EXPECT_FALSE(cat->IsFeatureSupported(u"FTS"));

    // A second Init replaces the session: only the new attributes count.
    Ref<IDBSession> first = cat->Session();
    cat->Init(u"dbtype=msxml;dbname=b.xml;dblocation=/var");
    EXPECT_FALSE(cat->Session() == first);
    EXPECT_EQ(cat->Name(), u"b.xml");
    EXPECT_EQ(cat->DBProperty(u"color"), u"");
}

TEST(CatalogLifecycle, NoEngineMeansObjectNotSetEverywhere) {
    auto fresh = Ref<DbCatalog>::New();
    EXPECT_EQ(FailureNumber([&] { fresh->Name(); }), 91);
    EXPECT_EQ(FailureNumber([&] { fresh->Tables(); }), 91);

    auto cat = Ref<DbCatalog>::New();
    EXPECT_EQ(FailureNumber([&] { cat->Init(u"dbname=a"); }), 91);
    EXPECT_EQ(FailureNumber([&] { cat->Create(); }), 91);
    EXPECT_EQ(FailureNumber([&] { cat->GetDataRowCount(u"t"); }), 91);

    // Trapping operations add their line; forwarding ones add none.
    try {
        cat->Drop();
        FAIL();
    } catch (const DbError& e) {
        EXPECT_NE(e.Source().find(u" => \r\nDbCatalog:Drop Ln "), String::npos);
    }
    try {
        cat->Name();
        FAIL();
    } catch (const DbError& e) {
        EXPECT_EQ(e.Source().find(u"DbCatalog"), String::npos);
    }
}

TEST(ClassFactory, CreatesEveryRegisteredClassByName) {
    for (const String& name : CreatableClassNames()) {
        Ref<Object> o = CreateObject(name);
        EXPECT_TRUE(o) << ToUtf8(name);
    }
    EXPECT_TRUE(CreateObject(u"zolsdk.dbcatalog").As<DbCatalog>());
    EXPECT_EQ(FailureNumber([] { CreateObject(u"NoSuchClass"); }), 429);
}
