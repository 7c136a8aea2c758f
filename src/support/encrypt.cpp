#include "zolsdk/support/encrypt.hpp"

#include <openssl/evp.h>

#include <array>
#include <memory>
#include <string>
#include "platform/failure_chain.hpp"

namespace zolsdk {

namespace {

// The built-in pair of Encrypt and Decrypt.
constexpr char16_t kPassPhrase[] = u"quorvent";
constexpr char16_t kKeyText[] = u"a31f7c09de5b24c68f10e7b3d92c46f05ab1e873";
// Key length in characters of key text: 128 bits, 8 to a character.
constexpr size_t kKeyChars = 128 / 8;

// Failures of the cipher carry the platform's generic failure number.
constexpr int32_t kCipherFailure = static_cast<int32_t>(0x80004005u);
constexpr char16_t kCipherSource[] = u"zolsdk.Cipher";

[[noreturn]] void CipherFails(const char16_t* description) {
    throw DbError(kCipherFailure, kCipherSource, description);
}

using Block = std::array<unsigned char, 16>;

Block KeyOf(const String& keyPhrase) {
    std::string utf8 = ToUtf8(StringView(keyPhrase).substr(0, kKeyChars));
    Block key{};
    for (size_t i = 0; i < key.size() && i < utf8.size(); ++i) key[i] = static_cast<unsigned char>(utf8[i]);
    return key;
}

Block IvOf(const String& initText) {
    std::string utf8 = ToUtf8(initText);
    Block iv{};
    unsigned int len = 0;
    if (!EVP_Digest(utf8.data(), utf8.size(), iv.data(), &len, EVP_md5(), nullptr) || len != iv.size())
        CipherFails(u"The initialisation text could not be digested.");
    return iv;
}

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

String ToBase64(const std::string& bytes) {
    String out;
    out.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t n = static_cast<unsigned char>(bytes[i]) << 16;
        if (i + 1 < bytes.size()) n |= static_cast<unsigned char>(bytes[i + 1]) << 8;
        if (i + 2 < bytes.size()) n |= static_cast<unsigned char>(bytes[i + 2]);
        out += static_cast<char16_t>(kAlphabet[(n >> 18) & 63]);
        out += static_cast<char16_t>(kAlphabet[(n >> 12) & 63]);
        out += i + 1 < bytes.size() ? static_cast<char16_t>(kAlphabet[(n >> 6) & 63]) : u'=';
        out += i + 2 < bytes.size() ? static_cast<char16_t>(kAlphabet[n & 63]) : u'=';
    }
    return out;
}

// Strict Base64: the standard alphabet, padded to a multiple of 4; line
// breaks and blanks (as mail and editors add them) are passed over.
std::string FromBase64(const String& text) {
    std::string out;
    uint32_t acc = 0;
    int bits = 0, chars = 0, padding = 0;
    for (char16_t c : text) {
        if (c == u'\r' || c == u'\n' || c == u' ' || c == u'\t') continue;
        int v;
        if (c >= u'A' && c <= u'Z') v = c - u'A';
        else if (c >= u'a' && c <= u'z') v = c - u'a' + 26;
        else if (c >= u'0' && c <= u'9') v = c - u'0' + 52;
        else if (c == u'+') v = 62;
        else if (c == u'/') v = 63;
        else if (c == u'=') v = -1;
        else CipherFails(u"The encrypted text is not Base64.");
        ++chars;
        if (v < 0) {
            ++padding;
            continue;
        }
        if (padding > 0) CipherFails(u"The encrypted text is not Base64.");
        acc = (acc << 6) | static_cast<uint32_t>(v);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            out += static_cast<char>((acc >> bits) & 0xFF);
        }
    }
    if (chars % 4 != 0 || padding > 2) CipherFails(u"The encrypted text is not Base64.");
    return out;
}

struct CtxFree {
    void operator()(EVP_CIPHER_CTX* c) const { EVP_CIPHER_CTX_free(c); }
};

// AES-128-CBC with PKCS#7 padding, one way or the other. False when the
// cipher refuses (on decryption: the text does not open with this pair).
bool Run(bool encrypt, const std::string& in, const Block& key, const Block& iv, std::string& out) {
    std::unique_ptr<EVP_CIPHER_CTX, CtxFree> ctx(EVP_CIPHER_CTX_new());
    if (!ctx) return false;
    if (EVP_CipherInit_ex(ctx.get(), EVP_aes_128_cbc(), nullptr, key.data(), iv.data(), encrypt ? 1 : 0) != 1)
        return false;
    out.assign(in.size() + 32, '\0');
    int written = 0, last = 0;
    auto* dst = reinterpret_cast<unsigned char*>(out.data());
    if (EVP_CipherUpdate(ctx.get(), dst, &written, reinterpret_cast<const unsigned char*>(in.data()),
                         static_cast<int>(in.size())) != 1)
        return false;
    if (EVP_CipherFinal_ex(ctx.get(), dst + written, &last) != 1) return false;
    out.resize(static_cast<size_t>(written + last));
    return true;
}

String EncryptText(const String& text, const String& initText, const String& keyPhrase) {
    std::string cipherBytes;
    if (!Run(true, ToUtf8(text), KeyOf(keyPhrase), IvOf(initText), cipherBytes))
        CipherFails(u"The cipher refused the text.");
    return ToBase64(cipherBytes);
}

String DecryptText(const String& encText, const String& initText, const String& keyPhrase) {
    if (encText.empty()) return String();
    std::string cipherBytes = FromBase64(encText);
    std::string plain;
    if (cipherBytes.empty() || !Run(false, cipherBytes, KeyOf(keyPhrase), IvOf(initText), plain))
        CipherFails(u"The encrypted text does not open with this initialisation text and key phrase.");
    // A wrong pair can, rarely, end in valid padding: what comes out then is
    // no UTF-8 text, and says so.
    String result = FromUtf8(plain);
    if (ToUtf8(result) != plain)
        CipherFails(u"The encrypted text does not open with this initialisation text and key phrase.");
    return result;
}

} // namespace

String dbEncrypt::EncryptEx(const String& psText, const String& psInitVector, const String& psKeyPhase) {
    ZOL_ROUTINE(u"dbEncrypt:EncryptEx Ln ");
    try {
        ZOL_LN; return EncryptText(psText, psInitVector, psKeyPhase);
    } ZOL_RERAISE
}

String dbEncrypt::Encrypt(const String& psText) {
    ZOL_ROUTINE(u"dbEncrypt:Encrypt Ln ");
    try {
        ZOL_LN; return EncryptText(psText, kPassPhrase, kKeyText);
    } ZOL_RERAISE
}

String dbEncrypt::Decrypt(const String& psEncText) {
    ZOL_ROUTINE(u"dbEncrypt:Decrypt Ln ");
    try {
        ZOL_LN; return DecryptText(psEncText, kPassPhrase, kKeyText);
    } ZOL_RERAISE
}

String dbEncrypt::DecryptEx(const String& psEncText, const String& psInitVector, const String& psKeyPhase) {
    ZOL_ROUTINE(u"dbEncrypt:DecryptEx Ln ");
    try {
        ZOL_LN; return DecryptText(psEncText, psInitVector, psKeyPhase);
    } ZOL_RERAISE
}

} // namespace zolsdk
