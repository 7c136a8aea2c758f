#include "catalog/attributes.hpp"

#include "support/split.hpp"

namespace zolsdk {

namespace {
// Steps shared by both readers once the item's start is known: take the
// text up to the next ";" and split it at "="; the first piece must be the
// key itself.
String ValueFrom(StringView attributes, StringView key, int32_t pos) {
    if (pos == 0) return {};
    int32_t end = InStr(pos, attributes, u";", true);
    if (end == 0) end = static_cast<int32_t>(attributes.size()) + 1;
    StringView item = attributes.substr(static_cast<size_t>(pos - 1), static_cast<size_t>(end - pos));
    std::vector<String> pieces = Split(item, u"=");
    if (pieces.size() >= 2 && EqualsNoCase(pieces[0], key)) return pieces[1];
    return {};
}
} // namespace

String FactoryAttributeValue(StringView attributes, StringView key) {
    return ValueFrom(attributes, key, InStr(1, attributes, key, true));
}

String SessionAttributeValue(StringView attributes, StringView key) {
    String k(key);
    int32_t pos = InStr(1, attributes, k + u"=", true);
    if (pos == 0) pos = InStr(1, attributes, k + u" ", true);
    return ValueFrom(attributes, key, pos);
}

} // namespace zolsdk
