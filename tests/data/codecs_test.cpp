#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "common/failure.hpp"
#include "common/locale_scope.hpp"
#include "data/codecs.hpp"
#include "support/numbers.hpp"
#include "zolsdk/data/blob.hpp"
#include "zolsdk/platform/datetime.hpp"
#include "zolsdk/platform/locale.hpp"

using namespace zolsdk;

using zoltest::FailureNumber;
using zoltest::LocaleScope;

TEST(Numbers, IntegerTextAndSeparators) {
    EXPECT_EQ(NumberToText(0), u"0");
    EXPECT_EQ(NumberToText(-42), u"-42");
    EXPECT_EQ(NumberToText(INT32_MIN), u"-2147483648");
    EXPECT_EQ(NumberToText(INT32_MAX), u"2147483647");
    {
        LocaleScope l(u",", u".");
        EXPECT_EQ(GetDecimalSeparator(), u",");
        EXPECT_EQ(GetThousandSeparator(), u"");
    }
    {
        LocaleScope l(u"::", u" ");
        EXPECT_EQ(GetDecimalSeparator(), u":"); // cut to one character
    }
    {
        LocaleScope l(u"", u"");
        EXPECT_EQ(GetDecimalSeparator(), u"");
    }
}

TEST(GenericCodec, EscapeIsNotAnExactInverse) {
    DbGenericEncoder enc;
    DbGenericDecoder dec;
    EXPECT_EQ(enc.EncodeString(u"a,b", u",", u"%2C"), u"a%2Cb");
    EXPECT_EQ(dec.DecodeString(u"a%2Cb", u"%2C", u","), u"a,b");
    EXPECT_EQ(enc.EncodeString(u"a%2Cb", u",", u"%2C"), u"a%2C%2Cb");
    EXPECT_EQ(dec.DecodeString(u"a%2C%2Cb", u"%2C", u","), u"a%2Cb");
    EXPECT_EQ(enc.EncodeString(u"a,,b", u",", u"%2C"), u"a%2C%2Cb");
    EXPECT_EQ(enc.EncodeString(u"", u",", u"%2C"), u"");
    EXPECT_EQ(dec.DecodeString(u"", u"%2C", u","), u"");
    EXPECT_EQ(enc.Encode(Variant(u",x,"), 1, u",", u"%2C"), u"%2Cx%2C");
}

TEST(GenericCodec, EncodeDispatchesOnTypeGroup) {
    LocaleScope l(u".", u"");
    DbGenericEncoder enc;
    EXPECT_EQ(enc.Encode(Variant(int32_t{-42}), 3, u",", u"%2C"), u"-42");
    EXPECT_EQ(enc.Encode(Variant(u"17"), 4, u",", u"%2C"), u"17");
    EXPECT_EQ(enc.Encode(Variant(true), 8, u",", u"%2C"), u"-1");
    EXPECT_EQ(enc.Encode(Variant(u"False"), 8, u",", u"%2C"), u"0");
    EXPECT_EQ(enc.Encode(Variant(1234.5), 9, u",", u"%2C"), u"1234.5");
    EXPECT_EQ(enc.Encode(Variant(0.1f), 11, u",", u"%2C"), u"0.1");
    EXPECT_EQ(enc.Encode(Variant(u"12.50"), 12, u",", u"%2C"), u"12.5");
    EXPECT_EQ(enc.Encode(Variant(Currency::FromRaw(-12345)), 13, u",", u"%2C"), u"-1.2345");
    EXPECT_EQ(enc.Encode(Variant::FromDate(DateSerial(2026, 11, 15) + TimeSerial(12, 30, 0)), 7, u",", u"%2C"),
              u"20261115T123000");
    EXPECT_EQ(enc.Encode(Variant(Bytes{1, 2}), 10, u",", u"%2C"), u"");
    EXPECT_EQ(enc.Encode(Variant(u"x"), 0, u",", u"%2C"), u"");
    EXPECT_EQ(enc.Encode(Variant(u"x"), 99, u",", u"%2C"), u"");
}

TEST(GenericCodec, EncodeFailuresCarryTheTrace) {
    DbGenericEncoder enc;
    try {
        enc.Encode(Variant::Null(), 3, u",", u"%2C");
        ADD_FAILURE() << "no failure";
    } catch (const DbError& e) {
        EXPECT_EQ(e.Number(), err::InvalidUseOfNull);
        EXPECT_NE(e.Source().find(u" => \r\ndbGenericEncoder:Encode Ln "), String::npos);
    }
    EXPECT_EQ(FailureNumber([&] { enc.Encode(Variant(u"abc"), 9, u",", u"%2C"); }), err::TypeMismatch);
}

TEST(GenericCodec, BlobGroupEncodesTheBlobText) {
    DbGenericEncoder enc;
    auto blob = Ref<DbBlob>::New();
    blob->text(u"long, text");
    EXPECT_EQ(enc.Encode(Variant(blob), 2, u",", u"%2C"), u"long%2C text");
    EXPECT_EQ(enc.Encode(Variant(nullptr), 2, u",", u"%2C"), u"");
    // A value that is no object cannot be taken as a blob.
    EXPECT_EQ(FailureNumber([&] { enc.Encode(Variant(u"plain"), 2, u",", u"%2C"); }), err::TypeMismatch);
}

TEST(GenericCodec, NumbersAreLocaleFreeBothWays) {
    LocaleScope l(u",", u".");
    DbGenericEncoder enc;
    DbGenericDecoder dec;
    EXPECT_EQ(enc.EncodeDouble(1.5), u"1.5");
    EXPECT_EQ(enc.EncodeSingle(-2.25f), u"-2.25");
    EXPECT_EQ(enc.EncodeCurrency(Currency::FromRaw(15000)), u"1.5");
    EXPECT_EQ(enc.EncodeDecimal(Variant(Decimal::FromParts(12345, 3, true))), u"-12.345");
    EXPECT_EQ(dec.DecodeDouble(u"1.5"), 1.5);
    EXPECT_EQ(dec.DecodeSingle(u"-2.25"), -2.25f);
    EXPECT_EQ(dec.DecodeCurrency(u"1.5").raw, 15000);
    Variant d = dec.DecodeDecimal(u"-12.345");
    EXPECT_EQ(d.Type(), VarType::Decimal);
    EXPECT_EQ(d.ToDecimal(), Decimal::FromParts(12345, 3, true));
    EXPECT_EQ(dec.DecodeDouble(u"1E+15"), 1e15);
    EXPECT_EQ(FailureNumber([&] { dec.DecodeDouble(u"x1"); }), err::TypeMismatch);
}

TEST(GenericCodec, DecoderKeepsTheSeparatorItWasMadeWith) {
    std::optional<DbGenericDecoder> dec;
    {
        LocaleScope l(u",", u"");
        dec.emplace();
    }
    {
        // "." becomes "," and is read as a thousands grouping here.
        LocaleScope l(u".", u",");
        EXPECT_EQ(dec->DecodeDouble(u"1.5"), 15.0);
        EXPECT_EQ(DbGenericDecoder().DecodeDouble(u"1.5"), 1.5);
    }
}

TEST(GenericCodec, BooleansAndDates) {
    DbGenericEncoder enc;
    DbGenericDecoder dec;
    EXPECT_EQ(enc.EncodeBoolean(true), u"-1");
    EXPECT_EQ(enc.EncodeBoolean(false), u"0");
    EXPECT_TRUE(dec.DecodeBoolean(u"-1"));
    EXPECT_FALSE(dec.DecodeBoolean(u"0"));
    EXPECT_TRUE(dec.DecodeBoolean(u"True"));
    EXPECT_FALSE(dec.DecodeBoolean(u"false"));
    EXPECT_EQ(FailureNumber([&] { dec.DecodeBoolean(u"yes"); }), err::TypeMismatch);

    EXPECT_EQ(enc.EncodeDate(DateSerial(999, 1, 2)), u"9990102T000000");
    EXPECT_EQ(enc.EncodeDate(TimeSerial(7, 8, 9)), u"18991230T070809");
    EXPECT_EQ(enc.EncodeDate(DateSerial(2024, 2, 29) + TimeSerial(23, 59, 59)), u"20240229T235959");

    double t = DateSerial(2026, 11, 15) + TimeSerial(12, 30, 5);
    EXPECT_DOUBLE_EQ(dec.DecodeDate(enc.EncodeDate(t)), t);
    EXPECT_DOUBLE_EQ(dec.DecodeDate(u"18991229T060000"), -1.25);
    // The "T" is not read; the fields are taken by position.
    EXPECT_DOUBLE_EQ(dec.DecodeDate(u"20000101X000001"), DateSerial(2000, 1, 1) + TimeSerial(0, 0, 1));
    // A three-digit year shifts every field: the day becomes "2T".
    EXPECT_EQ(FailureNumber([&] { dec.DecodeDate(u"9990102T000000"); }), err::TypeMismatch);
    EXPECT_EQ(FailureNumber([&] { dec.DecodeDate(u"2024"); }), err::TypeMismatch);
}

TEST(DbBlob, TextAndBytesBySize) {
    DbBlob b;
    EXPECT_FALSE(b.IsBinary());
    EXPECT_EQ(b.size(), 0);
    EXPECT_EQ(b.text(), u"");

    b.text(u"hello");
    EXPECT_EQ(b.size(), 5);
    EXPECT_FALSE(b.IsBinary());
    EXPECT_EQ(b.text(), u"hello");

    b.DataBytes(Bytes{1, 2, 3, 4});
    EXPECT_EQ(b.size(), 3);
    EXPECT_TRUE(b.IsBinary());
    EXPECT_EQ(b.DataBytes(), (Bytes{1, 2, 3, 0}));
    EXPECT_EQ(b.text(), u"hel"); // read through size; the old text is still there

    DbBlob fresh;
    fresh.DataBytes(Bytes{9, 8, 7, 6});
    EXPECT_EQ(fresh.text(), u"   ");

    b.DataBytes(Bytes{});
    EXPECT_EQ(b.size(), 0);
    EXPECT_TRUE(b.IsBinary());
    EXPECT_TRUE(b.DataBytes().empty());

    b.DataBytes(Bytes{5});
    EXPECT_EQ(b.size(), 0);
    EXPECT_EQ(b.DataBytes(), Bytes{0});

    b.text(u"");
    EXPECT_EQ(b.size(), 0);
    EXPECT_FALSE(b.IsBinary());
}
