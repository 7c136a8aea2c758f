#include <gtest/gtest.h>

#include <vector>

#include "common/failure.hpp"
#include "zolsdk/platform/collection.hpp"

using namespace zolsdk;
using zoltest::FailureNumber;

namespace {
std::vector<String> Texts(const Collection& c) {
    std::vector<String> out;
    for (const Variant& v : c) out.push_back(v.ToString());
    return out;
}
} // namespace

TEST(Collection, OneBasedPositionsAndCaseBlindKeys) {
    Collection c;
    EXPECT_EQ(c.Count(), 0);
    c.Add(Variant(u"first"), u"Alpha");
    c.Add(Variant(u"second"));
    c.Add(Variant(int32_t{3}), u"GAMMA");
    EXPECT_EQ(c.Count(), 3);
    EXPECT_EQ(c.Item(Variant(int32_t{1})).ToString(), u"first");
    EXPECT_EQ(c.Item(Variant(int32_t{2})).ToString(), u"second");
    EXPECT_EQ(c.Item(Variant(2.6)).ToLong(), 3); // a position is rounded like any integer
    EXPECT_EQ(c.Item(Variant(u"alpha")).ToString(), u"first");
    EXPECT_EQ(c.Item(Variant(u"ALPHA")).ToString(), u"first");
    EXPECT_EQ(c.Item(Variant(u"Gamma")).ToLong(), 3);
    EXPECT_TRUE(c.Contains(u"gamma"));
    EXPECT_FALSE(c.Contains(u"second"));
    // A text is a key even when it looks like a number.
    EXPECT_EQ(FailureNumber([&] { c.Item(Variant(u"1")); }), err::InvalidCall);
}

TEST(Collection, FailuresOfThePlatform) {
    Collection c;
    EXPECT_EQ(FailureNumber([&] { c.Item(Variant(int32_t{1})); }), err::SubscriptOutOfRange);
    c.Add(Variant(u"a"), u"k");
    EXPECT_EQ(FailureNumber([&] { c.Item(Variant(int32_t{0})); }), err::SubscriptOutOfRange);
    EXPECT_EQ(FailureNumber([&] { c.Item(Variant(int32_t{2})); }), err::SubscriptOutOfRange);
    EXPECT_EQ(FailureNumber([&] { c.Item(Variant(int32_t{-1})); }), err::SubscriptOutOfRange);
    EXPECT_EQ(FailureNumber([&] { c.Item(Variant(u"missing")); }), err::InvalidCall);
    EXPECT_EQ(FailureNumber([&] { c.Add(Variant(u"b"), u"K"); }), err::DuplicateKey);
    EXPECT_EQ(c.Count(), 1); // the failed Add left nothing behind
    EXPECT_EQ(FailureNumber([&] { c.Remove(Variant(u"nope")); }), err::InvalidCall);
    EXPECT_EQ(FailureNumber([&] { c.Remove(Variant(int32_t{5})); }), err::SubscriptOutOfRange);
    EXPECT_EQ(FailureNumber([&] { c.Add(Variant(u"c"), u"", Variant(u"nope")); }), err::InvalidCall);
    EXPECT_EQ(FailureNumber([&] { c.Add(Variant(u"c"), u"", Variant(int32_t{3})); }), err::SubscriptOutOfRange);
    EXPECT_EQ(c.Count(), 1);
}

TEST(Collection, InsertRemoveAndWalkInOrder) {
    Collection c;
    c.Add(Variant(u"b"), u"kb");
    c.Add(Variant(u"d"), u"kd");
    c.Add(Variant(u"a"), u"ka", Variant(int32_t{1}));        // before the first
    c.Add(Variant(u"c"), u"kc", Variant(), Variant(u"KB"));  // after a key
    c.Add(Variant(u"e"), u"", Variant(), Variant(int32_t{4})); // after the last
    EXPECT_EQ(Texts(c), (std::vector<String>{u"a", u"b", u"c", u"d", u"e"}));

    c.Remove(Variant(u"kc"));
    EXPECT_EQ(Texts(c), (std::vector<String>{u"a", u"b", u"d", u"e"}));
    c.Remove(Variant(int32_t{1}));
    EXPECT_EQ(Texts(c), (std::vector<String>{u"b", u"d", u"e"}));
    EXPECT_EQ(c.Item(Variant(u"kd")).ToString(), u"d");
    EXPECT_FALSE(c.Contains(u"kc"));
    // A removed key can be used again.
    c.Add(Variant(u"c2"), u"KC");
    EXPECT_EQ(c.Item(Variant(int32_t{4})).ToString(), u"c2");
    EXPECT_EQ(Texts(c), (std::vector<String>{u"b", u"d", u"e", u"c2"}));
    // Same count after a removal and an addition: the walk still sees the change.
    c.Remove(Variant(int32_t{1}));
    c.Add(Variant(u"z"));
    EXPECT_EQ(Texts(c), (std::vector<String>{u"d", u"e", u"c2", u"z"}));
}
