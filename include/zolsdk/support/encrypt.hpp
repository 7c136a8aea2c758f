#pragma once
// Symmetric encryption of texts for client programs. A text encrypted with
// an initialisation text and a key phrase is opened only by the same two;
// Encrypt and Decrypt use the class's built-in pair. The object keeps no
// state between calls.
//
// The cipher is AES-128 in CBC mode with PKCS#7 padding. The key is the
// first 16 characters of the key phrase, as UTF-8, cut or zero-padded to 16
// bytes (so two phrases that agree in their first 16 characters encrypt
// alike); the IV is the MD5 digest of the whole initialisation text as
// UTF-8. Plain text goes in as UTF-8, and the cipher bytes come out as
// Base64 text (standard alphabet, padded, one line).
#include "zolsdk/export.hpp"
#include "zolsdk/platform/object.hpp"
#include "zolsdk/platform/text.hpp"

namespace zolsdk {

class ZOLSDK_API dbEncrypt : public Object {
public:
    String EncryptEx(const String& psText, const String& psInitVector, const String& psKeyPhase);
    String Encrypt(const String& psText);
    String Decrypt(const String& psEncText);
    // An empty text gives the empty text. Text that is no Base64, or that
    // does not open with the given pair, fails.
    String DecryptEx(const String& psEncText, const String& psInitVector, const String& psKeyPhase);
};

} // namespace zolsdk
