#pragma once
// Values on this road: statement literals that carry a value exactly, and
// the normal form in which two engines' copies of a value compare equal.
#include <string>

#include "zolsdk/transfer/transfer.hpp"

namespace zolsdk::transfer {

// A text between single quotes in the engine's way (MariaDB reads
// backslash escapes; the others only double the quote).
String TextLiteral(Engine e, StringView text);

// The value as a literal of the target (NULL for Null), for a column of
// kind `k`. Numbers keep every digit, dates their seconds, bytes every byte.
String Literal(Engine e, Kind k, const Variant& v);

// Appends the value as one field of a bulk-load text (tab between fields,
// a newline after the row): UTF-8 text with backslash, tab, newline and NUL
// escaped, \N for Null, binary as hex digits (the load un-hexes them), the
// rest as Literal writes them without quotes.
void AppendLoadText(Kind k, const Variant& v, std::string& out);
// The pieces of that text: bytes with backslash, tab, newline and NUL
// escaped; bytes as upper-case hex digits.
void AppendLoadEscaped(std::string_view text, std::string& out);
void AppendHex(std::string_view bytes, std::string& out);

// Appends the normal form of `v` as a column of kind `k` holds it: numbers
// by value, text by code points, dates to the second, binary by bytes.
void Normalise(Kind k, const Variant& v, std::string& out);

// The value as a short text for a person (keys in reports).
String Shown(const Variant& v);

// A 64-bit hash of bytes (for checksums of normal forms).
uint64_t Hash64(std::string_view bytes);

// A 64-bit hash of a row's values one by one, each with its length (so no
// value needs a separator), without copying them together.
class RowHasher {
public:
    void Add(std::string_view value);
    void AddNull();
    uint64_t Finish() const;

private:
    uint64_t h_ = 14695981039346656037ull;
};

} // namespace zolsdk::transfer
