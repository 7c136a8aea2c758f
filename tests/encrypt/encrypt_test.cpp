// Encryption of texts: known cipher texts (computed independently with the
// openssl command-line tool), round trips, and the failures of a wrong pair.
#include <gtest/gtest.h>

#include <functional>

#include "zolsdk/catalog/class_factory.hpp"
#include "zolsdk/support/encrypt.hpp"

namespace zolsdk {
namespace {

constexpr int32_t kCipherFailure = static_cast<int32_t>(0x80004005u);
const String kPassPhrase = u"quorvent";
const String kKeyText = u"a31f7c09de5b24c68f10e7b3d92c46f05ab1e873";

DbError Failure(const std::function<void()>& f) {
    try {
        f();
    } catch (const DbError& e) {
        return e;
    }
    ADD_FAILURE() << "no failure was raised";
    return DbError(0, String(), String());
}

bool EndsWithLine(const String& source, StringView literal) {
    size_t at = source.rfind(u" => \r\n");
    return at != String::npos && source.compare(at + 6, literal.size(), literal) == 0 &&
           source.find_first_not_of(u"0123456789", at + 6 + literal.size()) == String::npos;
}

TEST(Encryption, KnownCipherTexts) {
    dbEncrypt e;
    // key 61333166376330396465356232346336 (the key text's first 16
    // characters), IV 75b0bfdce357fbba5f562df571f4b953 (MD5 of the pass phrase).
    EXPECT_EQ(e.Encrypt(u"hello"), u"AxykMN2NS+3KQw5G9OJ5bA==");
    EXPECT_EQ(e.Encrypt(u""), u"Ha+3is0Tw7YtNNFU2IGUDA==") << "padding alone";
    EXPECT_EQ(e.Encrypt(u"The quick brown fox jumps over the lazy dog"),
              u"iRg5q75HkJxQaSXX18agpc9aaWMX3E56UzQoVc2TukVjeZNXRdFEBYDBUuVCxA/n");
    EXPECT_EQ(e.EncryptEx(u"hello", kPassPhrase, kKeyText), e.Encrypt(u"hello"));
    // Non-ASCII key: its first 16 characters are 17 bytes of UTF-8, cut to
    // 16; the initialisation text is taken whole.
    EXPECT_EQ(e.EncryptEx(u"Ünïcödé – 日本語 ✓", u"Grüße", u"Schlüssel-Phrase-lang"),
              u"x3HJ8N+P1UpAxP6afgcDvGbud8pejZxd5pL6VbWmT0I=");
    // A short key is padded with zero bytes; an empty initialisation text
    // still has a digest.
    EXPECT_EQ(e.EncryptEx(u"x", u"", u"abc"), u"4xQTneTFNqBT5r9aU7JRZA==");
    EXPECT_EQ(e.Decrypt(u"iRg5q75HkJxQaSXX18agpc9aaWMX3E56UzQoVc2TukVjeZNXRdFEBYDBUuVCxA/n"),
              u"The quick brown fox jumps over the lazy dog");
    EXPECT_EQ(e.DecryptEx(u"x3HJ8N+P1UpAxP6afgcDvGbud8pejZxd5pL6VbWmT0I=", u"Grüße", u"Schlüssel-Phrase-lang"),
              u"Ünïcödé – 日本語 ✓");
}

TEST(Encryption, RoundTripsAndWhatTheKeyDependsOn) {
    dbEncrypt e;
    String long_text;
    for (int i = 0; i < 5000; ++i) long_text += static_cast<char16_t>(u'a' + i % 26);
    const std::vector<String> texts = {u"", u"x", u"exactly sixteen!", u"Grüße aus Köln", u"\U0001F600 emoji",
                                       u"line\r\nbreak\ttab", long_text};
    for (const String& t : texts) {
        SCOPED_TRACE(ToUtf8(t.substr(0, 20)));
        String built_in = e.Encrypt(t);
        EXPECT_NE(built_in, t);
        EXPECT_EQ(e.Decrypt(built_in), t);
        String own = e.EncryptEx(t, u"iv text", u"my key phrase");
        EXPECT_EQ(e.DecryptEx(own, u"iv text", u"my key phrase"), t);
        if (!t.empty()) {
            EXPECT_NE(own, built_in);
        }
        // Whole blocks (a full block of padding when the text fills its
        // last one), written as Base64 on one line.
        size_t cipherBytes = 16 * (ToUtf8(t).size() / 16 + 1);
        EXPECT_EQ(built_in.size(), (cipherBytes + 2) / 3 * 4);
        EXPECT_EQ(built_in.find(u'\n'), String::npos);
    }
    // Only the first 16 characters of a key phrase count; all of the
    // initialisation text does.
    EXPECT_EQ(e.EncryptEx(u"text", u"iv", u"0123456789abcdefXXX"), e.EncryptEx(u"text", u"iv", u"0123456789abcdefYY"));
    EXPECT_NE(e.EncryptEx(u"text", u"iv", u"0123456789abcdeX"), e.EncryptEx(u"text", u"iv", u"0123456789abcdeY"));
    EXPECT_NE(e.EncryptEx(u"text", u"a long initialisation text 1", u"k"),
              e.EncryptEx(u"text", u"a long initialisation text 2", u"k"));
    // No state between calls: the same input gives the same output.
    EXPECT_EQ(e.Encrypt(u"again"), e.Encrypt(u"again"));
    // Line breaks inside the Base64 text are passed over.
    EXPECT_EQ(e.Decrypt(u"AxykMN2NS+3K\r\nQw5G9OJ5bA=="), u"hello");
    EXPECT_EQ(e.Decrypt(u""), u"");
}

TEST(Encryption, AWrongPairOrABrokenTextFails) {
    dbEncrypt e;
    String sealed = e.EncryptEx(u"secret", u"iv", u"right key");
    DbError wrongKey = Failure([&] { e.DecryptEx(sealed, u"iv", u"wrong key"); });
    EXPECT_EQ(wrongKey.Number(), kCipherFailure);
    EXPECT_EQ(wrongKey.Description(), u"The encrypted text does not open with this initialisation text and key phrase.");
    EXPECT_TRUE(EndsWithLine(wrongKey.Source(), u"dbEncrypt:DecryptEx Ln "));
    EXPECT_EQ(Failure([&] { e.DecryptEx(sealed, u"other iv", u"right key"); }).Number(), kCipherFailure);
    // The built-in pair does not open another pair's text.
    DbError builtIn = Failure([&] { e.Decrypt(sealed); });
    EXPECT_EQ(builtIn.Number(), kCipherFailure);
    EXPECT_TRUE(EndsWithLine(builtIn.Source(), u"dbEncrypt:Decrypt Ln "));
    EXPECT_FALSE(builtIn.Source().find(u"DecryptEx") != String::npos) << "Decrypt has a body of its own";

    for (const char16_t* broken : {u"not base64!", u"AxykMN2NS+3KQw5G9OJ5bA=", u"AxykMN2NS+3KQw5G9OJ5bA==AAAA",
                                   u"AxykMN2NS+3KQw5G9OJ5", u"===="}) {
        SCOPED_TRACE(ToUtf8(broken));
        DbError b = Failure([&] { e.Decrypt(broken); });
        EXPECT_EQ(b.Number(), kCipherFailure);
    }
    EXPECT_EQ(Failure([&] { e.Decrypt(u"@@@@"); }).Description(), u"The encrypted text is not Base64.");
    // A text that is Base64 but not whole blocks.
    EXPECT_EQ(Failure([&] { e.Decrypt(u"AAAA"); }).Description(),
              u"The encrypted text does not open with this initialisation text and key phrase.");
}

TEST(Encryption, MadeByNameLikeTheOtherPublicClasses) {
    Ref<dbEncrypt> byName = CreateObject(u"dbEncrypt").As<dbEncrypt>();
    ASSERT_TRUE(byName);
    EXPECT_EQ(byName->Decrypt(byName->Encrypt(u"ok")), u"ok");
    auto names = CreatableClassNames();
    EXPECT_NE(std::find(names.begin(), names.end(), u"dbEncrypt"), names.end());
}

} // namespace
} // namespace zolsdk
