// The record a run keeps for --resume: what it reads back after a crash
// and what it refuses.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

#include "transfer/key_ranges.hpp"
#include "transfer/resume_state.hpp"

using namespace zolsdk;
using namespace zolsdk::transfer;

namespace {

struct RecordFile {
    std::string path = (std::filesystem::temp_directory_path() / ("zol-record-" + std::to_string(::getpid()))).string();
    ~RecordFile() { std::filesystem::remove(path); }
    void Append(const std::string& text) { std::ofstream(path, std::ios::app | std::ios::binary) << text; }
};

Plan PlanOf(const String& from, const String& to) {
    Plan p;
    p.from = from;
    p.to = to;
    return p;
}

TEST(ResumeState, ReadsBackWhatARunRecordedUpToWhereItWasCut) {
    RecordFile f;
    Plan plan = PlanOf(u"dbtype=mysql;dbname=a;password=secret", u"dbtype=mysql;dbname=b;password=other");
    String odd = u"odd\tname\\with\nbreaks";
    {
        ResumeState s(FromUtf8(f.path), plan, false);
        s.Split(u"big", Kind::Int32, {Variant::FromInt64(1000), Variant::FromInt64(-5)});
        s.RangeVerified(u"big", 0, 999);
        s.RangeVerified(u"big", 2, 12);
        s.Split(u"names", Kind::Text, {Variant(String(u"m\tn"))});
        s.Created(odd);
        s.TableVerified(odd, 7);
    }
    std::string text;
    {
        std::ifstream in(f.path);
        text.assign(std::istreambuf_iterator<char>(in), {});
    }
    EXPECT_EQ(text.find("secret"), std::string::npos);
    EXPECT_NE(text.find("password=***"), std::string::npos);
    f.Append("range\tbig\t1\t4"); // a line cut short by a crash, without its end

    ResumeState again(FromUtf8(f.path), plan, true);
    TableState big = again.Table(u"big");
    ASSERT_TRUE(big.bounds.has_value());
    ASSERT_EQ(big.bounds->size(), 2u);
    EXPECT_EQ((*big.bounds)[0].ToString(), u"1000");
    EXPECT_EQ((*big.bounds)[1].ToString(), u"-5");
    EXPECT_EQ(big.rangesVerified, (std::map<int32_t, int64_t>{{0, 999}, {2, 12}}));
    EXPECT_FALSE(big.verifiedRows.has_value());
    EXPECT_EQ((*again.Table(u"names").bounds)[0].ToString(), u"m\tn");
    EXPECT_EQ(again.Table(odd).verifiedRows, std::optional<int64_t>(7));
    EXPECT_FALSE(again.Table(u"other").created);
    EXPECT_FALSE(again.ForeignKeysAdded());

    // Without resume the record starts anew.
    ResumeState fresh(FromUtf8(f.path), plan, false);
    EXPECT_FALSE(fresh.Table(u"big").created);
}

TEST(ResumeState, RefusesTheRecordOfAnotherRunOrAnotherFile) {
    RecordFile f;
    { ResumeState s(FromUtf8(f.path), PlanOf(u"dbtype=mysql;dbname=a", u"dbtype=mysql;dbname=b"), false); }
    // Another password is the same run; another database is not.
    EXPECT_NO_THROW(ResumeState(FromUtf8(f.path), PlanOf(u"dbtype=mysql;dbname=a;password=x", u"dbtype=mysql;dbname=b"), true));
    EXPECT_THROW(ResumeState(FromUtf8(f.path), PlanOf(u"dbtype=mysql;dbname=a", u"dbtype=mysql;dbname=c"), true), DbError);
    EXPECT_THROW(ResumeState(FromUtf8(f.path), PlanOf(u"dbtype=mysql;dbname=z", u"dbtype=mysql;dbname=b"), true), DbError);
    std::ofstream(f.path, std::ios::trunc) << "id,name\n1,a\n";
    EXPECT_THROW(ResumeState(FromUtf8(f.path), PlanOf(u"dbtype=mysql;dbname=a", u"dbtype=mysql;dbname=b"), true), DbError);
}

TEST(KeyRanges, BoundsMakeContiguousRangesOpenAtBothEnds) {
    auto ranges = RangesBetween({Variant::FromInt64(10), Variant::FromInt64(20)});
    ASSERT_EQ(ranges.size(), 3u);
    EXPECT_TRUE(ranges[0].from.IsEmpty());
    EXPECT_EQ(ranges[0].to.ToString(), u"10");
    EXPECT_EQ(ranges[1].from.ToString(), u"10");
    EXPECT_EQ(ranges[1].to.ToString(), u"20");
    EXPECT_EQ(ranges[2].from.ToString(), u"20");
    EXPECT_TRUE(ranges[2].to.IsEmpty());
    ASSERT_EQ(RangesBetween({}).size(), 1u);
    EXPECT_TRUE(RangesBetween({})[0].IsWhole());
}

TEST(KeyRanges, OnlyANonNullKeyOfIntegersOrTextBetweenMariaDbCutsATable) {
    auto table = [](Kind k, bool nullable, bool primary) {
        TablePlan t;
        t.name = u"t";
        ColumnPlan c;
        c.name = u"k";
        c.kind = k;
        c.nullable = nullable;
        t.columns.push_back(c);
        IndexPlan i;
        i.name = u"i";
        i.primaryKey = primary;
        i.unique = true;
        i.columns.push_back({u"k", false, 0});
        t.indexes.push_back(i);
        t.keyColumns = {u"k"};
        return t;
    };
    Plan maria = PlanOf(u"", u""), toAccess = PlanOf(u"", u"");
    toAccess.target = Engine::Access;
    EXPECT_EQ(RangeKeyKind(maria, table(Kind::Int32, false, true)), Kind::Int32);
    EXPECT_EQ(RangeKeyKind(toAccess, table(Kind::UInt64, false, false)), Kind::UInt64);
    EXPECT_EQ(RangeKeyKind(maria, table(Kind::Text, false, true)), Kind::Text);
    EXPECT_FALSE(RangeKeyKind(toAccess, table(Kind::Text, false, true)));   // text orders differently there
    EXPECT_FALSE(RangeKeyKind(maria, table(Kind::Int32, true, false)));     // Null keys would fall outside every range
    EXPECT_FALSE(RangeKeyKind(maria, table(Kind::DateTime, false, true)));
    TablePlan unkeyed = table(Kind::Int32, false, true);
    unkeyed.indexes.clear();
    EXPECT_FALSE(RangeKeyKind(maria, unkeyed));
}

} // namespace
