#include "catalog/attributes.hpp"

#include "support/split.hpp"
#include "zolsdk/platform/error.hpp"

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

void CheckWholeAttribute(StringView attributes, StringView key) {
    String k(key);
    int32_t pos = InStr(1, attributes, k + u"=", true);
    if (pos == 0) return;
    int32_t end = InStr(pos, attributes, u";", true);
    if (end == 0) end = static_cast<int32_t>(attributes.size()) + 1;
    const StringView item = attributes.substr(static_cast<size_t>(pos - 1), static_cast<size_t>(end - pos));
    const StringView value = item.substr(key.size() + 1);
    auto refuse = [&](const char16_t* why) {
        RaisePlatform(err::InvalidCall, u"The attribute " + k + u" " + why);
    };
    if (value.find(u'=') != StringView::npos) refuse(u"holds \"=\", which ends a value: it would be read shortened");
    if (value.find(u'\0') != StringView::npos) refuse(u"holds a character 0, which would end it");
    if (static_cast<size_t>(end) <= attributes.size()) {
        const StringView rest = attributes.substr(static_cast<size_t>(end));
        const StringView next = rest.substr(0, rest.find(u';'));
        if (!next.empty() && next.find(u'=') == StringView::npos)
            refuse(u"is followed by a piece without \"=\": a \";\" inside the value would cut it short");
    }
}

} // namespace zolsdk
