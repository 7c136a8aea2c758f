#pragma once
// Text values that try to leave their literal: every length from 240 to 270
// UTF-16 units, built of quotes, backslashes, surrogate pairs and letters,
// and the head of each that a literal cut at 255 escaped characters keeps.
#include <string>
#include <vector>

namespace zoltest {

inline bool IsHigh(char16_t c) { return c >= 0xD800 && c <= 0xDBFF; }

// The head of `value` that a literal cut at 255 escaped characters keeps:
// a quote costs two, a backslash two where the engine escapes it, and a
// surrogate pair is kept or dropped whole.
inline std::u16string ExpectedHead(const std::u16string& value, bool backslashEscapes) {
    size_t used = 0, i = 0;
    while (i < value.size()) {
        const size_t piece = IsHigh(value[i]) && i + 1 < value.size() ? 2 : 1;
        const size_t cost = value[i] == u'\'' || (backslashEscapes && value[i] == u'\\') ? 2 : piece;
        if (used + cost > 255) break;
        used += cost;
        i += piece;
    }
    return value.substr(0, i);
}

// Values of every length from 240 to 270 UTF-16 units, built of quotes,
// backslashes, surrogate pairs and letters, each word started at each of
// its positions so that every kind of piece meets every cut position.
inline std::vector<std::u16string> HostileValues() {
    const std::vector<std::u16string> words = {u"'", u"\\", u"\U0001F600", u"x'", u"x\\", u"x\U0001F600", u"'\\\U0001F600x",
                                       u"''\\"};
    std::vector<std::u16string> out;
    for (size_t length = 240; length <= 270; ++length) {
        for (const std::u16string& word : words) {
            for (size_t shift = 0; shift < word.size(); ++shift) {
                if (IsHigh(word[(shift + word.size() - 1) % word.size()]) && shift > 0) continue; // inside a pair
                std::u16string v;
                while (v.size() < length) v += word[(shift + v.size()) % word.size()];
                if (IsHigh(v.back())) v.back() = u'y';
                out.push_back(std::move(v));
            }
        }
    }
    return out;
}

} // namespace zoltest
