// Encryption of texts: known cipher texts (computed independently with the
// openssl command-line tool), round trips, and the failures of a wrong pair.
#include <gtest/gtest.h>

#include <functional>

#include "common/failure.hpp"
#include "zolsdk/catalog/class_factory.hpp"
#include "zolsdk/support/encrypt.hpp"

namespace zolsdk {
namespace {

using zoltest::Failure;

constexpr int32_t kCipherFailure = static_cast<int32_t>(0x80004005u);
const String kNoOpen = u"The encrypted text does not open with this initialisation text and key phrase.";

// The routine named on the failure's last line of trace.
String LastRoutine(const String& source) {
    String line = source.substr(source.rfind(u" => \r\n") + 6);
    return line.substr(0, line.find(u" Ln "));
}

TEST(Encryption, KnownCipherTexts) {
    dbEncrypt e;
    // Key 61333166376330396465356232346336 (the first 16 characters of the
    // built-in key text), IV 75b0bfdce357fbba5f562df571f4b953 (MD5 of the
    // built-in pass phrase).
    EXPECT_EQ(e.Encrypt(u"hello"), u"AxykMN2NS+3KQw5G9OJ5bA==");
    EXPECT_EQ(e.Encrypt(u""), u"Ha+3is0Tw7YtNNFU2IGUDA==") << "padding alone";
    EXPECT_EQ(e.Encrypt(u"The quick brown fox jumps over the lazy dog"),
              u"iRg5q75HkJxQaSXX18agpc9aaWMX3E56UzQoVc2TukVjeZNXRdFEBYDBUuVCxA/n");
    EXPECT_EQ(e.EncryptEx(u"hello", u"quorvent", u"a31f7c09de5b24c68f10e7b3d92c46f05ab1e873"), e.Encrypt(u"hello"));
    // A non-ASCII key's first 16 characters are 17 bytes of UTF-8, cut to
    // 16; the initialisation text is taken whole.
    EXPECT_EQ(e.EncryptEx(u"Ünïcödé – 日本語 ✓", u"Grüße", u"Schlüssel-Phrase-lang"),
              u"x3HJ8N+P1UpAxP6afgcDvGbud8pejZxd5pL6VbWmT0I=");
    // A short key is padded with zero bytes; an empty initialisation text
    // still has a digest.
    EXPECT_EQ(e.EncryptEx(u"x", u"", u"abc"), u"4xQTneTFNqBT5r9aU7JRZA==");
    EXPECT_EQ(e.DecryptEx(u"x3HJ8N+P1UpAxP6afgcDvGbud8pejZxd5pL6VbWmT0I=", u"Grüße", u"Schlüssel-Phrase-lang"),
              u"Ünïcödé – 日本語 ✓");
}

TEST(Encryption, RoundTripsAndWhatTheKeyDependsOn) {
    dbEncrypt e;
    String longText;
    for (int i = 0; i < 5000; ++i) longText += static_cast<char16_t>(u'a' + i % 26);
    for (const String& t : {String(), String(u"exactly sixteen!"), String(u"Grüße aus Köln"),
                            String(u"\U0001F600 emoji\r\n\ttab"), longText}) {
        SCOPED_TRACE(ToUtf8(t.substr(0, 20)));
        String builtIn = e.Encrypt(t);
        EXPECT_EQ(e.Decrypt(builtIn), t);
        EXPECT_EQ(e.DecryptEx(e.EncryptEx(t, u"iv text", u"my key phrase"), u"iv text", u"my key phrase"), t);
        // Whole blocks (a full block of padding when the text fills its
        // last one), as Base64 on one line.
        size_t cipherBytes = 16 * (ToUtf8(t).size() / 16 + 1);
        EXPECT_EQ(builtIn.size(), (cipherBytes + 2) / 3 * 4);
        EXPECT_EQ(builtIn.find(u'\n'), String::npos);
    }
    // Only the first 16 characters of a key phrase count; all of the
    // initialisation text does.
    EXPECT_EQ(e.EncryptEx(u"t", u"iv", u"0123456789abcdefXXX"), e.EncryptEx(u"t", u"iv", u"0123456789abcdefYY"));
    EXPECT_NE(e.EncryptEx(u"t", u"iv", u"0123456789abcdeX"), e.EncryptEx(u"t", u"iv", u"0123456789abcdeY"));
    EXPECT_NE(e.EncryptEx(u"t", u"a long initialisation text 1", u"k"),
              e.EncryptEx(u"t", u"a long initialisation text 2", u"k"));
    // Line breaks inside the Base64 text are passed over; nothing opens to nothing.
    EXPECT_EQ(e.Decrypt(u"AxykMN2NS+3K\r\nQw5G9OJ5bA=="), u"hello");
    EXPECT_EQ(e.Decrypt(u""), u"");
}

TEST(Encryption, AWrongPairOrABrokenTextFails) {
    dbEncrypt e;
    String sealed = e.EncryptEx(u"secret", u"iv", u"right key");
    DbError wrongKey = Failure([&] { e.DecryptEx(sealed, u"iv", u"wrong key"); });
    EXPECT_EQ(wrongKey.Number(), kCipherFailure);
    EXPECT_EQ(wrongKey.Description(), kNoOpen);
    EXPECT_EQ(LastRoutine(wrongKey.Source()), u"dbEncrypt:DecryptEx");
    EXPECT_EQ(Failure([&] { e.DecryptEx(sealed, u"other iv", u"right key"); }).Description(), kNoOpen);
    // Decrypt has a body of its own: one line of trace, its own.
    DbError builtIn = Failure([&] { e.Decrypt(sealed); });
    EXPECT_EQ(LastRoutine(builtIn.Source()), u"dbEncrypt:Decrypt");
    EXPECT_EQ(builtIn.Source().find(u"DecryptEx"), String::npos);
    for (const char16_t* broken : {u"not base64!", u"AxykMN2NS+3KQw5G9OJ5bA=", u"AxykMN2NS+3KQw5G9OJ5b", u"===="})
        EXPECT_EQ(Failure([&] { e.Decrypt(broken); }).Description(), u"The encrypted text is not Base64.") << ToUtf8(broken);
    // Base64, but not whole blocks, or a block too many.
    EXPECT_EQ(Failure([&] { e.Decrypt(u"AxykMN2NS+3KQw5G9OJ5"); }).Description(), kNoOpen);
    EXPECT_EQ(Failure([&] { e.Decrypt(u"AxykMN2NS+3KQw5G9OJ5bA==AAAA"); }).Number(), kCipherFailure);
}

TEST(Encryption, MadeByNameLikeTheOtherPublicClasses) {
    Ref<dbEncrypt> byName = CreateObject(u"dbEncrypt").As<dbEncrypt>();
    ASSERT_TRUE(byName);
    EXPECT_EQ(byName->Decrypt(byName->Encrypt(u"ok")), u"ok");
}

} // namespace
} // namespace zolsdk
